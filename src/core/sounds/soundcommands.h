#pragma once

#include <QByteArray>
#include <QUndoCommand>

class QSounds;
class QStreamCacheEntry;

/**
 * The undo commands of a sound list. A command is pushed after its change
 * is done, so its first redo(), the one push() makes, does nothing. From
 * then on undo() and redo() switch the list's undo off, call its normal
 * operations and switch it back on.
 *
 * Commands hold places in the list, never pointers into it. Sample bytes
 * are kept in one process-wide store on disk, not in the command; a
 * command gives its entry back when it is deleted.
 */
class SoundUndoCommand : public QUndoCommand
{
public:
    ~SoundUndoCommand() override;

    void undo() final;
    void redo() final;

protected:
    SoundUndoCommand(QSounds *sounds, int index);

    virtual void undoChange() = 0;
    virtual void redoChange() = 0;

    /** The bytes kept by this command; empty when none. */
    QByteArray keptBytes() const;
    void keepBytes(const QByteArray &bytes);

    QSounds *m_sounds;
    int m_index;

private:
    bool m_pushed = false;
    QStreamCacheEntry *m_bytes = nullptr;
};

/** A whole sound, kept so that it can be put back or taken away. */
class SoundPresence : public SoundUndoCommand
{
protected:
    /** Keeps group, number and bytes of the sound now at `index`. */
    SoundPresence(QSounds *sounds, int index);

    /** Inserts the kept sound at its place. */
    void restore();
    /** Removes the sound at its place. */
    void discard();

private:
    qint32 m_group;
    qint32 m_number;
};

/** A sound was inserted: undo removes it, redo inserts it again with its group, number and bytes. */
class SoundInsert : public SoundPresence
{
public:
    /** After the insert: `index` is the new sound's place. */
    SoundInsert(QSounds *sounds, int index)
        : SoundPresence(sounds, index)
    {
    }

protected:
    void undoChange() override { discard(); }
    void redoChange() override { restore(); }
};

/** A sound is about to be removed: undo puts it back, redo removes it again. */
class SoundRemove : public SoundPresence
{
public:
    /** Before the removal, while the sound is still at `index`. */
    SoundRemove(QSounds *sounds, int index)
        : SoundPresence(sounds, index)
    {
    }

protected:
    void undoChange() override { restore(); }
    void redoChange() override { discard(); }
};

/** A sound moved from `from` to `to`. */
class SoundMove : public SoundUndoCommand
{
public:
    SoundMove(QSounds *sounds, int from, int to);

protected:
    void undoChange() override;
    void redoChange() override;

private:
    int m_to;
};

/** A sound's group and number changed; both directions swap the kept pair with the sound's. */
class SoundChangeInfo : public SoundUndoCommand
{
public:
    /** After the change, with the pair the sound had before. */
    SoundChangeInfo(QSounds *sounds, int index, qint32 group, qint32 number);

protected:
    void undoChange() override { swap(); }
    void redoChange() override { swap(); }

private:
    void swap();

    qint32 m_group;
    qint32 m_number;
};

/** A sound's bytes changed; both directions swap the kept bytes with the sound's. */
class SoundChangeSample : public SoundUndoCommand
{
public:
    /** After the change, with the bytes the sound had before. */
    SoundChangeSample(QSounds *sounds, int index, const QByteArray &previous);

protected:
    void undoChange() override { swap(); }
    void redoChange() override { swap(); }

private:
    void swap();
};
