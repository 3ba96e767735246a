#include "sfffile.h"

#include "../base/atomicfile.h"
#include "../base/filestamp.h"
#include "../base/quserprompt.h"
#include "imagecodecs.h"
#include "qrgbpalette.h"
#include "qsprites.h"
#include "qstreamcachefilter.h"
#include "spritecommands.h"

#include <QFile>
#include <QScopeGuard>
#include <QSet>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

/** Node formats of version 2. */
enum NodeFormat : uchar {
    FormatRaw = 0,
    FormatLinked = 1,
    FormatRle8 = 2,
    FormatRle5 = 3,
    FormatLz5 = 4,
    FormatPng8 = 10,
    FormatPng24 = 11,
    FormatPng32 = 12
};

quint32 u32(const QByteArray &bytes, int at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}

quint16 u16(const QByteArray &bytes, int at)
{
    return qFromLittleEndian<quint16>(bytes.constData() + at);
}

qint16 s16(const QByteArray &bytes, int at)
{
    return qFromLittleEndian<qint16>(bytes.constData() + at);
}

void put32(QByteArray &out, quint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.append(bytes, 4);
}

void put16(QByteArray &out, quint16 value)
{
    char bytes[2];
    qToLittleEndian(value, bytes);
    out.append(bytes, 2);
}

void put8(QByteArray &out, uchar value)
{
    out.append(char(value));
}

int filterOfNodeFormat(int format)
{
    switch (format) {
    case FormatRle8:
    case FormatRle5:
    case FormatLz5:
        return format;
    case FormatPng8:
    case FormatPng24:
    case FormatPng32:
        return QStreamCacheFilter::PNG;
    default:
        return QStreamCacheFilter::Raw;
    }
}

/**
 * Raw pixels of a file, lines of depth * width / 8 bytes back to back, in
 * the store's layout: each line padded to bytesPerLine, as every decoder
 * gives them. Empty when the file holds fewer bytes than the image needs.
 */
QByteArray rawToStoreLines(const QByteArray &data, const QImageInfo &info)
{
    const qsizetype lineBytes = qsizetype(info.depth()) * info.width / 8;
    const qsizetype stride = info.bytesPerLine();
    if (lineBytes <= 0 || stride < lineBytes || data.size() < lineBytes * info.height)
        return QByteArray();
    QByteArray lines(stride * info.height, '\0');
    for (qsizetype y = 0; y < info.height; ++y)
        std::memcpy(lines.data() + y * stride, data.constData() + y * lineBytes, size_t(lineBytes));
    return lines;
}

/**
 * Whether every pixel of an indexed image is below 32, as LZ5 keeps only
 * five bits of each. What is stored as LZ5 already is.
 */
bool fitsFiveBits(const QSpriteData *data)
{
    if (data->cache()->filterOf(data->entry()) == QStreamCacheFilter::LZ5)
        return true;
    const QImage image = data->image();
    if (image.isNull())
        return false;
    for (int y = 0; y < image.height(); ++y) {
        const uchar *line = image.constScanLine(y);
        if (std::any_of(line, line + image.width(), [](uchar index) { return index >= 32; }))
            return false;
    }
    return true;
}

/**
 * The colour table that ends an 8-bit PCX file, read without its image:
 * the byte 12 and 256 triples. Empty when the file doesn't end so.
 */
QList<QRgb> trailingColours(const QByteArray &pcx)
{
    constexpr qsizetype tableBytes = 3 * QRGBPal::Size;
    if (pcx.size() < 128 + 1 + tableBytes || pcx.at(pcx.size() - tableBytes - 1) != 12)
        return {};
    const auto *rgb = reinterpret_cast<const uchar *>(pcx.constData() + pcx.size() - tableBytes);
    QList<QRgb> table(QRGBPal::Size);
    for (int i = 0; i < QRGBPal::Size; ++i)
        table[i] = qRgb(rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]);
    return table;
}

/** The two sprites that the engine shows with the character's own palette. */
bool isCharacterPaletteSprite(const QSprite *sprite)
{
    return (sprite->itemGroup() == 9000 || sprite->itemGroup() == 0) && sprite->itemIndex() == 0;
}

bool isCharacterSet(const QSprites *set)
{
    return !set->owner() || set->owner()->projectType() == Character;
}

/** What identifies an image for the search of equal ones: its size, format and pixel hash. */
struct ImageKey
{
    quint64 hash;
    QImageInfo info;

    friend bool operator==(const ImageKey &a, const ImageKey &b) { return a.hash == b.hash && a.info == b.info; }
};

