// Sprite files on the command line: what they hold, their check, a save
// in any version, and the extraction of every sprite and palette.

#include "spriteverbs.h"

#include "cliapp.h"

#include "core/base/qprojecttypes.h"
#include "core/sprites/qsprites.h"
#include "core/sprites/qstreamcachefilter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <map>
#include <optional>

namespace Cli {

namespace {

/** The kinds of project a lone sprite file may belong to, as --kind and info name them. */
struct KindName
{
    const char *name;
    /** A QProjectType; 0 for anything that isn't a project's, a screenpack's file for one. */
    int type;
};

constexpr KindName kindNames[] = {
    {"character", Character}, {"stage", Stage}, {"storyboard", Storyboard}, {"font", Font}, {"other", 0}};

QLatin1String kindName(int type)
{
    for (const KindName &kind : kindNames) {
        if (kind.type == type)
            return QLatin1String(kind.name);
    }
    return QLatin1String("other");
}

/** The kind --kind names; null without the option or for a name that isn't a kind. */
const KindName *kindOption(const Command &command)
{
    const QString wanted = command.value("--kind");
    const auto *kind = std::find_if(std::cbegin(kindNames), std::cend(kindNames),
                                    [&](const KindName &k) { return wanted == QLatin1String(k.name); });
    return kind == std::cend(kindNames) ? nullptr : kind;
}

/**
 * The kind of project of the first DEF beside `path`, in the order of
 * their names, that names it, and that DEF's name. The key that names it
 * says the kind: "sprite" of [Files] a character, "spr" of [BGDef] a stage,
 * "spr" of [SceneDef] a storyboard, "file" of [Def] a font. Any other key
 * (the "spr" and "sff" of a screenpack's system.def and fight.def) means no
 * project's kind. False when no DEF names the file.
 */
bool kindOfDefinitions(const QString &path, int *type, QString *def)
{
    const QFileInfo sprites(path);
    const QDir folder = sprites.absoluteDir();
    const QStringList names =
        folder.entryList({QStringLiteral("*.def")}, QDir::Files, QDir::Name | QDir::IgnoreCase);
    for (const QString &name : names) {
        QFile file(folder.filePath(name));
        // A DEF is text of a few kilobytes; whatever is this large isn't one.
        if (file.size() > 4 * 1024 * 1024 || !file.open(QIODevice::ReadOnly))
            continue;
        QByteArray text = file.readAll();
        if (text.startsWith("\xEF\xBB\xBF"))
            text.remove(0, 3);
        QByteArray section;
        for (QByteArray line : text.split('\n')) {
            const qsizetype comment = line.indexOf(';');
            if (comment >= 0)
                line.truncate(comment);
            line = line.trimmed();
            if (line.startsWith('[')) {
                section = line.mid(1, line.indexOf(']') - 1).trimmed().toLower();
                continue;
            }
            const qsizetype equals = line.indexOf('=');
            if (equals < 0)
                continue;
            const QByteArray key = line.left(equals).trimmed().toLower();
            const QString value =
                QString::fromLatin1(line.mid(equals + 1).trimmed().replace('"', "").replace('\\', '/'));
            if (QFileInfo(value).fileName().compare(sprites.fileName(), Qt::CaseInsensitive) != 0)
                continue;
            *type = section == "files" && key == "sprite" ? Character
                : section == "bgdef" && key == "spr"      ? Stage
                : section == "scenedef" && key == "spr"   ? Storyboard
                : section == "def" && key == "file"       ? Font
                                                           : 0;
            *def = name;
            return true;
        }
    }
    return false;
}

/** The project a lone sprite file is read in: only its kind, which the sprite rules ask for. */
class LoneFileProject : public QProjectOwner
{
public:
    int projectType() const override { return type; }
    quint32 engineVersion() const override { return DefaultEngineVersion; }
    QMessageList *messageList() override { return nullptr; }
    void documentChanged(QProjectFile *) override {}

