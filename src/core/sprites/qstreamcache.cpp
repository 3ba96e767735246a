#include "qstreamcache.h"

#include "qstreamcachefilter.h"

#include <QDir>
#include <QSet>
#include <QTemporaryFile>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <vector>

/**
 * The process-wide pool of entries. A released entry is cleared and kept;
 * a new entry takes the last one kept before anything is allocated. All
 * entries are freed when the process ends.
 */
class QStreamCacheEntryPool
{
public:
    static QStreamCacheEntryPool &instance()
    {
        static QStreamCacheEntryPool pool;
        return pool;
    }

    QStreamCacheEntry *take()
    {
        if (!m_free.empty()) {
            QStreamCacheEntry *entry = m_free.back();
            m_free.pop_back();
            return entry;
        }
        m_all.push_back(std::make_unique<QStreamCacheEntry>());
        return m_all.back().get();
    }

    void giveBack(QStreamCacheEntry *entry)
    {
        entry->reset();
        m_free.push_back(entry);
    }

private:
    std::vector<std::unique_ptr<QStreamCacheEntry>> m_all;
    std::vector<QStreamCacheEntry *> m_free;
};

namespace {

constexpr quint64 Polynomial = 0x95AC9329AC4BC9B5ull;
// Blocks moved at a time when a removal closes the gap in the file.
constexpr qint64 MoveChunk = 1 << 20;

/**
 * The table of the byte-at-a-time CRC, then seven more that carry a byte's
 * effect one to seven bytes further, so that eight bytes go in one step
 * with the same result ("slicing by eight"). Opening a sprite file hashes
 * every decoded image, and this is most of what that costs.
 */
const std::array<std::array<quint64, 256>, 8> &crcTables()
{
    static const std::array<std::array<quint64, 256>, 8> tables = [] {
        std::array<std::array<quint64, 256>, 8> t{};
        for (quint64 v = 0; v < 256; ++v) {
            quint64 r = v;
            for (int bit = 0; bit < 8; ++bit)
                r = (r & 1) ? (r >> 1) ^ Polynomial : r >> 1;
            t[0][v] = r;
        }
        for (size_t k = 1; k < 8; ++k) {
            for (size_t v = 0; v < 256; ++v)
                t[k][v] = (t[k - 1][v] >> 8) ^ t[0][t[k - 1][v] & 0xFF];
        }
        return t;
    }();
    return tables;
}

} // namespace

QStreamCache::QStreamCache(const QString &name, int mode, bool compress, int level)
    : m_mode(Memory)
    , m_compress(compress)
    , m_level(level)
{
    // Statics go in the reverse order of their making: the filters, then the
    // pool, are made before any store, so that at process end every store
    // goes first (including those that live as long as the process), then
    // the entries, then the filters.
    streamCacheFilter(QStreamCacheFilter::PCX);
    QStreamCacheEntryPool::instance();
    if (mode == Disk) {
        m_file = std::make_unique<QTemporaryFile>(QDir::temp().filePath(name + QStringLiteral("_XXXXXX")));
        if (m_file->open())
            m_mode = Disk;
        else
            m_file.reset();
    }
}

QStreamCache::~QStreamCache()
{
    for (QStreamCacheEntry *entry : std::as_const(m_entries))
        QStreamCacheEntryPool::instance().giveBack(entry);
}

QString QStreamCache::fileName() const
{
    return m_file ? m_file->fileName() : QString();
}

QStreamCacheEntry *QStreamCache::add(const QByteArray &bytes, int filter, const QImageInfo &info, quint64 hash)
{
    QStreamCacheEntry *entry = QStreamCacheEntryPool::instance().take();
    store(entry, bytes, filter, info, hash);
    m_entries.append(entry);
    return entry;
}

bool QStreamCache::replace(QStreamCacheEntry *entry, const QByteArray &bytes, int filter, const QImageInfo &info,
                           quint64 hash)
{
    if (!entry || !m_entries.contains(entry))
        return false;
    removeFromFile(entry);
    entry->reset();
    store(entry, bytes, filter, info, hash);
    return true;
}

