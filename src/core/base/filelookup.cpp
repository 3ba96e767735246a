#include "filelookup.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace {

/** The entries of `folder` named `part` without regard to case, an exact match first. */
QStringList matchEntries(const QString &folder, const QString &part)
{
    QStringList matches;
    if (QFileInfo::exists(folder + QLatin1Char('/') + part))
        matches.append(part);
    const QStringList entries = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                                       | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        if (entry != part && entry.compare(part, Qt::CaseInsensitive) == 0)
            matches.append(entry);
    }
    return matches;
}

/**
 * The path below `folder` along `parts` from `index`, trying every spelling
 * of a folder that matches: two folders may differ only by case here, where
 * Windows would have one.
 */
QString walk(const QString &folder, const QStringList &parts, int index)
{
    if (index == parts.size())
        return folder;
    const QString &part = parts.at(index);
    if (part == QLatin1String("."))
        return walk(folder, parts, index + 1);
    if (part == QLatin1String(".."))
        return walk(QFileInfo(folder).path(), parts, index + 1);
    for (const QString &entry : matchEntries(folder, part)) {
        const QString next = folder.endsWith(QLatin1Char('/')) ? folder + entry : folder + QLatin1Char('/') + entry;
        const QString found = walk(next, parts, index + 1);
        if (!found.isEmpty())
            return found;
    }
    return QString();
}

} // namespace

QString findFile(const QString &directory, const QString &name)
{
    QString relative = name;
    relative.replace(QLatin1Char('\\'), QLatin1Char('/'));
    const bool absolute = QDir::isAbsolutePath(relative);
    const QString written = absolute ? QDir::cleanPath(relative)
                                     : QDir::cleanPath(directory + QLatin1Char('/') + relative);
    if (relative.isEmpty() || QFileInfo::exists(written))
        return written;
    const QString found = walk(absolute ? QStringLiteral("/") : directory,
                               relative.split(QLatin1Char('/'), Qt::SkipEmptyParts), 0);
    return found.isEmpty() ? written : QDir::cleanPath(found);
}
