#include "qdatafolder.h"

#include "apppaths.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

QDataFolder::QDataFolder(const QString &program, const QString &user)
    : m_program(program)
    , m_user(user)
{
}

QDataFolder QDataFolder::named(const QString &name)
{
    return QDataFolder(applicationDir() + QLatin1Char('/') + name, userDataFolder(name));
}

QStringList QDataFolder::names(bool folders, const QString &suffix) const
{
    QStringList found;
    for (const QString &folder : {m_program, m_user}) {
        if (folder.isEmpty())
            continue;
        const QDir dir(folder);
        const QStringList entries = folders ? dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot)
                                            : dir.entryList({QLatin1Char('*') + suffix}, QDir::Files | QDir::Readable);
        for (const QString &entry : entries) {
            if (entry.startsWith(QLatin1Char('.')))
                continue;
            found.append(folders ? entry : entry.left(entry.size() - suffix.size()));
        }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

QStringList QDataFolder::folderNames() const
{
    return names(true, QString());
}

QStringList QDataFolder::fileNames(const QString &suffix) const
{
    return names(false, suffix);
}

QString QDataFolder::find(const QString &relative) const
{
    if (!m_user.isEmpty()) {
        const QString user = m_user + QLatin1Char('/') + relative;
        if (QFileInfo::exists(user))
            return user;
    }
    return m_program + QLatin1Char('/') + relative;
}

QString QDataFolder::writable() const
{
    const QFileInfo program(m_program);
    if (m_user.isEmpty() || (program.isDir() && program.isWritable()))
        return m_program;
    QDir().mkpath(m_user);
    return m_user;
}
