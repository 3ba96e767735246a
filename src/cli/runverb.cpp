// A test run from the command line: the copies of the project go into the
// engine's folders, the engine runs, and the copies go again once it ends.

#include "runverb.h"

#include "cliapp.h"

#include "core/app/qmugenrun.h"
#include "core/app/qproject.h"
#include "core/base/qmugenmodel.h"

#include <QFileInfo>

namespace Cli {

namespace {

QVariant setting(const char *key)
{
    return configuration ? configuration->config.value(QLatin1String(key)) : QVariant();
}

int runProject(const Command &command)
{
    const QString verb = QStringLiteral("run");
    const QString def = command.args.first();
    const QString engine = command.value("--engine");
    if (engine.isEmpty()) {
        error(verb, QStringLiteral("--engine PATH is required"));
        return UsageError;
    }
    if (!QFileInfo(engine).isFile()) {
        error(verb, QStringLiteral("%1: no such engine").arg(engine));
        return Failure;
    }

    QProject project(setting("cache_type").toInt(), setting("cache_compression").toBool());
    if (!QFileInfo(def).isFile() || !project.fromFile(def, setting("default_codepage").toInt(), false, false)) {
        error(verb, QStringLiteral("%1: can't be opened as a project").arg(def));
        return Failure;
    }
    // Without a template, the project fights itself; a stage is fought on.
    QString params = command.value("--params");
    if (!command.values.contains(QStringLiteral("--params")))
        params = project.type() == Stage ? QStringLiteral("kfm kfm -s %0") : QStringLiteral("%0 %0");

    QMugenRun run;
    if (!run.run(engine, params, {&project}, &project)) {
        error(verb, run.errorString());
        return Failure;
    }
    return Success;
}

} // namespace

void registerRunVerb()
{
    registerVerb({QStringLiteral("run"), QStringLiteral("PROJECT.def --engine PATH [--params \"%0 kfm\"]"),
                  QStringLiteral("try a project in an engine: copy it in, run it, remove the copy"),
                  {}, {QStringLiteral("--engine"), QStringLiteral("--params")}, 1, 1, runProject});
}

} // namespace Cli
