#pragma once

#include "../base/qorganizableobject.h"
#include "../base/qprojectfile.h"
#include "../base/qsubitem.h"
#include "../sprites/qstreamcache.h"
#include "qsoundinfo.h"
#include "qsoundplayer.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTimer>
#include <QUndoStack>

/** One sound of a sound list. */
struct QSoundItem
{
    /** The WAV file's bytes, whole, in the list's store; null for an empty sound. */
    QStreamCacheEntry *data = nullptr;
    qint32 group = 0;
    /** The engine calls it the sample number. */
    qint32 number = 0;
    QSoundInfo info;
};

/**
 * The sound document of a project: the SND file, an ordered list of WAV
 * samples named by group and number. It is also the list model that the
 * sounds editor and the organizer show, one row per sound.
 *
 * Every change goes through an operation of this class, which pushes an
 * undo command (unless undoEnabled() is false), marks the document
 * modified and, outside a load, sends changed(). Sample bytes live in a
 * QStreamCache, in memory or on disk as configured.
 *
 * Indexes are places in the list from 0. Operations given an index out of
 * range do nothing and report failure where they return something.
 */
class QSounds : public QOrganizableObject, public QProjectFile
{
    Q_OBJECT

public:
    /**
     * `cacheType` 0 keeps the sample bytes in memory and 1 in a temporary
     * file; `compress` and `level` (-1 for zlib's default) set the store's
     * own compression.
     */
    QSounds(QProjectOwner *project, int cacheType, bool compress, int level);
    ~QSounds() override;

    /**
     * Reads an SND file, replacing the list. With `asCopy` the document
     * keeps the file name it had. A file that can't be opened fails with
     * the list intact; a wrong signature, a damaged file or a cancel
     * through progress() fails with the list empty.
     */
    bool load(const QString &fileName, bool asCopy);
    /**
     * Writes the list as an SND file, atomically: a failed save leaves an
     * earlier file as it was. With `asCopy` the file name and the modified
     * state stay as they were. A save can't be cancelled.
     */
    bool save(const QString &fileName, bool asCopy);
    /** load() under the name the project uses. */
    bool fromFile(const QString &fileName, bool keepName) { return load(fileName, keepName); }
    /** save() under the name the project uses. */
    bool toFile(const QString &fileName, bool asCopy) { return save(fileName, asCopy); }
    /** The reason the last load(), save() or loadWav() failed, for messages; empty after a success. */
    QString errorString() const { return m_error; }

    /** Removes every sound, the file name and the undo history; not modified afterwards. */
    void clear();

    int count() const { return int(m_sounds.size()); }
    QString fileName() const { return m_fileName; }
    /** The header facts of a sound's WAV; all zero out of range. */
    QSoundInfo soundInfo(int index) const;
    /** Group and number (as `index`) of a sound; both 0 out of range. */
    QSubItem subItem(int index) const;
    /** The first index from `start` on whose group and number match, or -1. */
    int find(int start, qint32 group, qint32 number) const;
    /**
     * The first sound of the group before the one of `index`, a group being
     * a run of equal group numbers in the list; 0 when there is none.
     */
    int previousGroup(int index) const;
    /** The next sound of another group than the one of `index`; 0 when there is none. */
    int nextGroup(int index) const;

    /** Inserts an empty sound before `index`; out of range, it is appended. */
    void insert(int index);
    /** Inserts a copy of the sound at `index` right behind it. */
    void duplicate(int index);
    void setSubItem(int index, qint32 group, qint32 number);
    /** Replaces the sound's WAV bytes; empty bytes make it an empty sound. */
    void setSample(int index, const QByteArray &bytes);
    /** The sound's WAV bytes; empty for an empty sound or out of range. */
    QByteArray sample(int index) const;
    /**
     * Replaces the sound's bytes by the file `fileName`, as it is: a sound
     * that isn't RIFF/WAVE is kept and isn't measured. False, with the
     * sound unchanged and the reason in errorString(), when the file can't
     * be read or is empty.
     */
    bool loadWav(int index, const QString &fileName);
    /** Writes the sound's bytes to `fileName`; false for an empty sound or a failed write. */
    bool saveWav(int index, const QString &fileName) const;

    /**
     * Removes, in one undo step, the sounds of `group`: all of them, or
     * those with a number from `first` to `last`.
     */
    void removeGroup(qint32 group, bool all, qint32 first, qint32 last);
    /** Moves the same sounds as removeGroup() would remove to `newGroup`, in one undo step. */
    void renameGroup(qint32 group, qint32 newGroup, bool all, qint32 first, qint32 last);
    /**
     * Sorts by group, then number, by moves, in one undo step; equal pairs
     * keep their order.
     */
    void organize();

