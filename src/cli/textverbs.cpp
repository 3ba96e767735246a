// The verbs of engine text: AIR animations, DEF projects, and the saving of
// every text file.

#include "textverbs.h"

#include "cliapp.h"

#include "core/animation/qanimations.h"
#include "core/app/qproject.h"
#include "core/base/filelookup.h"
#include "core/base/qmugenmodel.h"
#include "core/sounds/qsounds.h"
#include "core/sprites/qsprites.h"
#include "core/text/qdefinitions.h"
#include "core/text/qsyntaxtexteditor.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace Cli {

namespace {

bool hasSuffix(const QString &path, std::initializer_list<const char *> suffixes)
{
    const QString suffix = QFileInfo(path).suffix();
    for (const char *s : suffixes) {
        if (suffix.compare(QLatin1String(s), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

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

int saveText(const Command &command, const QString &in, const QString &out)
{
    QSyntaxTextEditor document(nullptr, FileStates, false, DefaultEngineVersion, false);
    if (!document.load(in, defaultCodepage(), false)) {
        error(QStringLiteral("save"), QStringLiteral("%1: can't be read").arg(in));
        return Failure;
    }
    if (!document.save(out, command.hasFlag("--utf8"), true)) {
        error(QStringLiteral("save"), QStringLiteral("%1: can't be written").arg(out));
        return Failure;
    }
    return Success;
}

// Animations

QJsonObject rectJson(const QRect &rect)
{
    return QJsonObject{{QStringLiteral("left"), rect.left()}, {QStringLiteral("top"), rect.top()},
                       {QStringLiteral("right"), rect.right()}, {QStringLiteral("bottom"), rect.bottom()}};
}

int animationsInfo(const Command &command, const QString &path)
{
    QSyntaxTextEditor text(nullptr, FileAnimations, true, DefaultEngineVersion, false);
    QAnimations animations(nullptr, &text);
    if (!animations.fromFile(path, defaultCodepage(), false)) {
        error(QStringLiteral("info"), QStringLiteral("%1: can't be read").arg(path));
        return Failure;
    }
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
        const QString found = findFile(files.directory, file);
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
    for (const QString &state : files.states)
        name("states", state);

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
                              {QStringLiteral("files"), named},
                              {QStringLiteral("counts"), counts}});
        return Success;
    }
    out() << "Kind: " << projectTypeText(project.type()) << '\n'
          << "Name: " << definitions->name() << '\n'
          << "Engine version: " << versionText(definitions->version()) << '\n'
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

} // namespace

void registerTextFormats()
{
    Format animations;
    animations.name = QStringLiteral("animation file");
    animations.matches = [](const QString &path) { return hasSuffix(path, {"air"}); };
    animations.info = animationsInfo;
    animations.save = saveText;
    animations.saveFlags = {QStringLiteral("--utf8")};
    registerFormat(animations);

    Format project;
    project.name = QStringLiteral("definitions file");
    project.matches = [](const QString &path) { return hasSuffix(path, {"def"}); };
    project.info = projectInfo;
    project.save = saveText;
    project.saveFlags = {QStringLiteral("--utf8")};
    registerFormat(project);

    Format text;
    text.name = QStringLiteral("text file");
    text.matches = [](const QString &path) { return hasSuffix(path, {"cns", "st", "cmd", "txt"}); };
    text.save = saveText;
    text.saveFlags = {QStringLiteral("--utf8")};
    registerFormat(text);
}

} // namespace Cli