size_t qHash(const ImageKey &key, size_t seed = 0)
{
    return qHashMulti(seed, key.hash, key.info.width, key.info.height, key.info.format);
}

} // namespace

QByteArray Sff::signature()
{
    return QByteArray("ElecbyteSpr", 12);
}

QByteArray Sff::stamp(int size)
{
    QByteArray comment = fileStamp();
    comment.resize(size, '\0');
    return comment;
}

// Reading

SffReader::SffReader(QSprites *set, QIODevice *device, const QString &fileName)
    : m_set(set)
    , m_device(device)
    , m_fileName(fileName)
{
}

void SffReader::critical(const QString &text)
{
    userPrompt->critical(QSprites::tr("Sprite loading error"), text);
}

void SffReader::truncated(quint64 read, quint64 announced)
{
    critical(QSprites::tr("%1(0): The file is damaged: it ends before its items; %2 of %3 could be read.")
                 .arg(m_fileName)
                 .arg(read)
                 .arg(announced));
}

bool SffReader::step(uint done, uint total)
{
    bool allow = true;
    Q_EMIT m_set->progress(done, total, allow);
    return allow;
}

QByteArray SffReader::readAt(qint64 position, qint64 length)
{
    if (position < 0 || position >= m_size || length <= 0 || !m_device->seek(position))
        return QByteArray();
    // Sized exactly: QIODevice::read() leaves room to grow, up to twice the
    // bytes, and the store keeps these arrays for as long as the set lives.
    QByteArray bytes(std::min(length, m_size - position), Qt::Uninitialized);
    const qint64 got = m_device->read(bytes.data(), bytes.size());
    if (got < bytes.size())
        bytes.truncate(std::max<qint64>(got, 0));
    return bytes;
}

QByteArray SffReader::spriteBytes(qint64 position, qint64 length)
{
    const QPair<qint64, qint64> range(position, length);
    const auto known = m_ranges.constFind(range);
    if (known != m_ranges.cend())
        return *known;
    // Nodes may point into each other's data; whatever they claim, no more
    // than a few times the file is ever read.
    const qint64 available = position < m_size ? std::min(length, m_size - position) : 0;
    if (available > m_budget)
        return QByteArray();
    QByteArray bytes = readAt(position, available);
    m_budget -= bytes.size();
    m_ranges.insert(range, bytes);
    return bytes;
}

bool SffReader::load(bool keepName)
{
    QSprites &set = *m_set;
    if (!m_device || !m_device->isReadable() || m_device->isSequential())
        return false;
    m_size = m_device->size();
    m_budget = 2 * m_size;

    const QString previousName = set.fileName();
    set.clear();
    set.setUndoEnabled(false);
    set.setBlockChanged(true);
    m_palettesBefore = set.paletteCount();

    bool ok = false;
    const QByteArray start = readAt(0, 16);
    if (start.size() == 16 && start.left(12) == Sff::signature()) {
        const quint32 version = u32(start, 12);
        if (version == QSprites::Version_101 || version == QSprites::Version_200
            || version == QSprites::Version_201) {
            set.setVersion(version);
            ok = version == QSprites::Version_101 ? readVersion1() : readVersion2();
        } else {
            critical(QSprites::tr("%1(0): SFF version '%2.%3.%4.%5' not supported yet")
                         .arg(m_fileName)
                         .arg(version >> 24)
                         .arg((version >> 16) & 0xFF)
                         .arg((version >> 8) & 0xFF)
                         .arg(version & 0xFF));
        }
    }
    m_ranges.clear();

    if (ok) {
        if (!m_sprites.isEmpty()) {
            set.beginInsertRows(QModelIndex(), 0, int(m_sprites.size()) - 1);
            set.m_sprites = m_sprites;
            set.endInsertRows();
        }
        m_sprites.clear();
        linkEqualImages();
    } else {
        // Nothing of a failed load stays: the sprites read so far, and the
        // palettes the load brought.
        qDeleteAll(m_sprites);
        m_sprites.clear();
        set.clear();
        for (int i = set.paletteCount() - 1; i >= m_palettesBefore; --i)
            delete set.takePalette(i);
    }
    set.setUndoEnabled(true);
    set.setBlockChanged(false);
    if (keepName)
        set.m_fileName = previousName;
    else if (ok)
        set.m_fileName = m_fileName;
    set.setModified(false);
    return ok;
}

