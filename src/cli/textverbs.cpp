// The verbs of engine text: AIR animations, DEF projects, the check of every
// text file and of whole projects, and the saving of every text file.

#include "textverbs.h"

#include "cliapp.h"

#include "core/animation/qanimations.h"
#include "core/app/qproject.h"
#include "core/base/filelookup.h"
#include "core/base/qmugenmodel.h"
#include "core/sounds/qsounds.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"
#include "core/text/qmugensyntaxprocessor.h"
#include "core/text/qsyntaxhierarchy.h"
#include "core/text/qsyntaxproperties.h"
#include "core/text/qsyntaxtexteditor.h"
#include "core/text/qtextelement.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTextBlock>

#include <algorithm>

namespace Cli {

namespace {

int defaultCodepage()
{
    return configuration ? configuration->config.value(QStringLiteral("default_codepage")).toInt() : 0;
}

QString versionText(quint32 version)
{
    if (version == 0)
        return QStringLiteral("Beta");
    QStringList parts;
    for (int shift = 24; shift >= 0; shift -= 8)
        parts.append(QString::number((version >> shift) & 0xff));
    while (parts.size() > 2 && parts.last() == QLatin1String("0"))
        parts.removeLast();
    return parts.join(QLatin1Char('.'));
}

// Saving any text file: read with its encoding, write with CR LF.

/** Writes a loaded text document to `out`, or says why not. */
int writeText(const Command &command, QSyntaxTextEditor &document, const QString &out)
{
    if (!document.save(out, command.hasFlag("--utf8"), true)) {
        error(QStringLiteral("save"), QStringLiteral("%1: can't be written").arg(out));
        return Failure;
    }
    return Success;
}

int saveText(const Command &command, const QString &in, const QString &out)
{
    QSyntaxTextEditor document(nullptr, FileStates, false, DefaultEngineVersion, false);
    if (!document.load(in, defaultCodepage(), false)) {
        error(QStringLiteral("save"), QStringLiteral("%1: can't be read").arg(in));
        return Failure;
    }
    return writeText(command, document, out);
}

// Animations

/** An AIR file as the program holds it: the text, and the animations read from it. */
struct AirDocument
{
    QSyntaxTextEditor text{nullptr, FileAnimations, true, DefaultEngineVersion, false};
    QAnimations animations{nullptr, &text};

