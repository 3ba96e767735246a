#pragma once

#include <QtGlobal>

/**
 * Width, height and format of a stored sprite image: what a decoder needs
 * besides the encoded bytes.
 *
 * `format` holds the toolkit's QImage::Format numbers. Sprites only ever
 * use `Indexed` (3), `RGB` (4, the toolkit's 32-bit RGB) and `ARGB` (5, 32-bit
 * ARGB, not premultiplied).
 */
struct QImageInfo
{
    enum Format : qint32 { Auto = 0, Monochrome = 2, Indexed = 3, RGB = 4, ARGB = 5 };

    /** Pixels. SFF files hold 16-bit sizes. */
    quint16 width = 0;
    quint16 height = 0;
    qint32 format = Auto;

    /**
     * Bits per pixel as the sprite formats count them: 8 for `Indexed`, 24
     * for `RGB` (its fourth byte is padding), 32 for `ARGB`, 0 for any other.
     */
    static int depthOfFormat(int format);
    /** The format of a depth: 5 and 8 give `Indexed`, 24 `RGB`, 32 `ARGB`, others `Auto`. */
    static int formatOfDepth(int depth);

    int depth() const { return depthOfFormat(format); }
    /** Bytes of one line in the toolkit's layout (lines are padded to 32 bits); 0 for an unknown format. */
    qsizetype bytesPerLine() const;
    /** bytesPerLine() times height: the size of the pixels a decoder gives. */
    qsizetype byteCount() const { return bytesPerLine() * height; }

    friend bool operator==(const QImageInfo &a, const QImageInfo &b)
    {
        return a.width == b.width && a.height == b.height && a.format == b.format;
    }
    friend bool operator!=(const QImageInfo &a, const QImageInfo &b) { return !(a == b); }
};