bool SffReader::readVersion2()
{
    QSprites &set = *m_set;
    // The palettes of a version 2 file are its own; the ones the project
    // brought go.
    for (int i = set.paletteCount() - 1; i >= 0; --i)
        delete set.takePalette(i);
    m_palettesBefore = 0;

    const QByteArray header = readAt(0, Sff::HeaderSize);
    if (header.size() < Sff::HeaderSize) {
        critical(QSprites::tr("%1(0): The file is damaged: its header is incomplete.").arg(m_fileName));
        return false;
    }
    const quint32 spriteNodes = u32(header, 36);
    const quint32 spriteCount = u32(header, 40);
    const quint32 paletteNodes = u32(header, 44);
    const quint32 paletteCount = u32(header, 48);
    const qint64 ldata = u32(header, 52);
    const qint64 tdata = u32(header, 60);

    // Counts are trusted only as far as the file holds their nodes.
    const auto fitting = [this](quint32 offset, quint32 count, int nodeSize) {
        return offset >= m_size ? quint32(0) : quint32(std::min<qint64>(count, (m_size - offset) / nodeSize));
    };
    // Sprites name their palette in 16 bits: palettes beyond are out of
    // reach, and 1 KB of colours each, so a small file of nodes can't make
    // memory run out.
    const quint32 palettes = std::min<quint32>(fitting(paletteNodes, paletteCount, Sff::PaletteNodeSize), 65536);
    const quint32 sprites = fitting(spriteNodes, spriteCount, Sff::SpriteNodeSize);
    if (palettes < paletteCount || sprites < spriteCount)
        truncated(quint64(palettes) + sprites, quint64(paletteCount) + spriteCount);

    const uint total = palettes + sprites;
    uint done = 0;
    if (!step(0, total))
        return false;

    // The palettes join the set's list when all are read: a palette out of
    // the list is found (or rather not) at once by every change it reports.
    QList<QSpritePalette *> read;
    const auto discard = qScopeGuard([&read] { qDeleteAll(read); });
    const QByteArray paletteTable = readAt(paletteNodes, qint64(palettes) * Sff::PaletteNodeSize);
    for (quint32 p = 0; p < palettes; ++p) {
        const int node = int(p) * Sff::PaletteNodeSize;
        QSpritePalette *palette = RawSpriteEdits::newPalette(&set);
        const int group = u16(paletteTable, node);
        const int index = u16(paletteTable, node + 2);
        RawSpriteEdits::setPaletteInfo(palette, group, index,
                                       std::min<int>(u16(paletteTable, node + 4), QRGBPal::Size));
        const quint16 link = u16(paletteTable, node + 6);
        const quint32 length = u32(paletteTable, node + 12);
        if (length == 0) {
            // A link forward or out of range leaves the palette empty; the
            // check reports it.
            if (link < read.size())
                RawSpriteEdits::attachColors(palette, RawSpriteEdits::colorsOf(read.at(link)));
        } else {
            auto *colors = new QRGBPal;
            for (QRGBPalEntry &entry : colors->entries)
                entry = {0, 0, 0, 255};
            const QByteArray bytes = readAt(ldata + u32(paletteTable, node + 8), std::min<qint64>(length, QRGBPal::Bytes));
            std::memcpy(colors->bytes(), bytes.constData(), size_t(bytes.size()));
            // Version 2.00 has no alpha of its own: whatever the bytes say,
            // the first colour is transparent and the others opaque.
            if (set.version() == QSprites::Version_200) {
                for (int i = 0; i < QRGBPal::Size; ++i)
                    colors->entries[i].alpha = i == 0 ? 0 : 255;
            }
            RawSpriteEdits::attachColors(palette, colors);
        }
        if (palette->colorCount() == 0 && palette->rgbPal()) {
            // Colours that count none would be saved as none, a link to the
            // first palette: the engine goes by the length, and so do we.
            const int count = length != 0 ? std::clamp(int(std::min<quint32>(length, QRGBPal::Bytes) / 4), 1, 256)
                                          : std::max<int>(read.at(link)->colorCount(), 1);
            RawSpriteEdits::setPaletteInfo(palette, group, index, count);
            set.addReadProblem(palette, QMessages::Warning,
                               QSprites::tr("Palette with a colour count of 0, read as %1 colours!").arg(count));
        }
        read.append(palette);
        if (!step(++done, total))
            return false;
    }
    for (QSpritePalette *palette : std::as_const(read))
        RawSpriteEdits::insertPalette(&set, set.paletteCount(), palette);
    read.clear();

    const QByteArray spriteTable = readAt(spriteNodes, qint64(sprites) * Sff::SpriteNodeSize);
    for (quint32 i = 0; i < sprites; ++i) {
        const int node = int(i) * Sff::SpriteNodeSize;
        const int depth = uchar(spriteTable.at(node + 15));
        const quint16 paletteIndex = u16(spriteTable, node + 24);
        const quint16 flags = u16(spriteTable, node + 26);
        QSpritePalette *palette = nullptr;
        if (depth <= 8) {
            if (paletteIndex >= set.paletteCount())
                critical(QSprites::tr("%1(%2): Sprite incorrectly linked to the palette index %3")
                             .arg(m_fileName)
                             .arg(i)
                             .arg(paletteIndex));
            else
                palette = set.paletteAt(paletteIndex);
        }
        QSprite *sprite = RawSpriteEdits::newSprite(&set);
        RawSpriteEdits::setSpriteInfo(sprite, u16(spriteTable, node), u16(spriteTable, node + 2),
                                      s16(spriteTable, node + 8), s16(spriteTable, node + 10), flags, palette);

        const quint32 length = u32(spriteTable, node + 20);
        const quint16 link = u16(spriteTable, node + 12);
        if (length != 0) {
            const qint64 at = ((flags & DecompressOnLoad) ? tdata : ldata) + u32(spriteTable, node + 16);
            QImageInfo info;
            info.width = u16(spriteTable, node + 4);
            info.height = u16(spriteTable, node + 6);
            info.format = QImageInfo::formatOfDepth(depth);
            const int filter = filterOfNodeFormat(uchar(spriteTable.at(node + 14)));
            QByteArray bytes;
            if (filter == QStreamCacheFilter::Raw) {
                // Raw pixels come without the size in front: their length
                // is the image's.
                bytes = rawToStoreLines(spriteBytes(at, length), info);
            } else {
                // The 32-bit size in front of encoded data is the decoded
                // size, which the image's own size already gives.
                bytes = spriteBytes(at + 4, qint64(length) - 4);
            }
            if (at + qint64(length) > m_size)
                set.addReadProblem(sprite, QMessages::Error,
                                   QSprites::tr("Sprite data beyond the end of the file!"));
            // Without data the sprite stays empty, which no save takes for a
            // link to another.
            if (!bytes.isEmpty())
                RawSpriteEdits::attachData(sprite, QSpriteData::create(set.cache(), bytes, filter, info));
        } else if (link < m_sprites.size()) {
            RawSpriteEdits::attachData(sprite, m_sprites.at(link)->data());
        } else {
            critical(QSprites::tr("%1(%2): Sprite incorrectly linked to the index %3")
                         .arg(m_fileName)
                         .arg(i)
                         .arg(link));
        }
        m_sprites.append(sprite);
        if (!step(++done, total))
            return false;
    }
    return true;
}

