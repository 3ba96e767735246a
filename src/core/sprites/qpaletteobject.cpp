#include "qpaletteobject.h"

#include "qsprites.h"

QPaletteObject::QPaletteObject(QSprites *sprites)
    : m_sprites(sprites)
{
}

QPaletteObject::~QPaletteObject() = default;

void QPaletteObject::remove(int index)
{
    m_sprites->removePalette(index);
}

void QPaletteObject::move(int from, int to)
{
    m_sprites->movePalette(from, to);
}

void QPaletteObject::autoOrganize()
{
    // An insertion sort by group, then index, made of moves so that the
    // stack can take it back, in one step.
    m_sprites->beginMacro(QStringLiteral("autoOrganizePalettes"));
    for (int i = 1; i < count(); ++i) {
        const QSpritePalette *moving = at(i);
        for (int j = 0; j < i; ++j) {
            const QSpritePalette *other = at(j);
            if (moving->itemGroup() < other->itemGroup()
                || (moving->itemGroup() == other->itemGroup() && moving->itemIndex() < other->itemIndex())) {
                m_sprites->movePalette(i, j);
                break;
            }
        }
    }
    m_sprites->endMacro();
}

int QPaletteObject::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant QPaletteObject::data(const QModelIndex &index, int role) const
{
    const QSpritePalette *palette = index.isValid() ? at(index.row()) : nullptr;
    if (!palette || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return QVariant();
    return QStringLiteral("%1, %2").arg(palette->itemGroup()).arg(palette->itemIndex());
}

void QPaletteObject::beginOrganize(const QList<int> &rows)
{
    m_sprites->beginOrganize(rows);
}

void QPaletteObject::endOrganize()
{
    m_sprites->endOrganize();
}
