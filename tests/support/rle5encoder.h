#pragma once

// An RLE5 writer for tests and benchmarks only: nothing in the program
// saves RLE5, and no sprite file of the corpus holds it, so test data has
// to be made. It writes what the engine reads: a long run of any colour,
// then up to 127 short runs of 5-bit colours behind one control byte.

#include <QByteArray>

namespace Rle5Encoder {

/** Encodes `pixels`, one byte each with nothing between lines. */
inline QByteArray encode(const QByteArray &pixels)
{
    QByteArray out;
    const qsizetype n = pixels.size();
    auto runAt = [&](qsizetype i, qsizetype max) {
        qsizetype run = 1;
        while (i + run < n && run < max && pixels[i + run] == pixels[i])
            ++run;
        return run;
    };
    qsizetype i = 0;
    while (i < n) {
        const uchar colour = uchar(pixels[i]);
        const qsizetype run = runAt(i, 256);
        out.append(char(run - 1));
        const qsizetype control = out.size();
        out.append('\0');
        if (colour != 0)
            out.append(char(colour));
        i += run;
        int packets = 0;
        while (i < n && packets < 127 && uchar(pixels[i]) < 32) {
            const qsizetype length = runAt(i, 8);
            out.append(char(uchar(pixels[i]) | ((length - 1) << 5)));
            i += length;
            ++packets;
        }
        out[control] = char(packets | (colour != 0 ? 0x80 : 0));
    }
    return out;
}

} // namespace Rle5Encoder
