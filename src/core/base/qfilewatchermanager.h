#pragma once

#include <QFileSystemWatcher>
#include <QList>
#include <QObject>
#include <QPair>
#include <QString>
#include <QStringList>

class QFileWatchObject;

/**
 * Tells the user when a file that a document holds changes behind the
 * program's back, and reloads the documents if asked to.
 *
 * One QFileSystemWatcher serves every document: a path is watched while at
 * least one registered object has it as its file name. The key
 * `enable_file_watcher` of the configuration turns the questions on.
 */
class QFileWatcherManager : public QObject
{
    Q_OBJECT

public:
    explicit QFileWatcherManager(QObject *parent = nullptr);
    ~QFileWatcherManager() override;

    /**
     * Registers `object` under its fileName() (nothing for an empty name),
     * leaving the name it had, and watches the path afresh: a file replaced
     * by an atomic save is a new file, and the system forgets the watch on
     * the old one.
     */
    void add(QFileWatchObject *object);
    /** Forgets `object`; its path stops being watched when nobody else has it. */
    void remove(QFileWatchObject *object);
    /** The paths being watched, sorted. */
    QStringList files() const;

public Q_SLOTS:
    /**
     * A watched file changed. Unless the watcher is turned off or the file
     * is gone, every object of that path whose file is no longer its own
     * write is a candidate; all of them then take the file as it stands as
     * their own, so each change is asked about once. With candidates, the
     * user is asked whether to reload them, and on Yes each one reloads.
     */
    void fileChanged(const QString &path);

private:
    void watch(const QString &path);

    QFileSystemWatcher m_watcher;
    /** Every registered object with the path it was registered under, in the order of registration. */
    QList<QPair<QFileWatchObject *, QString>> m_objects;
};

/** The process-wide watcher, set at start; null where nobody watches (kestrada-cli, most tests). */
extern QFileWatcherManager *fileWatcher;
