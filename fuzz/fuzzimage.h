#pragma once

// What the image decoder fuzz targets share: the input starts with the
// size and format an SFF sprite node would give (width and height as
// 16-bit little-endian numbers, one format byte), and the encoded bytes
// follow. A failed check traps, so that the fuzzer keeps the input.

#include "core/sprites/imagecodecs.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QtEndian>

#include <cstddef>
#include <cstdint>

namespace FuzzImage {

constexpr size_t HeaderSize = 5;
// Round trips re-encode what was decoded; big images would only slow the fuzzer.
constexpr qsizetype RoundTripPixels = 1 << 12;

inline void startApplication(const char *name)
{
    static int argc = 1;
    static char *argv[] = {const_cast<char *>(name), nullptr};
    static QCoreApplication application(argc, argv);
}

inline QImageInfo info(const uint8_t *data)
{
    static const int formats[] = {QImageInfo::Indexed, QImageInfo::RGB, QImageInfo::ARGB, QImageInfo::Monochrome};
    QImageInfo info;
    info.width = qFromLittleEndian<quint16>(data);
    info.height = qFromLittleEndian<quint16>(data + 2);
    info.format = formats[data[4] & 3];
    return info;
}

inline QByteArray payload(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data + HeaderSize), qsizetype(size - HeaderSize));
}

inline void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

/** Pixels from a decoder are nothing or exactly the image's bytes. */
inline void checkPixels(const QByteArray &pixels, const QImageInfo &info)
{
    check(pixels.isEmpty() || pixels.size() == info.byteCount());
}

/** Whether decoded indexed pixels are small enough to be encoded again. */
inline bool worthARoundTrip(const QByteArray &pixels, const QImageInfo &info)
{
    return !pixels.isEmpty() && info.format == QImageInfo::Indexed
           && qsizetype(info.width) * info.height <= RoundTripPixels;
}

/** Whether two images hold the same pixels inside their width. */
inline bool samePixels(const QImage &a, const QImage &b)
{
    return a.size() == b.size() && a.format() == b.format() && imagePixels(a) == imagePixels(b);
}

} // namespace FuzzImage