    /** Loads `path`, or says why not under `verb`. */
    bool load(const QString &verb, const QString &path)
    {
        if (animations.fromFile(path, defaultCodepage(), false))
            return true;
        error(verb, QStringLiteral("%1: can't be read").arg(path));
        return false;
    }
};

/** An AIR is saved as the program saves it: one without an action is refused, with the reason. */
int saveAnimations(const Command &command, const QString &in, const QString &out)
{
    AirDocument air;
    if (!air.load(QStringLiteral("save"), in) || !air.animations.checkSave(0))
        return Failure;
    return writeText(command, air.text, out);
}

QJsonObject rectJson(const QRect &rect)
{
    return QJsonObject{{QStringLiteral("left"), rect.left()}, {QStringLiteral("top"), rect.top()},
                       {QStringLiteral("right"), rect.right()}, {QStringLiteral("bottom"), rect.bottom()}};
}

int animationsInfo(const Command &command, const QString &path)
{
    AirDocument air;
    if (!air.load(QStringLiteral("info"), path))
        return Failure;
    const QAnimations &animations = air.animations;
    QJsonArray actions;
    for (int i = 0; i < animations.count(); ++i) {
        const QAnimation *animation = animations.at(i);
        QJsonArray boxes;
        for (int f = 0; f < animation->frameCount(); ++f) {
            const QAnimationFrame *frame = animation->frameAt(f);
            for (int type = 0; type < 4; ++type) {
                const QCollisionBoxes *declaration = frame->declarations[type];
                if (!declaration)
                    continue;
                for (const QCollisionBox *box : declaration->boxes)
                    boxes.append(QJsonObject{{QStringLiteral("frame"), f},
                                             {QStringLiteral("type"), QCollisionBoxes::word(QCollisionBoxType(type))},
                                             {QStringLiteral("rect"), rectJson(box->rect())}});
            }
        }
        actions.append(QJsonObject{{QStringLiteral("number"), animation->number()},
                                   {QStringLiteral("name"), animation->name()},
                                   {QStringLiteral("frames"), animation->frameCount()},
                                   {QStringLiteral("loopStart"), animation->loopStart()},
                                   {QStringLiteral("boxes"), boxes}});
    }
    if (command.json()) {
        printJson(QJsonObject{{QStringLiteral("kind"), QStringLiteral("animations")},
                              {QStringLiteral("path"), path},
                              {QStringLiteral("actions"), actions}});
        return Success;
    }
    out() << "Animations: " << animations.count() << '\n';
    for (const QJsonValue &value : std::as_const(actions)) {
        const QJsonObject action = value.toObject();
        out() << "  " << action.value(QStringLiteral("number")).toInt();
        const QString name = action.value(QStringLiteral("name")).toString();
        if (!name.isEmpty())
            out() << " \"" << name << '"';
        out() << ": " << action.value(QStringLiteral("frames")).toInt() << " frames";
        const int loop = action.value(QStringLiteral("loopStart")).toInt();
        if (loop >= 0)
            out() << ", loop from frame " << loop;
        out() << '\n';
        for (const QJsonValue &boxValue : action.value(QStringLiteral("boxes")).toArray()) {
            const QJsonObject box = boxValue.toObject();
            const QJsonObject rect = box.value(QStringLiteral("rect")).toObject();
            out() << "    frame " << box.value(QStringLiteral("frame")).toInt() << ' '
                  << box.value(QStringLiteral("type")).toString() << ": " << rect.value(QStringLiteral("left")).toInt()
                  << ", " << rect.value(QStringLiteral("top")).toInt() << ", "
                  << rect.value(QStringLiteral("right")).toInt() << ", " << rect.value(QStringLiteral("bottom")).toInt()
                  << '\n';
        }
    }
    out().flush();
    return Success;
}

/**
 * A file a DEF names, where the engine would find it: in the project's
 * folder, then in the engine's data folder and its root, two folders up
 * (common1.cns of stcommon lives in data/). The path in the project's
 * folder when it is nowhere.
 */
QString findAsTheEngine(const QString &directory, const QString &name)
{
    const QString own = findFile(directory, name);
    if (QFileInfo(own).isFile())
        return own;
    const QString engineRoot = QDir::cleanPath(directory + QStringLiteral("/../.."));
    for (const QString &folder : {engineRoot + QStringLiteral("/data"), engineRoot}) {
        const QString path = findFile(folder, name);
        if (QFileInfo(path).isFile())
            return path;
    }
    return own;
}

/** The first of `folders` that holds a name, as the engine on Windows finds it: the file's path, or nothing. */
QString findIn(const QStringList &folders, const QString &name)
{
    for (const QString &folder : folders) {
        const QString path = findFile(folder, name);
        if (QFileInfo(path).isFile())
            return path;
    }
    return QString();
}

/**
 * Where the engine looks for what a screenpack or a font names: the DEF's
 * folder, then the engine's data folder, its root and its font folder. The
 * DEF is in data/ or in a motif folder below it, so the root is one or two
 * folders up.
 */
QStringList engineFolders(const QString &directory)
{
    const QString up = QDir::cleanPath(directory + QStringLiteral("/.."));
    const QString upTwice = QDir::cleanPath(directory + QStringLiteral("/../.."));
    return {directory, up, upTwice, up + QStringLiteral("/data"), upTwice + QStringLiteral("/data"),
            up + QStringLiteral("/font"), upTwice + QStringLiteral("/font")};
}

/**
 * Whether a TrueType font is among the system's fonts, where the engine
 * looks when it isn't in the font folder. The walk is bounded: a font
 * folder is no reason to read a whole disk.
 */
bool isSystemFont(const QString &name)
{
    const QString bare = QFileInfo(name).fileName();
    int seen = 0;
    for (const QString &folder : QStandardPaths::standardLocations(QStandardPaths::FontsLocation)) {
        QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext() && ++seen < 100000) {
            it.next();
            if (it.fileName().compare(bare, Qt::CaseInsensitive) == 0)
                return true;
        }
    }
    return false;
}

QString readText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QSyntaxTextEditor::decode(file.readAll(), defaultCodepage());
}

