#include "qsounds.h"

#include "../base/atomicfile.h"
#include "../base/qmugenmodel.h"
#include "../base/quserprompt.h"
#include "sndfile.h"
#include "soundcommands.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QtMath>

QSounds::QSounds(QProjectOwner *project, int cacheType, bool compress, int level)
    : QOrganizableObject(nullptr)
    , QProjectFile(project, FileSounds)
    , m_store(QStringLiteral("mugensnd"), cacheType, compress, level)
{
    if (configuration)
        m_undoStack.setUndoLimit(qMax(0, configuration->config.value(QStringLiteral("undo_limit")).toInt()));
    m_stopTimer.setSingleShot(true);
    connect(&m_stopTimer, &QTimer::timeout, this, &QSounds::stopped);
}

QSounds::~QSounds()
{
    stop();
    // Commands give their bytes back to the undo store; the items theirs
    // to this list's store, which goes last.
    m_undoStack.clear();
    clearItems();
}

void QSounds::clearItems()
{
    for (QSoundItem *item : std::as_const(m_sounds))
        m_store.release(item->data);
    qDeleteAll(m_sounds);
    m_sounds.clear();
    m_store.clear();
}

void QSounds::reset()
{
    clearItems();
    m_fileName.clear();
    m_undoStack.clear();
    m_currentIndex = 0;
}

void QSounds::clear()
{
    stop();
    beginResetModel();
    reset();
    endResetModel();
    m_modified = false;
    Q_EMIT changed();
    notifyOwner();
}

void QSounds::setModified(bool modified)
{
    m_modified = modified;
    Q_EMIT changed();
    notifyOwner();
}

void QSounds::changeDone()
{
    m_modified = true;
    if (m_loading)
        return;
    Q_EMIT changed();
    notifyOwner();
}

bool QSounds::load(const QString &fileName, bool asCopy)
{
    stop();
    m_error.clear();
    QFile file(fileName);
    // A folder opens on some systems; it is never an SND file.
    if (!QFileInfo(fileName).isFile()) {
        m_error = tr("no such file");
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = file.errorString();
        return false;
    }

    const QString previousName = m_fileName;
    beginResetModel();
    reset();
    m_undoEnabled = false;
    m_loading = true;

    SndReader reader(&file);
    bool ok = reader.readHeader();
    bool allow = true;
    if (ok)
        Q_EMIT progress(0, reader.count(), allow);
    for (quint32 i = 0; ok && allow && i < reader.count(); ++i) {
        auto *item = new QSoundItem;
        QByteArray bytes;
        ok = reader.readSound(item->group, item->number, bytes);
        storeSample(item, bytes);
        m_sounds.append(item);
        if (ok)
            Q_EMIT progress(i + 1, reader.count(), allow);
    }
    if (!ok)
        m_error = reader.errorString();
    else if (!allow)
        m_error = tr("The load was cancelled.");
    // A damaged or cancelled load keeps nothing, so nothing half-read can
    // be saved over the file by mistake.
    if (!ok || !allow)
        clearItems();

    m_loading = false;
    m_undoEnabled = true;
    m_modified = false;
    m_fileName = asCopy ? previousName : (ok && allow ? fileName : QString());
    endResetModel();
    Q_EMIT changed();
    notifyOwner();
    return ok && allow;
}

bool QSounds::save(const QString &fileName, bool asCopy)
{
    stop();
    m_error.clear();
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        m_error = file.errorString();
        return false;
    }
    SndWriter writer(&file);
    bool ok = writer.writeHeader(quint32(count()));
    // A save can't be cancelled: allow is reported but never read.
    bool allow = true;
    Q_EMIT progress(0, uint(count()), allow);
    for (int i = 0; ok && i < count(); ++i) {
        const QSoundItem *item = m_sounds.at(i);
        ok = writer.writeSound(item->group, item->number, m_store.decoded(item->data));
        Q_EMIT progress(uint(i + 1), uint(count()), allow);
    }
    if (!ok) {
        m_error = writer.errorString();
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        m_error = file.errorString();
        return false;
    }
    if (!asCopy) {
        m_fileName = fileName;
        setModified(false);
    }
    return true;
}

QSoundInfo QSounds::soundInfo(int index) const
{
    return validIndex(index) ? m_sounds.at(index)->info : QSoundInfo();
}

QSubItem QSounds::subItem(int index) const
{
    if (!validIndex(index))
        return QSubItem();
    return QSubItem{m_sounds.at(index)->group, m_sounds.at(index)->number};
}

int QSounds::find(int start, qint32 group, qint32 number) const
{
    for (int i = qMax(0, start); i < count(); ++i) {
        if (m_sounds.at(i)->group == group && m_sounds.at(i)->number == number)
            return i;
    }
    return -1;
}

