#pragma once

// Sprite files made byte by byte, for tests, fuzz seeds and benchmarks:
// well formed ones with what no tool of ours writes (RLE5, raw pixels), and
// broken ones with exactly the fault a test wants.

#include <QByteArray>
#include <QList>
#include <QtEndian>

namespace SffBuilder {

/** Appends `value` in little-endian order. */
template <typename T>
inline void put(QByteArray &out, T value)
{
    char bytes[sizeof(T)];
    qToLittleEndian(value, bytes);
    out.append(bytes, sizeof(T));
}

/** The little-endian number of `size` bytes at `at`; 0 beyond the end. */
inline quint32 number(const QByteArray &bytes, qsizetype at, int size)
{
    quint32 value = 0;
    for (int i = size - 1; i >= 0 && at >= 0 && at + size <= bytes.size(); --i)
        value = value << 8 | uchar(bytes.at(at + i));
    return value;
}

inline quint32 u32(const QByteArray &bytes, qsizetype at)
{
    return number(bytes, at, 4);
}

inline quint16 u16(const QByteArray &bytes, qsizetype at)
{
    return quint16(number(bytes, at, 2));
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
    QByteArray blocks[2]; // ldata, tdata
    QByteArray paletteNodes;
    for (const Palette &p : palettes) {
        for (const int field : {p.group, p.index, p.colorCount, p.link})
            put(paletteNodes, quint16(field));
        put(paletteNodes, quint32(blocks[0].size()));
        put(paletteNodes, quint32(p.colors.size()));
        blocks[0].append(p.colors);
    }
    QByteArray spriteNodes;
    for (const Sprite &s : sprites) {
        QByteArray &block = blocks[s.flags & 1];
        const quint32 offset = quint32(block.size());
        // Raw pixels come without the size in front.
        if (!s.data.isEmpty() && s.format != 0)
            put(block, quint32(s.width * s.height * (s.depth == 5 ? 8 : s.depth) / 8));
        block.append(s.data);
        for (const int field : {s.group, s.index, s.width, s.height, s.x, s.y, s.link})
            put(spriteNodes, quint16(field));
        spriteNodes.append(char(s.format)).append(char(s.depth));
        put(spriteNodes, s.offset >= 0 ? quint32(s.offset) : offset);
        put(spriteNodes, s.length >= 0 ? quint32(s.length) : quint32(block.size()) - offset);
        put(spriteNodes, quint16(s.palette));
        put(spriteNodes, quint16(s.flags));
    }
    const quint32 firstSprite = 512 + quint32(paletteNodes.size());
    const quint32 ldata = firstSprite + quint32(spriteNodes.size());
    QByteArray out("ElecbyteSpr", 12);
    const qint64 header[] = {version, 0, 0, version, 0, 0, firstSprite,
                             spriteCount >= 0 ? spriteCount : sprites.size(), 512,
                             paletteCount >= 0 ? paletteCount : palettes.size(), ldata, blocks[0].size(),
                             ldata + blocks[0].size(), blocks[1].size()};
    for (const qint64 field : header)
        put(out, quint32(field));
    out.resize(512, '\0');
    return out + paletteNodes + spriteNodes + blocks[0] + blocks[1];
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
    for (const qint64 field : {qint64(0x01000100), qint64(1), count >= 0 ? count : subfiles.size(), qint64(512), qint64(32)})
        put(out, quint32(field));
    out.resize(512, '\0');
    for (const Subfile &s : subfiles) {
        put(out, s.next >= 0 ? quint32(s.next) : quint32(out.size() + 32 + s.pcx.size()));
        put(out, s.length >= 0 ? quint32(s.length) : quint32(s.pcx.size()));
        for (const int field : {s.x, s.y, s.group, s.index, s.link})
            put(out, quint16(field));
        out.append(char(s.samePalette ? 1 : 0)).append(13, '\0');
        out.append(s.pcx);
    }
    return out;
}

} // namespace SffBuilder
