#include "verbs.h"

#include "backupverb.h"
#include "cliapp.h"
#include "runverb.h"
#include "soundverbs.h"
#include "spriteverbs.h"
#include "textverbs.h"

#include "core/base/qmugenmodel.h"
#include "core/base/qprojecttypes.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace Cli {

namespace {

bool readable(const QString &verb, const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        error(verb, QStringLiteral("%1: no such file").arg(path));
        return false;
    }
    if (!info.isFile() || !info.isReadable()) {
        error(verb, QStringLiteral("%1: can't be read").arg(path));
        return false;
    }
    return true;
}

/**
 * The first format of `path` that has `handler`: one kind of file may be
 * served by several formats, each with some of the verbs. Otherwise says
 * why not, with `missing` taking the path and the format's name.
 */
template <typename Handler>
const Format *formatWith(const QString &verb, const QString &path, Handler Format::*handler,
                         const char *missing)
{
    const Format *first = nullptr;
    for (const Format &format : allFormats()) {
        if (!format.matches || !format.matches(path))
            continue;
        if (format.*handler)
            return &format;
        if (!first)
            first = &format;
    }
    if (!first)
        error(verb, QStringLiteral("%1: this kind of file isn't supported").arg(path));
    else
        error(verb, QString::fromLatin1(missing).arg(path, first->name));
    return nullptr;
}

int runInfo(const Command &command)
{
    const QString path = command.args.first();
    if (!readable(QStringLiteral("info"), path))
        return Failure;
    const Format *format = formatWith(QStringLiteral("info"), path, &Format::info, "%1: no information for a %2");
    return format ? format->info(command, path) : UsageError;
}

int runCheck(const Command &command)
{
    int target = TargetMugen;
    if (!engineTarget(command, &target, TargetMugen)) {
        error(QStringLiteral("check"), QStringLiteral("--target wants mugen, mugen-X.Y or ikemen, not \"%1\"")
                                           .arg(command.value("--target")));
        return UsageError;
    }
    quint32 version = 0;
    if (!engineVersion(command, &version, DefaultEngineVersion)) {
        error(QStringLiteral("check"), QStringLiteral("--mugen-version wants a version such as 1.0 or 1.1, not \"%1\"")
                                           .arg(command.value("--mugen-version")));
        return UsageError;
    }
    if (!kindOptionValid(command, QStringLiteral("check")))
        return UsageError;
    QList<Diagnostic> diagnostics;
    bool failed = false;
    for (const QString &path : command.args) {
        if (!readable(QStringLiteral("check"), path)) {
            failed = true;
            continue;
        }
        const Format *format = formatWith(QStringLiteral("check"), path, &Format::check, "%1: a %2 can't be checked");
        if (!format)
            return UsageError;
        if (!format->check(command, path, diagnostics))
            failed = true;
    }

    bool errors = failed;
    QJsonArray array;
    for (const Diagnostic &d : std::as_const(diagnostics)) {
        errors = errors || d.severity == Diagnostic::Error;
        if (command.json()) {
            array.append(QJsonObject{{QStringLiteral("path"), d.path},
                                     {QStringLiteral("line"), d.line},
                                     {QStringLiteral("column"), d.column},
                                     {QStringLiteral("severity"), severityName(d.severity)},
                                     {QStringLiteral("text"), d.text}});
        } else {
            out() << formatDiagnostic(d) << '\n';
        }
    }
    if (command.json())
        printJson(array);
    out().flush();
    return errors ? Failure : Success;
}

int runSave(const Command &command)
{
    const QString in = command.args.at(0);
    const QString outPath = command.args.at(1);
    if (!readable(QStringLiteral("save"), in))
        return Failure;
    const Format *format = formatWith(QStringLiteral("save"), in, &Format::save, "%1: a %2 can't be saved");
    if (!format)
        return UsageError;
    for (const QString &flag : command.flags) {
        if (flag != QLatin1String("--json") && !format->saveFlags.contains(flag)) {
            error(QStringLiteral("save"), QStringLiteral("%1 doesn't apply to a %2").arg(flag, format->name));
            return UsageError;
        }
    }
    for (auto it = command.values.cbegin(); it != command.values.cend(); ++it) {
        if (!format->saveValueOptions.contains(it.key())) {
            error(QStringLiteral("save"), QStringLiteral("%1 doesn't apply to a %2").arg(it.key(), format->name));
            return UsageError;
        }
    }
    if (!format->matches(outPath)) {
        error(QStringLiteral("save"), QStringLiteral("%1: the output must be a %2 too").arg(outPath, format->name));
        return UsageError;
    }
    return format->save(command, in, outPath);
}