bool SffReader::readVersion1()
{
    QSprites &set = *m_set;
    const QByteArray header = readAt(0, Sff::HeaderSize);
    if (header.size() < Sff::HeaderSize) {
        critical(QSprites::tr("%1(0): The file is damaged: its header is incomplete.").arg(m_fileName));
        return false;
    }
    set.m_paletteType = uchar(header.at(32));
    const quint32 images = u32(header, 20);
    // The subfiles follow one another from the end of the header, whatever
    // the offsets say; a count beyond what the file can hold ends where
    // the file does.
    const uint total = uint(std::min<qint64>(images, (m_size - Sff::HeaderSize) / Sff::SubfileHeaderSize));
    if (!step(0, total))
        return false;

    QSpritePalette *characterPalette = set.palette(1, 1);
    const bool character = isCharacterSet(&set);
    QSpritePalette *previous = nullptr;
    qint64 position = Sff::HeaderSize;
    for (quint32 i = 0; i < images; ++i) {
        const QByteArray subfile = readAt(position, Sff::SubfileHeaderSize);
        if (subfile.size() < Sff::SubfileHeaderSize) {
            truncated(i, images);
            break;
        }
        position += Sff::SubfileHeaderSize;
        const quint32 next = u32(subfile, 0);
        const quint32 length = u32(subfile, 4);
        const quint16 link = u16(subfile, 16);
        const bool samePalette = uchar(subfile.at(18)) == 1;
        QSprite *sprite = RawSpriteEdits::newSprite(&set);
        const auto setPalette = [sprite](QSpritePalette *palette) {
            RawSpriteEdits::setSpriteInfo(sprite, sprite->itemGroup(), sprite->itemIndex(), sprite->offsetX(),
                                          sprite->offsetY(), 0, palette);
        };
        RawSpriteEdits::setSpriteInfo(sprite, u16(subfile, 12), u16(subfile, 14), s16(subfile, 8),
                                      s16(subfile, 10), 0, nullptr);

        if (length == 0) {
            if (link < m_sprites.size()) {
                const QSprite *linked = m_sprites.at(link);
                RawSpriteEdits::attachData(sprite, linked->data());
                setPalette(samePalette ? previous : linked->palette());
            } else {
                critical(QSprites::tr("%1(%2): Sprite incorrectly linked to the index %3")
                             .arg(m_fileName)
                             .arg(i)
                             .arg(link));
            }
        } else {
            // Some tools wrote wrong lengths but right offsets: the offset wins.
            const qint64 trueLength = (next != 0 && next >= position) ? qint64(next) - position : qint64(length);
            const QByteArray pcx = readAt(position, trueLength);
            position += std::min(trueLength, m_size - position);
            const QImage image = decodePcx(pcx);
            // The palette is decided whether the image can be read or not:
            // the sprites that follow it may take it. Without an image, the
            // colours are those that end the subfile.
            const QList<QRgb> table = image.isNull() ? trailingColours(pcx) : image.colorTable();
            QSpritePalette *palette = previous;
            if (character && isCharacterPaletteSprite(sprite)) {
                if (!characterPalette) {
                    QRGBPal colors;
                    for (QRGBPalEntry &entry : colors.entries)
                        entry = {0, 0, 0, 255};
                    if (table.isEmpty()) {
                        Q_EMIT set.charPalette(&colors);
                    } else {
                        for (int c = 0; c < std::min<int>(int(table.size()), QRGBPal::Size); ++c)
                            colors.setRgba(c, table.at(c));
                        colors.entries[0].alpha = 0;
                    }
                    characterPalette = set.addPalette(colors, false, 1, 1);
                }
                palette = characterPalette;
            } else if (i == 0 || !samePalette) {
                QRGBPal colors = QRGBPal::fromColorVector(table);
                colors.entries[0].alpha = 0;
                palette = set.addPalette(colors, true, sprite->itemGroup(), -1);
            }
            setPalette(palette);

            // A subfile whose image can't be read leaves an empty sprite,
            // which the check reports.
            if (!image.isNull()) {
                QImageInfo info;
                info.width = quint16(image.width());
                info.height = quint16(image.height());
                info.format = image.format();
                QByteArray pixels = imagePixels(image);
                // Indexes beyond a short palette would show colours it
                // doesn't have: they take the first index of their colour.
                bool cleaned = false;
                if (palette && palette->colorCount() < QRGBPal::Size && info.format == QImageInfo::Indexed) {
                    const int colorCount = palette->colorCount();
                    uchar *p = reinterpret_cast<uchar *>(pixels.data());
                    for (qsizetype y = 0; y < info.height; ++y) {
                        uchar *line = p + y * info.bytesPerLine();
                        for (int x = 0; x < info.width; ++x) {
                            if (line[x] <= colorCount)
                                continue;
                            const qsizetype first = line[x] < table.size() ? table.indexOf(table.at(line[x])) : -1;
                            const uchar value = first >= 0 ? uchar(first) : uchar(255);
                            cleaned = cleaned || value != line[x];
                            line[x] = value;
                        }
                    }
                }
                // The hash is of the pixels as stored, cleaned or not, so
                // that equal images are found equal.
                const quint64 hash = QStreamCache::hash(pixels);
                RawSpriteEdits::attachData(
                    sprite, cleaned ? QSpriteData::create(set.cache(), pixels, QStreamCacheFilter::Raw, info, hash)
                                    : QSpriteData::create(set.cache(), pcx, QStreamCacheFilter::PCX, info, hash));
            }
        }
        previous = sprite->palette();
        m_sprites.append(sprite);
        if (!step(std::min<uint>(i + 1, total), total))
            return false;
    }
    return true;
}

