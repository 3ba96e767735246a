#pragma once

#include <QByteArray>
#include <QList>
#include <QRgb>

#include <cstddef>

/** One palette entry, in the byte order of sprite files. */
struct QRGBPalEntry
{
    uchar red = 0;
    uchar green = 0;
    uchar blue = 0;
    uchar alpha = 0;
};

/**
 * The 256 colours of a palette: 1024 bytes of red, green, blue and alpha,
 * followed by a plain reference count.
 *
 * The bytes are a palette's identity: two palettes are equal exactly when
 * their 1024 bytes are. Palettes of a sprite set share one array through the
 * count (see QSpritePalette); a scratch array outside a set ignores it.
 */
class QRGBPal
{
public:
    static constexpr int Size = 256;
    static constexpr int Bytes = Size * 4;

    QRGBPalEntry entries[Size];
    /** How many palettes hold this array; the last one to let go deletes it. */
    int refCount = 0;

    /** The colour of entry `i` as (alpha << 24) | (red << 16) | (green << 8) | blue. */
    QRgb rgba(int i) const
    {
        const QRGBPalEntry &e = entries[i];
        return qRgba(e.red, e.green, e.blue, e.alpha);
    }
    void setRgba(int i, QRgb color)
    {
        entries[i] = {uchar(qRed(color)), uchar(qGreen(color)), uchar(qBlue(color)), uchar(qAlpha(color))};
    }

    /** The toolkit's colour vector: always 256 values. */
    QList<QRgb> toColorVector() const;
    /** An array from a colour vector: entries beyond the vector are 0, values beyond 256 are dropped. */
    static QRGBPal fromColorVector(const QList<QRgb> &colors);

    const uchar *bytes() const { return &entries[0].red; }
    uchar *bytes() { return &entries[0].red; }
    /** The 1024 colour bytes. */
    QByteArray toByteArray() const;
    /** An array from colour bytes; a short array leaves the rest 0, a long one is cut at 1024. */
    static QRGBPal fromByteArray(const QByteArray &bytes);

    /** Whether the 1024 colour bytes are equal; the counts don't matter. */
    bool sameColors(const QRGBPal &other) const;
    /** Sets every byte to 0. */
    void clearColors();
    /**
     * Swaps entry i with entry 255 - i, all four bytes. ACT and RIFF files
     * keep their colours in this reversed order.
     */
    void reverse();
};

static_assert(sizeof(QRGBPalEntry) == 4, "palette entries are four bytes");
static_assert(offsetof(QRGBPal, entries) == 0, "the colours start the array");
