#include "apppaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

QString applicationDir()
{
    return QCoreApplication::applicationDirPath();
}

namespace {

QString userConfigDir()
{
    QString dir = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    if (dir.isEmpty())
        dir = QDir::homePath() + QLatin1String("/.config/kestrada");
    return dir;
}

bool besideExecutableWritable(const QString &path)
{
    const QFileInfo file(path);
    if (file.exists())
        return file.isWritable() && QFileInfo(file.absolutePath()).isWritable();
    return QFileInfo(file.absolutePath()).isWritable();
}

} // namespace

QString settingsFileForWrite(const QString &name)
{
    return settingsFileForWrite(name, applicationDir());
}

QString settingsFileForWrite(const QString &name, const QString &programDir)
{
    const QString beside = programDir + QLatin1Char('/') + name;
    if (besideExecutableWritable(beside))
        return beside;
    const QString dir = userConfigDir();
    QDir().mkpath(dir);
    return dir + QLatin1Char('/') + name;
}

QString settingsFileForRead(const QString &name)
{
    const QString beside = applicationDir() + QLatin1Char('/') + name;
    if (besideExecutableWritable(beside))
        return beside;
    const QString user = userConfigDir() + QLatin1Char('/') + name;
    return QFileInfo::exists(user) ? user : beside;
}

QString userDataFolder(const QString &name)
{
    QString dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (dir.isEmpty())
        dir = QDir::homePath() + QLatin1String("/.local/share/kestrada");
    return dir + QLatin1Char('/') + name;
}
