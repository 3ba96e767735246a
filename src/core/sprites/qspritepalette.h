#pragma once

#include "qrgbpal.h"

#include <QList>
#include <QObject>
#include <QRgb>

class QSprites;

/**
 * One palette of a sprite set: a colour array (null for an empty palette),
 * its group and index, and how many of its colours count (32 or 256 in
 * practice; at most 256).
 *
 * Palettes with identical colours may share one QRGBPal through its count.
 * Every setter goes through the set: with undo on it pushes a command first,
 * and it marks the set modified. The set owns its palettes.
 */
class QSpritePalette : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int itemGroup READ itemGroup WRITE setItemGroup)
    Q_PROPERTY(int itemIndex READ itemIndex WRITE setItemIndex)
    Q_PROPERTY(int index READ index)

public:
    ~QSpritePalette() override;

    QSprites *owner() const { return m_owner; }
    /** The colour array; null for an empty palette. Shared: change it only through setColors(). */
    const QRGBPal *rgbPal() const { return m_colors; }
    /** The 256 colours as the toolkit's vector; empty for an empty palette. */
    QList<QRgb> colors() const;
    int itemGroup() const { return m_group; }
    int itemIndex() const { return m_index; }
    quint16 colorCount() const { return m_colorCount; }

    void setItemGroup(int group);
    void setItemIndex(int index);
    /** Clamped to 1 to 256. */
    void setColorCount(int count);
    /** Sets group, index and colour count as one undo step. */
    void setInfo(int group, int index, int colorCount);

    /** The place in the set's palette list, from 0. */
    int index() const;
    /** Whether another palette holds the same colour array. */
    bool isShared() const;

    /**
     * Replaces the colours, as one undo step. Unless `shareMode` is NoShare,
     * a palette with identical colours is joined. Otherwise the array
     * changes in place when nobody shares it; when it is shared, Share
     * changes it for all, NoShare gives this palette its own, and AskToShare
     * asks the user which of the two.
     */
    void setColors(const QRGBPal &colors, int shareMode);
    /** The same from a colour vector, copied into 256 entries first. */
    void setColors(const QList<QRgb> &colors, int shareMode);

    /** Loads the colours of a palette file (see QRGBPalette::fromFile), as one undo step. */
    bool fromFile(const QString &fileName);
    /** Writes the colours as an ACT file; false for an empty palette or a failed write. */
    bool toFile(const QString &fileName) const;

private:
    friend class QSprites;
    friend class RawSpriteEdits;

    explicit QSpritePalette(QSprites *owner);
    /** Holds `colors` instead of the current array, without undo. */
    void attachColors(QRGBPal *colors);

    QSprites *m_owner;
    QRGBPal *m_colors = nullptr;
    qint32 m_group = 0;
    qint32 m_index = 0;
    quint16 m_colorCount = 256;
};
