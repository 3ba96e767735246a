// RLE8: a byte whose top two bits are 01 is a run, its low six bits the
// count and the next byte the value; any other byte is one pixel of its own.

#include "imagecodecs.h"
#include "imagecodecs_p.h"

#include <QtAlgorithms>

#include <cstring>

#if defined(__SSE2__) || defined(_M_X64) || (defined(_M_IX86_FP) && _M_IX86_FP >= 2)
#include <emmintrin.h>
#define KESTRADA_RLE8_SSE2 1
#endif

using namespace ImageCodecsPrivate;

namespace {

constexpr uchar RunFlag = 0x40;
constexpr uchar RunMask = 0xC0;
constexpr int MaxRun = 63;

} // namespace

namespace {

/**
 * Decodes RLE8 packets into [out, outEnd) as one stretch of pixels; runs
 * span what would be line ends. Returns where the data ended; the rest of
 * the buffer is left as it was.
 */
uchar *decodeFlat(const uchar *in, const uchar *const end, uchar *out, uchar *const outEnd)
{
#ifdef KESTRADA_RLE8_SSE2
    // Thirty-two bytes at a time. Two compares find every run flag in them;
    // the runs are then taken one after the other from that mask, so that
    // the next run's place comes from a register and not from a load that
    // waits for the last one. Each stretch of single pixels is stored as
    // thirty-two bytes, each run as sixteen (or sixty-four) bytes of its value:
    // what lands beyond a packet is written over by what follows, and the
    // buffer keeps room for a whole run.
    const __m128i flagMask = _mm_set1_epi8(char(RunMask));
    const __m128i flag = _mm_set1_epi8(char(RunFlag));
    const auto load = [](const uchar *at) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(at)); };
    const auto store = [](uchar *at, __m128i bytes) { _mm_storeu_si128(reinterpret_cast<__m128i *>(at), bytes); };
    const auto flags = [&](__m128i bytes) {
        return quint32(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_and_si128(bytes, flagMask), flag)));
    };
    while (end - in >= 66 && outEnd - out >= 32 + 64) {
        const __m128i low = load(in);
        const __m128i high = load(in + 16);
        quint32 runs = flags(low) | (flags(high) << 16);
        store(out, low);
        store(out + 16, high);
        if (runs == 0) {
            in += 32;
            out += 32;
            continue;
        }
        // The first byte of the window not yet taken.
        int next = 0;
        for (;;) {
            const int at = int(qCountTrailingZeroBits(runs));
            out += at - next;
            const int count = in[at] & MaxRun;
            const __m128i run = _mm_set1_epi8(char(in[at + 1]));
            store(out, run);
            if (count > 16) {
                store(out + 16, run);
                store(out + 32, run);
                store(out + 48, run);
            }
            out += count;
            next = at + 2;
            // The run's value byte may look like a flag: it goes with the run.
            runs = next < 32 ? runs & (~0u << next) : 0;
            if (next >= 32 || outEnd - out < 32 + 64)
                break;
            store(out, load(in + next));
            store(out + 16, load(in + next + 16));
            if (runs == 0) {
                out += 32 - next;
                next = 32;
                break;
            }
        }
        in += next;
    }
#else
    // A packet is read without branches and written as sixteen bytes of its
    // value, of which those beyond it are written over by what follows.
    while (end - in >= 2 && outEnd - out >= 64) {
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
        if (count > 16)
            std::memset(out + 16, int(value), size_t(count - 16));
        out += count;
    }
#endif
    // Near the ends, packet by packet with every bound checked.
    while (in < end && out < outEnd) {
        uchar value = *in++;
        qsizetype count = 1;
        if ((value & RunMask) == RunFlag) {
            if (in == end)
                break;
            count = qMin<qsizetype>(value & MaxRun, outEnd - out);
            value = *in++;
        }
        std::memset(out, value, size_t(count));
        out += count;
    }
    return out;
}

} // namespace

QByteArray decodeRle8(const QByteArray &data, const QImageInfo &info)
{
    const qsizetype stride = info.bytesPerLine();
    const qsizetype size = stride * info.height;
    // A format without a depth has no lines to wrap at: the bytes run on
    // through the whole buffer.
    qsizetype lineBytes = qsizetype(info.depth()) * info.width / 8;
    if (lineBytes <= 0 || lineBytes > stride)
        lineBytes = stride;
    const qsizetype lines = stride > 0 ? size / stride : 0;
    const qsizetype pixelBytes = lineBytes * lines;
    if (data.isEmpty() || size <= 0 || !dataCanFill(pixelBytes, data.size(), MaxRun, 2))
        return QByteArray();

    const uchar *in = reinterpret_cast<const uchar *>(data.constData());
    const uchar *const end = in + data.size();
    // Every byte is written below: the decoded pixels, zeros after data that
    // ended early, and zeros in the padding of each line.
    QByteArray pixels(size, Qt::Uninitialized);
    uchar *const target = reinterpret_cast<uchar *>(pixels.data());
    if (lineBytes == stride) {
        // No padding between lines: the image is one stretch of pixels.
        uchar *const written = decodeFlat(in, end, target, target + size);
        // The data ended early: nothing followed to write over what the
        // fast path stored beyond the last packet.
        std::memset(written, 0, size_t(target + size - written));
        return pixels;
    }
    // Lines with padding: decode as one stretch, then give each line its place.
    QByteArray flat(pixelBytes, Qt::Uninitialized);
    uchar *const flatStart = reinterpret_cast<uchar *>(flat.data());
    uchar *const written = decodeFlat(in, end, flatStart, flatStart + pixelBytes);
    std::memset(written, 0, size_t(flatStart + pixelBytes - written));
    for (qsizetype line = 0; line < lines; ++line) {
        uchar *const row = target + line * stride;
        std::memcpy(row, flatStart + line * lineBytes, size_t(lineBytes));
        std::memset(row + lineBytes, 0, size_t(stride - lineBytes));
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