void SffReader::linkEqualImages()
{
    QSprites &set = *m_set;
    QStreamCache *cache = set.cache();
    // Candidates by hash; among them the closest earlier sprite wins, as a
    // walk back from each sprite would find it.
    QHash<ImageKey, QList<int>> seen;
    const quint64 undecodable = QStreamCache::hash(QByteArray());
    for (int i = 0; i < set.count(); ++i) {
        QSprite *sprite = set.at(i);
        QSpriteData *data = sprite->data();
        if (!data)
            continue;
        // An image that can't be decoded is like no other; comparing it
        // with every other such image would take quadratic time.
        const quint64 hash = cache->hashOf(data->entry());
        if (hash == undecodable)
            continue;
        QList<int> &candidates = seen[ImageKey{hash, data->info()}];
        std::optional<QByteArray> pixels;
        for (auto j = candidates.crbegin(); j != candidates.crend(); ++j) {
            QSpriteData *other = set.at(*j)->data();
            if (other == data || !other || other->info() != data->info())
                continue;
            bool equal = cache->same(data->entry(), other->entry());
            // The store takes different bytes of one encoding for different
            // images. Equal hashes are worth a look at the pixels: PCX files
            // of one image often differ only in their colour tables.
            if (!equal && cache->filterOf(data->entry()) == cache->filterOf(other->entry())) {
                if (!pixels)
                    pixels = data->pixels();
                equal = !pixels->isEmpty() && *pixels == other->pixels();
            }
            if (equal) {
                RawSpriteEdits::attachData(sprite, other);
                break;
            }
        }
        candidates.append(i);
    }
}