int QSounds::previousGroup(int index) const
{
    if (!validIndex(index))
        return 0;
    int start = index;
    while (start > 0 && m_sounds.at(start - 1)->group == m_sounds.at(index)->group)
        --start;
    if (start == 0)
        return 0;
    const qint32 previous = m_sounds.at(start - 1)->group;
    int first = start - 1;
    while (first > 0 && m_sounds.at(first - 1)->group == previous)
        --first;
    return first;
}

int QSounds::nextGroup(int index) const
{
    if (!validIndex(index))
        return 0;
    for (int i = index + 1; i < count(); ++i) {
        if (m_sounds.at(i)->group != m_sounds.at(index)->group)
            return i;
    }
    return 0;
}

void QSounds::storeSample(QSoundItem *item, const QByteArray &bytes)
{
    if (bytes.isEmpty()) {
        m_store.release(item->data);
        item->data = nullptr;
    } else if (item->data) {
        m_store.replace(item->data, bytes, 0, QImageInfo());
    } else {
        item->data = m_store.add(bytes, 0, QImageInfo());
    }
    item->info = QSoundInfo::fromWav(bytes);
}

void QSounds::insert(int index)
{
    if (index < 0 || index > count())
        index = count();
    beginInsertRows(QModelIndex(), index, index);
    m_sounds.insert(index, new QSoundItem);
    endInsertRows();
    if (m_undoEnabled)
        m_undoStack.push(new SoundInsert(this, index));
    changeDone();
}

void QSounds::insertSound(int index, qint32 group, qint32 number, const QByteArray &bytes)
{
    const bool undo = m_undoEnabled;
    m_undoEnabled = false;
    insert(index);
    if (index < 0 || index >= count())
        index = count() - 1;
    setSubItem(index, group, number);
    setSample(index, bytes);
    m_undoEnabled = undo;
    if (undo)
        m_undoStack.push(new SoundInsert(this, index));
}

void QSounds::duplicate(int index)
{
    if (!validIndex(index))
        return;
    const QSoundItem *item = m_sounds.at(index);
    insertSound(index + 1, item->group, item->number, sample(index));
}

void QSounds::remove(int index)
{
    if (!validIndex(index))
        return;
    if (m_undoEnabled)
        m_undoStack.push(new SoundRemove(this, index));
    beginRemoveRows(QModelIndex(), index, index);
    QSoundItem *item = m_sounds.takeAt(index);
    endRemoveRows();
    m_store.release(item->data);
    delete item;
    if (m_currentIndex >= count())
        m_currentIndex = qMax(0, count() - 1);
    changeDone();
}

void QSounds::move(int from, int to)
{
    if (!validIndex(from) || !validIndex(to) || from == to)
        return;
    // The model counts the destination before the move: one further down
    // when moving down.
    beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    m_sounds.move(from, to);
    endMoveRows();
    if (m_undoEnabled)
        m_undoStack.push(new SoundMove(this, from, to));
    changeDone();
}

void QSounds::setSubItem(int index, qint32 group, qint32 number)
{
    if (!validIndex(index))
        return;
    QSoundItem *item = m_sounds.at(index);
    if (item->group == group && item->number == number)
        return;
    const qint32 oldGroup = item->group;
    const qint32 oldNumber = item->number;
    item->group = group;
    item->number = number;
    const QModelIndex row = QAbstractListModel::index(index);
    Q_EMIT dataChanged(row, row);
    if (m_undoEnabled)
        m_undoStack.push(new SoundChangeInfo(this, index, oldGroup, oldNumber));
    changeDone();
}

void QSounds::setSample(int index, const QByteArray &bytes)
{
    if (!validIndex(index))
        return;
    const QByteArray previous = m_undoEnabled ? sample(index) : QByteArray();
    storeSample(m_sounds.at(index), bytes);
    if (m_undoEnabled)
        m_undoStack.push(new SoundChangeSample(this, index, previous));
    changeDone();
}

QByteArray QSounds::sample(int index) const
{
    return validIndex(index) ? m_store.decoded(m_sounds.at(index)->data) : QByteArray();
}

