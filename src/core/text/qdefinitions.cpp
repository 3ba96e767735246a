#include "qdefinitions.h"

#include <QFileInfo>

QDefinitions::QDefinitions(QProjectOwner *project)
    : QSyntaxTextEditor(project, FileDefinitions, true, DefaultEngineVersion, true)
{
}

void QDefinitions::setType(int type)
{
    if (type == m_type)
        return;
    m_type = type;
    Q_EMIT typeChanged();
}

bool QDefinitions::load(const QString &fileName, int codepage, bool keepName)
{
    const bool loaded = QSyntaxTextEditor::load(fileName, codepage, keepName);
    m_directory = loaded ? QFileInfo(fileName).absolutePath() : QString();
    return loaded;
}

void QDefinitions::clear()
{
    QSyntaxTextEditor::clear();
    m_directory.clear();
}

void QDefinitions::setVersion(quint32 version)
{
    if (version == this->version())
        return;
    QSyntaxTextEditor::setVersion(version);
    Q_EMIT versionChanged();
}

QString QDefinitions::discardQuestion() const
{
    return tr("Do you really want to discard the changes made in the definitions?");
}
