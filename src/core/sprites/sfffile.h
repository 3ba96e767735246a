#pragma once

// The engine's sprite files, versions 1.01, 2.00 and 2.01: the reader and
// the writer behind QSprites::fromFile() and QSprites::toFile().
//
// All numbers are little-endian. Version 1.01 is a chain of subfiles, each
// a 32-byte header and a PCX file. Version 2 keeps palette and sprite nodes
// behind a 512-byte header, and the data in two blocks: ldata, which the
// engine keeps as it is, and tdata, which it decompresses when it loads the
// file (the DecompressOnLoad flag).

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

class QIODevice;
class QSprite;
class QSprites;

namespace Sff {

constexpr int HeaderSize = 512;
constexpr int SubfileHeaderSize = 32;
constexpr int PaletteNodeSize = 16;
constexpr int SpriteNodeSize = 28;
/** The comment areas of the two headers. */
constexpr int CommentSize1 = 476;
constexpr int CommentSize2 = 436;

/** "ElecbyteSpr" and one zero byte: the first 12 bytes of every sprite file. */
QByteArray signature();
/** A comment area of `size` bytes as this program writes it: its stamp, then zeros. */
QByteArray stamp(int size);

} // namespace Sff

/**
 * Reads a sprite file into a set, trusting nothing: every count, offset and
 * length is checked against the size of the device before use, and the
 * image data read in all is bounded by that size (nodes that point many
 * times at the same bytes share one copy).
 */
class SffReader
{
public:
    /** `device` must be open for reading and random access; `fileName` names it in messages. */
    SffReader(QSprites *set, QIODevice *device, const QString &fileName);

    /** The whole load of QSprites::fromDevice(). */
    bool load(bool keepName);

private:
    bool readVersion1();
    bool readVersion2();
    /** Reports progress; false when the receiver asked to stop. */
    bool step(uint done, uint total);
    /** Up to `length` bytes at `position`, fewer at the end of the device; empty outside it. */
    QByteArray readAt(qint64 position, qint64 length);
    /** The bytes of one sprite's data: shared with earlier nodes of the same range, empty beyond the budget. */
    QByteArray spriteBytes(qint64 position, qint64 length);
    /** Links every sprite to the first one before it with an identical image. */
    void linkEqualImages();
    void critical(const QString &text);
    /** Says that the file ended before `read` of its `announced` items. */
    void truncated(quint64 read, quint64 announced);

    QSprites *m_set;
    QIODevice *m_device;
    QString m_fileName;
    qint64 m_size = 0;
    /** The palettes the set had before the load, which a failed load keeps. */
    int m_palettesBefore = 0;
    /** The sprites read so far; they join the set's list at the end, in one go. */
    QList<QSprite *> m_sprites;
    /** Bytes of image data that may still be read. */
    qint64 m_budget = 0;
    QHash<QPair<qint64, qint64>, QByteArray> m_ranges;
};

/**
 * Writes a set as a sprite file of the set's version: first the
 * preparation, which refuses empty sprites and palettes and makes true
 * colour sprites indexed where the version needs it, then the bytes.
 */
class SffWriter
{
public:
    /** With `asCopy` the store keeps the images as they are, even those that had to be encoded. */
    SffWriter(QSprites *set, bool asCopy);

    /** False, after a message, when the set can't be saved. `character` enables the 1.01 palette order check. */
    bool prepare(bool character);
    /** The file's bytes in `out`; false after a message or a cancel through progress. */
    bool write(QByteArray &out);

private:
    bool writeVersion1(QByteArray &out);
    bool writeVersion2(QByteArray &out);
    /** Makes a true colour sprite indexed with a palette of its own colours, index 0 for its transparent pixels. */
    void makeIndexed(QSprite *sprite);
    bool step(uint done, uint total);
    bool failed(int position, const QString &reason);

    QSprites *m_set;
    bool m_asCopy;
};
