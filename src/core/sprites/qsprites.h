#pragma once

#include "../base/qorganizableobject.h"
#include "../base/qprojectfile.h"
#include "qpaletteobject.h"
#include "qremapmodel.h"
#include "qrgbpal.h"
#include "qsprite.h"
#include "qspritepalette.h"
#include "qstreamcache.h"

#include <QList>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QUndoStack>

class QIODevice;

/**
 * The sprite document of a project: one SFF file as an ordered list of
 * sprites, an ordered list of palettes, an image store and an undo stack.
 *
 * It is the list model of the sprites; palettes() and remaps() are the
 * models of the palette list and of the remap table. Everything that
 * changes a sprite or a palette goes through this class or through the
 * setters of QSprite and QSpritePalette, which come back here: with undo on,
 * each change pushes a command first (a change of many items is one macro,
 * so one undo step), marks the set modified and emits changed(). Undoing
 * back to the state of the last load or save makes the set unmodified again.
 *
 * Images live in the store, encoded as they came or as raw pixels, and are
 * decoded only by QSprite::image(). Sprites holding identical images share
 * one QSpriteData; palettes holding identical colours may share one QRGBPal.
 */
class QSprites : public QOrganizableObject, public QProjectFile
{
    Q_OBJECT
    Q_PROPERTY(int count READ count)
    Q_PROPERTY(int currentIndex READ currentIndex WRITE setCurrentIndex)
    Q_PROPERTY(bool isModified READ isModified)
    Q_PROPERTY(quint32 version READ version)

public:
    /** SFF versions: the four header bytes read as a little-endian number. */
    enum Version : quint32 {
        Version_101 = 0x01000100,
        Version_200 = 0x02000000,
        Version_201 = 0x02000100
    };

    /**
     * `cacheType` 0 keeps image data in memory and 1 on disk; `compress`
     * and `level` (-1 for the library's default) set the store's own
     * compression of raw pixels. The undo limit is the configuration's
     * "undo_limit", or 64 without a configuration.
     */
    QSprites(QProjectOwner *project, int cacheType, bool compress, int level);
    ~QSprites() override;

    // The sprite list.

    int count() const { return int(m_sprites.size()); }
    /** The sprite at `i`, or null out of range. */
    QSprite *at(int i) const { return m_sprites.value(i); }
    /** Appends an empty sprite; one undo step. */
    QSprite *add();
    /** Inserts an empty sprite at `i`, or appends it when `i` is at or beyond the end; one undo step. */
    QSprite *insert(int i);
    /** Removes the sprite at `i`; nothing out of range. One undo step. */
    void remove(int i) override;
    /**
     * Removes every sprite, gives back every store entry, forgets the file
     * name and what the header held, and clears the undo stack: the start
     * of a load, or a new file.
     * The palettes stay. The set is unmodified afterwards.
     */
    void clear();
    /** Moves a sprite; nothing for equal positions or one out of range. One undo step. */
    void move(int from, int to) override;
    /** The first sprite at or after `start` with `group` and `index`; -1 if none. */
    int find(int start, int group, int index) const;
    /** Puts the sprites in the order the version wants (see the .cpp), as one undo step. */
    void autoOrganize() override;
    void beginOrganize(const QList<int> &) override { beginMacro(QStringLiteral("organize")); }
    void endOrganize() override { endMacro(); }

    /** The sprite the editor shows. */
    int currentIndex() const { return m_currentIndex; }
    void setCurrentIndex(int index) { m_currentIndex = index; }
    /** Whether any sprite holds an indexed image. */
    bool hasIndexedSprite() const;

    // The palette list.

