// Backups from the command line: the same folders the program makes and
// lists, for scripts that back a character up before they touch it.

#include "backupverb.h"

#include "cliapp.h"

#include "core/app/qbakmanager.h"
#include "core/app/qproject.h"
#include "core/base/qmugenmodel.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace Cli {

namespace {

int listBackups(const Command &command, const QString &def)
{
    const QBakManager backups(def);
    QJsonArray array;
    for (int row = 0; row < backups.rowCount(); ++row) {
        const QModelIndex index = backups.index(row);
        if (command.json())
            array.append(QJsonObject{{QStringLiteral("name"), backups.folders().at(row)},
                                     {QStringLiteral("def"), backups.path(index)}});
        else
            out() << backups.folders().at(row) << '\n';
    }
    if (command.json())
        printJson(array);
    out().flush();
    return Success;
}

int runBackup(const Command &command)
{
    const QString verb = QStringLiteral("backup");
    const QString def = command.args.first();
    if (!QFileInfo(def).isFile()) {
        error(verb, QStringLiteral("%1: no such file").arg(def));
        return Failure;
    }
    if (command.hasFlag("--list"))
        return listBackups(command, def);

    const auto setting = [](const char *key) {
        return configuration ? configuration->config.value(QLatin1String(key)) : QVariant();
    };
    QProject project(setting("cache_type").toInt(), setting("cache_compression").toBool());
    if (!project.fromFile(def, setting("default_codepage").toInt(), false, false)) {
        error(verb, QStringLiteral("%1: can't be opened as a project").arg(def));
        return Failure;
    }
    QString folder;
    if (!project.backup(&folder)) {
        error(verb, folder.isEmpty() ? QStringLiteral("%1: the backup folder can't be made").arg(def)
                                     : QStringLiteral("%1: not every file could be written").arg(folder));
        return Failure;
    }
    folder = QDir::toNativeSeparators(QDir::cleanPath(folder));
    if (command.json())
        printJson(QJsonObject{{QStringLiteral("folder"), folder}});
    else
        out() << folder << '\n';
    out().flush();
    return Success;
}

} // namespace

void registerBackupVerb()
{
    registerVerb({QStringLiteral("backup"), QStringLiteral("PROJECT.def [--list] [--json]"),
                  QStringLiteral("copy a project into a new folder under backup/ and print it, or list the backups"),
                  {QStringLiteral("--list"), QStringLiteral("--json")}, {}, 1, 1, runBackup});
}

} // namespace Cli
