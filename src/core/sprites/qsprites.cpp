#include "qsprites.h"

#include "../base/quserprompt.h"

QSprites::QSprites(QProjectOwner *project, int cacheType, bool compress, int level)
    : QProjectFile(project, FileSprites)
    , m_cacheType(cacheType)
    , m_compress(compress)
    , m_level(level)
{
}

QSprites::~QSprites() = default;

void QSprites::setModified(bool modified)
{
    m_modified = modified;
    Q_EMIT changed();
    notifyOwner();
}

bool QSprites::checkSave(quint32 version)
{
    const QString title = tr("Save SFF");
    if (count() == 0) {
        userPrompt->warning(title, tr("You can't save an empty SFF because M.U.G.E.N. will not open it."));
        return false;
    }
    // Version 2.01 stores true colour images as they are, so a set without
    // any indexed sprite needs no palette at all.
    if (version == Version_201 && !hasIndexedSprite())
        return true;
    if (paletteCount() == 0) {
        userPrompt->warning(title, tr("You can't save this SFF without palettes."));
        return false;
    }
    return true;
}

bool QSprites::checkDiscard()
{
    return askDiscard(tr("Do you really want to discard the changes made in the sprites and/or palettes?"));
}

bool QSprites::isEmpty() const
{
    return count() == 0 && paletteCount() == 0;
}

void QSprites::check()
{
    messages().begin();
    messages().end();
}

bool QSprites::fromFile(const QString &, bool)
{
    return false;
}

bool QSprites::toFile(const QString &, quint32, bool)
{
    return false;
}
