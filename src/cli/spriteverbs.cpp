// Sprite files on the command line: what they hold, their check, a save
// in any version, and the extraction of every sprite and palette.

#include "spriteverbs.h"

#include "cliapp.h"

#include "core/sprites/qsprites.h"
#include "core/sprites/qstreamcachefilter.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

#include <map>

namespace Cli {

namespace {

/** Loads `path` into `sprites`, or says why not under `verb`. */
bool loadSprites(const QString &verb, const QString &path, QSprites &sprites)
{
    if (sprites.fromFile(path, false))
        return true;
    error(verb, QStringLiteral("%1: can't be read as a sprite file").arg(path));
    return false;
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
    QSprites sprites(nullptr, 0, false, -1);
    if (!loadSprites(QStringLiteral("info"), path, sprites))
        return Failure;
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

bool spriteCheck(const Command &, const QString &path, QList<Diagnostic> &diagnostics)
{
    QSprites sprites(nullptr, 0, false, -1);
    if (!loadSprites(QStringLiteral("check"), path, sprites))
        return false;
    sprites.check();
    appendItemDiagnostics(path, sprites.messages(), diagnostics);
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
    QSprites sprites(nullptr, 0, false, -1);
    if (!loadSprites(QStringLiteral("save"), in, sprites))
        return Failure;
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
    QSprites sprites(nullptr, 0, false, -1);
    if (!loadSprites(verb, path, sprites))
        return Failure;
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

void registerSpriteFormat()
{
    Format format;
    format.name = QStringLiteral("sprite file");
    format.matches = hasSuffix({"sff"});
    format.info = spriteInfo;
    format.check = spriteCheck;
    format.save = spriteSave;
    format.saveValueOptions = {QStringLiteral("--sff-version")};
    registerFormat(format);
}

void registerSpriteVerbs()
{
    registerVerb({QStringLiteral("sff extract"), QStringLiteral("FILE.sff DIR [--json]"),
                  QStringLiteral("write each sprite as DIR/<place>_<group>-<index>.png and each palette as "
                                 "DIR/palettes/<group>-<index>.act"),
                  {QStringLiteral("--json")}, {}, 2, 2, spriteExtract});
}

} // namespace Cli