/** A [Files] line of a screenpack: the key, lower-cased, and the file it names, with "/" for "\". */
struct NamedFile
{
    QString key;
    QString name;
};

QList<NamedFile> screenpackFiles(const QString &text)
{
    QList<NamedFile> files;
    bool inFiles = false;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        const QString trimmed = line.section(QLatin1Char(';'), 0, 0).trimmed();
        if (trimmed.startsWith(QLatin1Char('['))) {
            inFiles = trimmed.compare(QLatin1String("[files]"), Qt::CaseInsensitive) == 0;
        } else if (inFiles && trimmed.contains(QLatin1Char('='))) {
            const QString name = trimmed.section(QLatin1Char('='), 1).trimmed().replace(QLatin1Char('\\'), QLatin1Char('/'));
            if (!name.isEmpty())
                files.append({trimmed.section(QLatin1Char('='), 0, 0).trimmed().toLower(), name});
        }
    }
    return files;
}

/**
 * Whether a DEF is a screenpack's: by its sections, or because a screenpack
 * DEF beside it names it (a select.def may hold nothing that says so).
 */
bool isScreenpackFile(const QString &path, const QString &text)
{
    if (QMugenSyntaxProcessor::readsAsScreenpack(text))
        return true;
    const QFileInfo info(path);
    const QString canonical = info.canonicalFilePath();
    const QFileInfoList beside = info.dir().entryInfoList({QStringLiteral("*.def")}, QDir::Files, QDir::Name);
    for (int i = 0; i < beside.size() && i < 64; ++i) {
        const QFileInfo &other = beside.at(i);
        if (other.canonicalFilePath() == canonical || other.size() > 4 * 1024 * 1024)
            continue;
        const QString otherText = readText(other.filePath());
        if (!QMugenSyntaxProcessor::readsAsScreenpack(otherText))
            continue;
        for (const NamedFile &file : screenpackFiles(otherText)) {
            if (QFileInfo(findFile(other.absolutePath(), file.name)).canonicalFilePath() == canonical)
                return true;
        }
    }
    return false;
}

// Checks: the syntax processor's diagnostics, line by line, in the order
// of the text.

/** Files already checked in this run: a project and its files named again are checked once. */
QSet<QString> &checkedFiles()
{
    static QSet<QString> files;
    return files;
}

bool firstCheckOf(const QString &path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (checkedFiles().contains(canonical))
        return false;
    checkedFiles().insert(canonical);
    return true;
}

void appendIssues(QSyntaxTextEditor *document, const QString &path, QList<Diagnostic> &out)
{
    for (QTextBlock block = document->document()->begin(); block.isValid(); block = block.next()) {
        const QTextEditorBlockData *data = QTextEditorBlockData::of(block, false);
        if (!data)
            continue;
        QVector<QSyntaxIssue> issues = data->issues;
        std::stable_sort(issues.begin(), issues.end(),
                         [](const QSyntaxIssue &a, const QSyntaxIssue &b) { return a.start < b.start; });
        for (const QSyntaxIssue &issue : std::as_const(issues)) {
            Diagnostic diagnostic;
            diagnostic.path = path;
            diagnostic.line = block.blockNumber() + 1;
            diagnostic.column = issue.start + 1;
            diagnostic.severity = diagnosticSeverity(issue.severity);
            diagnostic.text = issue.text;
            out.append(diagnostic);
        }
    }
}

/** Whether a file holds states in Ikemen GO's own script language, which isn't checked. */
bool isZss(const QString &path)
{
    return path.endsWith(QLatin1String(".zss"), Qt::CaseInsensitive);
}

/**
 * Checks a loaded document as engine text at `version`, for the engine
 * `target`; the suffix said it is engine text.
 */
void checkDocument(QSyntaxTextEditor *document, const QString &path, quint32 version, int target,
                   QList<Diagnostic> &out)
{
    if (path.isEmpty() || isZss(path) || !firstCheckOf(path))
        return;
    document->setLanguage(1);
    document->setTarget(target);
    document->setVersion(version);
    appendIssues(document, path, out);
}

