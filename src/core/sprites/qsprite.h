#pragma once

#include "../base/qsubitem.h"
#include "qimageinfo.h"

#include <QByteArray>
#include <QImage>
#include <QObject>
#include <QPoint>

class QSpritePalette;
class QSprites;
class QStreamCache;
class QStreamCacheEntry;

/** Flags of a sprite. */
enum QSpriteFlag : quint16 {
    /** The engine decompresses the image when it loads the file (it lies in the tdata block). */
    DecompressOnLoad = 1
};

/** What setImage() does with palettes. */
enum QSpritePaletteMode {
    /** Keep the sprite's palette; an indexed image without one still brings its own. */
    Ignore = 0,
    /** The image's colour table becomes the sprite's palette (an equal palette is reused). */
    OwnPalette = 1,
    /** The image is converted to the colours of the palette named, which the sprite takes. */
    AdaptImage = 2,
    /** The sprite takes the palette named; the pixels stay as they are. */
    SwapPalette = 3
};

/** The colour table that QSprite::image() gives an indexed image. */
enum QSpriteImagePalette {
    /** No colour table at all. */
    NoColorTable = 0,
    /** The colours of the sprite's palette. */
    Default = 1,
    /** The colours of the palette the remap table puts in place of the sprite's. */
    Remapped = 2
};

/** How a change of an image or of colours treats the others that share them. */
enum QSpriteShareMode {
    /** Everything sharing the data changes with it; equal data elsewhere is shared. */
    Share = 0,
    /** Only this item changes; it never starts sharing. */
    NoShare = 1,
    /** Asks which of the sharers follow the change. */
    AskToShare = 2,
    /**
     * Internal: overwrite the image of the handle in place, for every sprite
     * that holds it, without looking for equal images (crop, conversion).
     */
    InPlace = 3
};

/**
 * A reference-counted handle on one image of a sprite set's store.
 *
 * Sprites whose images are identical hold the same handle. The count is a
 * plain integer (everything runs on the main thread); the last release
 * deletes the handle and gives its store entry back.
 */
class QSpriteData
{
public:
    /**
     * A new handle, held by nobody yet (count 0), over a new store entry of
     * `cache` with `bytes` that `filter` decodes into an image of `info`.
     * `hash` is the hash of the decoded pixels when known, else 0.
     */
    static QSpriteData *create(QStreamCache *cache, const QByteArray &bytes, int filter, const QImageInfo &info,
                               quint64 hash = 0);
    /** Drops one reference of `data` (may be null); deletes it when none is left. */
    static void release(QSpriteData *data);

    QSpriteData(const QSpriteData &) = delete;
    QSpriteData &operator=(const QSpriteData &) = delete;

    quint16 width() const { return m_info.width; }
    quint16 height() const { return m_info.height; }
    /** A QImageInfo format: 3 indexed, 4 RGB, 5 ARGB. */
    qint32 format() const { return m_info.format; }
    const QImageInfo &info() const { return m_info; }
    int refCount() const { return m_refCount; }
    QStreamCache *cache() const { return m_cache; }
    QStreamCacheEntry *entry() const { return m_entry; }

    void addRef() { ++m_refCount; }
    /** The decoded pixels in the toolkit's line layout; empty when they can't be decoded. */
    QByteArray pixels() const;
    /** The image; null when it can't be decoded. Indexed images come without colours. */
    QImage image() const;
    /** Gives the handle new bytes; every sprite holding it sees them. */
    void replace(const QByteArray &bytes, int filter, const QImageInfo &info, quint64 hash = 0);

private:
    QSpriteData() = default;
    ~QSpriteData();

    QImageInfo m_info;
    int m_refCount = 0;
    QStreamCache *m_cache = nullptr;
    QStreamCacheEntry *m_entry = nullptr;
};

/**
 * One sprite of a set: an image handle (null for an empty sprite), a palette
 * (may be null), its group and index, its axis and its flags.
 *
 * Every setter goes through the set: with undo on it pushes a command first,
 * and it marks the set modified. The set owns its sprites.
 */
class QSprite : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int itemGroup READ itemGroup WRITE setItemGroup)
    Q_PROPERTY(int itemIndex READ itemIndex WRITE setItemIndex)
    Q_PROPERTY(int offsetX READ offsetX WRITE setOffsetX)
    Q_PROPERTY(int offsetY READ offsetY WRITE setOffsetY)
    Q_PROPERTY(int index READ index)