void QStreamCache::store(QStreamCacheEntry *entry, const QByteArray &bytes, int filter, const QImageInfo &info,
                         quint64 hash)
{
    entry->m_filter = filter;
    entry->m_info = info;
    entry->m_hash = hash;
    entry->m_size = quint32(bytes.size());
    // Encoded forms stay as they came, so that a save can copy them.
    entry->m_data = (filter == QStreamCacheFilter::Raw && m_compress && !bytes.isEmpty())
                        ? qCompress(bytes, m_level)
                        : bytes;
    entry->m_storedSize = quint32(entry->m_data.size());
    if (m_mode != Disk || entry->m_data.isEmpty())
        return;

    const qint64 end = m_file->size();
    // Positions are 32-bit; what doesn't fit below 4 GB stays in memory.
    if (end + entry->m_data.size() > qint64(std::numeric_limits<quint32>::max()))
        return;
    if (!m_file->seek(end) || m_file->write(entry->m_data) != entry->m_data.size() || !m_file->flush()) {
        m_file->resize(end);
        return;
    }
    entry->m_position = quint32(end);
    entry->m_onDisk = true;
    entry->m_data = QByteArray();
}

void QStreamCache::removeFromFile(QStreamCacheEntry *entry)
{
    if (!entry->m_onDisk)
        return;
    const qint64 position = entry->m_position;
    const qint64 stored = entry->m_storedSize;
    const qint64 end = m_file->size();
    // Everything behind the blob moves up over it.
    m_file->resize(position + moveDown(position + stored, position, end - (position + stored)));
    m_file->flush();
    for (QStreamCacheEntry *other : std::as_const(m_entries)) {
        if (other->m_onDisk && other != entry && other->m_position > position)
            other->m_position -= quint32(stored);
    }
    entry->m_onDisk = false;
}

qint64 QStreamCache::moveDown(qint64 from, qint64 to, qint64 size)
{
    qint64 moved = 0;
    while (moved < size) {
        const QByteArray block = m_file->seek(from + moved) ? m_file->read(qMin(MoveChunk, size - moved)) : QByteArray();
        if (block.isEmpty() || !m_file->seek(to + moved) || m_file->write(block) != block.size())
            break;
        moved += block.size();
    }
    return moved;
}

QByteArray QStreamCache::raw(const QStreamCacheEntry *entry) const
{
    if (!entry)
        return QByteArray();
    if (!entry->m_onDisk)
        return entry->m_data;
    if (!m_file->seek(entry->m_position))
        return QByteArray();
    QByteArray bytes = m_file->read(entry->m_storedSize);
    return bytes.size() == qsizetype(entry->m_storedSize) ? bytes : QByteArray();
}

QByteArray QStreamCache::decoded(const QStreamCacheEntry *entry) const
{
    const QByteArray bytes = raw(entry);
    if (bytes.isEmpty())
        return bytes;
    if (entry->m_filter != QStreamCacheFilter::Raw) {
        const QStreamCacheFilter *filter = streamCacheFilter(entry->m_filter);
        return filter ? filter->decode(bytes, entry->m_info) : QByteArray();
    }
    return m_compress ? qUncompress(bytes) : bytes;
}

int QStreamCache::filterOf(const QStreamCacheEntry *entry) const
{
    return entry ? entry->m_filter : 0;
}

quint64 QStreamCache::hashOf(QStreamCacheEntry *entry) const
{
    if (!entry)
        return 0;
    std::optional<QByteArray> pixels;
    return ensureHash(entry, &pixels);
}

quint64 QStreamCache::ensureHash(QStreamCacheEntry *entry, std::optional<QByteArray> *pixels) const
{
    if (entry->m_hash == 0) {
        *pixels = decoded(entry);
        entry->m_hash = hash(**pixels);
    }
    return entry->m_hash;
}

bool QStreamCache::same(QStreamCacheEntry *a, QStreamCacheEntry *b)
{
    if (!a || !b || a->m_info != b->m_info)
        return false;
    std::optional<QByteArray> pixelsA;
    std::optional<QByteArray> pixelsB;
    if (ensureHash(a, &pixelsA) != ensureHash(b, &pixelsB))
        return false;
    // Neither had to be decoded: the same bytes of the same encoding are the
    // same image, and nothing is decoded to find that out.
    if (!pixelsA && !pixelsB && a->m_filter == b->m_filter) {
        const QByteArray rawA = raw(a);
        return !rawA.isEmpty() && rawA == raw(b);
    }
    if (!pixelsA)
        pixelsA = decoded(a);
    if (!pixelsB)
        pixelsB = decoded(b);
    return !pixelsA->isEmpty() && *pixelsA == *pixelsB;
}