Diagnostic missingFile(const QString &path, const QString &text, bool error)
{
    Diagnostic diagnostic;
    diagnostic.path = path;
    diagnostic.line = 0;
    diagnostic.severity = error ? Diagnostic::Error : Diagnostic::Warning;
    diagnostic.text = text;
    return diagnostic;
}

/**
 * A screenpack's DEF (system.def, select.def, fight.def and the others) is
 * checked for its form, at the engine version it names unless
 * --mugen-version says otherwise; every file its [Files] names must be
 * where the engine looks, and the screenpack DEFs among them are checked
 * the same way.
 */
bool checkScreenpack(const Command &command, const QString &path, QList<Diagnostic> &out)
{
    if (checkedFiles().contains(QFileInfo(path).canonicalFilePath()))
        return true;
    QSyntaxTextEditor document(nullptr, FileDefinitions, false, DefaultEngineVersion, true);
    if (!document.load(path, defaultCodepage(), true)) {
        error(QStringLiteral("check"), QStringLiteral("%1: can't be read").arg(path));
        return false;
    }
    if (auto *processor = qobject_cast<QMugenSyntaxProcessor *>(document.processor()))
        processor->setScreenpack(true);
    const QString named = document.hierarchy()->findValue(QStringLiteral("mugenversion"), QStringLiteral("info")).trimmed();
    quint32 version = DefaultEngineVersion;
    engineVersion(command, &version, named.isEmpty() ? DefaultEngineVersion : packEngineVersion(named));
    const bool ikemen = !document.hierarchy()->findValue(QStringLiteral("ikemenversion"), QStringLiteral("info")).trimmed().isEmpty();
    int target = TargetMugen;
    engineTarget(command, &target, ikemen ? TargetIkemen : TargetMugen);
    checkDocument(&document, path, version, target, out);

    const QStringList folders = engineFolders(QFileInfo(path).absolutePath());
    for (const NamedFile &file : screenpackFiles(document.text())) {
        const QString found = findIn(folders, file.name);
        if (found.isEmpty())
            out.append(missingFile(path, QStringLiteral("the file \"%1\" isn't found").arg(file.name), true));
        else if (file.key == QLatin1String("select") || file.key == QLatin1String("fight"))
            checkScreenpack(command, found, out);
    }
    return true;
}

bool checkText(const Command &command, const QString &path, QProjectFileType fileType, QList<Diagnostic> &out)
{
    quint32 version = DefaultEngineVersion;
    engineVersion(command, &version, DefaultEngineVersion);
    int target = TargetMugen;
    engineTarget(command, &target, TargetMugen);
    QSyntaxTextEditor document(nullptr, fileType, false, version, true);
    document.setTarget(target);
    if (!document.load(path, defaultCodepage(), true)) {
        error(QStringLiteral("check"), QStringLiteral("%1: can't be read").arg(path));
        return false;
    }
    checkDocument(&document, path, version, target, out);
    return true;
}

/**
 * A DEF is checked as the project it opens: the DEF itself and every
 * document it names and that is found, at the engine version the DEF
 * names unless --mugen-version says otherwise. A file named but not found
 * is an error, since the engine would refuse the project; palettes, the
 * sounds of stages and storyboards and the engine's own common states are
 * only warned of.
 */
