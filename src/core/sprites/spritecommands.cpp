#include "spritecommands.h"

#include "qsprites.h"
#include "qstreamcache.h"
#include "qstreamcachefilter.h"

#include <QHash>
#include <QSet>

#include <utility>
#include <vector>

// The raw edits.

QSprite *RawSpriteEdits::newSprite(QSprites *set)
{
    return new QSprite(set);
}

QSpritePalette *RawSpriteEdits::newPalette(QSprites *set)
{
    return new QSpritePalette(set);
}

void RawSpriteEdits::insertSprite(QSprites *set, int at, QSprite *sprite)
{
    set->insertSprite(at, sprite);
}

QSprite *RawSpriteEdits::takeSprite(QSprites *set, int at)
{
    return set->takeSprite(at);
}

void RawSpriteEdits::moveSprite(QSprites *set, int from, int to)
{
    set->moveSprite(from, to);
}

void RawSpriteEdits::insertPalette(QSprites *set, int at, QSpritePalette *palette)
{
    set->insertPaletteObject(at, palette);
}

QSpritePalette *RawSpriteEdits::takePalette(QSprites *set, int at)
{
    return set->takePalette(at);
}

void RawSpriteEdits::movePalette(QSprites *set, int from, int to)
{
    set->movePaletteObject(from, to);
}

void RawSpriteEdits::attachData(QSprite *sprite, QSpriteData *data)
{
    sprite->attachData(data);
}

void RawSpriteEdits::attachColors(QSpritePalette *palette, QRGBPal *colors)
{
    palette->attachColors(colors);
}

QRGBPal *RawSpriteEdits::colorsOf(QSpritePalette *palette)
{
    return palette->m_colors;
}

void RawSpriteEdits::setSpriteInfo(QSprite *sprite, int group, int index, int x, int y, quint16 flags,
                                   QSpritePalette *palette)
{
    sprite->m_group = group;
    sprite->m_index = index;
    sprite->m_x = x;
    sprite->m_y = y;
    sprite->m_flags = flags;
    sprite->m_palette = palette;
    sprite->m_owner->spriteChanged(sprite);
}

void RawSpriteEdits::setPaletteInfo(QSpritePalette *palette, int group, int index, int colorCount)
{
    palette->m_group = group;
    palette->m_index = index;
    palette->m_colorCount = quint16(colorCount);
    palette->m_owner->paletteChanged(palette);
}

QStreamCache *RawSpriteEdits::cache(QSprites *set)
{
    return &set->m_cache;
}

RawSpriteEdits::Replay::Replay(QSprites *set)
    : m_set(set)
    , m_undoEnabled(set->m_undoEnabled)
    , m_replaying(set->m_replaying)
{
    set->m_undoEnabled = false;
    set->m_replaying = true;
}

RawSpriteEdits::Replay::~Replay()
{
    m_set->m_undoEnabled = m_undoEnabled;
    m_set->m_replaying = m_replaying;
}

// Images kept aside.

StoredImage StoredImage::of(const QStreamCache &cache, const QStreamCacheEntry *entry)
{
    StoredImage image;
    if (!entry)
        return image;
    image.filter = entry->filter();
    image.info = entry->info();
    image.hash = entry->hash();
    // Raw pixels come back out of the store's own compression; encoded
    // forms are kept as the store was given them.
    image.bytes = image.filter == QStreamCacheFilter::Raw ? cache.decoded(entry) : cache.raw(entry);
    return image;
}

namespace {

/**
 * The "sprUndo" store, with the releases it hasn't carried out yet. A stack
 * drops its commands oldest first, and their images are the first in the
 * file: released one by one, each would move all the file behind it again.
 * Released images are given back together, in one compaction, once they
 * take as much room as the images still kept, so that a byte is moved a
 * bounded number of times.
 */
class UndoImageStore
{
public:
    static UndoImageStore &instance()
    {
        static UndoImageStore store;
        return store;
    }