bool QSounds::loadWav(int index, const QString &fileName)
{
    m_error.clear();
    if (!validIndex(index)) {
        m_error = tr("no such sound");
        return false;
    }
    QFile file(fileName);
    if (!QFileInfo(fileName).isFile()) {
        m_error = tr("no such file");
        return false;
    }
    // SND lengths are 32-bit; anything near that is no sound effect.
    if (file.size() > 0x7FFFFFFF) {
        m_error = tr("the file is too large for an SND");
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = file.errorString();
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (bytes.isEmpty()) {
        m_error = tr("the file is empty");
        return false;
    }
    // The bytes are kept whatever they hold: a sound that isn't RIFF/WAVE
    // is stored and played as it is, only not measured.
    setSample(index, bytes);
    return true;
}

bool QSounds::saveWav(int index, const QString &fileName) const
{
    const QByteArray bytes = sample(index);
    return !bytes.isEmpty() && writeFileAtomically(fileName, bytes);
}

void QSounds::removeGroup(qint32 group, bool all, qint32 first, qint32 last)
{
    const Macro macro(this, QStringLiteral("removeGroup"));
    for (int i = count() - 1; i >= 0; --i) {
        const QSoundItem *item = m_sounds.at(i);
        if (item->group == group && (all || (item->number >= first && item->number <= last)))
            remove(i);
    }
}

void QSounds::renameGroup(qint32 group, qint32 newGroup, bool all, qint32 first, qint32 last)
{
    const Macro macro(this, QStringLiteral("renameGroup"));
    for (int i = count() - 1; i >= 0; --i) {
        const QSoundItem *item = m_sounds.at(i);
        if (item->group == group && (all || (item->number >= first && item->number <= last)))
            setSubItem(i, newGroup, item->number);
    }
}

void QSounds::organize()
{
    const Macro macro(this, QStringLiteral("autoOrganize"));
    const auto greater = [](const QSoundItem *a, const QSoundItem *b) {
        return a->group > b->group || (a->group == b->group && a->number > b->number);
    };
    // An insertion sort by moves, so that each step is one undoable move.
    for (int i = 1; i < count(); ++i) {
        for (int j = 0; j < i; ++j) {
            if (greater(m_sounds.at(j), m_sounds.at(i))) {
                move(i, j);
                break;
            }
        }
    }
}

void QSounds::play(int index, bool loop)
{
    stop();
    if (!validIndex(index) || !m_sounds.at(index)->data)
        return;
    // The bytes stay here as long as they may be playing.
    m_playing = sample(index);
    m_player.play(m_playing, loop);
    // The editor's button comes back by itself about a second after the
    // end, also when no device could play it.
    if (!loop)
        m_stopTimer.start(qRound(m_sounds.at(index)->info.duration * 1000) + 1000);
}

void QSounds::stop()
{
    m_stopTimer.stop();
    m_player.stop();
}

QString QSounds::dump() const
{
    QString text = QStringLiteral("sounds %1\n").arg(count());
    for (int i = 0; i < count(); ++i) {
        const QSoundItem *item = m_sounds.at(i);
        text += QStringLiteral("%1: %2,%3 bytes %4 channels %5 rate %6 bits %7 duration %8\n")
                    .arg(i)
                    .arg(item->group)
                    .arg(item->number)
                    .arg(item->data ? item->data->size() : 0)
                    .arg(item->info.channels)
                    .arg(item->info.sampleRate)
                    .arg(item->info.bitsPerSample)
                    .arg(double(item->info.duration), 0, 'f', 3);
    }
    return text;
}

int QSounds::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant QSounds::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !validIndex(index.row()) || role != Qt::DisplayRole)
        return QVariant();
    const QSoundItem *item = m_sounds.at(index.row());
    return QStringLiteral("%1, %2").arg(item->group).arg(item->number);
}

bool QSounds::checkSave(quint32)
{
    if (count() == 0) {
        userPrompt->warning(tr("Save SND"),
                            tr("You can't save an empty SND because M.U.G.E.N. will not open it."));
        return false;
    }
    return true;
}

bool QSounds::checkDiscard()
{
    return askDiscard(tr("Do you really want to discard the changes made in the sounds?"));
}

void QSounds::check()
{
    messages().begin();
    for (int i = 0; i < count(); ++i) {
        const QSoundItem *item = m_sounds.at(i);
        if (!item->data)
            messages().add(QMessages::Error, tr("Empty sound!"), i, 0);
        // Every earlier sound with the same pair is told, so three equal
        // pairs give three messages.
        for (int j = i - 1; j >= 0; --j) {
            if (m_sounds.at(j)->group == item->group && m_sounds.at(j)->number == item->number)
                messages().add(QMessages::Warning,
                               tr("The group %2, index %3 is already in use by sound #%4!")
                                   .arg(item->group)
                                   .arg(item->number)
                                   .arg(j + 1),
                               i, 0);
        }
    }
    messages().end();
}

void QSounds::beginOrganize(const QList<int> &rows)
{
    Q_UNUSED(rows)
    m_organizing.append(m_undoEnabled);
    if (m_undoEnabled)
        m_undoStack.beginMacro(QStringLiteral("organize"));
}

void QSounds::endOrganize()
{
    if (!m_organizing.isEmpty() && m_organizing.takeLast())
        m_undoStack.endMacro();
}
