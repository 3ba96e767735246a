#include "qcommands.h"

QCommands::QCommands(QProjectOwner *project)
    : QSyntaxTextEditor(project, FileCommands, true, DefaultEngineVersion, true)
{
}

QString QCommands::discardQuestion() const
{
    return tr("Do you really want to discard the changes made in the commands?");
}
