#include "qbackupfolder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

QBackupFolder::QBackupFolder(const QString &defFile)
{
    const QFileInfo def(defFile);
    const QString projectDir = QFileInfo(def.absolutePath()).canonicalFilePath();
    if (projectDir.isEmpty())
        return;
    const QString folder = projectDir + QLatin1String("/backup/")
        + QDateTime::currentDateTime().toString(QStringLiteral("dd-MM-yyyy h-m-s ap")) + QLatin1Char('/');
    if (!QDir().mkpath(folder))
        return;
    m_projectDir = projectDir;
    m_folder = folder;
}

QString QBackupFolder::target(const QString &path) const
{
    if (!isValid())
        return QString();
    // A file that exists is placed by its real path, so a name that climbs
    // out and back in ("../kfm/kfm.cns") lands where the file is.
    const QFileInfo info(QDir(m_projectDir), path);
    const QString real = info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
    const QString place = m_folder + inside(QDir(m_projectDir).relativeFilePath(real));
    QDir().mkpath(QFileInfo(place).absolutePath());
    return place;
}

bool QBackupFolder::copy(const QString &path) const
{
    if (!isValid() || !QFileInfo(path).isFile())
        return false;
    const QString place = target(path);
    // Two backups in one second: the later one wins.
    QFile::remove(place);
    return QFile::copy(path, place);
}

QString QBackupFolder::inside(const QString &relative)
{
    QStringList parts;
    for (QString part : QString(relative).replace(QLatin1Char('\\'), QLatin1Char('/')).split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (part == QLatin1String(".."))
            part = QStringLiteral("(parent)");
        part.remove(QLatin1Char(':'));
        if (!part.isEmpty() && part != QLatin1String("."))
            parts.append(part);
    }
    return parts.join(QLatin1Char('/'));
}
