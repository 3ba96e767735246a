#pragma once

#include "qrgbpal.h"

#include <QImage>
#include <QObject>
#include <QString>

class QIODevice;

/**
 * Reads, writes and works on the colours of one QRGBPal array, which it
 * doesn't own: palette files in, ACT out, and the colour operations that
 * the palette tools and the sprite set share (quantising, adapting an
 * image, nearest colour).
 */
class QRGBPalette : public QObject
{
    Q_OBJECT

public:
    /** `colors` must outlive this object, or be replaced by setColors() first. */
    explicit QRGBPalette(QRGBPal *colors, QObject *parent = nullptr);

    QRGBPal *colors() const { return m_colors; }
    void setColors(QRGBPal *colors) { m_colors = colors; }

    /**
     * Loads a palette file. Images (".png", ".pcx", ".bmp") give their
     * colour table, copied over the start of the array; other files are
     * ACO by the suffix ".aco", else RIFF, JASC, ASE or Corel Painter by
     * their first four bytes, else ACT, read into a cleared array. Entry 0
     * then becomes transparent. False only for a file that can't be opened
     * and an image that can't be read or has no colour table: a file that
     * its reader refuses leaves the colours it got (all 0) and counts as
     * loaded. Emits changing() before and changed() after a load.
     */
    bool fromFile(const QString &fileName);
    /** fromFile() on bytes already read, with the suffix of the file they came from. */
    bool fromData(const QByteArray &data, const QString &suffix);
    /**
     * Writes the colours as an ACT file: 768 bytes of red, green and blue,
     * in the reversed order of the engine. True when all 768 bytes were
     * written; a failed write leaves an earlier file as it was.
     */
    bool toFile(const QString &fileName) const;

    /** The filter of the open dialog, whose first line reads `allLabel` and lists every extension. */
    static QString openFilter(const QString &allLabel);
    /** The filter of the save dialog: ACT only. */
    static QString saveFilter();

    /**
     * Fills the array with at most `maxColors` colours of `image` chosen by
     * the octree quantiser of `depth` levels; the rest of the array is 0.
     */
    void quantize(const QImage &image, int maxColors = 256, int depth = 8);
    /** adaptImage() with these colours. */
    QImage adaptImage(const QImage &image) const;
    /**
     * `image` as an indexed image of the 256 `colors`, each pixel the
     * toolkit's closest colour. The palette's alpha counts only for an
     * ARGB image, or an indexed one with some transparency in its table;
     * otherwise every colour is taken as opaque.
     */
    static QImage adaptImage(const QImage &image, const QRGBPal &colors);
    /**
     * `image` reduced to an indexed image as sprite files without true
     * colour keep it, where the engine draws index 0 as transparent: the
     * transparent pixels (alpha below 128) at index 0, whose colour is
     * transparent black, and the others at the octree's colours 1 to 255,
     * each at the closest. Null for a null image.
     */
    static QImage reduceToIndexed(const QImage &image);
    /** nearestColor() in these colours. */
    int nearestColor(QRgb color) const;
    /**
     * The entry closest to `color`: the smallest sum of squared differences
     * of red, green and blue, then the smallest difference of alpha, then
     * the first.
     */
    static int nearestColor(const QRGBPal &colors, QRgb color);

Q_SIGNALS:
    void changing();
    void changed();

private:
    bool load(QIODevice &device, const QString &suffix);

    QRGBPal *m_colors;
};
