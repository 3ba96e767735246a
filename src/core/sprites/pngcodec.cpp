// PNG through the toolkit's reader and writer.

#include "imagecodecs.h"
#include "imagecodecs_p.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>

using namespace ImageCodecsPrivate;

namespace {

// Deflate writes at most 1032 bytes for every byte of data.
constexpr qsizetype MaxInflation = 1032;

} // namespace

QImage decodePng(const QByteArray &data)
{
    if (data.isEmpty())
        return QImage();
    QBuffer buffer;
    buffer.setData(data);
    if (!buffer.open(QIODevice::ReadOnly))
        return QImage();
    QImageReader reader(&buffer, "PNG");
    // The header's size is known before anything is allocated: refuse what
    // the data could never fill, counting one bit per pixel, the least a PNG
    // stores.
    const QSize size = reader.size();
    if (!size.isValid()
        || !dataCanFill((qsizetype(size.width()) * size.height() + 7) / 8, data.size(), MaxInflation, 1))
        return QImage();
    return reader.read();
}

QByteArray encodePng(const QImage &source)
{
    if (source.isNull())
        return QByteArray();
    QImage image = source;
    if (image.format() == QImage::Format_Indexed8)
        image.setColorTable(QList<QRgb>(256, 0xFF000000u));
    QByteArray encoded;
    QBuffer buffer(&encoded);
    if (!buffer.open(QIODevice::WriteOnly))
        return QByteArray();
    QImageWriter writer(&buffer, "PNG");
    if (!writer.write(image))
        return QByteArray();
    return encoded;
}