bool checkProject(const Command &command, const QString &path, QList<Diagnostic> &out)
{
    if (isScreenpackFile(path, readText(path)))
        return checkScreenpack(command, path, out);
    QProject project(0, true);
    if (!project.fromFile(path, defaultCodepage(), false, false)) {
        error(QStringLiteral("check"), QStringLiteral("%1: can't be read").arg(path));
        return false;
    }
    QDefinitions *definitions = project.definitions();
    quint32 version = definitions->version();
    engineVersion(command, &version, definitions->version());
    int target = definitions->target();
    engineTarget(command, &target, definitions->target());
    checkDocument(definitions, path, version, target, out);

    const QDefinitionsFiles files = definitions->files();
    const auto missing = [&](const QString &name, bool required) {
        if (name.isEmpty() || QFileInfo(findAsTheEngine(files.directory, name)).isFile())
            return;
        out.append(missingFile(path, QStringLiteral("the file \"%1\" isn't found").arg(name), required));
    };
    const bool character = project.type() == Character;
    const QString fontType = definitions->hierarchy()->findValue(QStringLiteral("type"), QStringLiteral("def"));
    if (project.type() == Font
        && fontType.section(QLatin1Char(';'), 0, 0).trimmed().compare(QLatin1String("truetype"), Qt::CaseInsensitive) == 0) {
        // The engine takes a TrueType font from the font folder, then from
        // the system's fonts, which another machine may well have.
        const QStringList fontFolders = {files.directory, QDir::cleanPath(files.directory + QStringLiteral("/../font")),
                                         QDir::cleanPath(files.directory + QStringLiteral("/../../font"))};
        if (!files.sprites.isEmpty() && findIn(fontFolders, files.sprites).isEmpty() && !isSystemFont(files.sprites))
            out.append(missingFile(path,
                                   QStringLiteral("the font file \"%1\" isn't found in the font folder or among the "
                                                  "system's fonts").arg(files.sprites),
                                   false));
    } else {
        missing(files.sprites, true);
    }
    missing(files.animations, character);
    missing(files.sounds, character);
    missing(files.commands, character);
    // The engine brings its own common states: their absence here is no fault of the project.
    for (const QString &state : files.states)
        missing(state, QFileInfo(state).fileName().compare(QLatin1String("common1.cns"), Qt::CaseInsensitive) != 0);
    for (const QString &palette : files.palettes)
        missing(palette, false);

    if (character) {
        checkDocument(project.animationText(), project.animationText()->fileName(), version, target, out);
        checkDocument(project.commands(), project.commands()->fileName(), version, target, out);
    }
    for (int i = 0; i < project.statesCount(); ++i)
        checkDocument(project.states(i), project.states(i)->fileName(), version, target, out);
    const auto checkBinary = [&out](QProjectFile *file, const QString &name) {
        if (file->isEmpty() || !firstCheckOf(name))
            return;
        file->check();
        appendItemDiagnostics(name, file->messages(), out);
    };
    checkBinary(project.sprites(), project.sprites()->fileName());
    checkBinary(project.sounds(), project.sounds()->fileName());
    return true;
}

// Projects

int projectInfo(const Command &command, const QString &path)
{
    QProject project(0, true);
    if (!project.fromFile(path, defaultCodepage(), false, false)) {
        error(QStringLiteral("info"), QStringLiteral("%1: can't be read").arg(path));
        return Failure;
    }
    QDefinitions *definitions = project.definitions();
    const QDefinitionsFiles files = definitions->files();

    QJsonArray named;
    const auto name = [&named, &files](const char *role, const QString &file) {
        if (file.isEmpty())
            return;
        const QString found = findAsTheEngine(files.directory, file);
        named.append(QJsonObject{{QStringLiteral("role"), QLatin1String(role)},
                                 {QStringLiteral("name"), file},
                                 {QStringLiteral("found"), QFileInfo(found).isFile()},
                                 {QStringLiteral("path"), found}});
    };
    name("sprites", files.sprites);
    name("animations", files.animations);
    name("sounds", files.sounds);
    name("commands", files.commands);
    for (const QString &palette : files.palettes)
        name("palette", palette);
    // Ikemen GO's script states are named as any state file; they are listed apart.
    for (const QString &state : files.states)
        name(isZss(state) ? "zss" : "states", state);

    const QJsonObject counts{{QStringLiteral("sprites"), project.sprites()->count()},
                             {QStringLiteral("palettes"), project.sprites()->paletteCount()},
                             {QStringLiteral("animations"), project.animations()->count()},
                             {QStringLiteral("sounds"), project.sounds()->count()},
                             {QStringLiteral("states"), project.statesCount()}};
    if (command.json()) {
        printJson(QJsonObject{{QStringLiteral("kind"), projectTypeText(project.type()).toLower()},
                              {QStringLiteral("path"), path},
                              {QStringLiteral("name"), definitions->name()},
                              {QStringLiteral("engineVersion"), versionText(definitions->version())},
                              {QStringLiteral("target"), definitions->target() == TargetIkemen
                                                             ? QStringLiteral("ikemen")
                                                             : QStringLiteral("mugen")},
                              {QStringLiteral("files"), named},
                              {QStringLiteral("counts"), counts}});
        return Success;
    }
    out() << "Kind: " << projectTypeText(project.type()) << '\n'
          << "Name: " << definitions->name() << '\n'
          << "Engine version: " << versionText(definitions->version()) << '\n'
          << "Target: " << engineTargetText(definitions->target()) << '\n'
          << "Files:\n";
    for (const QJsonValue &value : std::as_const(named)) {
        const QJsonObject file = value.toObject();
        out() << "  " << file.value(QStringLiteral("role")).toString() << ": "
              << file.value(QStringLiteral("name")).toString()
              << (file.value(QStringLiteral("found")).toBool() ? QString() : QStringLiteral(" (missing)")) << '\n';
    }
    out() << "Sprites: " << counts.value(QStringLiteral("sprites")).toInt()
          << ", palettes: " << counts.value(QStringLiteral("palettes")).toInt()
          << ", animations: " << counts.value(QStringLiteral("animations")).toInt()
          << ", sounds: " << counts.value(QStringLiteral("sounds")).toInt()
          << ", state files: " << counts.value(QStringLiteral("states")).toInt() << '\n';
    out().flush();
    return Success;
}

