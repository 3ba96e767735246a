#include "qimageinfo.h"

#include <QImage>

int QImageInfo::depthOfFormat(int format)
{
    switch (format) {
    case Indexed:
        return 8;
    case RGB:
        return 24;
    case ARGB:
        return 32;
    default:
        return 0;
    }
}

int QImageInfo::formatOfDepth(int depth)
{
    switch (depth) {
    case 5:
    case 8:
        return Indexed;
    case 24:
        return RGB;
    case 32:
        return ARGB;
    default:
        return Auto;
    }
}

qsizetype QImageInfo::bytesPerLine() const
{
    if (format <= QImage::Format_Invalid || format >= QImage::NImageFormats)
        return 0;
    const int bits = QImage::toPixelFormat(QImage::Format(format)).bitsPerPixel();
    // The same rounding as QImage, so that decoded bytes can be copied into an image whole.
    return ((qsizetype(width) * bits + 31) / 32) * 4;
}