    /** A file with neither a DEF naming it nor --kind is read as a character's, as a set without a project. */
    int type = Character;
    /** What gave the kind: "--kind", the name of a DEF, or nothing. */
    QString from;
};

/** A sprite file read alone, with the kind of project it belongs to. */
struct LoneSprites
{
    LoneFileProject project;
    QSprites sprites{&project, 0, false, -1};
};

/**
 * Reads `path` into `set`, of the kind --kind gives, or else the DEF beside
 * it that names it; the exit status when it can't, said under `verb`.
 */
std::optional<int> loadSprites(const Command &command, const QString &verb, const QString &path, LoneSprites &set)
{
    if (!kindOptionValid(command, verb))
        return UsageError;
    if (const KindName *kind = kindOption(command)) {
        set.project.type = kind->type;
        set.project.from = QStringLiteral("--kind");
    } else {
        kindOfDefinitions(path, &set.project.type, &set.project.from);
    }
    if (set.sprites.fromFile(path, false))
        return std::nullopt;
    error(verb, QStringLiteral("%1: can't be read as a sprite file").arg(path));
    return Failure;
}

QString versionText(quint32 version)
{
    switch (version) {
    case QSprites::Version_101:
        return QStringLiteral("1.01");
    case QSprites::Version_200:
        return QStringLiteral("2.00");
    default:
        return QStringLiteral("2.01");
    }
}

/** The name of the form in which a sprite's image is stored, as the file formats call it. */
QString storedFormat(const QSpriteData *data)
{
    switch (data->cache()->filterOf(data->entry())) {
    case QStreamCacheFilter::PCX:
        return QStringLiteral("PCX");
    case QStreamCacheFilter::RLE8:
        return QStringLiteral("RLE8");
    case QStreamCacheFilter::RLE5:
        return QStringLiteral("RLE5");
    case QStreamCacheFilter::LZ5:
        return QStringLiteral("LZ5");
    case QStreamCacheFilter::PNG:
        return data->format() == QImageInfo::ARGB ? QStringLiteral("PNG32")
            : data->format() == QImageInfo::RGB   ? QStringLiteral("PNG24")
                                                  : QStringLiteral("PNG8");
    default:
        return QStringLiteral("raw");
    }
}

int spriteInfo(const Command &command, const QString &path)
{
    LoneSprites set;
    if (const auto failed = loadSprites(command, QStringLiteral("info"), path, set))
        return *failed;
    QSprites &sprites = set.sprites;
    // Formats are counted once per stored image: a linked sprite has none of its own.
    std::map<QString, int> formats;
    QSet<const QSpriteData *> images;
    int linkedSprites = 0;
    for (int i = 0; i < sprites.count(); ++i) {
        const QSpriteData *data = sprites.at(i)->data();
        if (!data)
            continue;
        if (images.contains(data)) {
            ++linkedSprites;
            continue;
        }
        images.insert(data);
        ++formats[storedFormat(data)];
    }
    QSet<const QRGBPal *> arrays;
    int linkedPalettes = 0;
    for (int i = 0; i < sprites.paletteCount(); ++i) {
        const QRGBPal *colors = sprites.paletteAt(i)->rgbPal();
        if (colors && arrays.contains(colors))
            ++linkedPalettes;
        arrays.insert(colors);
    }
    sprites.check();
    const QMessages &messages = sprites.messages();

    if (command.json()) {
        QJsonObject byFormat;
        for (const auto &[name, count] : formats)
            byFormat.insert(name, count);
        QJsonArray list;
        for (int row = 0; row < messages.count(QMessages::AnySeverity); ++row) {
            const QMessage &message = messages.at(row);
            list.append(QJsonObject{
                {QStringLiteral("severity"), severityName(diagnosticSeverity(message.severity))},
                {QStringLiteral("item"), message.line == 1 ? QStringLiteral("palette") : QStringLiteral("sprite")},
                {QStringLiteral("place"), message.index},
                {QStringLiteral("text"), message.text}});
        }
        printJson(QJsonObject{{QStringLiteral("kind"), QStringLiteral("sprites")},
                              {QStringLiteral("path"), path},
                              {QStringLiteral("projectKind"), kindName(set.project.type)},
                              {QStringLiteral("projectKindFrom"), set.project.from},
                              {QStringLiteral("version"), versionText(sprites.version())},
                              {QStringLiteral("sprites"), sprites.count()},
                              {QStringLiteral("palettes"), sprites.paletteCount()},
                              {QStringLiteral("formats"), byFormat},
                              {QStringLiteral("linkedSprites"), linkedSprites},
                              {QStringLiteral("linkedPalettes"), linkedPalettes},
                              {QStringLiteral("messages"), list}});
        return Success;
    }
    out() << "Sprite file: " << path << '\n'
          << "Kind: " << kindName(set.project.type) << ", "
          << (set.project.from.isEmpty() ? QStringLiteral("as no DEF beside it names it")
                                         : QStringLiteral("from ") + set.project.from)
          << '\n'
          << "Version: " << versionText(sprites.version()) << '\n'
          << "Sprites: " << sprites.count() << ", palettes: " << sprites.paletteCount() << '\n'
          << "Formats:";
    for (const auto &[name, count] : formats)
        out() << ' ' << name << ' ' << count;
    out() << '\n'
          << "Linked sprites: " << linkedSprites << ", linked palettes: " << linkedPalettes << '\n'
          << "Messages: " << messages.count(QMessages::AnySeverity) << '\n';
    for (int row = 0; row < messages.count(QMessages::AnySeverity); ++row) {
        const QMessage &message = messages.at(row);
        out() << "  " << severityName(diagnosticSeverity(message.severity)) << ": ";
        if (message.index >= 0)
            out() << (message.line == 1 ? "palette " : "sprite ") << message.index << ": ";
        out() << message.text << '\n';
    }
    out().flush();
    return Success;
}

bool spriteCheck(const Command &command, const QString &path, QList<Diagnostic> &diagnostics)
{
    LoneSprites set;
    if (loadSprites(command, QStringLiteral("check"), path, set))
        return false;
    set.sprites.check();
    appendItemDiagnostics(path, set.sprites.messages(), diagnostics);
    return true;
}

int spriteSave(const Command &command, const QString &in, const QString &outPath)
{
    quint32 version = 0;
    const QString wanted = command.value("--sff-version");
    if (wanted == QLatin1String("1.01"))
        version = QSprites::Version_101;
    else if (wanted == QLatin1String("2.00") || wanted == QLatin1String("2.0"))
        version = QSprites::Version_200;
    else if (wanted == QLatin1String("2.01"))
        version = QSprites::Version_201;
    else if (!wanted.isEmpty()) {
        error(QStringLiteral("save"), QStringLiteral("--sff-version: %1 isn't 1.01, 2.00 or 2.01").arg(wanted));
        return UsageError;
    }
    LoneSprites set;
    if (const auto failed = loadSprites(command, QStringLiteral("save"), in, set))
        return *failed;
    QSprites &sprites = set.sprites;
    // As "Save as" does: the refusals of the check come first, with their
    // reasons on standard error.
    if (!sprites.checkSave(version ? version : sprites.version()))
        return Failure;
    if (!sprites.toFile(outPath, version, false)) {
        error(QStringLiteral("save"), QStringLiteral("%1: can't be written").arg(outPath));
        return Failure;
    }
    return Success;
}

int spriteExtract(const Command &command)
{
    const QString verb = QStringLiteral("sff extract");
    const QString path = command.args.at(0);
    const QDir folder(command.args.at(1));
    LoneSprites set;
    if (const auto failed = loadSprites(command, verb, path, set))
        return *failed;
    const QSprites &sprites = set.sprites;
    if (!QDir().mkpath(folder.filePath(QStringLiteral("palettes")))) {
        error(verb, QStringLiteral("%1: the folder can't be made").arg(folder.path()));
        return Failure;
    }
    Extraction extraction(verb);
    for (int i = 0; i < sprites.count(); ++i) {
        const QSprite *sprite = sprites.at(i);
        // An empty sprite has nothing to write.
        if (!sprite->data())
            continue;
        const QString name =
            folder.filePath(Extraction::itemFileName(i, sprite->itemGroup(), sprite->itemIndex(), "png"));
        QImage image = sprite->image(Default);
        // Indexed sprites stay 8-bit indexed; true colour ones are written
        // with their alpha channel.
        if (!image.isNull() && image.format() != QImage::Format_Indexed8)
            image = image.convertToFormat(QImage::Format_ARGB32);
        extraction.record(QSprite::writeImage(image, name), name);
    }
    for (int i = 0; i < sprites.paletteCount(); ++i) {
        const QSpritePalette *palette = sprites.paletteAt(i);
        if (!palette->rgbPal())
            continue;
        const QString name = folder.filePath(
            QStringLiteral("palettes/%1-%2.act").arg(palette->itemGroup()).arg(palette->itemIndex()));
        extraction.record(palette->toFile(name), name);
    }
    return extraction.finish(command, QStringLiteral("Extracted %1 files of %2 sprites and %3 palettes to %4")
                                          .arg(extraction.written.size())
                                          .arg(sprites.count())
                                          .arg(sprites.paletteCount())
                                          .arg(folder.path()));
}

} // namespace

bool kindOptionValid(const Command &command, const QString &verb)
{
    if (command.value("--kind").isEmpty() || kindOption(command))
        return true;
    error(verb, QStringLiteral("--kind wants character, stage, storyboard, font or other, not \"%1\"")
                    .arg(command.value("--kind")));
    return false;
}

void registerSpriteFormat()
{
    Format format;
    format.name = QStringLiteral("sprite file");
    format.matches = hasSuffix({"sff"});
    format.info = spriteInfo;
    format.check = spriteCheck;
    format.save = spriteSave;
    format.saveValueOptions = {QStringLiteral("--sff-version"), QStringLiteral("--kind")};
    registerFormat(format);
}

void registerSpriteVerbs()
{
    registerVerb({QStringLiteral("sff extract"), QStringLiteral("FILE.sff DIR [--kind KIND] [--json]"),
                  QStringLiteral("write each sprite as DIR/<place>_<group>-<index>.png and each palette as "
                                 "DIR/palettes/<group>-<index>.act"),
                  {QStringLiteral("--json")}, {QStringLiteral("--kind")}, 2, 2, spriteExtract});
}

} // namespace Cli