    QStreamCache &cache() { return m_cache; }

    QStreamCacheEntry *add(const StoredImage &image)
    {
        QStreamCacheEntry *entry = m_cache.add(image.bytes, image.filter, image.info, image.hash);
        m_keptBytes += entry->storedSize();
        return entry;
    }

    void release(QStreamCacheEntry *entry)
    {
        if (!entry)
            return;
        m_keptBytes -= entry->storedSize();
        m_droppedBytes += entry->storedSize();
        m_dropped.append(entry);
        if (m_droppedBytes >= m_keptBytes) {
            m_cache.release(m_dropped);
            m_dropped.clear();
            m_droppedBytes = 0;
        }
    }

private:
    UndoImageStore()
        : m_cache(QStringLiteral("sprUndo"), QStreamCache::Disk, true, -1)
    {
    }

    QStreamCache m_cache;
    QList<QStreamCacheEntry *> m_dropped;
    qint64 m_droppedBytes = 0;
    qint64 m_keptBytes = 0;
};

} // namespace

QStreamCache &spriteUndoStore()
{
    return UndoImageStore::instance().cache();
}

UndoImage::UndoImage(const StoredImage &image)
{
    if (!image.isNull())
        m_entry = UndoImageStore::instance().add(image);
}

UndoImage::UndoImage(UndoImage &&other) noexcept
    : m_entry(std::exchange(other.m_entry, nullptr))
{
}

UndoImage &UndoImage::operator=(UndoImage &&other) noexcept
{
    if (this != &other) {
        UndoImageStore::instance().release(m_entry);
        m_entry = std::exchange(other.m_entry, nullptr);
    }
    return *this;
}

UndoImage::~UndoImage()
{
    UndoImageStore::instance().release(m_entry);
}

QSpriteData *UndoImage::makeData(QStreamCache *cache) const
{
    const StoredImage image = StoredImage::of(spriteUndoStore(), m_entry);
    if (image.isNull())
        return nullptr;
    return QSpriteData::create(cache, image.bytes, image.filter, image.info, image.hash);
}

// Commands.

SpriteUndoCommand::SpriteUndoCommand(QSprites *set)
    : m_set(set)
{
}

void SpriteUndoCommand::redo()
{
    // The push: the operation has been done already.
    if (m_first) {
        m_first = false;
        return;
    }
    RawSpriteEdits::Replay replay(m_set);
    apply(true);
}

void SpriteUndoCommand::undo()
{
    m_first = false;
    RawSpriteEdits::Replay replay(m_set);
    apply(false);
}

SpriteFields SpriteFields::of(const QSprite *sprite)
{
    SpriteFields fields;
    fields.group = sprite->itemGroup();
    fields.index = sprite->itemIndex();
    fields.x = sprite->offsetX();
    fields.y = sprite->offsetY();
    fields.flags = sprite->flags();
    fields.palette = sprite->palette() ? sprite->palette()->index() : -1;
    return fields;
}

void SpriteFields::applyTo(QSprites *set, QSprite *sprite) const
{
    RawSpriteEdits::setSpriteInfo(sprite, group, index, x, y, flags, set->paletteAt(palette));
}

/** Sprites and their image handles, for ShareSnapshot and ChangeShared. */
struct SpriteImageTraits
{
    using Handle = QSpriteData;
    using Content = UndoImage;

    static int count(QSprites *set) { return set->count(); }
    static QSpriteData *handle(QSprites *set, int position) { return set->at(position)->data(); }
    static UndoImage keep(QSpriteData *data) { return UndoImage(StoredImage::of(*data->cache(), data->entry())); }
    static QSpriteData *make(QSprites *set, const UndoImage &image) { return image.makeData(RawSpriteEdits::cache(set)); }
    static void attach(QSprites *set, int position, QSpriteData *data)
    {
        RawSpriteEdits::attachData(set->at(position), data);
    }
};

