#include "qfilewatchermanager.h"

#include "qfilewatchobject.h"
#include "qmugenmodel.h"
#include "quserprompt.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

QFileWatcherManager *fileWatcher = nullptr;

QFileWatcherManager::QFileWatcherManager(QObject *parent)
    : QObject(parent)
{
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &QFileWatcherManager::fileChanged);
}

QFileWatcherManager::~QFileWatcherManager()
{
    if (fileWatcher == this)
        fileWatcher = nullptr;
}

void QFileWatcherManager::add(QFileWatchObject *object)
{
    const QString path = object->fileName();
    bool known = false;
    for (const auto &entry : std::as_const(m_objects))
        known = known || (entry.first == object && entry.second == path);
    if (!known) {
        remove(object);
        if (path.isEmpty())
            return;
        m_objects.append({object, path});
    }
    // The object has just read or written its file, which may be a new one
    // in the old one's place: watch the file that stands there now.
    m_watcher.removePath(path);
    watch(path);
    // Watching afresh drops what the system would have said about the
    // replaced file, which other documents of the same file need to hear.
    for (const auto &entry : std::as_const(m_objects)) {
        if (entry.first != object && entry.second == path && !entry.first->isOwnWrite()) {
            QMetaObject::invokeMethod(this, [this, path] { fileChanged(path); }, Qt::QueuedConnection);
            break;
        }
    }
}

void QFileWatcherManager::remove(QFileWatchObject *object)
{
    QString path;
    for (int i = 0; i < m_objects.size(); ++i) {
        if (m_objects.at(i).first == object) {
            path = m_objects.takeAt(i).second;
            break;
        }
    }
    if (path.isEmpty())
        return;
    for (const auto &entry : std::as_const(m_objects)) {
        if (entry.second == path)
            return;
    }
    m_watcher.removePath(path);
}

QStringList QFileWatcherManager::files() const
{
    QStringList paths = m_watcher.files();
    paths.sort();
    return paths;
}

void QFileWatcherManager::watch(const QString &path)
{
    if (QFileInfo(path).isFile() && !m_watcher.files().contains(path))
        m_watcher.addPath(path);
}

void QFileWatcherManager::fileChanged(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return;
    // A file replaced by renaming another over it (how careful programs,
    // this one included, save) is no longer watched: take it up again.
    watch(path);
    if (!configuration || !configuration->config.value(QStringLiteral("enable_file_watcher")).toBool())
        return;

    QList<QPointer<QFileWatchObject>> candidates;
    for (const auto &entry : std::as_const(m_objects)) {
        if (entry.second != path)
            continue;
        if (!entry.first->isOwnWrite())
            candidates.append(entry.first);
        // One question per change: further reports of this one find nothing new.
        entry.first->setOwnWrite();
    }
    if (candidates.isEmpty())
        return;
    const QString question = tr("The file '%1' has been modified. Do you want to reload all other instances of this file now?")
                                 .arg(QDir::toNativeSeparators(path));
    if (!userPrompt->question(tr("File modified"), question))
        return;
    // A document may have gone while the question was open.
    for (const QPointer<QFileWatchObject> &candidate : std::as_const(candidates)) {
        if (candidate)
            candidate->reload(path);
    }
}