// Writing

SffWriter::SffWriter(QSprites *set, bool asCopy)
    : m_set(set)
    , m_asCopy(asCopy)
{
}

bool SffWriter::step(uint done, uint total)
{
    bool allow = true;
    Q_EMIT m_set->progress(done, total, allow);
    return allow;
}

bool SffWriter::failed(int position, const QString &reason)
{
    userPrompt->critical(QSprites::tr("Sprite saving error"),
                         QSprites::tr("An error occurred when saving the sprite %1.\n").arg(position) + reason);
    return false;
}

void SffWriter::makeIndexed(QSprite *sprite)
{
    const QImage indexed = QRGBPalette::reduceToIndexed(sprite->image(Default));
    // Sprites sharing the image change with it; those without a palette
    // take the new one, or they would be indexed without colours.
    QList<QSprite *> sharers;
    for (int i = 0; i < m_set->count(); ++i) {
        QSprite *other = m_set->at(i);
        if (other != sprite && other->data() == sprite->data() && !other->palette())
            sharers.append(other);
    }
    // The image's own colours, or an equal palette of the set: a palette
    // the sprite had was never the colours of its true colour pixels.
    sprite->setImage(indexed, InPlace, false, OwnPalette);
    for (QSprite *other : std::as_const(sharers))
        other->setPalette(sprite->palette());
}

bool SffWriter::prepare(bool character)
{
    QSprites &set = *m_set;
    for (int i = 0; i < set.count(); ++i) {
        if (!set.at(i)->data()) {
            userPrompt->critical(
                QSprites::tr("Empty sprite!"),
                QSprites::tr("The sprite at index %1 is empty. You can't save a SFF file with an empty sprite.")
                    .arg(i + 1));
            return false;
        }
    }
    for (int i = 0; i < set.paletteCount(); ++i) {
        if (!set.paletteAt(i)->rgbPal()) {
            userPrompt->critical(
                QSprites::tr("Empty palette!"),
                QSprites::tr("The palette at index %1 is empty. You can't save a SFF file with an empty palette.")
                    .arg(i + 1));
            return false;
        }
    }
    if (set.version() == QSprites::Version_101 || set.version() == QSprites::Version_200) {
        QList<QSprite *> trueColour;
        for (int i = 0; i < set.count(); ++i) {
            if (set.at(i)->data()->format() != QImageInfo::Indexed)
                trueColour.append(set.at(i));
        }
        // No step at all when nothing changes: an empty one would mark the set modified.
        if (!trueColour.isEmpty()) {
            set.beginMacro(QStringLiteral("convertToIndexed"));
            for (QSprite *sprite : std::as_const(trueColour))
                makeIndexed(sprite);
            set.endMacro();
        }
    }
    if (set.version() == QSprites::Version_101 && character) {
        // Version 1.01 passes a palette on only from the sprite just before:
        // a character's own palette can't reach these sprites where they stand.
        QList<uint> positions;
        for (int i = 0; i < set.count(); ++i) {
            const QSprite *sprite = set.at(i);
            if (isCharacterPaletteSprite(sprite) || !sprite->palette() || sprite->palette()->itemGroup() != 1)
                continue;
            const QSpritePalette *before = i > 0 ? set.at(i - 1)->palette() : nullptr;
            if (i == 0 || (before && before->itemGroup() != 1))
                positions.append(uint(i));
        }
        if (!positions.isEmpty())
            Q_EMIT set.orderMustBeChanged(positions);
    }
    return true;
}

bool SffWriter::write(QByteArray &out)
{
    out = Sff::signature();
    put32(out, m_set->version());
    return m_set->version() == QSprites::Version_101 ? writeVersion1(out) : writeVersion2(out);
}

