#pragma once

// The undo commands of a sprite set, and the raw edits they replay.
//
// Commands hold positions, never pointers to sprites or palettes: every
// change of a set goes through its stack in order, so a position recorded by
// a command names the same item again when the command is undone or redone.
// Images that a command keeps aside live in the process-wide "sprUndo" store
// (disk mode, compressed), not in the set's own store, whose entries take
// part in the search for identical images.

#include "qimageinfo.h"
#include "qrgbpal.h"

#include <QByteArray>
#include <QList>
#include <QUndoCommand>

#include <memory>

class QSprite;
class QSpriteData;
class QSpritePalette;
class QSprites;
class QStreamCache;
class QStreamCacheEntry;

/**
 * The raw changes of a set: no undo, no checks beyond positions, only the
 * model's signals and the set's change notification. Undo commands replay
 * through them; the set's own operations use them once they have pushed
 * their commands.
 */
class RawSpriteEdits
{
public:
    static QSprite *newSprite(QSprites *set);
    static QSpritePalette *newPalette(QSprites *set);
    static void insertSprite(QSprites *set, int at, QSprite *sprite);
    /** Takes the sprite out of the list; the caller owns it. */
    static QSprite *takeSprite(QSprites *set, int at);
    static void moveSprite(QSprites *set, int from, int to);
    static void insertPalette(QSprites *set, int at, QSpritePalette *palette);
    /** Takes the palette out of the list; sprites still using it lose it. The caller owns it. */
    static QSpritePalette *takePalette(QSprites *set, int at);
    static void movePalette(QSprites *set, int from, int to);
    /** The sprite lets go of its handle and holds `data` (may be null). */
    static void attachData(QSprite *sprite, QSpriteData *data);
    /** The palette lets go of its array and holds `colors` (may be null). */
    static void attachColors(QSpritePalette *palette, QRGBPal *colors);
    /** The palette's array, which setColors() alone may change. */
    static QRGBPal *colorsOf(QSpritePalette *palette);
    static void setSpriteInfo(QSprite *sprite, int group, int index, int x, int y, quint16 flags,
                              QSpritePalette *palette);
    static void setPaletteInfo(QSpritePalette *palette, int group, int index, int colorCount);
    static QStreamCache *cache(QSprites *set);

    /** While it lives, the set's undo is off and its changes are replays of the stack. */
    class Replay
    {
    public:
        explicit Replay(QSprites *set);
        ~Replay();
        Replay(const Replay &) = delete;
        Replay &operator=(const Replay &) = delete;

    private:
        QSprites *m_set;
        bool m_undoEnabled;
        bool m_replaying;
    };
};

/**
 * The image bytes of a store entry in a form that goes back into any store:
 * as given to the store (encoded, or raw pixels before the store's own
 * compression), with the filter that decodes them, the image's size and
 * format, and the hash of its pixels (0 when not yet known).
 */
struct StoredImage
{
    QByteArray bytes;
    int filter = 0;
    QImageInfo info;
    quint64 hash = 0;

    bool isNull() const { return bytes.isEmpty(); }
    /** What `entry` of `cache` holds; null for a null entry. */
    static StoredImage of(const QStreamCache &cache, const QStreamCacheEntry *entry);
};

/**
 * An image kept aside by a command, in the "sprUndo" store, in the form its
 * sprite store had: an image that came encoded from a file goes back
 * encoded, and a later save still copies it. Released with the object.
 */
class UndoImage
{
public:
    UndoImage() = default;
    explicit UndoImage(const StoredImage &image);
    UndoImage(UndoImage &&other) noexcept;
    UndoImage &operator=(UndoImage &&other) noexcept;
    UndoImage(const UndoImage &) = delete;
    UndoImage &operator=(const UndoImage &) = delete;
    ~UndoImage();

    bool isNull() const { return m_entry == nullptr; }
    /** A new handle of `cache` (count 0) holding the image; null for a null image. */
    QSpriteData *makeData(QStreamCache *cache) const;

private:
    QStreamCacheEntry *m_entry = nullptr;
};

/** The process-wide store of undo images, "sprUndo": disk mode, compressed. */
QStreamCache &spriteUndoStore();

/**
 * The base of the set's commands. The first redo, the one that push()
 * makes, does nothing: the operation has been done already. Every later
 * undo and redo replays with the set's undo off.
 */
class SpriteUndoCommand : public QUndoCommand
{
public:
    explicit SpriteUndoCommand(QSprites *set);

    void undo() final;
    void redo() final;

protected:
    /** Replays the change forward (`forward`) or back. */
    virtual void apply(bool forward) = 0;

    QSprites *m_set;

private:
    bool m_first = true;
};

/** The info of a sprite, with its palette as a position (-1 for none). */
struct SpriteFields
{
    qint32 group = 0;
    qint32 index = 0;
    qint32 x = 0;
    qint32 y = 0;
    quint16 flags = 0;
    int palette = -1;

