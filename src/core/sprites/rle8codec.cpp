// RLE8: a byte whose top two bits are 01 is a run, its low six bits the
// count and the next byte the value; any other byte is one pixel of its own.

#include "imagecodecs.h"
#include "imagecodecs_p.h"

#include <cstring>

using namespace ImageCodecsPrivate;

namespace {

constexpr uchar RunFlag = 0x40;
constexpr uchar RunMask = 0xC0;
constexpr int MaxRun = 63;

} // namespace

QByteArray decodeRle8(const QByteArray &data, const QImageInfo &info)
{
    qsizetype stride = info.bytesPerLine();
    const qsizetype size = stride * info.height;
    // A format without a depth has no lines to wrap at: the bytes run on
    // through the whole buffer.
    qsizetype lineBytes = qsizetype(info.depth()) * info.width / 8;
    if (lineBytes <= 0)
        lineBytes = stride = size;
    if (data.isEmpty() || size <= 0 || !dataCanFill(lineBytes * (size / stride), data.size(), MaxRun, 2))
        return QByteArray();
    QByteArray pixels(size, '\0');
    uchar *line = reinterpret_cast<uchar *>(pixels.data());
    uchar *const lastLine = line + size - stride;
    uchar *out = line;
    uchar *lineEnd = line + lineBytes;

    const uchar *in = reinterpret_cast<const uchar *>(data.constData());
    const uchar *const end = in + data.size();
    while (in < end) {
        uchar value = *in++;
        if ((value & RunMask) != RunFlag) {
            // The common case of a single pixel in the middle of a line.
            if (out < lineEnd) {
                *out++ = value;
                continue;
            }
            if (line == lastLine)
                break;
            line += stride;
            lineEnd = line + lineBytes;
            out = line;
            *out++ = value;
            continue;
        }
        if (in == end)
            break;
        qsizetype count = value & MaxRun;
        value = *in++;
        while (count > 0) {
            if (out == lineEnd) {
                if (line == lastLine)
                    return pixels;
                line += stride;
                lineEnd = line + lineBytes;
                out = line;
            }
            const qsizetype n = qMin(count, qsizetype(lineEnd - out));
            std::memset(out, value, size_t(n));
            out += n;
            count -= n;
        }
    }
    return pixels;
}

QByteArray encodeRle8(const QImage &image)
{
    const int depth = QImageInfo::depthOfFormat(image.format());
    const QByteArray packed = packedLines(image, qsizetype(depth) * image.width() / 8);
    if (packed.isEmpty())
        return QByteArray();

    // At worst every byte becomes a pair.
    QByteArray encoded(packed.size() * 2, Qt::Uninitialized);
    const uchar *in = reinterpret_cast<const uchar *>(packed.constData());
    const uchar *const end = in + packed.size();
    uchar *out = reinterpret_cast<uchar *>(encoded.data());
    while (in < end) {
        const uchar value = *in;
        const uchar *runEnd = in + 1;
        const uchar *const limit = qMin(end, in + MaxRun);
        while (runEnd < limit && *runEnd == value)
            ++runEnd;
        const int count = int(runEnd - in);
        in = runEnd;
        // A lone value that looks like a run byte must be written as a run of one.
        if (count == 1 && (value & RunMask) != RunFlag) {
            *out++ = value;
        } else {
            *out++ = uchar(RunFlag + count);
            *out++ = value;
        }
    }
    encoded.truncate(out - reinterpret_cast<uchar *>(encoded.data()));
    return encoded;
}
