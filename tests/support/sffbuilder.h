#pragma once

// Sprite files made byte by byte, for tests, fuzz seeds and benchmarks:
// well formed ones with what no tool of ours writes (RLE5, raw pixels), and
// broken ones with exactly the fault a test wants.

#include <QByteArray>
#include <QList>
#include <QtEndian>

namespace SffBuilder {

inline void put32(QByteArray &out, quint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.append(bytes, 4);
}

inline void put16(QByteArray &out, quint16 value)
{
    char bytes[2];
    qToLittleEndian(value, bytes);
    out.append(bytes, 2);
}

inline quint32 u32(const QByteArray &bytes, qsizetype at)
{
    return at + 4 <= bytes.size() ? qFromLittleEndian<quint32>(bytes.constData() + at) : 0;
}

inline quint16 u16(const QByteArray &bytes, qsizetype at)
{
    return at + 2 <= bytes.size() ? qFromLittleEndian<quint16>(bytes.constData() + at) : 0;
}

struct Palette
{
    int group = 0;
    int index = 0;
    int colorCount = 256;
    int link = 0;
    /** The colour bytes; empty for a linked palette. */
    QByteArray colors;
};

struct Sprite
{
    int group = 0;
    int index = 0;
    int width = 0;
    int height = 0;
    int x = 0;
    int y = 0;
    int link = 0;
    int format = 2;
    int depth = 8;
    /** The encoded bytes, without the size in front; empty for a linked sprite. */
    QByteArray data;
    int palette = 0;
    int flags = 0;
    /** When not negative, the offset and the length written instead of the true ones. */
    qint64 offset = -1;
    qint64 length = -1;
};

/** 256 colours of four bytes: a ramp, with `alpha` on every entry. */
inline QByteArray colors(int seed, uchar alpha = 255)
{
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(char(i)).append(char(i * 3 + seed)).append(char(255 - i)).append(char(alpha));
    return bytes;
}

/**
 * A version 2 file. `spriteCount` and `paletteCount`, when not negative,
 * replace the true counts in the header.
 */
inline QByteArray v2(quint32 version, const QList<Palette> &palettes, const QList<Sprite> &sprites,
                     qint64 spriteCount = -1, qint64 paletteCount = -1)
{
    QByteArray ldata;
    QByteArray tdata;
    QByteArray paletteNodes;
    for (const Palette &p : palettes) {
        put16(paletteNodes, quint16(p.group));
        put16(paletteNodes, quint16(p.index));
        put16(paletteNodes, quint16(p.colorCount));
        put16(paletteNodes, quint16(p.link));
        put32(paletteNodes, quint32(ldata.size()));
        put32(paletteNodes, quint32(p.colors.size()));
        ldata.append(p.colors);
    }
    QByteArray spriteNodes;
    for (const Sprite &s : sprites) {
        QByteArray &block = (s.flags & 1) ? tdata : ldata;
        quint32 offset = quint32(block.size());
        quint32 length = 0;
        if (!s.data.isEmpty()) {
            // Raw pixels come without the size in front.
            if (s.format != 0)
                put32(block, quint32(s.width * s.height * (s.depth == 5 ? 8 : s.depth) / 8));
            block.append(s.data);
            length = quint32(block.size()) - offset;
        }
        put16(spriteNodes, quint16(s.group));
        put16(spriteNodes, quint16(s.index));
        put16(spriteNodes, quint16(s.width));
        put16(spriteNodes, quint16(s.height));
        put16(spriteNodes, quint16(s.x));
        put16(spriteNodes, quint16(s.y));
        put16(spriteNodes, quint16(s.link));
        spriteNodes.append(char(s.format)).append(char(s.depth));
        put32(spriteNodes, s.offset >= 0 ? quint32(s.offset) : offset);
        put32(spriteNodes, s.length >= 0 ? quint32(s.length) : length);
        put16(spriteNodes, quint16(s.palette));
        put16(spriteNodes, quint16(s.flags));
    }
    const quint32 firstSprite = 512 + quint32(paletteNodes.size());
    const quint32 ldataAt = firstSprite + quint32(spriteNodes.size());
    QByteArray out("ElecbyteSpr", 12);
    put32(out, version);
    put32(out, 0);
    put32(out, 0);
    put32(out, version);
    put32(out, 0);
    put32(out, 0);
    put32(out, firstSprite);
    put32(out, spriteCount >= 0 ? quint32(spriteCount) : quint32(sprites.size()));
    put32(out, 512);
    put32(out, paletteCount >= 0 ? quint32(paletteCount) : quint32(palettes.size()));
    put32(out, ldataAt);
    put32(out, quint32(ldata.size()));
    put32(out, ldataAt + quint32(ldata.size()));
    put32(out, quint32(tdata.size()));
    out.resize(512, '\0');
    return out + paletteNodes + spriteNodes + ldata + tdata;
}

struct Subfile
{
    int group = 0;
    int index = 0;
    int x = 0;
    int y = 0;
    int link = 0;
    bool samePalette = false;
    /** A PCX file; empty for a linked sprite. */
    QByteArray pcx;
    /** When not negative, the length field written instead of the true one. */
    qint64 length = -1;
    /** When not negative, the next offset written instead of the true one. */
    qint64 next = -1;
};

/** A version 1.01 file; `count`, when not negative, replaces the number of images. */
inline QByteArray v1(const QList<Subfile> &subfiles, qint64 count = -1)
{
    QByteArray out("ElecbyteSpr", 12);
    put32(out, 0x01000100);
    put32(out, 1);
    put32(out, count >= 0 ? quint32(count) : quint32(subfiles.size()));
    put32(out, 512);
    put32(out, 32);
    out.resize(512, '\0');
    for (const Subfile &s : subfiles) {
        const quint32 next = quint32(out.size() + 32 + s.pcx.size());
        put32(out, s.next >= 0 ? quint32(s.next) : next);
        put32(out, s.length >= 0 ? quint32(s.length) : quint32(s.pcx.size()));
        put16(out, quint16(s.x));
        put16(out, quint16(s.y));
        put16(out, quint16(s.group));
        put16(out, quint16(s.index));
        put16(out, quint16(s.link));
        out.append(char(s.samePalette ? 1 : 0));
        out.append(13, '\0');
        out.append(s.pcx);
    }
    return out;
}

} // namespace SffBuilder