const QLatin1String mugenTarget("mugen");

/** The version of --target mugen-X.Y, or a null text. */
QString targetVersion(const Command &command)
{
    const QString target = command.value("--target");
    return target.startsWith(mugenTarget + QLatin1Char('-')) ? target.mid(mugenTarget.size() + 1) : QString();
}

/** A version as the options write it; see engineVersion(). */
bool readVersion(const QString &text, quint32 *version)
{
    *version = QSyntaxProperties::packVersion(text);
    static const QRegularExpression dotted(QStringLiteral("^\\d+(\\.\\d+){1,3}$"));
    return *version != 0 || dotted.match(text).hasMatch();
}

} // namespace

bool engineTarget(const Command &command, int *target, int fallback)
{
    if (!command.values.contains(QStringLiteral("--target"))) {
        *target = fallback;
        return true;
    }
    const QString text = command.value("--target");
    *target = text == QLatin1String("ikemen") ? TargetIkemen : TargetMugen;
    quint32 version = 0;
    return text == QLatin1String("ikemen") || text == mugenTarget || readVersion(targetVersion(command), &version);
}

bool engineVersion(const Command &command, quint32 *version, quint32 fallback)
{
    const QString text = command.values.contains(QStringLiteral("--mugen-version")) ? command.value("--mugen-version")
                                                                                      : targetVersion(command);
    if (text.isNull()) {
        *version = fallback;
        return true;
    }
    return readVersion(text, version);
}

void registerTextFormats()
{
    const auto textFormat = [](const char *name, std::initializer_list<const char *> suffixes) {
        Format format;
        format.name = QLatin1String(name);
        format.matches = hasSuffix(suffixes);
        format.save = saveText;
        format.saveFlags = {QStringLiteral("--utf8")};
        return format;
    };
    const auto checkedAs = [](QProjectFileType fileType) {
        return [fileType](const Command &command, const QString &path, QList<Diagnostic> &out) {
            return checkText(command, path, fileType, out);
        };
    };

    Format states = textFormat("state file", {"cns", "st"});
    states.check = checkedAs(FileStates);
    registerFormat(states);

    Format commands = textFormat("command file", {"cmd"});
    commands.check = checkedAs(FileCommands);
    registerFormat(commands);

    Format animations = textFormat("animation file", {"air"});
    animations.save = saveAnimations;
    animations.info = animationsInfo;
    animations.check = checkedAs(FileAnimations);
    registerFormat(animations);

    Format project = textFormat("definitions file", {"def"});
    project.info = projectInfo;
    project.check = checkProject;
    registerFormat(project);

    registerFormat(textFormat("text file", {"txt"}));
}

} // namespace Cli
