#pragma once

#include "../base/qorganizableobject.h"

#include <QList>

class QSpritePalette;
class QSprites;

/**
 * The palette list of a sprite set, as a list model for the organizer and
 * the palettes editor. Held by its set, which it forwards every change to,
 * so that palette edits reach the set's undo stack.
 */
class QPaletteObject : public QOrganizableObject
{
    Q_OBJECT

public:
    explicit QPaletteObject(QSprites *sprites);
    ~QPaletteObject() override;

    QSprites *sprites() const { return m_sprites; }
    int count() const { return int(m_palettes.size()); }
    /** The palette at `i`, or null out of range. */
    QSpritePalette *at(int i) const { return m_palettes.value(i); }
    /** The place of `palette` in the list, or -1. */
    int indexOf(const QSpritePalette *palette) const
    {
        return int(m_palettes.indexOf(const_cast<QSpritePalette *>(palette)));
    }

    /** Removes the palette (see QSprites::removePalette). */
    void remove(int index) override;
    /** Moves a palette, as one undo step. */
    void move(int from, int to) override;
    /** Sorts by group, then index, as one undo step. */
    void autoOrganize() override;
    /** One macro of the set's undo stack, which palette changes go to. */
    void beginOrganize(const QList<int> &rows) override;
    void endOrganize() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /** Display and tool tip: "group, index". */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    friend class QSprites;

    QSprites *m_sprites;
    QList<QSpritePalette *> m_palettes;
};
