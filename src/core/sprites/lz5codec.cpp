// LZ5: packets of 5-bit runs and of copies from earlier pixels, eight to a
// control byte whose bit i (lowest first) marks packet i as a copy.
//
// Run packet: one byte (length << 5) | colour for lengths 1 to 7; for
// longer runs the byte colour alone (top bits 0), then length - 8.
// Copy packet: a byte hi:2 lo:6. lo != 0 is a short copy of lo + 1 pixels
// whose distance - 1 is the next byte, except that every fourth short copy
// has no such byte: the top two bits of the three short copies before it
// and its own carry its distance - 1, highest bits first. lo == 0 is a long
// copy: distance - 1 is (hi << 8) | next byte, length - 3 the byte after.

#include "imagecodecs.h"
#include "imagecodecs_p.h"

#include <QtEndian>

#include <array>
#include <cstring>
#include <vector>

using namespace ImageCodecsPrivate;

namespace {

constexpr int ShortRunMax = 7;
constexpr int LongRunMax = 263;
constexpr int MaxDistance = 1024;
constexpr int ShortCopyMaxDistance = 256;
constexpr int ShortCopyMaxLength = 64;
constexpr int MaxCopy = 258;

/** Copies `length` bytes from `distance` behind `out`, with the overlap of a byte-by-byte copy. */
inline void copyBack(uchar *out, qsizetype distance, qsizetype length)
{
    const uchar *from = out - distance;
    if (distance >= length) {
        std::memcpy(out, from, size_t(length));
    } else if (distance == 1) {
        std::memset(out, *from, size_t(length));
    } else {
        // Each chunk of `distance` bytes reads only what the chunk before wrote.
        while (length > 0) {
            const qsizetype n = qMin(length, distance);
            std::memcpy(out, from, size_t(n));
            out += n;
            from += n;
            length -= n;
        }
    }
}

/** Decodes into `out`, width * height bytes with nothing between lines. */
void decodeLinear(const uchar *in, const uchar *const end, uchar *const start, uchar *const limit)
{
    uchar *out = start;
    uchar recycled = 0;
    int recycledCount = 0;
    while (in < end) {
        uint control = *in++;
        for (int packet = 0; packet < 8; ++packet, control >>= 1) {
            if (in == end)
                return;
            const uchar b = *in++;
            if (!(control & 1)) {
                qsizetype length = b >> 5;
                if (length == 0) {
                    if (in == end)
                        return;
                    length = qsizetype(*in++) + 8;
                }
                length = qMin(length, qsizetype(limit - out));
                std::memset(out, b & 0x1F, size_t(length));
                out += length;
            } else {
                const uint hi = b >> 6;
                const uint lo = b & 0x3F;
                qsizetype distance;
                qsizetype length;
                if (lo != 0) {
                    length = lo + 1;
                    if (recycledCount == 3) {
                        distance = qsizetype(hi | recycled) + 1;
                        recycled = 0;
                        recycledCount = 0;
                    } else {
                        recycled |= uchar(hi << ((3 - recycledCount) * 2));
                        ++recycledCount;
                        if (in == end)
                            return;
                        distance = qsizetype(*in++) + 1;
                    }
                } else {
                    if (end - in < 2)
                        return;
                    distance = qsizetype((hi << 8) | in[0]) + 1;
                    length = qsizetype(in[1]) + 3;
                    in += 2;
                }
                // A copy from before the first pixel has nothing to copy: the
                // stream is broken from here on.
                if (distance > out - start)
                    return;
                length = qMin(length, qsizetype(limit - out));
                copyBack(out, distance, length);
                out += length;
            }
            if (out == limit)
                return;
        }
    }
}

struct Packet
{
    bool isLZ = false;
    bool isShort = false;
    quint16 value = 0; // colour of a run, distance of a copy
    quint16 length = 0;
};

/**
 * The best earlier copy of the pixels at `p`: the longest that is worth a
 * copy packet, the nearest among equally long ones. Runs of one value are
 * never matched (the run packets do that), and neither is the distance 1.
 * Returns false when there is none.
 */
bool findMatch(const QByteArray &pixels, qsizetype p, Packet *match)
{
    if (p < 2)
        return false;
    const uchar *px = reinterpret_cast<const uchar *>(pixels.constData());
    const qsizetype total = pixels.size();
    const qsizetype maxLength = qMin<qsizetype>(MaxCopy, total - p);
    const uchar *here = px + p;

    // What a copy counts depends only on the pixels it copies, not on where
    // it copies from: the changes between neighbours and whether a run of
    // more than seven was among them. So they are counted once, for every
    // length, as the comparisons below need them.
    std::array<short, MaxCopy + 1> changesAt;
    std::array<bool, MaxCopy + 1> longRunAt;
    qsizetype counted = 0;
    int same = 0;
    int changes = 0;
    bool longRun = false;
    auto countUpTo = [&](qsizetype length) {
        for (; counted < length; ++counted) {
            if (counted == 0 || here[counted] == here[counted - 1]) {
                if (++same > 7)
                    longRun = true;
            } else {
                ++changes;
                same = 0;
            }
            changesAt[size_t(counted + 1)] = short(changes);
            longRunAt[size_t(counted + 1)] = longRun;
        }
    };
    // A copy no longer than the run at `p` has no change in it and is never
    // taken, and one no longer than the best so far is never better: a
    // distance is only worth comparing when its pixel behind both agrees.
    qsizetype firstChange = 1;
    while (firstChange < maxLength && here[firstChange] == here[0])
        ++firstChange;
    // The pixel behind the last reads as 0, as the terminator of the pixel
    // array would.
    auto after = [&](qsizetype length) { return p + length < total ? here[length] : uchar(0); };

    qsizetype best = 1;
    bool found = false;
    const qsizetype maxDistance = qMin<qsizetype>(MaxDistance, p);
    for (qsizetype d = 2; d <= maxDistance; ++d) {
        const qsizetype needed = qMax(best, firstChange);
        if (needed >= maxLength || here[needed] != here[needed - d])
            continue;
        qsizetype i = 0;
        while (i + 8 <= maxLength) {
            quint64 a;
            quint64 b;
            std::memcpy(&a, here + i, 8);
            std::memcpy(&b, here + i - d, 8);
            if (a != b) {
                i += qCountTrailingZeroBits(qFromLittleEndian(a ^ b)) / 8;
                break;
            }
            i += 8;
        }
        if (i + 8 > maxLength) {
            while (i < maxLength && here[i] == here[i - d])
                ++i;
        }
        if (i <= needed)
            continue;
        countUpTo(i);
        const int matchChanges = changesAt[size_t(i)];
        bool isShort;
        if (i <= ShortCopyMaxLength && d <= ShortCopyMaxDistance) {
            if (matchChanges <= 1 && after(i) == here[i - 1])
                continue;
            isShort = true;
        } else if ((matchChanges == 2 && longRunAt[size_t(i)]) || (i >= 4 && matchChanges >= 3)) {
            isShort = false;
        } else {
            continue;
        }
        *match = Packet{true, isShort, quint16(d), quint16(i)};
        best = i;
        found = true;
    }
    return found;
}

std::vector<Packet> buildPackets(const QByteArray &pixels, bool useLZ)
{
    std::vector<Packet> packets;
    const uchar *px = reinterpret_cast<const uchar *>(pixels.constData());
    const qsizetype total = pixels.size();
    qsizetype p = 0;
    while (p < total) {
        Packet packet;
        if (useLZ && findMatch(pixels, p, &packet)) {
            packets.push_back(packet);
            p += packet.length;
            continue;
        }
        const uchar colour = px[p];
        qsizetype length = 1;
        while (p + length < total && px[p + length] == colour && length < ShortRunMax)
            ++length;
        if (useLZ && length == ShortRunMax && findMatch(pixels, p + length, &packet)) {
            packets.push_back(Packet{false, true, colour, quint16(length)});
            packets.push_back(packet);
            p += length + packet.length;
            continue;
        }
        while (p + length < total && px[p + length] == colour && length < LongRunMax)
            ++length;
        packets.push_back(Packet{false, length < 8, colour, quint16(length)});
        p += length;
    }
    return packets;
}

QByteArray writePackets(std::vector<Packet> &packets)
{
    QByteArray encoded;
    // At most three bytes a packet and a control byte for every eight.
    encoded.reserve(qsizetype(packets.size()) * 3 + qsizetype(packets.size()) / 8 + 1);
    const size_t count = packets.size();
    int group = 0;
    for (size_t i = 0; i < count; ++i) {
        if (i % 8 == 0) {
            uchar control = 0;
            for (size_t bit = 0; bit < 8 && i + bit < count; ++bit) {
                if (packets[i + bit].isLZ)
                    control |= uchar(1u << bit);
            }
            encoded.append(char(control));
        }
        Packet &packet = packets[i];
        if (!packet.isLZ) {
            if (packet.isShort) {
                encoded.append(char((packet.value & 0x1F) | (packet.length << 5)));
            } else {
                encoded.append(char(packet.value & 0x1F));
                encoded.append(char(packet.length - 8));
            }
            continue;
        }
        if (!packet.isShort) {
            const uint distance = packet.value - 1u;
            encoded.append(char((distance >> 8) << 6));
            encoded.append(char(distance & 0xFF));
            encoded.append(char(packet.length - 3));
            continue;
        }
        // Short copies go in groups of four; the group's opener stores
        // length - 1 and distance - 1 in all four, and the distance of the
        // fourth moves into the top bits of the four length bytes.
        if (++group == 1) {
            Packet *members[4] = {&packet, nullptr, nullptr, nullptr};
            int found = 1;
            for (size_t j = i + 1; j < count && found < 4; ++j) {
                if (packets[j].isLZ && packets[j].isShort)
                    members[found++] = &packets[j];
            }
            for (int k = 0; k < found; ++k) {
                --members[k]->length;
                --members[k]->value;
            }
            if (found == 4) {
                const uint last = members[3]->value;
                members[0]->length |= last & 0xC0;
                members[1]->length |= (last & 0x30) << 2;
                members[2]->length |= (last & 0x0C) << 4;
                members[3]->length |= (last & 0x03) << 6;
            }
        }
        encoded.append(char(packet.length));
        if (group == 4)
            group = 0;
        else
            encoded.append(char(packet.value));
    }
    return encoded;
}

} // namespace