    QPaletteObject *palettes() { return &m_palettes; }
    int paletteCount() const { return m_palettes.count(); }
    /** The palette at `i`, or null out of range. */
    QSpritePalette *paletteAt(int i) const { return m_palettes.at(i); }
    /**
     * Appends a palette of `colors` named (`group`, `index`); a negative
     * `index` takes one more than the highest index of the group (16 bits
     * kept), 0 in a new group. With `matchExisting`, a palette with the same
     * 1024 bytes is returned instead and nothing changes. The colour count
     * is 32 when entries 32 to 255 all equal entry 255, else 256. One undo
     * step.
     */
    QSpritePalette *addPalette(const QRGBPal &colors, bool matchExisting, int group, int index);
    QSpritePalette *addPalette(const QList<QRgb> &colors, bool matchExisting, int group, int index);
    /** addPalette() at position `at`; at or beyond the end it appends. */
    QSpritePalette *insertPalette(int at, const QRGBPal &colors, bool matchExisting, int group, int index);
    QSpritePalette *insertPalette(int at, const QList<QRgb> &colors, bool matchExisting, int group, int index);
    /**
     * Removes the palette at `i`; nothing out of range. Its sprites take the
     * first palette left, or none. One undo step.
     */
    void removePalette(int i);
    /** Moves a palette; nothing for equal positions or one out of range. One undo step. */
    void movePalette(int from, int to);
    /**
     * Removes every palette that repeats an earlier one (the same array, or
     * the same colours); their sprites take the earlier one. One undo step.
     */
    void removeDuplicatePalettes();
    /**
     * Removes the palettes that no sprite uses, except those of group 1,
     * which the engine picks from outside. One undo step.
     */
    void removeUnusedPalettes();
    void clearUnusedPalettes() { removeUnusedPalettes(); }
    /** Removes every palette; no sprite keeps one. One undo step. */
    void clearPalettes();
    /** The first palette at or after `start` with `group` and `index`; -1 if none. */
    int findPalette(int start, int group, int index) const;
    /** The palette named (`group`, `index`), or null. */
    QSpritePalette *palette(int group, int index) const { return paletteAt(findPalette(0, group, index)); }

    // Operations on many sprites, each one undo step. An interval `start` to
    // `end` (inclusive) of indexes applies within `group` unless `allInGroup`.

    void removeGroup(int group, bool allInGroup, int start, int end);
    /** Group and index pairs may collide afterwards; check() reports it. */
    void renameGroup(int group, int newGroup, bool allInGroup, int start, int end);
    /**
     * Crops every sprite of the scope (all sprites with `all`). An image
     * shared by several sprites is cropped once. progress() is emitted for
     * each sprite; a receiver that clears `allow` stops the loop.
     */
    void cropAll(bool all, int group, bool allInGroup, int start, int end);
    /**
     * Puts the image of the sprite at `position`, with its palette's colours,
     * on the clipboard, with its group, index, axis and flags as the image's
     * text keys "group", "index", "xaxis", "yaxis" and "flags". False
     * without a sprite, an image or a clipboard (no QGuiApplication).
     */
    bool copy(int position) const;
    /**
     * Inserts the clipboard's image as a new sprite before the current one,
     * with the text keys that copy() writes (0 for missing ones) and its
     * own palette. False when the clipboard holds no image.
     */
    bool paste();
    /**
     * Over the sprites of the scope (a whole group is the interval 0 to
     * 65535), the largest axis in `maxAxis` and the largest image size
     * minus axis in `maxRest`, both from 0: the canvas on which every image
     * of the scope fits with its axis at `maxAxis`.
     */
    void axisBounds(bool all, int group, int start, int end, QPoint &maxAxis, QPoint &maxRest) const;

    // Undo.

    QUndoStack *undoStack() { return &m_undoStack; }
    /** When false, nothing pushes an undo command; loads and replays switch it off. */
    bool undoEnabled() const { return m_undoEnabled; }
    void setUndoEnabled(bool enabled) { m_undoEnabled = enabled; }
    /** Opens a macro: what follows until endMacro() is one undo step. Nothing while undo is off. */
    void beginMacro(const QString &text);
    void endMacro();
    /** While true, changed() and the project's notification are held back (a load). */
    bool blockChanged() const { return m_blockChanged; }
    void setBlockChanged(bool block) { m_blockChanged = block; }

    QRemapModel *remaps() { return &m_remaps; }
    /** The image store. */
    QStreamCache *cache() { return &m_cache; }

    quint32 version() const { return m_version; }
    void setVersion(quint32 version) { m_version = version; }
    QString fileName() const { return m_fileName; }
    /** False makes the present state the unmodified one, to which undo can come back. */
    void setModified(bool modified);

    /**
     * Reads an SFF file of version 1.01, 2.00 or 2.01 in place of what the
     * set holds, then links sprites with identical images. With `keepName`
     * the set keeps the name it had. False for a file that can't be opened
     * (the set is unchanged), one that isn't a sprite file, an unknown
     * version or a cancel through progress() (the set is left empty); what
     * is wrong inside a file is reported through the user prompt and loads
     * as far as it can. Image data stays encoded as the file holds it.
     */
    bool fromFile(const QString &fileName, bool keepName);
    /**
     * fromFile() from an open, random-access device: a file or bytes in
     * memory. `fileName` names it in messages, and becomes the set's name
     * unless `keepName`.
     */
    bool fromDevice(QIODevice *device, const QString &fileName, bool keepName);
    /**
     * Writes the set as an SFF file of `version` (0 for the set's own,
     * which any other value replaces first). Images that the version can't
     * hold are converted first, and stay converted. With `asCopy` neither
     * the name nor the stored images change (a backup). The write is
     * atomic: on failure, reported through the user prompt, an earlier
     * file stays as it was.
     */
    bool toFile(const QString &fileName, quint32 version, bool asCopy);