public:
    ~QSprite() override;

    QSprites *owner() const { return m_owner; }
    /** The image handle; null for an empty sprite. */
    QSpriteData *data() const { return m_data; }
    QSpritePalette *palette() const { return m_palette; }
    int itemGroup() const { return m_group; }
    int itemIndex() const { return m_index; }
    /** The axis, in pixels from the image's top left corner. */
    int offsetX() const { return m_x; }
    int offsetY() const { return m_y; }
    /** QSpriteFlag bits. */
    quint16 flags() const { return m_flags; }
    bool flag(int f) const { return (m_flags & f) != 0; }

    void setItemGroup(int group);
    void setItemIndex(int index);
    void setOffsetX(int x);
    void setOffsetY(int y);
    /** `palette` must belong to the same set, or be null. */
    void setPalette(QSpritePalette *palette);
    void setFlag(int f, bool on);
    /** Sets every field at once, as one undo step. */
    void setInfo(int group, int index, int x, int y, quint16 flags, QSpritePalette *palette);

    /** The place in the set's list, from 0. */
    int index() const;
    /** Whether another sprite holds the same image handle. */
    bool imageIsShared() const;
    /** Width, height and format; all 0 for an empty sprite. */
    QImageInfo imageProperties() const;
    /**
     * A new decoded copy of the image (QSpriteImagePalette `mode` for the
     * colours of an indexed one); null for an empty sprite. A sprite
     * without a palette gets 256 zero colours.
     */
    QImage image(int mode = Default) const;

    /**
     * Replaces the image.
     *
     * `shareMode` (QSpriteShareMode) decides what happens to other sprites
     * that hold the same handle, and whether a sprite with an identical image
     * is joined. `invertIndexes` turns every index p of an indexed image into
     * 255 - p and reverses its colours. `paletteAction` (QSpritePaletteMode)
     * and `paletteItem` pick the sprite's palette. A null image makes the
     * sprite empty. One undo step. False only for an image too large for a
     * sprite (65535 pixels a side), which changes nothing.
     */
    bool setImage(const QImage &image, int shareMode, bool invertIndexes = false, int paletteAction = Ignore,
                  QSubItem paletteItem = QSubItem());

    /**
     * Cuts the image down to its content: pixels other than index 0, or
     * other than the top left pixel's colour in true colour. Every sprite
     * holding the image changes with it and keeps its place on screen (its
     * axis moves). False, and nothing on the undo stack, when there is
     * nothing to cut.
     */
    bool crop();
    /**
     * Splits a true colour image into three indexed images of its red, green
     * and blue channels, each with a gradient palette: red replaces the
     * image, green and blue become new sprites behind it with the index + 1.
     */
    void splitRGB();
    /** A new sprite right behind this one, sharing its image and palette. */
    QSprite *duplicate();

    /**
     * The image (with its palette's colours) on a canvas of maxAxis +
     * maxRest, filled with 0, placed so that the axis lies at maxAxis.
     * Null for an empty sprite.
     */
    QImage alignedImage(const QPoint &maxAxis, const QPoint &maxRest) const;
    /** Writes alignedImage() to `path`: PCX for ".pcx", otherwise by the toolkit from the suffix. */
    bool saveAligned(const QString &path, const QPoint &maxAxis, const QPoint &maxRest) const;
    /**
     * Writes `image` to `path` atomically, in the format its suffix names:
     * PCX through the sprite codecs, the others through the toolkit. False
     * for a null image or a failed write, which leaves an earlier file as
     * it was.
     */
    static bool writeImage(const QImage &image, const QString &path);

private:
    friend class QSprites;
    friend class RawSpriteEdits;

    explicit QSprite(QSprites *owner);
    /** Holds `data` instead of the current handle, without undo. */
    void attachData(QSpriteData *data);
    /** The sharing rules of setImage() for the pixels of `image`, without undo. */
    void storeImage(const QImage &image, int shareMode);

    QSprites *m_owner;
    QSpriteData *m_data = nullptr;
    QSpritePalette *m_palette = nullptr;
    qint32 m_group = 0;
    qint32 m_index = 0;
    qint32 m_x = 0;
    qint32 m_y = 0;
    quint16 m_flags = 0;
};