QByteArray decodeLz5(const QByteArray &data, const QImageInfo &info)
{
    const qsizetype width = info.width;
    const qsizetype stride = info.bytesPerLine();
    const qsizetype size = stride * info.height;
    const qsizetype pixelCount = width * info.height;
    if (data.isEmpty() || size <= 0 || stride < width || !dataCanFill(pixelCount, data.size(), LongRunMax, 2))
        return QByteArray();
    const uchar *in = reinterpret_cast<const uchar *>(data.constData());
    const uchar *end = in + data.size();

    QByteArray pixels(size, '\0');
    uchar *out = reinterpret_cast<uchar *>(pixels.data());
    // Copies reach across line ends, so the lines are decoded without their
    // padding and spread out afterwards, unless they have none.
    if (stride == width) {
        decodeLinear(in, end, out, out + pixelCount);
        return pixels;
    }
    QByteArray linear(pixelCount, '\0');
    uchar *const start = reinterpret_cast<uchar *>(linear.data());
    decodeLinear(in, end, start, start + pixelCount);
    const uchar *from = start;
    for (qsizetype y = 0; y < info.height; ++y, from += width, out += stride)
        std::memcpy(out, from, size_t(width));
    return pixels;
}

QByteArray encodeLz5(const QImage &image, bool useLZ)
{
    if (image.format() != QImage::Format_Indexed8)
        return QByteArray();
    const QByteArray pixels = packedLines(image, image.width());
    if (pixels.isEmpty())
        return QByteArray();
    std::vector<Packet> packets = buildPackets(pixels, useLZ);
    return writePackets(packets);
}
