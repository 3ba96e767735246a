#pragma once

#include <QObject>
#include <QString>

/**
 * What the watcher knows of a file: its size and the time of its last
 * change. Two looks at one file that give equal stamps saw the same bytes,
 * as far as anybody outside the program could tell.
 */
struct QFileWatchStamp
{
    qint64 size = -1;
    qint64 modified = 0;

    /** The stamp of `path` as it stands now; size -1 when it doesn't exist. */
    static QFileWatchStamp of(const QString &path);
    bool operator==(const QFileWatchStamp &other) const
    {
        return size == other.size && modified == other.modified;
    }
    bool operator!=(const QFileWatchStamp &other) const { return !(*this == other); }
};

/**
 * Base of every document whose file the program watches for changes made
 * elsewhere (see QFileWatcherManager).
 *
 * A document can't rely on counting notifications to tell its own saves
 * from other programs' writes: an atomic save replaces the file, and the
 * system reports that as none, one or two changes. So the object keeps the
 * stamp of its file as it last wrote or read it, its "own write", and only
 * a file that differs from that stamp is somebody else's change.
 */
class QFileWatchObject : public QObject
{
    Q_OBJECT

public:
    explicit QFileWatchObject(QObject *parent = nullptr);
    /** Leaves the watcher. */
    ~QFileWatchObject() override;

    /** The whole path of the file this object stands for; empty for none. */
    virtual QString fileName() const;
    /** Reads the file at `path` again, after the user agreed to it. The base does nothing. */
    virtual void reload(const QString &path);

    /** Remembers the file as it stands now as this object's own: a later change is not. */
    void setOwnWrite();
    /** Whether the file is still as this object last wrote or read it. */
    bool isOwnWrite() const;

protected:
    /**
     * Enters the object in the watcher under fileName(), with the file as it
     * stands now as its own write: call it after the object took a name,
     * read its file or wrote it.
     */
    void watchFile();
    /** Leaves the watcher: call it before the name changes. */
    void unwatchFile();

private:
    QFileWatchStamp m_ownWrite;
};
