#include "qprojectfile.h"

#include "quserprompt.h"

#include <QCoreApplication>

QProjectFile::QProjectFile(QProjectOwner *owner, QProjectFileType fileType)
    : m_owner(owner)
    , m_fileType(fileType)
    , m_messages(owner ? owner->messageList() : nullptr, fileType)
{
}

QProjectFile::~QProjectFile() = default;

void QProjectFile::notifyOwner()
{
    if (m_owner)
        m_owner->documentChanged(this);
}

bool QProjectFile::askDiscard(const QString &question)
{
    if (!isModified() || question.isEmpty())
        return true;
    return userPrompt->question(QCoreApplication::translate("QProjectFile", "Discard changes"),
                                question, false);
}
