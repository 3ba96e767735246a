#pragma once

// Encoded sprite data out of sprite files, for the codec tests, the sprite
// file tests and the benchmarks. A small reader of the file headers, just
// enough to find the image bytes: it walks version 2 sprite nodes and
// version 1 subfiles, skips what it can't place, and is no model of the
// format.

#include "core/sprites/qimageinfo.h"
#include "core/sprites/qstreamcachefilter.h"

#include "sffbuilder.h"

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QList>
#include <QString>

#include <functional>

namespace CorpusSprites {

struct Sprite
{
    QString file;
    int number = 0;
    /** The store's filter number: 1 PCX, 2 RLE8, 3 RLE5, 4 LZ5, 5 PNG, 0 raw. */
    int filter = 0;
    /** Size and format from the sprite node; for PCX only the file knows. */
    QImageInfo info;
    /** The size the file gives for the decoded image; 0 for PCX. */
    quint32 decodedSize = 0;
    /** The encoded bytes, without the size in front; empty for a linked node. */
    QByteArray data;
    /** Of a version 2 node: its format and depth as written, its link and its palette. */
    int format = 0;
    int depth = 0;
    int link = 0;
    int palette = 0;
};

inline int filterOfNodeFormat(int format)
{
    switch (format) {
    case 2:
    case 3:
    case 4:
        return format;
    case 10:
    case 11:
    case 12:
        return QStreamCacheFilter::PNG;
    default:
        return QStreamCacheFilter::Raw;
    }
}

/**
 * Calls `found` for every sprite of the file `b`, named `path`: each node
 * of version 2, linked or not, and each subfile with data of version 1.
 */
inline void readBytes(const QByteArray &b, const QString &path, const std::function<void(const Sprite &)> &found)
{
    using SffBuilder::u16;
    using SffBuilder::u32;
    if (b.size() < 512 || !b.startsWith(QByteArrayLiteral("ElecbyteSpr")))
        return;
    if (u32(b, 12) == 0x01000100) {
        // Walk by the next-offset: length fields of some tools are wrong.
        qsizetype at = 512;
        const quint32 images = u32(b, 20);
        for (quint32 i = 0; i < images && at + 32 <= b.size(); ++i) {
            const quint32 next = u32(b, at);
            qsizetype length = u32(b, at + 4);
            if (next != 0 && next > quint32(at + 32))
                length = qsizetype(next) - (at + 32);
            length = qMin(length, b.size() - (at + 32));
            if (length > 0)
                found(Sprite{path, int(i), QStreamCacheFilter::PCX, QImageInfo(), 0, b.mid(at + 32, length)});
            if (next == 0 || next <= quint32(at))
                break;
            at = next;
        }
        return;
    }
    for (quint32 i = 0; i < u32(b, 40); ++i) {
        const qsizetype node = qsizetype(u32(b, 36)) + qsizetype(i) * 28;
        if (node + 28 > b.size())
            break;
        Sprite sprite;
        sprite.file = path;
        sprite.number = int(i);
        sprite.format = uchar(b.at(node + 14));
        sprite.depth = uchar(b.at(node + 15));
        sprite.link = u16(b, node + 12);
        sprite.palette = u16(b, node + 24);
        sprite.filter = filterOfNodeFormat(sprite.format);
        sprite.info = QImageInfo{u16(b, node + 4), u16(b, node + 6), QImageInfo::formatOfDepth(sprite.depth)};
        // Raw pixels come without the size in front.
        const qsizetype sizeBytes = sprite.format == 0 ? 0 : 4;
        const quint32 length = u32(b, node + 20);
        const qsizetype at = qsizetype(u32(b, (u16(b, node + 26) & 1) ? 60 : 52)) + u32(b, node + 16);
        if (length > sizeBytes && at + qsizetype(length) <= b.size()) {
            sprite.decodedSize = sizeBytes ? u32(b, at) : 0;
            sprite.data = b.mid(at + sizeBytes, length - sizeBytes);
        }
        found(sprite);
    }
}

/** Every sprite of a version 2 file, in the order of its nodes. */
inline QList<Sprite> nodes(const QByteArray &file)
{
    QList<Sprite> sprites;
    readBytes(file, QString(), [&sprites](const Sprite &sprite) { sprites.append(sprite); });
    return sprites;
}

/** Every sprite of the corpus stored with `filter`, in the order of the sorted file names. */
inline QList<Sprite> withFilter(const QString &corpusDir, int filter)
{
    QList<Sprite> sprites;
    if (corpusDir.isEmpty())
        return sprites;
    QStringList files;
    QDirIterator it(corpusDir, {QStringLiteral("*.sff")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    files.sort();
    for (const QString &path : std::as_const(files)) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        readBytes(file.readAll(), path, [&](const Sprite &sprite) {
            if (sprite.filter == filter && !sprite.data.isEmpty())
                sprites.append(sprite);
        });
    }
    return sprites;
}

} // namespace CorpusSprites
