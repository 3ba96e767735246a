#include "qstreamcachefilter.h"

#include "imagecodecs.h"

#include <QImage>

#include <array>
#include <memory>

namespace {

/**
 * The pixels of a decoded file image, when it is what the entry says it
 * is. A PCX or PNG carries its own size, and bytes of any other size
 * would be read as the wrong image, or past the end, by whoever trusts the
 * entry's size.
 */
QByteArray pixelsMatching(QImage image, const QImageInfo &info)
{
    if (image.isNull() || image.width() != info.width || image.height() != info.height)
        return QByteArray();
    // A PNG of the same sprite may come as another pixel format (a grey or
    // 1-bit PNG for an indexed sprite); indexes survive the conversion.
    if (image.format() != QImage::Format(info.format))
        image = image.convertToFormat(QImage::Format(info.format));
    return imagePixels(image);
}

/** The filters, indexed by number; built once, freed at process end. */
const std::array<std::unique_ptr<QStreamCacheFilter>, QStreamCacheFilter::Count> &filterTable()
{
    static const std::array<std::unique_ptr<QStreamCacheFilter>, QStreamCacheFilter::Count> table = {
        nullptr,
        std::make_unique<QPCXCacheFilter>(),
        std::make_unique<QRLE8CacheFilter>(),
        std::make_unique<QRLE5CacheFilter>(),
        std::make_unique<QLZ5CacheFilter>(),
        std::make_unique<QPNGCacheFilter>(),
    };
    return table;
}

} // namespace

QByteArray QPCXCacheFilter::decode(const QByteArray &data, const QImageInfo &info) const
{
    return pixelsMatching(decodePcx(data), info);
}

QByteArray QRLE8CacheFilter::decode(const QByteArray &data, const QImageInfo &info) const
{
    return decodeRle8(data, info);
}

QByteArray QRLE5CacheFilter::decode(const QByteArray &data, const QImageInfo &info) const
{
    return decodeRle5(data, info);
}

QByteArray QLZ5CacheFilter::decode(const QByteArray &data, const QImageInfo &info) const
{
    return decodeLz5(data, info);
}

QByteArray QPNGCacheFilter::decode(const QByteArray &data, const QImageInfo &info) const
{
    return pixelsMatching(decodePng(data), info);
}

const QStreamCacheFilter *streamCacheFilter(int number)
{
    if (number <= QStreamCacheFilter::Raw || number >= QStreamCacheFilter::Count)
        return nullptr;
    return filterTable()[size_t(number)].get();
}