// The program's own configuration files: config.xml and exported .ksc3.

bool isConfiguration(const QString &path)
{
    const QFileInfo info(path);
    return info.suffix().compare(QLatin1String("ksc3"), Qt::CaseInsensitive) == 0
        || info.fileName().compare(QLatin1String("config.xml"), Qt::CaseInsensitive) == 0;
}

int configurationInfo(const Command &command, const QString &path)
{
    QMugenModel model;
    if (!model.load(path)) {
        error(QStringLiteral("info"), QStringLiteral("%1: not a configuration file").arg(path));
        return Failure;
    }
    if (command.json()) {
        QJsonObject settings;
        for (auto it = model.config.cbegin(); it != model.config.cend(); ++it) {
            if (!it.key().startsWith(QLatin1String("mugen_")))
                settings.insert(it.key(), it.value().toString());
        }
        QJsonArray installations;
        for (const QMugenInfo *info : std::as_const(model.mugens))
            installations.append(QJsonObject{{QStringLiteral("name"), info->name},
                                             {QStringLiteral("exe"), info->exe},
                                             {QStringLiteral("params"), info->params},
                                             {QStringLiteral("icon"), info->icon}});
        printJson(QJsonObject{{QStringLiteral("kind"), QStringLiteral("configuration")},
                              {QStringLiteral("settings"), settings},
                              {QStringLiteral("installations"), installations}});
        return Success;
    }
    out() << "Configuration: " << path << '\n';
    out() << "Installations: " << model.count() << '\n';
    for (const QMugenInfo *info : std::as_const(model.mugens))
        out() << "  " << info->name << ": " << info->exe << (info->params.isEmpty() ? QString() : QLatin1String(" ") + info->params) << '\n';
    out() << "Settings:\n";
    for (auto it = model.config.cbegin(); it != model.config.cend(); ++it) {
        if (!it.key().startsWith(QLatin1String("mugen_")))
            out() << "  " << it.key() << " = " << it.value().toString() << '\n';
    }
    out().flush();
    return Success;
}

int configurationSave(const Command &, const QString &in, const QString &outPath)
{
    QMugenModel model;
    if (!model.load(in)) {
        error(QStringLiteral("save"), QStringLiteral("%1: not a configuration file").arg(in));
        return Failure;
    }
    if (!model.save(outPath)) {
        error(QStringLiteral("save"), QStringLiteral("%1: can't be written").arg(outPath));
        return Failure;
    }
    return Success;
}

} // namespace

void registerFormats()
{
    Format configurationFormat;
    configurationFormat.name = QStringLiteral("configuration file");
    configurationFormat.matches = isConfiguration;
    configurationFormat.info = configurationInfo;
    configurationFormat.save = configurationSave;
    registerFormat(configurationFormat);
    registerTextFormats();
    registerSoundFormat();
    registerSpriteFormat();
}

void registerVerbs()
{
    // --kind: the kind of project a sprite file is read as.
    registerVerb({QStringLiteral("info"), QStringLiteral("FILE [--kind KIND] [--json]"),
                  QStringLiteral("show what a file holds"), {QStringLiteral("--json")}, {QStringLiteral("--kind")}, 1,
                  1, runInfo});
    registerVerb({QStringLiteral("check"),
                  QStringLiteral("FILE... [--target mugen[-X.Y]|ikemen] [--mugen-version X.Y] [--kind KIND] [--json]"),
                  QStringLiteral("check files; exit status 1 when there is an error"),
                  {QStringLiteral("--json")},
                  {QStringLiteral("--target"), QStringLiteral("--mugen-version"), QStringLiteral("--kind")}, 1, -1,
                  runCheck});

    // save takes the options of every format; the format then refuses those
    // that aren't its own.
    QStringList saveFlags{QStringLiteral("--json")};
    QStringList saveValues;
    for (const Format &format : allFormats()) {
        saveFlags += format.saveFlags;
        saveValues += format.saveValueOptions;
    }
    saveFlags.removeDuplicates();
    saveValues.removeDuplicates();
    Verb save{QStringLiteral("save"), QStringLiteral("IN OUT [options]"),
              QStringLiteral("read a file and write it again, converted where asked"),
              saveFlags, saveValues, 2, 2, runSave};
    registerVerb(save);
    registerSoundVerbs();
    registerSpriteVerbs();
    registerRunVerb();
    registerBackupVerb();
}

} // namespace Cli