/** Palettes and their colour arrays, for ShareSnapshot and ChangeShared. */
struct PaletteColorTraits
{
    using Handle = QRGBPal;
    using Content = QByteArray;

    static int count(QSprites *set) { return set->paletteCount(); }
    static QRGBPal *handle(QSprites *set, int position) { return RawSpriteEdits::colorsOf(set->paletteAt(position)); }
    static QByteArray keep(const QRGBPal *colors) { return colors->toByteArray(); }
    static QRGBPal *make(QSprites *, const QByteArray &bytes)
    {
        if (bytes.isEmpty())
            return nullptr;
        auto *colors = new QRGBPal(QRGBPal::fromByteArray(bytes));
        colors->refCount = 0;
        return colors;
    }
    static void attach(QSprites *set, int position, QRGBPal *colors)
    {
        RawSpriteEdits::attachColors(set->paletteAt(position), colors);
    }
};

/**
 * Which of a few items share their data, and what that data is: enough to
 * put back the content and the sharing they had. Items that share their
 * data with one outside the few are tied to that one again, whose data
 * nothing of this changed; the others get fresh data made from what was
 * kept, shared among them as it was.
 */
template <class Traits>
class ShareSnapshot
{
public:
    ShareSnapshot(QSprites *set, const QList<int> &positions)
        : m_positions(positions)
    {
        capture(set);
    }

    /** Puts this state back and keeps the one it replaced instead. */
    void swap(QSprites *set)
    {
        ShareSnapshot current(set, m_positions);
        restore(set);
        m_groups = std::move(current.m_groups);
    }

private:
    struct Group
    {
        QList<int> members;
        /** An item outside the few that shares the data, or -1. */
        int anchor = -1;
        /** The data, when no item outside holds it. */
        typename Traits::Content content;
    };

    void capture(QSprites *set)
    {
        const QSet<int> inside(m_positions.cbegin(), m_positions.cend());
        QHash<const typename Traits::Handle *, size_t> groupOf;
        for (const int position : std::as_const(m_positions)) {
            const typename Traits::Handle *handle = Traits::handle(set, position);
            if (handle) {
                const auto known = groupOf.constFind(handle);
                if (known != groupOf.cend()) {
                    m_groups[*known].members.append(position);
                    continue;
                }
                groupOf.insert(handle, m_groups.size());
            }
            Group group;
            group.members.append(position);
            if (handle) {
                for (int other = 0; other < Traits::count(set) && group.anchor < 0; ++other) {
                    if (!inside.contains(other) && Traits::handle(set, other) == handle)
                        group.anchor = other;
                }
                if (group.anchor < 0)
                    group.content = Traits::keep(Traits::handle(set, position));
            }
            m_groups.push_back(std::move(group));
        }
    }

    void restore(QSprites *set) const
    {
        // Everything is let go first, so that data nobody keeps goes away
        // before fresh data is made.
        for (const Group &group : m_groups) {
            for (const int member : group.members)
                Traits::attach(set, member, nullptr);
        }
        for (const Group &group : m_groups) {
            typename Traits::Handle *handle =
                group.anchor >= 0 ? Traits::handle(set, group.anchor) : Traits::make(set, group.content);
            for (const int member : group.members)
                Traits::attach(set, member, handle);
        }
    }

    QList<int> m_positions;
    std::vector<Group> m_groups;
};

template <class Traits>
ChangeShared<Traits>::ChangeShared(QSprites *set, int position)
    : SpriteUndoCommand(set)
{
    QList<int> positions{position};
    if (const typename Traits::Handle *handle = Traits::handle(set, position)) {
        for (int other = 0; other < Traits::count(set); ++other) {
            if (other != position && Traits::handle(set, other) == handle)
                positions.append(other);
        }
    }
    m_state = std::make_unique<ShareSnapshot<Traits>>(set, positions);
}

template <class Traits>
ChangeShared<Traits>::~ChangeShared() = default;

template <class Traits>
void ChangeShared<Traits>::apply(bool)
{
    m_state->swap(m_set);
}

