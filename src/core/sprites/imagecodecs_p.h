#pragma once

// Helpers shared by the codecs; not part of the core's interface.

#include <QByteArray>
#include <QImage>

#include <limits>

namespace ImageCodecsPrivate {

/**
 * Whether `dataSize` bytes of an encoding that writes at most
 * `maxOut` bytes for every `perIn` bytes of data could fill `outputBytes`.
 * Decoders ask this before they allocate, so that a header can't make them
 * allocate more than the data behind it could ever justify.
 */
inline bool dataCanFill(qsizetype outputBytes, qsizetype dataSize, qsizetype maxOut, qsizetype perIn)
{
    // Rounded up: a last odd byte may still be a pixel of its own.
    const qsizetype units = (dataSize + perIn - 1) / perIn;
    return outputBytes >= 0 && units <= (std::numeric_limits<qsizetype>::max)() / maxOut
           && outputBytes <= units * maxOut;
}

/**
 * The first `lineBytes` bytes of every line of `image`, one line after the
 * other with nothing between them.
 */
QByteArray packedLines(const QImage &image, qsizetype lineBytes);

} // namespace ImageCodecsPrivate
