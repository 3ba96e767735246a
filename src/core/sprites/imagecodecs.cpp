#include "imagecodecs.h"
#include "imagecodecs_p.h"

#include <cstring>

QByteArray imagePixels(const QImage &image)
{
    if (image.isNull())
        return QByteArray();
    QByteArray pixels(reinterpret_cast<const char *>(image.constBits()), image.sizeInBytes());
    const qsizetype stride = image.bytesPerLine();
    const qsizetype lineBytes = (qsizetype(image.width()) * image.depth() + 7) / 8;
    if (lineBytes < stride) {
        for (char *line = pixels.data(); line < pixels.data() + pixels.size(); line += stride)
            std::memset(line + lineBytes, 0, size_t(stride - lineBytes));
    }
    return pixels;
}

QImage imageFromPixels(const QByteArray &pixels, const QImageInfo &info)
{
    if (pixels.isEmpty() || pixels.size() != info.byteCount())
        return QImage();
    QImage image(info.width, info.height, QImage::Format(info.format));
    if (image.isNull() || image.sizeInBytes() != pixels.size())
        return QImage();
    std::memcpy(image.bits(), pixels.constData(), size_t(pixels.size()));
    return image;
}

namespace ImageCodecsPrivate {

QByteArray packedLines(const QImage &image, qsizetype lineBytes)
{
    const qsizetype height = image.height();
    if (lineBytes <= 0 || height <= 0 || lineBytes > image.bytesPerLine())
        return QByteArray();
    // Nothing to gather when the lines already follow each other.
    if (lineBytes == image.bytesPerLine())
        return QByteArray(reinterpret_cast<const char *>(image.constBits()), image.sizeInBytes());
    QByteArray packed(lineBytes * height, Qt::Uninitialized);
    char *out = packed.data();
    for (qsizetype y = 0; y < height; ++y, out += lineBytes)
        std::memcpy(out, image.constScanLine(int(y)), size_t(lineBytes));
    return packed;
}

} // namespace ImageCodecsPrivate