template class ChangeShared<SpriteImageTraits>;
template class ChangeShared<PaletteColorTraits>;

SpriteInsertRemove::SpriteInsertRemove(QSprites *set, int position)
    : SpriteUndoCommand(set)
    , m_position(position)
{
    const QSprite *sprite = set->at(position);
    m_fields = SpriteFields::of(sprite);
    QSpriteData *data = sprite->data();
    if (!data)
        return;
    for (int i = 0; i < set->count() && m_anchor < 0; ++i) {
        if (i != position && set->at(i)->data() == data)
            m_anchor = i < position ? i : i - 1;
    }
    if (m_anchor < 0)
        m_image = SpriteImageTraits::keep(data);
}

void SpriteInsertRemove::insert()
{
    QSprite *sprite = RawSpriteEdits::newSprite(m_set);
    RawSpriteEdits::attachData(sprite, m_anchor >= 0 ? m_set->at(m_anchor)->data()
                                                     : SpriteImageTraits::make(m_set, m_image));
    m_fields.applyTo(m_set, sprite);
    RawSpriteEdits::insertSprite(m_set, m_position, sprite);
}

void SpriteInsertRemove::remove()
{
    delete RawSpriteEdits::takeSprite(m_set, m_position);
}

SpriteChangeInfo::SpriteChangeInfo(QSprites *set, int position)
    : SpriteUndoCommand(set)
    , m_position(position)
    , m_fields(SpriteFields::of(set->at(position)))
{
}

void SpriteChangeInfo::apply(bool)
{
    QSprite *sprite = m_set->at(m_position);
    const SpriteFields current = SpriteFields::of(sprite);
    m_fields.applyTo(m_set, sprite);
    m_fields = current;
}

PaletteInsertRemove::PaletteInsertRemove(QSprites *set, int position)
    : SpriteUndoCommand(set)
    , m_position(position)
{
    QSpritePalette *palette = set->paletteAt(position);
    m_group = palette->itemGroup();
    m_index = palette->itemIndex();
    m_colorCount = palette->colorCount();
    const QRGBPal *colors = palette->rgbPal();
    if (!colors)
        return;
    for (int i = 0; i < set->paletteCount() && m_anchor < 0; ++i) {
        if (i != position && set->paletteAt(i)->rgbPal() == colors)
            m_anchor = i < position ? i : i - 1;
    }
    if (m_anchor < 0)
        m_colors = PaletteColorTraits::keep(colors);
}

void PaletteInsertRemove::insert()
{
    QSpritePalette *palette = RawSpriteEdits::newPalette(m_set);
    RawSpriteEdits::attachColors(palette, m_anchor >= 0 ? RawSpriteEdits::colorsOf(m_set->paletteAt(m_anchor))
                                                        : PaletteColorTraits::make(m_set, m_colors));
    RawSpriteEdits::setPaletteInfo(palette, m_group, m_index, m_colorCount);
    RawSpriteEdits::insertPalette(m_set, m_position, palette);
}

void PaletteInsertRemove::remove()
{
    delete RawSpriteEdits::takePalette(m_set, m_position);
}

PaletteChangeInfo::PaletteChangeInfo(QSprites *set, int position)
    : SpriteUndoCommand(set)
    , m_position(position)
{
    const QSpritePalette *palette = set->paletteAt(position);
    m_group = palette->itemGroup();
    m_index = palette->itemIndex();
    m_colorCount = palette->colorCount();
}

void PaletteChangeInfo::apply(bool)
{
    QSpritePalette *palette = m_set->paletteAt(m_position);
    const qint32 group = palette->itemGroup();
    const qint32 index = palette->itemIndex();
    const quint16 colorCount = palette->colorCount();
    RawSpriteEdits::setPaletteInfo(palette, m_group, m_index, m_colorCount);
    m_group = group;
    m_index = index;
    m_colorCount = colorCount;
}
