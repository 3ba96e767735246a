// PCX version 5 as sprite files hold it: run-length coded lines, one
// plane after the other within each line, and for 8-bit images the colour
// table after the byte 12 at the end.

#include "imagecodecs.h"
#include "imagecodecs_p.h"

#include <QtEndian>

#include <cstring>

using namespace ImageCodecsPrivate;

namespace {

constexpr qsizetype HeaderSize = 128;
constexpr uchar Manufacturer = 10;
constexpr uchar Version = 5;
constexpr uchar RunFlag = 0xC0;
constexpr int MaxRun = 63;
constexpr uchar PaletteMarker = 12;

struct PcxHeader
{
    int bitsPerPixel = 0;
    int planes = 0;
    int width = 0;
    int height = 0;
    qsizetype bytesPerLine = 0;
};

quint16 word(const uchar *header, int offset)
{
    return qFromLittleEndian<quint16>(header + offset);
}

/** Reads the fields the decoder needs; false for anything it can't decode. */
bool readHeader(const QByteArray &data, PcxHeader *header, int *format)
{
    if (data.size() < HeaderSize)
        return false;
    const uchar *h = reinterpret_cast<const uchar *>(data.constData());
    if (h[0] != Manufacturer || h[1] != Version)
        return false;
    header->bitsPerPixel = h[3];
    header->planes = h[65];
    header->width = int(word(h, 8)) - int(word(h, 4)) + 1;
    header->height = int(word(h, 10)) - int(word(h, 6)) + 1;
    header->bytesPerLine = word(h, 66);
    *format = QImageInfo::formatOfDepth(header->bitsPerPixel * header->planes);
    // Colour images are three or four planes of bytes; other ways to reach
    // their depth (six bits in four planes) don't fit the pixel layout and
    // no sprite tool writes them.
    if (header->planes != 1 && header->bitsPerPixel != 8)
        return false;
    if (header->planes == 1 && *format != QImageInfo::Indexed)
        return false;
    // A line of the header's bytes per line must hold the image's width:
    // narrower lines would leave the image unfilled and let the header
    // claim any size at all.
    return *format != QImageInfo::Auto && header->width > 0 && header->height > 0
           && header->bytesPerLine * 8 >= qsizetype(header->width) * header->bitsPerPixel;
}

/** The colour table after the pixels, or none when the marker isn't there. */
QList<QRgb> readPalette(const uchar *in, const uchar *end)
{
    if (in == end || *in != PaletteMarker || end - in < 2)
        return {};
    ++in;
    // A table cut short keeps what is there; the rest stays black.
    QList<QRgb> colours(256, qRgb(0, 0, 0));
    for (int i = 0; i < 256 && end - in >= 3; ++i, in += 3)
        colours[i] = qRgb(in[0], in[1], in[2]);
    return colours;
}

/** Writes the byte for `count` repeats of `value` as PCX codes them. */
inline void writeRun(uchar *&out, uchar value, int count)
{
    if (count > 1 || value >= RunFlag)
        *out++ = uchar(RunFlag + count);
    *out++ = value;
}

} // namespace

QImage decodePcx(const QByteArray &data)
{
    PcxHeader header;
    int format = 0;
    if (!readHeader(data, &header, &format))
        return QImage();
    const int planes = header.planes;
    const qsizetype encodedBytes = header.bytesPerLine * planes * header.height;
    if (!dataCanFill(encodedBytes, data.size() - HeaderSize, MaxRun, 2))
        return QImage();
    QImage image(header.width, header.height, QImage::Format(format));
    if (image.isNull())
        return image;
    // RGB pixels keep their unused fourth byte opaque; the padding of
    // indexed lines is 0 like that of every other decoder.
    if (format == QImageInfo::RGB)
        image.fill(0xFF000000u);
    else
        std::memset(image.bits(), 0, size_t(image.sizeInBytes()));

    // Planes interleave into the bytes of a pixel: three planes fill the
    // first three of its four bytes.
    const int step = planes == 3 ? 4 : planes;
    const qsizetype stride = image.bytesPerLine();
    uchar *bits = image.bits();

    const uchar *in = reinterpret_cast<const uchar *>(data.constData()) + HeaderSize;
    const uchar *const end = reinterpret_cast<const uchar *>(data.constData()) + data.size();
    int y = 0;
    int plane = 0;
    qsizetype x = 0;
    uchar *line = bits;
    while (y < header.height && in < end) {
        uchar value = *in++;
        int count = 1;
        if (value >= RunFlag) {
            if (in == end)
                break;
            count = value & MaxRun;
            value = *in++;
        }
        for (; count > 0 && y < header.height; --count) {
            // Bytes beyond the width pad the line to the header's length.
            if (x < header.width)
                line[x * step + plane] = value;
            if (++x == header.bytesPerLine) {
                x = 0;
                if (++plane == planes) {
                    plane = 0;
                    line += stride;
                    ++y;
                }
            }
        }
    }

    if (header.bitsPerPixel * planes == 8) {
        if (y == header.height)
            image.setColorTable(readPalette(in, end));
    } else if (format != QImageInfo::Indexed) {
        image = std::move(image).rgbSwapped();
    }
    return image;
}

QByteArray encodePcx(const QImage &source)
{
    // Sizes and bytes per line are 16-bit fields.
    if (source.isNull() || source.width() > 0xFFFF || source.height() > 0xFFFF)
        return QByteArray();
    QImage image;
    switch (source.format()) {
    case QImage::Format_Indexed8:
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
        image = source;
        break;
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
        image = source.convertToFormat(QImage::Format_Indexed8);
        break;
    default:
        image = source.convertToFormat(source.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        break;
    }
    const int planes = QImageInfo::depthOfFormat(image.format()) / 8;
    const int step = planes == 3 ? 4 : planes;
    // PCX keeps red first, the toolkit keeps blue first in memory.
    if (planes > 1)
        image = std::move(image).rgbSwapped();

    const qsizetype width = image.width();
    // At worst every byte becomes a pair; plus the header and the colour table.
    QByteArray encoded(HeaderSize + width * planes * image.height() * 2 + 769, '\0');
    uchar *const start = reinterpret_cast<uchar *>(encoded.data());
    uchar *h = start;
    h[0] = Manufacturer;
    h[1] = Version;
    h[2] = 1;
    h[3] = 8;
    qToLittleEndian<quint16>(quint16(width - 1), h + 8);
    qToLittleEndian<quint16>(quint16(image.height() - 1), h + 10);
    h[65] = uchar(planes);
    qToLittleEndian<quint16>(quint16(width), h + 66);
    qToLittleEndian<quint16>(1, h + 68);

    uchar *out = start + HeaderSize;
    for (int y = 0; y < image.height(); ++y) {
        const uchar *line = image.constScanLine(y);
        for (int plane = 0; plane < planes; ++plane) {
            const uchar *px = line + plane;
            qsizetype x = 0;
            while (x < width) {
                const uchar value = px[x * step];
                int count = 1;
                while (x + count < width && count < MaxRun && px[(x + count) * step] == value)
                    ++count;
                writeRun(out, value, count);
                x += count;
            }
        }
    }
    if (planes == 1) {
        *out++ = PaletteMarker;
        const QList<QRgb> colours = image.colorTable();
        for (int i = 0; i < 256; ++i) {
            const QRgb colour = i < colours.size() ? colours.at(i) : qRgb(0, 0, 0);
            *out++ = uchar(qRed(colour));
            *out++ = uchar(qGreen(colour));
            *out++ = uchar(qBlue(colour));
        }
    }
    encoded.truncate(out - start);
    return encoded;
}