bool SffWriter::writeVersion1(QByteArray &out)
{
    QSprites &set = *m_set;
    QSet<int> groups;
    for (int i = 0; i < set.count(); ++i)
        groups.insert(set.at(i)->itemGroup());
    put32(out, quint32(groups.size()));
    put32(out, quint32(set.count()));
    put32(out, Sff::HeaderSize);
    put32(out, Sff::SubfileHeaderSize);
    put8(out, set.m_paletteType);
    out.append(3, '\0');
    out.append(Sff::stamp(Sff::CommentSize1));

    const uint total = uint(set.count() + set.paletteCount());
    if (!step(0, total))
        return false;
    // A sprite links to the first one before it with the same image and palette.
    QHash<QPair<const QSpriteData *, const QSpritePalette *>, int> firstHolders;
    const QSpritePalette *previous = nullptr;
    for (int i = 0; i < set.count(); ++i) {
        const QSprite *sprite = set.at(i);
        const auto key = qMakePair<const QSpriteData *, const QSpritePalette *>(sprite->data(), sprite->palette());
        const int link = firstHolders.value(key, -1);
        if (link < 0)
            firstHolders.insert(key, i);
        const bool samePalette = sprite->palette() == previous;
        QByteArray pcx;
        if (link < 0 && sprite->data()) {
            pcx = encodePcx(sprite->image(Default));
            if (pcx.isEmpty())
                return failed(i, QSprites::tr("Can't create the PCX file."));
            // With the palette of the sprite before, the colours stay out;
            // the byte that announces them stays in.
            if (samePalette)
                pcx.chop(768);
        }
        put32(out, quint32(out.size() + Sff::SubfileHeaderSize + pcx.size()));
        put32(out, quint32(pcx.size()));
        put16(out, quint16(sprite->offsetX()));
        put16(out, quint16(sprite->offsetY()));
        put16(out, quint16(sprite->itemGroup()));
        put16(out, quint16(sprite->itemIndex()));
        put16(out, quint16(std::max(link, 0)));
        put8(out, samePalette ? 1 : 0);
        out.append(13, '\0');
        out.append(pcx);
        previous = sprite->palette();
        if (!step(uint(i + 1), total))
            return false;
    }
    return true;
}