QStreamCacheEntry *QStreamCache::findEqual(const QByteArray &pixels, const QStreamCacheEntry *excluded,
                                           const QImageInfo &info)
{
    if (pixels.isEmpty())
        return nullptr;
    const quint64 wanted = hash(pixels);
    for (QStreamCacheEntry *entry : std::as_const(m_entries)) {
        if (entry == excluded || (info.format != QImageInfo::Auto && entry->m_info != info))
            continue;
        std::optional<QByteArray> candidate;
        if (ensureHash(entry, &candidate) != wanted)
            continue;
        if (!candidate)
            candidate = decoded(entry);
        if (*candidate == pixels)
            return entry;
    }
    return nullptr;
}

void QStreamCache::release(QStreamCacheEntry *entry)
{
    if (!entry || !m_entries.removeOne(entry))
        return;
    removeFromFile(entry);
    QStreamCacheEntryPool::instance().giveBack(entry);
}

void QStreamCache::release(const QList<QStreamCacheEntry *> &entries)
{
    const QSet<QStreamCacheEntry *> mine(m_entries.cbegin(), m_entries.cend());
    QSet<QStreamCacheEntry *> gone;
    for (QStreamCacheEntry *entry : entries) {
        if (entry && mine.contains(entry))
            gone.insert(entry);
    }
    if (gone.isEmpty())
        return;

    if (m_mode == Disk) {
        QList<QStreamCacheEntry *> onDisk;
        for (QStreamCacheEntry *entry : std::as_const(m_entries)) {
            if (entry->m_onDisk)
                onDisk.append(entry);
        }
        std::sort(onDisk.begin(), onDisk.end(),
                  [](const QStreamCacheEntry *a, const QStreamCacheEntry *b) { return a->m_position < b->m_position; });
        // From the first gap on, every blob that stays moves down to the
        // end of the ones before it.
        qint64 to = -1;
        bool moved = true;
        for (QStreamCacheEntry *entry : std::as_const(onDisk)) {
            if (gone.contains(entry)) {
                if (to < 0)
                    to = entry->m_position;
                entry->m_onDisk = false;
                continue;
            }
            if (to < 0)
                continue;
            // After a failed move the rest stays where it is, whole.
            if (moved && to != entry->m_position)
                moved = moveDown(entry->m_position, to, entry->m_storedSize) == entry->m_storedSize;
            if (moved) {
                entry->m_position = quint32(to);
                to += entry->m_storedSize;
            }
        }
        if (moved && to >= 0) {
            m_file->resize(to);
            m_file->flush();
        }
    }
    m_entries.removeIf([&gone](QStreamCacheEntry *entry) { return gone.contains(entry); });
    for (QStreamCacheEntry *entry : std::as_const(gone))
        QStreamCacheEntryPool::instance().giveBack(entry);
}

void QStreamCache::clear()
{
    for (QStreamCacheEntry *entry : std::as_const(m_entries))
        QStreamCacheEntryPool::instance().giveBack(entry);
    m_entries.clear();
    if (m_file)
        m_file->resize(0);
}

quint64 QStreamCache::hash(const QByteArray &bytes)
{
    const std::array<std::array<quint64, 256>, 8> &t = crcTables();
    quint64 crc = ~quint64(0);
    const uchar *p = reinterpret_cast<const uchar *>(bytes.constData());
    const uchar *const end = p + bytes.size();
    for (; end - p >= 8; p += 8) {
        crc ^= qFromLittleEndian<quint64>(p);
        crc = t[7][crc & 0xFF] ^ t[6][(crc >> 8) & 0xFF] ^ t[5][(crc >> 16) & 0xFF] ^ t[4][(crc >> 24) & 0xFF]
            ^ t[3][(crc >> 32) & 0xFF] ^ t[2][(crc >> 40) & 0xFF] ^ t[1][(crc >> 48) & 0xFF] ^ t[0][crc >> 56];
    }
    for (; p < end; ++p)
        crc = t[0][(*p ^ crc) & 0xFF] ^ (crc >> 8);
    return crc;
}
