#include "qsounds.h"

#include "../base/quserprompt.h"

QSounds::QSounds(QProjectOwner *project, int cacheType, bool compress, int level)
    : QProjectFile(project, FileSounds)
    , m_cacheType(cacheType)
    , m_compress(compress)
    , m_level(level)
{
}

QSounds::~QSounds() = default;

void QSounds::setModified(bool modified)
{
    m_modified = modified;
    Q_EMIT changed();
    notifyOwner();
}

bool QSounds::checkSave(quint32)
{
    if (count() == 0) {
        userPrompt->warning(tr("Save SND"),
                            tr("You can't save an empty SND because M.U.G.E.N. will not open it."));
        return false;
    }
    return true;
}

bool QSounds::checkDiscard()
{
    return askDiscard(tr("Do you really want to discard the changes made in the sounds?"));
}

void QSounds::check()
{
    messages().begin();
    messages().end();
}

bool QSounds::fromFile(const QString &, bool)
{
    return false;
}

bool QSounds::toFile(const QString &, bool)
{
    return false;
}
