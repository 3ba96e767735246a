#pragma once

// Encoded sprite data out of the sprite files of the corpus, for the codec
// tests and benchmarks. A small reader of the file headers, just enough to
// find the image bytes: it walks version 2 sprite nodes and version 1
// subfiles, skips what it can't place, and is no model of the format.

#include "core/sprites/qimageinfo.h"
#include "core/sprites/qstreamcachefilter.h"

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
    QByteArray data;
};

/** A little-endian number of `bytes` bytes at `at`; 0 beyond the end. */
inline quint32 number(const QByteArray &b, qsizetype at, int bytes)
{
    quint32 value = 0;
    if (at < 0 || at + bytes > b.size())
        return 0;
    for (int i = bytes - 1; i >= 0; --i)
        value = (value << 8) | uchar(b.at(at + i));
    return value;
}

inline quint32 u32(const QByteArray &b, qsizetype at)
{
    return number(b, at, 4);
}

inline quint16 u16(const QByteArray &b, qsizetype at)
{
    return quint16(number(b, at, 2));
}

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

/** Calls `found` for every sprite with data in the file `path`. */
inline void readFile(const QString &path, const std::function<void(const Sprite &)> &found)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray b = file.readAll();
    if (b.size() < 512 || !b.startsWith(QByteArrayLiteral("ElecbyteSpr")))
        return;
    const quint32 version = u32(b, 12);
    if (version == 0x01000100) {
        // Walk by the next-offset: length fields of some tools are wrong.
        qsizetype at = 512;
        const quint32 images = u32(b, 20);
        for (quint32 i = 0; i < images && at + 32 <= b.size(); ++i) {
            const quint32 next = u32(b, at);
            qsizetype length = u32(b, at + 4);
            if (next != 0 && next > quint32(at + 32))
                length = qsizetype(next) - (at + 32);
            length = qMin(length, b.size() - (at + 32));
            if (length > 0) {
                Sprite sprite{path, int(i), QStreamCacheFilter::PCX, QImageInfo(), 0, b.mid(at + 32, length)};
                found(sprite);
            }
            if (next == 0 || next <= quint32(at))
                break;
            at = next;
        }
        return;
    }
    const quint32 nodes = u32(b, 36);
    const quint32 count = u32(b, 40);
    const quint32 ldata = u32(b, 52);
    const quint32 tdata = u32(b, 60);
    for (quint32 i = 0; i < count; ++i) {
        const qsizetype node = qsizetype(nodes) + qsizetype(i) * 28;
        if (node + 28 > b.size())
            break;
        const quint32 length = u32(b, node + 20);
        if (length <= 4)
            continue;
        const qsizetype at = qsizetype((u16(b, node + 26) & 1) ? tdata : ldata) + u32(b, node + 16);
        if (at + qsizetype(length) > b.size())
            continue;
        Sprite sprite;
        sprite.file = path;
        sprite.number = int(i);
        sprite.filter = filterOfNodeFormat(uchar(b.at(node + 14)));
        sprite.info.width = u16(b, node + 4);
        sprite.info.height = u16(b, node + 6);
        sprite.info.format = QImageInfo::formatOfDepth(uchar(b.at(node + 15)));
        sprite.decodedSize = u32(b, at);
        sprite.data = b.mid(at + 4, length - 4);
        found(sprite);
    }
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
        readFile(path, [&](const Sprite &sprite) {
            if (sprite.filter == filter)
                sprites.append(sprite);
        });
    }
    return sprites;
}

} // namespace CorpusSprites
