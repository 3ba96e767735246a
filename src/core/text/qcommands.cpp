#include "qcommands.h"

#include "qtextelements.h"

QCommands::QCommands(QProjectOwner *project)
    : QSyntaxTextEditor(project, FileCommands, true, DefaultEngineVersion, true)
{
    setKindAccepted(true, 1, 0);
    setKindAccepted(true, 514, 0);
    setKindAccepted(true, 4, QGroupParam::QuotedText);
    setKindAccepted(true, 4, QGroupParam::FreeValue);
}

QString QCommands::discardQuestion() const
{
    return tr("Do you really want to discard the changes made in the commands?");
}