    /**
     * Plays a sound from memory, once or looped. Once, stopped() follows
     * about a second after the sound's end, whether or not anything could
     * be heard: without an audio device nothing plays, and nothing blocks.
     */
    void play(int index, bool loop);
    /** Stops the sound and the timer of stopped(). */
    void stop();

    /**
     * Writes each sound as "<group>-<number>.wav" beside `fileName`, and
     * `fileName` as a script that lists them: Elecbyte SndMaker's form for
     * a ".def" suffix, the program's own ".kse" form otherwise. A second
     * sound of the same group and number gets " (2)" and so on before the
     * suffix, so that no file overwrites another. Empty sounds are left
     * out. A cancel through progress() ends it with what was written.
     * False when a file can't be written.
     */
    bool exportSounds(const QString &fileName);
    /** exportSounds() for the sounds of one group. */
    bool exportGroup(qint32 group, const QString &fileName);
    /**
     * Reads a ".kse" script and inserts its sounds at `position`, or at the
     * end for a negative one, in one undo step. Sounds whose file can't be
     * loaded, or that name none, are left out, and one warning lists them.
     * False when the script can't be read.
     */
    bool importSounds(const QString &fileName, int position);

    /** A stable text listing of the sounds, for tests, the command line and bug reports. */
    QString dump() const;

    bool undoEnabled() const { return m_undoEnabled; }
    /** While false, operations push no undo command; the commands themselves use it. */
    void setUndoEnabled(bool enabled) { m_undoEnabled = enabled; }
    QUndoStack *undoStack() { return &m_undoStack; }
    void undo() { m_undoStack.undo(); }
    void redo() { m_undoStack.redo(); }

    int currentIndex() const { return m_currentIndex; }
    void setCurrentIndex(int index) { m_currentIndex = index; }
    void setModified(bool modified);

    // QAbstractListModel
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /** Display: "group, number". */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    // QProjectFile
    bool checkSave(quint32 version) override;
    bool checkDiscard() override;
    bool isModified() const override { return m_modified; }
    bool isEmpty() const override { return count() == 0; }
    void check() override;

public Q_SLOTS:
    // QOrganizableObject
    void remove(int index) override;
    void move(int from, int to) override;
    void autoOrganize() override { organize(); }
    /** One macro of the undo stack around the rows' moves or removals. */
    void beginOrganize(const QList<int> &rows) override;
    void endOrganize() override;

Q_SIGNALS:
    void changed();
    /** A sound played once should have ended by now. */
    void stopped();
    /** The progress convention: `max` counts when `pos` is 0; clear `allow` to stop. */
    void progress(uint pos, uint max, bool &allow);

private:
    /** One undo step around a compound operation; nothing while undo is off. */
    class Macro
    {
    public:
        Macro(QSounds *sounds, const QString &name)
            : m_stack(sounds->m_undoEnabled ? &sounds->m_undoStack : nullptr)
        {
            if (m_stack)
                m_stack->beginMacro(name);
        }
        ~Macro()
        {
            if (m_stack)
                m_stack->endMacro();
        }
        Macro(const Macro &) = delete;
        Macro &operator=(const Macro &) = delete;

    private:
        QUndoStack *m_stack;
    };

    bool validIndex(int index) const { return index >= 0 && index < count(); }
    /** Ends every operation: modified, and outside a load the change notification. */
    void changeDone();
    /** Inserts a whole sound at `index` as one undo step. */
    void insertSound(int index, qint32 group, qint32 number, const QByteArray &bytes);
    /** Gives a sound new bytes and the header facts read from them. */
    void storeSample(QSoundItem *item, const QByteArray &bytes);
    /** Drops every sound and its bytes, without signals. */
    void clearItems();
    /** clearItems(), and the file name, the undo history and the current index go too. */
    void reset();
    bool exportItems(const QList<int> &indexes, const QString &fileName);

    bool m_undoEnabled = true;
    QList<QSoundItem *> m_sounds;
    QStreamCache m_store;
    QString m_fileName;
    QUndoStack m_undoStack;
    /** For each beginOrganize(), whether it opened a macro on the stack. */
    QList<bool> m_organizing;
    int m_currentIndex = 0;
    bool m_modified = false;
    bool m_loading = false;
    QByteArray m_playing;
    QTimer m_stopTimer;
    QSoundPlayer m_player;
    QString m_error;
};