bool SffWriter::writeVersion2(QByteArray &out)
{
    QSprites &set = *m_set;
    const int paletteCount = set.paletteCount();
    const int spriteCount = set.count();
    const uint total = uint(spriteCount + paletteCount);
    uint done = 0;
    if (!step(0, total))
        return false;

    QByteArray blocks[2]; // ldata, tdata
    QByteArray paletteNodes;
    QHash<const QRGBPal *, int> firstArrays;
    QHash<const QSpritePalette *, int> paletteIndexes;
    for (int p = 0; p < paletteCount; ++p) {
        const QSpritePalette *palette = set.paletteAt(p);
        const QRGBPal *colors = palette->rgbPal();
        paletteIndexes.insert(palette, p);
        const int link = firstArrays.value(colors, -1);
        const quint32 offset = quint32(blocks[0].size());
        quint32 length = 0;
        if (link < 0 && colors) {
            firstArrays.insert(colors, p);
            length = 4u * palette->colorCount();
            blocks[0].append(reinterpret_cast<const char *>(colors->bytes()), qsizetype(length));
        }
        put16(paletteNodes, quint16(palette->itemGroup()));
        put16(paletteNodes, quint16(palette->itemIndex()));
        put16(paletteNodes, palette->colorCount());
        put16(paletteNodes, quint16(std::max(link, 0)));
        put32(paletteNodes, offset);
        put32(paletteNodes, length);
        if (!step(++done, total))
            return false;
    }

    QByteArray spriteNodes;
    QHash<const QSpriteData *, int> firstHolders;
    QHash<const QSpriteData *, bool> fiveBitImages;
    QStreamCache *cache = set.cache();
    for (int i = 0; i < spriteCount; ++i) {
        const QSprite *sprite = set.at(i);
        QSpriteData *data = sprite->data();
        const QSpritePalette *palette = sprite->palette();
        const int link = data ? firstHolders.value(data, -1) : -1;
        if (data && link < 0)
            firstHolders.insert(data, i);
        const int imageFormat = data ? data->format() : QImageInfo::Auto;
        bool fiveBits = imageFormat == QImageInfo::Indexed && palette && palette->colorCount() == 32;
        if (fiveBits) {
            const auto known = fiveBitImages.constFind(data);
            fiveBits = known != fiveBitImages.cend() ? *known : fitsFiveBits(data);
            fiveBitImages.insert(data, fiveBits);
        }
        const int depth = fiveBits ? 5 : QImageInfo::depthOfFormat(imageFormat);
        uchar format = FormatLinked;
        if (link < 0 && data) {
            if (imageFormat == QImageInfo::ARGB)
                format = FormatPng32;
            else if (imageFormat == QImageInfo::RGB)
                format = FormatPng24;
            else if (fiveBits)
                format = FormatLz5;
            else
                format = set.version() == QSprites::Version_200 ? FormatRle8 : FormatPng8;
        }

        QByteArray &block = blocks[(sprite->flags() & DecompressOnLoad) ? 1 : 0];
        const quint32 offset = quint32(block.size());
        QByteArray bytes;
        if (format != FormatLinked) {
            const int filter = filterOfNodeFormat(format);
            if (cache->filterOf(data->entry()) == filter) {
                // Unchanged since it was read or last saved: the bytes go
                // out as they are, without decoding.
                bytes = cache->raw(data->entry());
            } else {
                const QImage image = data->image();
                bytes = format == FormatRle8 ? encodeRle8(image)
                    : format == FormatLz5    ? encodeLz5(image, true)
                                             : encodePng(image);
                // The next save copies them. The pixels are the same, and so
                // is their hash.
                if (!bytes.isEmpty() && !m_asCopy)
                    data->replace(bytes, filter, data->info(), data->entry()->hash());
            }
            // Nothing to write, whether stored so or encoded so, would make
            // a link to sprite 0.
            if (bytes.isEmpty())
                return failed(i, QSprites::tr("Can't compress the image."));
        }
        quint32 length = 0;
        if (!bytes.isEmpty()) {
            length = quint32(bytes.size()) + 4;
            put32(block, quint32(quint64(QImageInfo::depthOfFormat(imageFormat) / 8) * data->width() * data->height()));
            block.append(bytes);
        }
        put16(spriteNodes, quint16(sprite->itemGroup()));
        put16(spriteNodes, quint16(sprite->itemIndex()));
        put16(spriteNodes, data ? data->width() : 0);
        put16(spriteNodes, data ? data->height() : 0);
        put16(spriteNodes, quint16(sprite->offsetX()));
        put16(spriteNodes, quint16(sprite->offsetY()));
        put16(spriteNodes, quint16(std::max(link, 0)));
        put8(spriteNodes, format);
        put8(spriteNodes, uchar(depth));
        put32(spriteNodes, offset);
        put32(spriteNodes, length);
        put16(spriteNodes, quint16(palette ? paletteIndexes.value(palette, 0) : 0));
        put16(spriteNodes, sprite->flags());
        if (!step(++done, total))
            return false;
    }

    const quint32 firstSprite = quint32(paletteCount + 32) * Sff::PaletteNodeSize;
    const quint32 ldata = firstSprite + quint32(spriteCount) * Sff::SpriteNodeSize;
    const quint32 tdata = ldata + quint32(blocks[0].size());
    put32(out, 0);
    put32(out, 0);
    put32(out, set.version());
    put32(out, 0);
    put32(out, 0);
    put32(out, firstSprite);
    put32(out, quint32(spriteCount));
    put32(out, Sff::HeaderSize);
    put32(out, quint32(paletteCount));
    put32(out, ldata);
    put32(out, quint32(blocks[0].size()));
    put32(out, tdata);
    put32(out, quint32(blocks[1].size()));
    put32(out, 0);
    put32(out, 0);
    out.append(Sff::stamp(Sff::CommentSize2));
    out.reserve(out.size() + paletteNodes.size() + spriteNodes.size() + blocks[0].size() + blocks[1].size());
    out.append(paletteNodes);
    out.append(spriteNodes);
    out.append(blocks[0]);
    out.append(blocks[1]);
    return true;
}

// The set's side

bool QSprites::fromFile(const QString &fileName, bool keepName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return fromDevice(&file, fileName, keepName);
}

bool QSprites::fromDevice(QIODevice *device, const QString &fileName, bool keepName)
{
    return SffReader(this, device, fileName).load(keepName);
}

bool QSprites::toFile(const QString &fileName, quint32 version, bool asCopy)
{
    if (version != 0)
        m_version = version;
    SffWriter writer(this, asCopy);
    QByteArray bytes;
    if (!writer.prepare(isCharacterSet(this)) || !writer.write(bytes))
        return false;
    // Written aside and renamed over the target: a failed save leaves an
    // earlier file as it was.
    if (!writeFileAtomically(fileName, bytes))
        return false;
    // A copy (a backup, a test run) leaves the document as it was, name and
    // modified state alike.
    if (!asCopy) {
        m_fileName = fileName;
        m_readProblems.clear();
        setModified(false);
    }
    return true;
}
