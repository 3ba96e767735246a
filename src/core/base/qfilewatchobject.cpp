#include "qfilewatchobject.h"

#include "qfilewatchermanager.h"

#include <QDateTime>
#include <QFileInfo>

QFileWatchStamp QFileWatchStamp::of(const QString &path)
{
    const QFileInfo info(path);
    QFileWatchStamp stamp;
    if (info.isFile()) {
        stamp.size = info.size();
        stamp.modified = info.lastModified().toMSecsSinceEpoch();
    }
    return stamp;
}

QFileWatchObject::QFileWatchObject(QObject *parent)
    : QObject(parent)
{
}

QFileWatchObject::~QFileWatchObject()
{
    unwatchFile();
}

QString QFileWatchObject::fileName() const
{
    return QString();
}

void QFileWatchObject::reload(const QString &)
{
}

void QFileWatchObject::setOwnWrite()
{
    m_ownWrite = QFileWatchStamp::of(fileName());
}

bool QFileWatchObject::isOwnWrite() const
{
    return m_ownWrite == QFileWatchStamp::of(fileName());
}

void QFileWatchObject::watchFile()
{
    setOwnWrite();
    if (fileWatcher)
        fileWatcher->add(this);
}

void QFileWatchObject::unwatchFile()
{
    if (fileWatcher)
        fileWatcher->remove(this);
}
