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

    // Writes a run across line ends; false once the image is full.
    auto writeRun = [&](uchar value, qsizetype count) {
        while (count > 0) {
            if (out == lineEnd) {
                if (line == lastLine)
                    return false;
                line += stride;
                lineEnd = line + lineBytes;
                out = line;
            }
            const qsizetype n = qMin(count, qsizetype(lineEnd - out));
            std::memset(out, value, size_t(n));
            out += n;
            count -= n;
        }
        return true;
    };

    const uchar *in = reinterpret_cast<const uchar *>(data.constData());
    const uchar *const end = in + data.size();
    while (in < end) {
        // Away from the ends of the data and of the line, a packet is read
        // without branches, and written as sixteen bytes of its value, of
        // which those beyond it are written over by the pixels that follow.
        // Single pixels and short runs, nearly all packets, take just that.
        while (end - in >= 2 && lineEnd - out >= 16) {
            // Masks rather than conditions: the kind of packet is as good as
            // random, and a mispredicted branch costs more than the packet.
            const uint b = in[0];
            const uint run = (b & RunMask) == RunFlag;
            const uint isRun = 0u - run;
            const uint value = (in[1] & isRun) | (b & ~isRun);
            const qsizetype count = qsizetype(((b & MaxRun) & isRun) | (1u & ~isRun));
            in += 1 + run;
            const quint64 word = value * Q_UINT64_C(0x0101010101010101);
            std::memcpy(out, &word, 8);
            std::memcpy(out + 8, &word, 8);
            if (count > 16 && !writeRun(uchar(value), count))
                return pixels;
            out += count > 16 ? 0 : count;
        }
        if (in == end)
            break;
        uchar value = *in++;
        qsizetype count = 1;
        if ((value & RunMask) == RunFlag) {
            if (in == end)
                break;
            count = value & MaxRun;
            value = *in++;
        }
        if (!writeRun(value, count))
            return pixels;
    }
    // The data ended early: nothing follows to write over the bytes stored
    // beyond the last packet.
    std::memset(out, 0, size_t(qMin<qsizetype>(16, lineEnd - out)));
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
