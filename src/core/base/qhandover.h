#pragma once

#include <QFile>
#include <QStringList>

/**
 * The file through which a second instance hands files to the first one.
 *
 * It lives at QDir::tempPath() + "/open.ks3": one path a line, each ended by
 * a single 0x0A, in the local 8-bit encoding, no header. A second instance
 * appends; the first reads all lines and empties the file, so its normal
 * state is zero bytes. There is no lock: appends are single small writes.
 */
class QHandOver
{
public:
    QHandOver();

    /** The path of the hand-over file. */
    static QString path();

    /**
     * For the first instance: opens the file write-only, which empties what a
     * crashed earlier run left there, and keeps it open.
     */
    bool openForFirstInstance();
    /**
     * Appends one path and a line feed, then closes the file. Opens it in
     * append mode unless it is already open. Returns false if it can't be
     * written; the path is then lost, as nothing can be done about it.
     */
    bool append(const QString &fileName);
    /**
     * Reads every non-empty line, then empties the file if it held anything.
     * Returns no lines when the file can't be opened.
     */
    QStringList consume();

    bool isOpen() const { return m_file.isOpen(); }

private:
    QFile m_file;
};

/**
 * The single-instance lock: a 1-byte shared memory segment under a fixed key.
 * Only whether it could be created matters. The segment goes when the object
 * is destroyed.
 */
class QInstanceLock
{
public:
    explicit QInstanceLock(const QString &key = QStringLiteral("Kestrada3"));
    ~QInstanceLock();

    /** Whether this process holds the lock, that is, is the first instance. */
    bool isFirst() const { return m_first; }

private:
    class Private;
    Private *d;
    bool m_first = false;
};