    static SpriteFields of(const QSprite *sprite);
    void applyTo(QSprites *set, QSprite *sprite) const;
};

/**
 * Which of a few items share their data and what that data is (see the
 * .cpp); `Traits` says whether the items are sprites and their images or
 * palettes and their colours.
 */
template <class Traits>
class ShareSnapshot;
struct SpriteImageTraits;
struct PaletteColorTraits;

/** An item of a list moved from one place to another, by `Move`. */
template <void (*Move)(QSprites *, int, int)>
class ListMove : public SpriteUndoCommand
{
public:
    ListMove(QSprites *set, int from, int to)
        : SpriteUndoCommand(set)
        , m_from(from)
        , m_to(to)
    {
    }

protected:
    void apply(bool forward) override { forward ? Move(m_set, m_from, m_to) : Move(m_set, m_to, m_from); }

private:
    int m_from;
    int m_to;
};

/**
 * The shared data of an item swapped, with every item that shared it then:
 * their content and which of them, and of the others, they share it with.
 */
template <class Traits>
class ChangeShared : public SpriteUndoCommand
{
public:
    /** Keeps the data of the item at `position` and of its sharers, as they are now. */
    ChangeShared(QSprites *set, int position);
    ~ChangeShared() override;

protected:
    void apply(bool forward) override;

private:
    std::unique_ptr<ShareSnapshot<Traits>> m_state;
};

/** A sprite moved. */
class SpriteMove : public ListMove<&RawSpriteEdits::moveSprite>
{
public:
    using ListMove::ListMove;
};

/**
 * `Base`, which can insert and remove one item, as the command of an
 * insertion (`inserts`) or of a removal.
 */
template <class Base, bool inserts>
class InsertOrRemove : public Base
{
public:
    using Base::Base;

protected:
    void apply(bool forward) override { forward == inserts ? this->insert() : this->remove(); }
};

/** A sprite that is in the list on one side of the command and not on the other. */
class SpriteInsertRemove : public SpriteUndoCommand
{
public:
    /** Keeps everything of the sprite at `position`, which is in the list now. */
    SpriteInsertRemove(QSprites *set, int position);

protected:
    void insert();
    void remove();

private:
    int m_position;
    SpriteFields m_fields;
    /** The first other sprite sharing the image, as a position in the list without this one; or -1. */
    int m_anchor = -1;
    UndoImage m_image;
};

/** A sprite inserted; made after the sprite went into the list. */
class SpriteInsert : public InsertOrRemove<SpriteInsertRemove, true>
{
public:
    using InsertOrRemove::InsertOrRemove;
};

/** A sprite removed; made while the sprite is still in the list. */
class SpriteRemove : public InsertOrRemove<SpriteInsertRemove, false>
{
public:
    using InsertOrRemove::InsertOrRemove;
};

/** Group, index, axis, flags and palette of a sprite, swapped. */
class SpriteChangeInfo : public SpriteUndoCommand
{
public:
    SpriteChangeInfo(QSprites *set, int position);

protected:
    void apply(bool forward) override;

private:
    int m_position;
    SpriteFields m_fields;
};

/** The image of a sprite, and of every sprite that shared it, swapped with their sharing. */
class SpriteChangeImage : public ChangeShared<SpriteImageTraits>
{
public:
    using ChangeShared::ChangeShared;
};

/** A palette that is in the list on one side of the command and not on the other. */
class PaletteInsertRemove : public SpriteUndoCommand
{
public:
    /** Keeps everything of the palette at `position`, which is in the list now. */
    PaletteInsertRemove(QSprites *set, int position);

protected:
    void insert();
    void remove();

private:
    int m_position;
    qint32 m_group;
    qint32 m_index;
    quint16 m_colorCount;
    /** Empty for a palette without colours. */
    QByteArray m_colors;
    /** The first other palette sharing the array, as a position in the list without this one; or -1. */
    int m_anchor = -1;
};

/** A palette inserted; made after the palette went into the list. */
class PaletteInsert : public InsertOrRemove<PaletteInsertRemove, true>
{
public:
    using InsertOrRemove::InsertOrRemove;
};

/** A palette removed; made while the palette is still in the list. */
class PaletteRemove : public InsertOrRemove<PaletteInsertRemove, false>
{
public:
    using InsertOrRemove::InsertOrRemove;
};

/** A palette moved. */
class PaletteMove : public ListMove<&RawSpriteEdits::movePalette>
{
public:
    using ListMove::ListMove;
};

/** Group, index and colour count of a palette, swapped. */
class PaletteChangeInfo : public SpriteUndoCommand
{
public:
    PaletteChangeInfo(QSprites *set, int position);

protected:
    void apply(bool forward) override;

private:
    int m_position;
    qint32 m_group;
    qint32 m_index;
    quint16 m_colorCount;
};

/** The colours of a palette, and of every palette that shared them, swapped with their sharing. */
class PaletteChangeColors : public ChangeShared<PaletteColorTraits>
{
public:
    using ChangeShared::ChangeShared;
};