    // QProjectFile
    bool checkSave(quint32 version) override;
    bool checkDiscard() override;
    bool isModified() const override { return m_modified; }
    bool isEmpty() const override;
    void check() override;

    /**
     * The whole set as stable text, one line per sprite and palette: names,
     * axes, flags, palette links, image size and pixel hash, colour hash,
     * and which items share their data. For tests, the command-line tool
     * and bug reports.
     */
    QString dump() const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /** Display and tool tip: "group, index". */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    void changed();
    /** The progress convention: `max` counts when `pos` is 0; clear `allow` to stop. */
    void progress(uint pos, uint max, bool &allow);
    /** A version 1.01 save found character sprites that can't keep the shared palette where they stand. */
    void orderMustBeChanged(QList<uint> sprites);
    /**
     * An image shared by the sprites at the positions `items` is about to
     * change for one of them; the receiver leaves in `items` those that are
     * to follow the change.
     */
    void dataSharing(QList<uint> &items);
    /** A character's first sprite has no colours of its own: the receiver fills the 256 of `palette`. */
    void charPalette(QRGBPal *palette);

private:
    friend class QSprite;
    friend class QSpritePalette;
    friend class QPaletteObject;
    friend class RawSpriteEdits;
    friend class SffReader;
    friend class SffWriter;

    /** Pushes `command` when undo is on, and deletes it otherwise. */
    void push(QUndoCommand *command);
    /** A sprite or palette changed: the set is modified, and says so unless blocked. */
    void touch();
    void spriteChanged(QSprite *sprite);
    void paletteChanged(QSpritePalette *palette);
    /** The image of a handle changed in place: every sprite holding it changed. */
    void dataReplaced(const QSpriteData *data);
    /** The colours of an array changed in place: every palette holding it changed. */
    void colorsReplaced(const QRGBPal *colors);

    void insertSprite(int at, QSprite *sprite);
    QSprite *takeSprite(int at);
    void moveSprite(int from, int to);
    void insertPaletteObject(int at, QSpritePalette *palette);
    /** Takes a palette out of the list; sprites still using it lose it. */
    QSpritePalette *takePalette(int at);
    void movePaletteObject(int from, int to);
    /** Removes the palette at `i` with its undo command; its sprites must have left it. */
    void dropPalette(int i);

    /** The palette other than `except` whose colours equal `colors`, or null. */
    QSpritePalette *paletteWithColors(const QRGBPal &colors, const QSpritePalette *except) const;
    /** Notes what a load found wrong with `item`, a sprite or a palette: the check says it until the next save. */
    void addReadProblem(QObject *item, int severity, const QString &text);
    /** The first sprite holding `entry`, or null. */
    QSprite *spriteWithEntry(const QStreamCacheEntry *entry) const;
    /** Whether the sprite at `position` falls in the scope of a group operation. */
    bool inScope(int position, bool all, int group, bool allInGroup, int start, int end) const;
    /** Whether sprite `i` must stand before sprite `j` in the version's order. */
    bool standsBefore(const QSprite *i, const QSprite *j) const;
    void undoIndexChanged();

    QRemapModel m_remaps;
    bool m_undoEnabled = true;
    QStreamCache m_cache;
    QString m_fileName;
    quint32 m_version = Version_201;
    /**
     * Byte 32 of a version 1.01 header, the palette type the file's author
     * set, which the engine of 2002 reads: kept as read, 0 in a new file.
     */
    quint8 m_paletteType = 0;
    bool m_modified = false;
    bool m_blockChanged = false;
    QUndoStack m_undoStack;
    int m_currentIndex = 0;
    QList<QSprite *> m_sprites;
    QPaletteObject m_palettes;
    /** For each beginMacro(), whether it opened a macro on the stack. */
    QList<bool> m_macros;
    /** Set while an undo command replays a change. */
    bool m_replaying = false;

    struct ReadProblem
    {
        QPointer<QObject> item;
        int severity;
        QString text;
    };
    /** What the last load found wrong, item by item; a save or a new load forgets it. */
    QList<ReadProblem> m_readProblems;
};
