// Sound files on the command line: what they hold, their check, a plain
// re-save, and the extraction of every sound as a WAV file.

#include "soundverbs.h"

#include "cliapp.h"

#include "core/sounds/qsounds.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>

namespace Cli {

namespace {

/** Loads `path` into `sounds`, or says why not under `verb`. */
bool loadSounds(const QString &verb, const QString &path, QSounds &sounds)
{
    if (sounds.load(path, false))
        return true;
    error(verb, QStringLiteral("%1: can't be read as a sound file: %2").arg(path, sounds.errorString()));
    return false;
}

int soundInfo(const Command &command, const QString &path)
{
    QSounds sounds(nullptr, 0, false, -1);
    if (!loadSounds(QStringLiteral("info"), path, sounds))
        return Failure;
    if (!command.json()) {
        out() << "Sound file: " << path << '\n' << sounds.dump();
        out().flush();
        return Success;
    }
    QJsonArray list;
    for (int i = 0; i < sounds.count(); ++i) {
        const QSubItem item = sounds.subItem(i);
        const QSoundInfo info = sounds.soundInfo(i);
        list.append(QJsonObject{{QStringLiteral("place"), i},
                                {QStringLiteral("group"), item.group},
                                {QStringLiteral("number"), item.index},
                                {QStringLiteral("bytes"), sounds.sample(i).size()},
                                {QStringLiteral("channels"), info.channels},
                                {QStringLiteral("sampleRate"), qint64(info.sampleRate)},
                                {QStringLiteral("bitsPerSample"), info.bitsPerSample},
                                {QStringLiteral("duration"), double(info.duration)}});
    }
    printJson(QJsonObject{{QStringLiteral("kind"), QStringLiteral("sounds")},
                          {QStringLiteral("path"), path},
                          {QStringLiteral("count"), sounds.count()},
                          {QStringLiteral("sounds"), list}});
    return Success;
}

bool soundCheck(const Command &, const QString &path, QList<Diagnostic> &diagnostics)
{
    QSounds sounds(nullptr, 0, false, -1);
    if (!loadSounds(QStringLiteral("check"), path, sounds))
        return false;
    sounds.check();
    appendItemDiagnostics(path, sounds.messages(), diagnostics);
    return true;
}

int soundSave(const Command &, const QString &in, const QString &outPath)
{
    QSounds sounds(nullptr, 0, false, -1);
    if (!loadSounds(QStringLiteral("save"), in, sounds))
        return Failure;
    // An empty list is refused, with the reason on standard error.
    if (!sounds.checkSave(0))
        return Failure;
    if (!sounds.save(outPath, false)) {
        error(QStringLiteral("save"), QStringLiteral("%1: can't be written: %2").arg(outPath, sounds.errorString()));
        return Failure;
    }
    return Success;
}

int soundExtract(const Command &command)
{
    const QString verb = QStringLiteral("snd extract");
    const QString path = command.args.at(0);
    const QDir folder(command.args.at(1));
    QSounds sounds(nullptr, 0, false, -1);
    if (!loadSounds(verb, path, sounds))
        return Failure;
    if (!QDir().mkpath(folder.path())) {
        error(verb, QStringLiteral("%1: the folder can't be made").arg(folder.path()));
        return Failure;
    }
    Extraction extraction(verb);
    for (int i = 0; i < sounds.count(); ++i) {
        // An empty sound has nothing to write.
        if (sounds.sample(i).isEmpty())
            continue;
        const QSubItem item = sounds.subItem(i);
        const QString name = folder.filePath(Extraction::itemFileName(i, item.group, item.index, "wav"));
        extraction.record(sounds.saveWav(i, name), name);
    }
    return extraction.finish(command, QStringLiteral("Extracted %1 of %2 sounds to %3")
                                          .arg(extraction.written.size())
                                          .arg(sounds.count())
                                          .arg(folder.path()));
}

} // namespace

void registerSoundFormat()
{
    Format format;
    format.name = QStringLiteral("sound file");
    format.matches = hasSuffix({"snd"});
    format.info = soundInfo;
    format.check = soundCheck;
    format.save = soundSave;
    registerFormat(format);
}

void registerSoundVerbs()
{
    registerVerb({QStringLiteral("snd extract"), QStringLiteral("FILE.snd DIR [--json]"),
                  QStringLiteral("write each sound as DIR/<place>_<group>-<number>.wav"),
                  {QStringLiteral("--json")}, {}, 2, 2, soundExtract});
}

} // namespace Cli
