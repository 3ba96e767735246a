#include "soundcommands.h"

#include "../sprites/qstreamcache.h"
#include "qsounds.h"

namespace {

/**
 * The bytes of every sound command of the process. On disk, since undo
 * history is mostly never read again, and compressed: PCM often shrinks.
 */
QStreamCache &undoStore()
{
    static QStreamCache store(QStringLiteral("sndUndo"), QStreamCache::Disk, true, -1);
    return store;
}

/** Switches a list's undo off for the life of the object. */
class UndoOff
{
public:
    explicit UndoOff(QSounds *sounds)
        : m_sounds(sounds)
        , m_was(sounds->undoEnabled())
    {
        sounds->setUndoEnabled(false);
    }
    ~UndoOff() { m_sounds->setUndoEnabled(m_was); }

private:
    QSounds *m_sounds;
    bool m_was;
};

} // namespace

SoundUndoCommand::SoundUndoCommand(QSounds *sounds, int index)
    : m_sounds(sounds)
    , m_index(index)
{
}

SoundUndoCommand::~SoundUndoCommand()
{
    undoStore().release(m_bytes);
}

void SoundUndoCommand::undo()
{
    const UndoOff off(m_sounds);
    undoChange();
}

void SoundUndoCommand::redo()
{
    // The change is already done when the command is pushed.
    if (!m_pushed) {
        m_pushed = true;
        return;
    }
    const UndoOff off(m_sounds);
    redoChange();
}

QByteArray SoundUndoCommand::keptBytes() const
{
    return undoStore().decoded(m_bytes);
}

void SoundUndoCommand::keepBytes(const QByteArray &bytes)
{
    if (bytes.isEmpty()) {
        undoStore().release(m_bytes);
        m_bytes = nullptr;
    } else if (m_bytes) {
        undoStore().replace(m_bytes, bytes, 0, QImageInfo());
    } else {
        m_bytes = undoStore().add(bytes, 0, QImageInfo());
    }
}

SoundPresence::SoundPresence(QSounds *sounds, int index)
    : SoundUndoCommand(sounds, index)
{
    const QSubItem item = sounds->subItem(index);
    m_group = item.group;
    m_number = item.index;
    keepBytes(sounds->sample(index));
}

void SoundPresence::restore()
{
    m_sounds->insert(m_index);
    m_sounds->setSubItem(m_index, m_group, m_number);
    m_sounds->setSample(m_index, keptBytes());
}

void SoundPresence::discard()
{
    m_sounds->remove(m_index);
}

SoundMove::SoundMove(QSounds *sounds, int from, int to)
    : SoundUndoCommand(sounds, from)
    , m_to(to)
{
}

void SoundMove::undoChange()
{
    m_sounds->move(m_to, m_index);
}

void SoundMove::redoChange()
{
    m_sounds->move(m_index, m_to);
}

SoundChangeInfo::SoundChangeInfo(QSounds *sounds, int index, qint32 group, qint32 number)
    : SoundUndoCommand(sounds, index)
    , m_group(group)
    , m_number(number)
{
}

void SoundChangeInfo::swap()
{
    const QSubItem current = m_sounds->subItem(m_index);
    m_sounds->setSubItem(m_index, m_group, m_number);
    m_group = current.group;
    m_number = current.index;
}

SoundChangeSample::SoundChangeSample(QSounds *sounds, int index, const QByteArray &previous)
    : SoundUndoCommand(sounds, index)
{
    keepBytes(previous);
}

void SoundChangeSample::swap()
{
    const QByteArray current = m_sounds->sample(m_index);
    m_sounds->setSample(m_index, keptBytes());
    keepBytes(current);
}
