#pragma once

#include "qimageinfo.h"

#include <QByteArray>

/**
 * A decoder of the image store: turns the bytes of one encoding into
 * pixels.
 *
 * The filters are process-wide objects in a table indexed by the filter
 * number that the store keeps beside each entry; see streamCacheFilter().
 */
class QStreamCacheFilter
{
public:
    /** The filter numbers. 0 is not a filter: the data is raw pixels. */
    enum Number { Raw = 0, PCX = 1, RLE8 = 2, RLE5 = 3, LZ5 = 4, PNG = 5, Count };

    virtual ~QStreamCacheFilter() = default;

    /**
     * Decodes `data` into exactly info.byteCount() bytes of pixels in the
     * toolkit's line layout, or gives an empty array when the data can't
     * be decoded into an image of that size and format.
     */
    virtual QByteArray decode(const QByteArray &data, const QImageInfo &info) const = 0;
};

/** Filter 1: a whole PCX file. */
class QPCXCacheFilter : public QStreamCacheFilter
{
public:
    QByteArray decode(const QByteArray &data, const QImageInfo &info) const override;
};

/** Filter 2: RLE8. */
class QRLE8CacheFilter : public QStreamCacheFilter
{
public:
    QByteArray decode(const QByteArray &data, const QImageInfo &info) const override;
};

/** Filter 3: RLE5. */
class QRLE5CacheFilter : public QStreamCacheFilter
{
public:
    QByteArray decode(const QByteArray &data, const QImageInfo &info) const override;
};

/** Filter 4: LZ5. */
class QLZ5CacheFilter : public QStreamCacheFilter
{
public:
    QByteArray decode(const QByteArray &data, const QImageInfo &info) const override;
};

/** Filter 5: a whole PNG file. */
class QPNGCacheFilter : public QStreamCacheFilter
{
public:
    QByteArray decode(const QByteArray &data, const QImageInfo &info) const override;
};

/**
 * The filter of `number` from the process-wide table, which is filled on
 * first use and lives until the process ends. Null for 0 (raw pixels) and
 * for numbers that name no filter.
 */
const QStreamCacheFilter *streamCacheFilter(int number);
