#pragma once

#include "qimageinfo.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

class QTemporaryFile;

/**
 * One blob of the image store: raw pixels, or an image still in the
 * encoding it came in, with what is needed to decode it.
 *
 * Entries come from a process-wide pool and belong to the store that made
 * them until it releases them; their fields change only through the store.
 */
class QStreamCacheEntry
{
public:
    /** The filter that decodes the stored bytes; 0 for raw pixels. */
    int filter() const { return m_filter; }
    const QImageInfo &info() const { return m_info; }
    /** The hash of the decoded pixels, 0 while nobody has asked for it. */
    quint64 hash() const { return m_hash; }
    /** Where the bytes lie in the store's file; 0 in memory. */
    quint32 position() const { return m_position; }
    /** Bytes as stored, after the store's own compression. */
    quint32 storedSize() const { return m_storedSize; }
    /** Bytes as given, before the store's own compression. */
    quint32 size() const { return m_size; }

private:
    friend class QStreamCache;
    friend class QStreamCacheEntryPool;

    void reset() { *this = QStreamCacheEntry(); }

    QByteArray m_data;
    quint64 m_hash = 0;
    qint32 m_filter = 0;
    QImageInfo m_info;
    quint32 m_position = 0;
    quint32 m_storedSize = 0;
    quint32 m_size = 0;
    // Disk mode keeps a blob in memory when the file failed to take it.
    bool m_onDisk = false;
};

/**
 * The image store: byte blobs kept in memory or in a temporary file, and
 * decoded on demand through the filters (see QStreamCacheFilter).
 *
 * Disk mode keeps no image data in memory at all, at the cost of a seek and
 * a read for each access and of moving everything behind a removed blob.
 * If the temporary file can't be made, or a write to it fails, the data
 * stays in memory instead: nothing is lost, only memory is spent.
 *
 * Entries returned by add() belong to the store until release() or clear()
 * gives them back; a null entry reads as empty everywhere.
 */
class QStreamCache
{
public:
    enum Mode { Memory = 0, Disk = 1 };

    /**
     * `name` is the template of the temporary file of disk mode, made
     * unique and created in the system's temporary folder; the file goes
     * with the store. `compress` compresses raw pixels (filter 0) at
     * `level`, -1 being zlib's default.
     */
    QStreamCache(const QString &name, int mode, bool compress = false, int level = -1);
    ~QStreamCache();

    QStreamCache(const QStreamCache &) = delete;
    QStreamCache &operator=(const QStreamCache &) = delete;

    /** The mode in force: Memory also when disk mode could not open its file. */
    int mode() const { return m_mode; }
    bool compress() const { return m_compress; }
    int level() const { return m_level; }
    /** The path of the temporary file; empty in memory mode. */
    QString fileName() const;
    int count() const { return int(m_entries.size()); }

    /**
     * Stores `bytes`, decoded by `filter` into an image of `info`. `hash`
     * is the hash of the decoded pixels if the caller knows it; 0 leaves it
     * to be computed when a comparison needs it.
     */
    QStreamCacheEntry *add(const QByteArray &bytes, int filter, const QImageInfo &info, quint64 hash = 0);
    /** Gives `entry` new bytes, as add() would. False for an entry not of this store. */
    bool replace(QStreamCacheEntry *entry, const QByteArray &bytes, int filter, const QImageInfo &info,
                 quint64 hash = 0);

    /** The bytes as stored: still compressed by the store where it compressed them. */
    QByteArray raw(const QStreamCacheEntry *entry) const;
    /**
     * The pixels: the stored bytes decoded by the entry's filter, or for
     * raw pixels uncompressed when the store compressed them. Empty when
     * there is nothing to decode or decoding fails.
     */
    QByteArray decoded(const QStreamCacheEntry *entry) const;
    /** The entry's filter number; 0 for a null entry. */
    int filterOf(const QStreamCacheEntry *entry) const;
    /**
     * The hash of the entry's pixels, decoding them once when it isn't
     * known yet; 0 for a null entry.
     */
    quint64 hashOf(QStreamCacheEntry *entry) const;

    /**
     * Whether two entries hold the same image. Equal hashes and equal
     * stored bytes of one filter count as equal without decoding; otherwise
     * the pixels are compared. Images of different sizes or formats, and
     * empty ones, are never equal. Fills in missing hashes.
     */
    bool same(QStreamCacheEntry *a, QStreamCacheEntry *b);
    /**
     * The first entry other than `excluded` whose pixels equal `pixels`,
     * or null. When `info` is given (its format isn't Auto) only entries of
     * that size and format are candidates. Fills in missing hashes.
     */
    QStreamCacheEntry *findEqual(const QByteArray &pixels, const QStreamCacheEntry *excluded,
                                 const QImageInfo &info = QImageInfo());

    /** Removes `entry` from the store and gives it back to the pool. */
    void release(QStreamCacheEntry *entry);
    /**
     * Releases many entries at once. In disk mode the file is compacted in
     * one pass over what lies behind the first of them, where releasing
     * them one by one would move everything behind each of them again.
     * Entries not of this store and null ones are ignored.
     */
    void release(const QList<QStreamCacheEntry *> &entries);
    /** Releases every entry and empties the file. */
    void clear();

    /**
     * The 64-bit CRC of `bytes`: reflected, polynomial 0x95AC9329AC4BC9B5,
     * register starting at all ones, no final inversion. Empty input gives
     * all ones.
     */
    static quint64 hash(const QByteArray &bytes);

private:
    /** Puts `bytes` into a fresh or emptied entry. */
    void store(QStreamCacheEntry *entry, const QByteArray &bytes, int filter, const QImageInfo &info,
               quint64 hash);
    /** Takes the entry's bytes out of the file, moving everything behind them up. */
    void removeFromFile(QStreamCacheEntry *entry);
    /** Copies `size` bytes of the file from `from` down to `to`, block by block; gives how many went. */
    qint64 moveDown(qint64 from, qint64 to, qint64 size);
    /** The entry's hash, computed from its decoded pixels when missing; `pixels` keeps them if decoded. */
    quint64 ensureHash(QStreamCacheEntry *entry, std::optional<QByteArray> *pixels) const;

    int m_mode;
    bool m_compress;
    int m_level;
    QList<QStreamCacheEntry *> m_entries;
    std::unique_ptr<QTemporaryFile> m_file;
};
