#include "core/base/quserprompt.h"
#include "core/sprites/imagecodecs.h"
#include "core/sprites/qsprites.h"
#include "core/sprites/qstreamcachefilter.h"
#include "core/sprites/sfffile.h"

#include "rle5encoder.h"
#include "sffbuilder.h"
#include "spritesets.h"
#include "testsupport.h"

#include <QBuffer>
#include <QFileInfo>
#include <QHash>
#include <QTemporaryDir>
#include <QtTest>

using SffBuilder::u16;
using SffBuilder::u32;
using TestSupport::readFile;
using TestSupport::writeFile;

namespace {

#if defined(__SANITIZE_ADDRESS__)
// Under the sanitizer the corpus loops take the smaller files only.
constexpr qint64 CorpusSizeCap = 300 * 1024;
constexpr int TruncationStride = 5;
#else
constexpr qint64 CorpusSizeCap = 4 * 1024 * 1024;
constexpr int TruncationStride = 1;
#endif

QString hex(quint64 value)
{
    return QString::number(value, 16);
}

/**
 * The colours of a palette that count (files keep no others); without alpha
 * for versions that keep none of their own.
 */
QString colourKey(const QSpritePalette *palette, bool withAlpha)
{
    if (!palette || !palette->rgbPal())
        return QStringLiteral("none");
    QByteArray bytes = palette->rgbPal()->toByteArray().left(4 * palette->colorCount());
    if (!withAlpha) {
        for (int i = 3; i < bytes.size(); i += 4)
            bytes[i] = 0;
    }
    return hex(QStreamCache::hash(bytes));
}

/**
 * Each sprite as one line: name, axis, flags, image and palette colours,
 * and which earlier sprite it shares its image and its palette with.
 */
QStringList describeSprites(const QSprites &set, bool withAlpha)
{
    QStringList lines;
    QHash<const QSpriteData *, int> images;
    QHash<const QSpritePalette *, int> palettes;
    for (int i = 0; i < set.count(); ++i) {
        const QSprite *sprite = set.at(i);
        const QSpriteData *data = sprite->data();
        QString line = QStringLiteral("%1: %2,%3 axis %4,%5 flags %6")
                           .arg(i)
                           .arg(sprite->itemGroup())
                           .arg(sprite->itemIndex())
                           .arg(sprite->offsetX())
                           .arg(sprite->offsetY())
                           .arg(sprite->flags());
        if (data) {
            line += QStringLiteral(" %1x%2 format %3 pixels %4 image of #%5")
                        .arg(data->width())
                        .arg(data->height())
                        .arg(data->format())
                        .arg(hex(QStreamCache::hash(data->pixels())))
                        .arg(images.value(data, i));
            images.insert(data, images.value(data, i));
        }
        if (sprite->palette()) {
            line += QStringLiteral(" colours %1 palette of #%2")
                        .arg(colourKey(sprite->palette(), withAlpha))
                        .arg(palettes.value(sprite->palette(), i));
            palettes.insert(sprite->palette(), palettes.value(sprite->palette(), i));
        }
        lines.append(line);
    }
    return lines;
}

/** Each palette as one line: name, count, colours and the first palette holding the same array. */
QStringList describePalettes(const QSprites &set)
{
    QStringList lines;
    QHash<const QRGBPal *, int> arrays;
    for (int i = 0; i < set.paletteCount(); ++i) {
        const QSpritePalette *palette = set.paletteAt(i);
        lines.append(QStringLiteral("%1: %2,%3 count %4 colours %5 array of #%6")
                         .arg(i)
                         .arg(palette->itemGroup())
                         .arg(palette->itemIndex())
                         .arg(palette->colorCount())
                         .arg(colourKey(palette, true))
                         .arg(arrays.value(palette->rgbPal(), i)));
        arrays.insert(palette->rgbPal(), arrays.value(palette->rgbPal(), i));
    }
    return lines;
}

/** What a person sees of each sprite: name, axis and the colours of its pixels. */
QStringList describeLooks(const QSprites &set)
{
    QStringList lines;
    for (int i = 0; i < set.count(); ++i) {
        const QSprite *sprite = set.at(i);
        lines.append(QStringLiteral("%1: %2,%3 axis %4,%5 look %6")
                         .arg(i)
                         .arg(sprite->itemGroup())
                         .arg(sprite->itemIndex())
                         .arg(sprite->offsetX())
                         .arg(sprite->offsetY())
                         .arg(hex(QStreamCache::hash(
                             imagePixels(sprite->image(Default).convertToFormat(QImage::Format_RGB32))))));
    }
    return lines;
}

/**
 * Whether a reduced image has index 0, which the engine draws transparent,
 * on the pixels of the true colour one that are transparent and on no others.
 */
bool transparencyKept(const QImage &argb, const QImage &indexed)
{
    for (int y = 0; y < argb.height(); ++y) {
        for (int x = 0; x < argb.width(); ++x) {
            if ((qAlpha(argb.pixel(x, y)) < 128) != (indexed.pixelIndex(x, y) == 0))
                return false;
        }
    }
    return true;
}

/** One sprite node of a version 2 file, with its data (without the size in front). */
struct Node
{
    int group = 0;
    int index = 0;
    int link = 0;
    int format = 0;
    int depth = 0;
    int palette = 0;
    QByteArray data;
};

QList<Node> spriteNodes(const QByteArray &file)
{
    QList<Node> nodes;
    const quint32 first = u32(file, 36);
    for (quint32 i = 0; i < u32(file, 40); ++i) {
        const qsizetype at = first + qsizetype(i) * 28;
        Node node;
        node.group = u16(file, at);
        node.index = u16(file, at + 2);
        node.link = u16(file, at + 12);
        node.format = uchar(file.at(at + 14));
        node.depth = uchar(file.at(at + 15));
        node.palette = u16(file, at + 24);
        const quint32 length = u32(file, at + 20);
        const qsizetype block = (u16(file, at + 26) & 1) ? u32(file, 60) : u32(file, 52);
        if (length > 4)
            node.data = file.mid(block + u32(file, at + 16) + (node.format ? 4 : 0), length - (node.format ? 4 : 0));
        nodes.append(node);
    }
    return nodes;
}

QStringList criticalTexts(const QRecordingUserPrompt &prompt)
{
    QStringList texts;
    for (const QRecordingUserPrompt::Call &call : prompt.calls)
        texts.append(call.title + QStringLiteral(": ") + call.text);
    return texts;
}

/** 32 colours: entries 32 to 255 repeat entry 255. */
QRGBPal thirtyTwoColours()
{
    QRGBPal colours = SpriteSets::colors(4);
    for (int i = 32; i < 256; ++i)
        colours.entries[i] = colours.entries[255];
    return colours;
}

QImage lowIndexes(int width, int height)
{
    QImage image(width, height, QImage::Format_Indexed8);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.scanLine(y)[x] = uchar((x / 3 + y) % 32);
    }
    return image;
}

} // namespace

class tst_SffFile : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }

    /** Loads `bytes` as a file; the prompt records what was shown. */
    bool load(QSprites &set, const QByteArray &bytes, const QString &name = QStringLiteral("test.sff"))
    {
        const QString file = path(name);
        writeFile(file, bytes);
        return set.fromFile(file, false);
    }

    static void corpusRows()
    {
        QTest::addColumn<QString>("file");
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.sff")});
        if (files.isEmpty())
            QTest::newRow("no corpus") << QString();
        for (const QString &file : files) {
            if (QFileInfo(file).size() <= CorpusSizeCap)
                QTest::newRow(qPrintable(QDir(TestSupport::corpusDir()).relativeFilePath(file))) << file;
        }
    }

private Q_SLOTS:
    void corpus_data() { corpusRows(); }

    void corpus()
    {
        QFETCH(QString, file);
        if (file.isEmpty())
            QSKIP("the corpus isn't there");
        const QByteArray original = readFile(file);
        QRecordingUserPrompt prompt;
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(set.fromFile(file, false));
        QCOMPARE(set.fileName(), file);
        QVERIFY(!set.isModified());
        QCOMPARE(set.version(), u32(original, 12));
        const bool version1 = set.version() == QSprites::Version_101;

        // Counts and formats are those of the file.
        if (version1) {
            QCOMPARE(quint32(set.count()), u32(original, 20));
        } else {
            QCOMPARE(quint32(set.count()), u32(original, 40));
            QCOMPARE(quint32(set.paletteCount()), u32(original, 48));
            const QList<Node> nodes = spriteNodes(original);
            for (int i = 0; i < nodes.size(); ++i) {
                const QSpriteData *data = set.at(i)->data();
                if (nodes[i].data.isEmpty())
                    continue;
                QVERIFY(data);
                QCOMPARE(data->format(), QImageInfo::formatOfDepth(nodes[i].depth));
                const int filter = nodes[i].format >= 10 ? int(QStreamCacheFilter::PNG) : nodes[i].format;
                // Unless an equal image before it took its place.
                int holder = 0;
                while (set.at(holder)->data() != data)
                    ++holder;
                QVERIFY(data->cache()->filterOf(data->entry()) == filter || holder < i);
                QVERIFY2(!data->image().isNull(), qPrintable(QStringLiteral("sprite %1").arg(i)));
            }
        }

        // Saved unchanged at its own version and read back: the same sprites,
        // sharing the same images and palettes.
        const QString saved = path(QStringLiteral("corpus-saved.sff"));
        if (!set.checkSave(set.version())) {
            // A version 2.00 file of true colour sprites only has no palette for them.
            QCOMPARE(prompt.calls.last().text, QStringLiteral("You can't save this SFF without palettes."));
            return;
        }
        const bool alpha = set.version() == QSprites::Version_201;
        // No pixel changes, in memory or in the file, unless true colour
        // had to be reduced.
        bool reduced = false;
        for (int i = 0; i < set.count(); ++i)
            reduced = reduced || (!alpha && set.at(i)->data()->format() != QImageInfo::Indexed);
        const QStringList before = describeSprites(set, alpha);
        QVERIFY(set.toFile(saved, 0, false));
        QCOMPARE(set.fileName(), saved);
        QVERIFY(!set.isModified());
        QSprites again(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(again.fromFile(saved, false));
        QCOMPARE(describeSprites(again, alpha), reduced ? describeSprites(set, alpha) : before);
        if (!version1)
            QCOMPARE(describePalettes(again), describePalettes(set));
        else // The palette type of the header stays as its author set it.
            QCOMPARE(readFile(saved).at(32), original.at(32));

        if (!version1) {
            // Images stored in the form the version writes go out byte for byte.
            const QList<Node> before = spriteNodes(original);
            const QList<Node> after = spriteNodes(readFile(saved));
            int copied = 0;
            for (int i = 0; i < before.size(); ++i) {
                if (before[i].format == after[i].format && !before[i].data.isEmpty() && !after[i].data.isEmpty()) {
                    QCOMPARE(after[i].data, before[i].data);
                    ++copied;
                }
            }
            // The engine's own tools write what we write: nothing of theirs is re-encoded.
            if (file.contains(QLatin1String("elecbyte-mugen10/chars")))
                QVERIFY(copied > 0);
        }
    }

    void conversions_data()
    {
        QTest::addColumn<QString>("file");
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.sff")});
        if (files.isEmpty())
            QTest::newRow("no corpus") << QString();
        // A few files of each version; every sprite goes through the PNG and
        // PCX encoders three times.
        QHash<quint32, int> taken;
        for (const QString &file : files) {
            const QByteArray head = readFile(file).left(512);
            const quint32 version = u32(head, 12);
            // Sets of true colour sprites alone can't go to 2.00 or 1.01:
            // there is no palette for them.
            if (version != QSprites::Version_101 && u32(head, 48) == 0)
                continue;
            // And a font of true colour with transparency.
            if (file.endsWith(QLatin1String("fonts/Menu2.sff"))
                || (QFileInfo(file).size() <= CorpusSizeCap / 8 && taken[version]++ < 3))
                QTest::newRow(qPrintable(QDir(TestSupport::corpusDir()).relativeFilePath(file))) << file;
        }
    }

    void conversions()
    {
        QFETCH(QString, file);
        if (file.isEmpty())
            QSKIP("the corpus isn't there");
        QRecordingUserPrompt prompt;
        // A stage: the character's palette rules of 1.01 would repaint its
        // portraits with the first sprite's colours.
        SpriteSets::StageOwner owner;
        auto set = std::make_unique<QSprites>(&owner, QStreamCache::Memory, false, -1);
        QVERIFY(set->fromFile(file, false));
        const QStringList firstLooks = describeLooks(*set);
        QHash<int, QImage> trueColour;
        for (int i = 0; i < set->count(); ++i) {
            if (set->at(i)->data()->format() != QImageInfo::Indexed)
                trueColour.insert(i, set->at(i)->image(Default).convertToFormat(QImage::Format_ARGB32));
        }
        int n = 0;
        for (const quint32 version : {QSprites::Version_201, QSprites::Version_200, QSprites::Version_101}) {
            if (!set->checkSave(version))
                QSKIP("no palette for a version that needs one");
            const QString target = path(QStringLiteral("converted-%1.sff").arg(n++));
            QVERIFY(set->toFile(target, version, false));
            QCOMPARE(set->version(), version);
            if (version != QSprites::Version_201) {
                // True colour images were reduced to indexed ones, in memory too.
                for (int i = 0; i < set->count(); ++i)
                    QCOMPARE(set->at(i)->data()->format(), int(QImageInfo::Indexed));
                for (auto it = trueColour.cbegin(); it != trueColour.cend(); ++it)
                    QVERIFY2(transparencyKept(*it, set->at(it.key())->image(NoColorTable)), qPrintable(QString::number(it.key())));
            }
            auto next = std::make_unique<QSprites>(&owner, QStreamCache::Memory, false, -1);
            QVERIFY(next->fromFile(target, false));
            QCOMPARE(next->version(), version);
            QCOMPARE(describeLooks(*next), describeLooks(*set));
            set = std::move(next);
        }
        // Indexed sprites come through all three unchanged.
        const QStringList lastLooks = describeLooks(*set);
        QCOMPARE(lastLooks.size(), firstLooks.size());
        QSprites first(&owner, QStreamCache::Memory, false, -1);
        QVERIFY(first.fromFile(file, false));
        for (int i = 0; i < first.count(); ++i) {
            if (first.at(i)->data() && first.at(i)->data()->format() == QImageInfo::Indexed)
                QCOMPARE(lastLooks.at(i), firstLooks.at(i));
        }
    }

    void truncated_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("2.00") << QStringLiteral("elecbyte-mugen10/stages/stage0.sff");
        QTest::newRow("1.01") << QStringLiteral("elecbyte-mugen10/data/kfm/gameover.sff");
        QTest::newRow("2.01") << QStringLiteral("ikemen-screenpack/stages/stage1.sff");
    }

    void truncated()
    {
        QFETCH(QString, file);
        const QByteArray whole = readFile(QDir(TestSupport::corpusDir()).filePath(file));
        if (whole.isEmpty())
            QSKIP("the corpus isn't there");
        // Cut PNG data makes the image library complain at every sprite.
        const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        const auto restore = qScopeGuard([previous] { qInstallMessageHandler(previous); });
        QRecordingUserPrompt prompt;
        for (qsizetype size = 0; size < whole.size(); size += TruncationStride) {
            QByteArray bytes = whole.left(size);
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::ReadOnly);
            QSprites set(nullptr, QStreamCache::Memory, false, -1);
            const bool loaded = set.fromDevice(&buffer, file, false);
            // Before the end of the header nothing loads; after it, what
            // the file still holds, with every image decodable or empty.
            QVERIFY2(loaded == (size >= 512), qPrintable(QString::number(size)));
            if (!loaded)
                QCOMPARE(set.count(), 0);
            for (int i = 0; i < set.count(); ++i) {
                if (const QSpriteData *data = set.at(i)->data())
                    data->image();
            }
            set.check();
        }
    }

    void malformed_data()
    {
        using namespace SffBuilder;
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("loads");
        QTest::addColumn<int>("sprites");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<QStringList>("reported");

        const QByteArray rle = encodeRle8(lowIndexes(2, 2));
        const Palette palette{0, 0, 256, 0, colors(1)};
        const Sprite sprite{1, 0, 2, 2, 0, 0, 0, 2, 8, rle};
        const QString error = QStringLiteral("Sprite loading error: ");
        const QString file = QStringLiteral("%1/test.sff").arg(m_dir.path());
        const QString empty = QStringLiteral("0 sprite:0 Empty sprite!");

        QTest::newRow("unknown signature") << QByteArray("ElecbyteSnd\0", 12) + QByteArray(500, '\0') << false
                                           << 0 << QStringList() << QStringList();
        QTest::newRow("unknown version")
            << v2(0x03000102, {palette}, {sprite}) << false << 0
            << QStringList{error + QStringLiteral("%1(0): SFF version '3.0.1.2' not supported yet").arg(file)}
            << QStringList();
        QTest::newRow("header cut short")
            << v2(QSprites::Version_201, {}, {}).left(100) << false << 0
            << QStringList{error + file + QStringLiteral("(0): The file is damaged: its header is incomplete.")}
            << QStringList();
        Sprite forward = sprite;
        forward.data.clear();
        forward.link = 1;
        forward.index = 1;
        QTest::newRow("sprite linked forward")
            << v2(QSprites::Version_201, {palette}, {forward, sprite}) << true << 2
            << QStringList{error + file + QStringLiteral("(0): Sprite incorrectly linked to the index 1")}
            << QStringList{empty};
        Sprite badPalette = sprite;
        badPalette.palette = 3;
        QTest::newRow("palette index out of range")
            << v2(QSprites::Version_201, {palette}, {badPalette}) << true << 1
            << QStringList{error + file + QStringLiteral("(0): Sprite incorrectly linked to the palette index 3")}
            << QStringList{QStringLiteral("0 sprite:0 Indexed sprite without palette!")};
        // Nothing may make it a link to sprite 0 on a save.
        Sprite pastTheEnd = sprite;
        pastTheEnd.index = 1;
        pastTheEnd.offset = 0x7FFFFFF0;
        pastTheEnd.length = 0x7FFFFFFF;
        QTest::newRow("data past the end")
            << v2(QSprites::Version_201, {palette}, {sprite, pastTheEnd}) << true << 2 << QStringList()
            << QStringList{QStringLiteral("0 sprite:1 Empty sprite!"),
                           QStringLiteral("0 sprite:1 Sprite data beyond the end of the file!")};
        // Nor a link to palette 0.
        QTest::newRow("palette of no colours")
            << v2(QSprites::Version_201, {palette, Palette{0, 1, 0, 0, colors(2)}}, {sprite}) << true << 1
            << QStringList()
            << QStringList{QStringLiteral("1 palette:1 Palette with a colour count of 0, read as 256 colours!")};
        QTest::newRow("1.01 count beyond the file")
            << v1({Subfile{0, 0, 0, 0, 0, false, encodePcx(SpriteSets::indexedImage(3, 3, 1))}}, 1000000) << true
            << 1
            << QStringList{error + file
                           + QStringLiteral("(0): The file is damaged: it ends before its items; 1 of 1000000 "
                                            "could be read.")}
            << QStringList();
        QTest::newRow("1.01 linked forward")
            << v1({Subfile{0, 0, 0, 0, 4, false, QByteArray()}}) << true << 1
            << QStringList{error + file + QStringLiteral("(0): Sprite incorrectly linked to the index 4")}
            << QStringList{empty};
        QTest::newRow("1.01 data that isn't a PCX")
            << v1({Subfile{0, 0, 0, 0, 0, false, QByteArray(300, 'x')}}) << true << 1 << QStringList()
            << QStringList{empty};
    }

    void malformed()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, loads);
        QFETCH(int, sprites);
        QFETCH(QStringList, shown);
        QFETCH(QStringList, reported);
        QRecordingUserPrompt prompt;
        SpriteSets::StageOwner stage;
        QSprites set(&stage, QStreamCache::Memory, false, -1);
        QCOMPARE(load(set, bytes), loads);
        QCOMPARE(set.count(), sprites);
        QCOMPARE(criticalTexts(prompt), shown);
        QVERIFY(!set.isModified());
        QVERIFY(set.undoEnabled());
        QVERIFY(!set.blockChanged());
        if (!loads)
            QCOMPARE(set.paletteCount(), 0);
        set.check();
        QCOMPARE(SpriteSets::messageTexts(set), reported);
        // Saved without errors, it comes back as it was read: nothing turned into a link.
        const QString saved = path(QStringLiteral("malformed-saved.sff"));
        QSprites again(&stage, QStreamCache::Memory, false, -1);
        if (loads && set.messages().count(QMessages::Error) == 0) {
            QVERIFY(set.toFile(saved, 0, true));
            QVERIFY(again.fromFile(saved, false));
            QCOMPARE(describeSprites(again, true), describeSprites(set, true));
            QCOMPARE(describePalettes(again), describePalettes(set));
        }
    }

    void forwardPaletteLinkIsEmpty()
    {
        using namespace SffBuilder;
        QRecordingUserPrompt prompt;
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        // Palette 0 links to palette 1, which isn't read yet; palette 2 links back to 1.
        QVERIFY(load(set, v2(QSprites::Version_201,
                             {Palette{1, 1, 256, 1, QByteArray()}, Palette{1, 2, 256, 0, colors(1)},
                              Palette{1, 3, 256, 1, QByteArray()}},
                             {Sprite{1, 0, 2, 2, 0, 0, 0, 2, 8, encodeRle8(lowIndexes(2, 2)), 1}})));
        QVERIFY(!set.paletteAt(0)->rgbPal());
        QCOMPARE(set.paletteAt(2)->rgbPal(), set.paletteAt(1)->rgbPal());
        QCOMPARE(set.paletteAt(1)->rgbPal()->refCount, 2);
        set.check();
        bool reported = false;
        for (int i = 0; i < set.messages().count(QMessages::AnySeverity); ++i) {
            const QMessage &m = set.messages().at(i);
            reported = reported || (m.line == 1 && m.index == 0 && m.text == QStringLiteral("Empty palette!"));
        }
        QVERIFY(reported);

        // And it can't be saved until it has colours.
        QVERIFY(!set.toFile(path(QStringLiteral("empty-palette.sff")), 0, false));
        QCOMPARE(criticalTexts(prompt),
                 QStringList{QStringLiteral("Empty palette!: The palette at index 1 is empty. You can't save a SFF "
                                            "file with an empty palette.")});
    }

    void countsBeyondTheFile()
    {
        using namespace SffBuilder;
        QRecordingUserPrompt prompt;
        const QByteArray bytes =
            v2(QSprites::Version_201, {Palette{0, 0, 256, 0, colors(1)}},
               {Sprite{1, 0, 2, 2, 0, 0, 0, 2, 8, encodeRle8(lowIndexes(2, 2))}}, 0x10000000, 0x7FFFFFFF);
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        // What lies behind the nodes reads as more nodes, up to the end of
        // the file and no further.
        QVERIFY(load(set, bytes));
        QCOMPARE(qsizetype(set.count()), (bytes.size() - qsizetype(u32(bytes, 36))) / 28);
        QCOMPARE(qsizetype(set.paletteCount()), (bytes.size() - 512) / 16);
        QVERIFY(prompt.calls.first().text.endsWith(
            QStringLiteral("(0): The file is damaged: it ends before its items; %1 of %2 could be read.")
                .arg(set.count() + set.paletteCount())
                .arg(0x10000000ull + 0x7FFFFFFF)));
        QCOMPARE(set.at(0)->itemGroup(), 1);
    }

    void paletteAlpha_data()
    {
        QTest::addColumn<quint32>("version");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("others");
        QTest::newRow("2.00 ignores the file's alpha") << quint32(QSprites::Version_200) << 0 << 255;
        QTest::newRow("2.01 keeps it") << quint32(QSprites::Version_201) << 77 << 77;
    }

    void paletteAlpha()
    {
        QFETCH(quint32, version);
        QFETCH(int, first);
        QFETCH(int, others);
        using namespace SffBuilder;
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(load(set, v2(version, {Palette{0, 0, 256, 0, colors(2, 77)}}, {})));
        const QRGBPal *colours = set.paletteAt(0)->rgbPal();
        QCOMPARE(int(colours->entries[0].alpha), first);
        QCOMPARE(int(colours->entries[1].alpha), others);
        QCOMPARE(int(colours->entries[255].alpha), others);
        QCOMPARE(int(colours->entries[7].green), 7 * 3 + 2);
    }

    void rawAndRle5Sprites()
    {
        using namespace SffBuilder;
        // Nothing of ours writes RLE5 or raw pixels, and the corpus has no RLE5.
        const QImage image = lowIndexes(13, 5);
        QByteArray packed;
        for (int y = 0; y < image.height(); ++y)
            packed.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(load(set, v2(QSprites::Version_200, {Palette{0, 0, 32, 0, colors(3).left(128)}},
                             {Sprite{1, 0, 13, 5, 2, 3, 0, 3, 5, Rle5Encoder::encode(packed)},
                              Sprite{1, 1, 13, 5, 0, 0, 0, 0, 8, packed}})));
        QCOMPARE(set.at(0)->data()->cache()->filterOf(set.at(0)->data()->entry()), int(QStreamCacheFilter::RLE5));
        QCOMPARE(imagePixels(set.at(0)->image(NoColorTable)), imagePixels(image));
        // The raw sprite holds the same pixels: it is linked to the first one.
        QCOMPARE(set.at(1)->data(), set.at(0)->data());
        QCOMPARE(set.paletteAt(0)->colorCount(), quint16(32));

        // Saved, the 32-colour sprite becomes LZ5 at 5 bits.
        const QString saved = path(QStringLiteral("rle5.sff"));
        QVERIFY(set.toFile(saved, 0, false));
        const QList<Node> nodes = spriteNodes(readFile(saved));
        QCOMPARE(nodes[0].format, 4);
        QCOMPARE(nodes[0].depth, 5);
        QCOMPARE(nodes[1].format, 1);
        QSprites again(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(again.fromFile(saved, false));
        QCOMPARE(imagePixels(again.at(0)->image(NoColorTable)), imagePixels(image));
    }

    void formatsWritten_data()
    {
        QTest::addColumn<quint32>("version");
        QTest::addColumn<QList<int>>("formats");
        QTest::addColumn<QList<int>>("depths");
        // Sprites: indexed with 256 colours, indexed with 32, the first
        // image with the palette of 32 (linked), RGB, ARGB, and indexes above
        // 31 with the palette of 32. Five bits hold neither of the last two.
        // In 2.00 the true colour images are reduced; their few colours make
        // palettes of 32.
        QTest::newRow("2.00") << quint32(QSprites::Version_200) << QList<int>{2, 4, 1, 4, 4, 2}
                              << QList<int>{8, 5, 8, 5, 5, 8};
        QTest::newRow("2.01") << quint32(QSprites::Version_201) << QList<int>{10, 4, 1, 11, 12, 10}
                              << QList<int>{8, 5, 8, 24, 32, 8};
    }

    void formatsWritten()
    {
        QFETCH(quint32, version);
        QFETCH(QList<int>, formats);
        QFETCH(QList<int>, depths);
        QRecordingUserPrompt prompt;
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        set.setVersion(QSprites::Version_201);
        QSpritePalette *full = set.addPalette(SpriteSets::colors(1), false, 1, 0);
        QSpritePalette *small = set.addPalette(thirtyTwoColours(), false, 1, 1);
        const QImage indexed = SpriteSets::indexedImage(9, 4, 1);
        const auto add = [&set](int index, QSpritePalette *palette, const QImage &image) {
            QSprite *sprite = set.add();
            sprite->setInfo(2, index, index, -index, index == 1 ? DecompressOnLoad : 0, palette);
            sprite->setImage(image, Share);
        };
        add(0, full, indexed);
        add(1, small, lowIndexes(6, 6));
        add(2, small, indexed);
        add(3, nullptr, SpriteSets::rgbImage(5, 5, 1));
        QImage argb = SpriteSets::rgbImage(5, 5, 2).convertToFormat(QImage::Format_ARGB32);
        argb.setPixel(0, 0, qRgba(1, 2, 3, 4));
        add(4, nullptr, argb);
        add(5, small, SpriteSets::indexedImage(7, 7, 3));
        QCOMPARE(set.at(2)->data(), set.at(0)->data());
        const QStringList before = describeSprites(set, true);

        const QString saved = path(QStringLiteral("formats.sff"));
        QVERIFY(set.toFile(saved, version, false));
        const QByteArray bytes = readFile(saved);
        const QList<Node> nodes = spriteNodes(bytes);
        QList<int> writtenFormats;
        QList<int> writtenDepths;
        for (const Node &node : nodes) {
            writtenFormats.append(node.format);
            writtenDepths.append(node.depth);
        }
        QCOMPARE(writtenFormats, formats);
        QCOMPARE(writtenDepths, depths);
        QCOMPARE(nodes[2].link, 0);
        QCOMPARE(nodes[2].palette, 1);
        if (version == QSprites::Version_201) {
            // PNG8 keeps indexes only: its colour table is all black.
            const QImage png = QImage::fromData(nodes[0].data, "PNG");
            QCOMPARE(png.format(), QImage::Format_Indexed8);
            QCOMPARE(png.colorTable(), QList<QRgb>(256, 0xFF000000));
            QCOMPARE(imagePixels(png), imagePixels(indexed));
        }
        // The header places the blocks where they are.
        const quint32 palettes = quint32(set.paletteCount());
        QCOMPARE(u32(bytes, 48), palettes);
        QCOMPARE(u32(bytes, 36), 512 + palettes * 16);
        QCOMPARE(u32(bytes, 52), 512 + palettes * 16 + 6 * 28);
        QCOMPARE(qsizetype(u32(bytes, 60)) + u32(bytes, 64), bytes.size());
        QVERIFY(bytes.mid(76, 16).startsWith("Made in Zanarel\n"));

        QSprites again(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(again.fromFile(saved, false));
        // 2.00 keeps no alpha: the reduced sprites' unused colours come back opaque.
        const bool alpha = version == QSprites::Version_201;
        QCOMPARE(describeSprites(again, alpha), describeSprites(set, alpha));
        // No indexed sprite changed a pixel, in memory or in the file.
        QCOMPARE(describeSprites(set, true).at(5), before.at(5));
        QCOMPARE(again.at(1)->flags(), quint16(DecompressOnLoad));
        if (version == QSprites::Version_200) {
            // 2.00 holds no true colour: the sprites were made indexed, in memory too.
            QCOMPARE(set.at(4)->data()->format(), int(QImageInfo::Indexed));
            QVERIFY(set.at(4)->palette());
            QVERIFY(transparencyKept(argb, set.at(4)->image(NoColorTable)));
            QVERIFY(transparencyKept(SpriteSets::rgbImage(5, 5, 1), set.at(3)->image(NoColorTable)));
        }
    }

    void version1Subfiles()
    {
        using namespace SffBuilder;
        const QImage a = SpriteSets::indexedImage(7, 3, 1);
        const QImage b = SpriteSets::indexedImage(4, 4, 2);
        const QByteArray pcxA = encodePcx(a);
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(load(set, v1({Subfile{0, 0, 5, 6, 0, false, pcxA, 3},  // a wrong length, a right next offset
                              Subfile{3, 0, 1, 1, 0, true, QByteArray()}, // linked to sprite 0
                              Subfile{3, 1, 0, 0, 0, false, encodePcx(b)}}))); // link 0 with data: not linked
        QCOMPARE(set.count(), 3);
        QCOMPARE(imagePixels(set.at(0)->image(NoColorTable)), imagePixels(a));
        QCOMPARE(set.at(0)->offsetX(), 5);
        QCOMPARE(set.at(1)->data(), set.at(0)->data());
        QCOMPARE(set.at(1)->palette(), set.at(0)->palette());
        QVERIFY(set.at(2)->data() != set.at(0)->data());
        QCOMPARE(imagePixels(set.at(2)->image(NoColorTable)), imagePixels(b));
        // (0, 0) of a character takes the character palette (1, 1).
        QCOMPARE(set.at(0)->palette()->itemGroup(), 1);
        QCOMPARE(set.at(0)->palette()->itemIndex(), 1);
        QCOMPARE(set.at(0)->palette()->rgbPal()->rgba(5), a.colorTable().at(5));

        // Written back, the link to sprite 0 is a 0 with no data, and a
        // sprite with the palette before it leaves out its colours.
        set.at(2)->setPalette(set.at(0)->palette());
        const QString saved = path(QStringLiteral("v1.sff"));
        QVERIFY(set.toFile(saved, 0, false));
        const QByteArray bytes = readFile(saved);
        QCOMPARE(u32(bytes, 16), 2u); // groups 0 and 3
        QCOMPARE(u32(bytes, 20), 3u);
        QVERIFY(bytes.mid(36, 16).startsWith("Made in Zanarel\n"));
        const qsizetype second = u32(bytes, 512);
        QCOMPARE(u32(bytes, second + 4), 0u);
        QCOMPARE(u16(bytes, second + 16), quint16(0));
        QCOMPARE(int(bytes.at(second + 18)), 1);
        const qsizetype third = u32(bytes, second);
        QCOMPARE(third, second + 32);
        QCOMPARE(int(bytes.at(third + 18)), 1);
        QCOMPARE(qsizetype(u32(bytes, third + 4)), encodePcx(set.at(2)->image(Default)).size() - 768);
        QCOMPARE(bytes.at(bytes.size() - 1), '\x0C');
        QSprites again(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(again.fromFile(saved, false));
        QCOMPARE(describeSprites(again, false), describeSprites(set, false));
    }

    void version1PalettesOfUndecodableSubfiles()
    {
        using namespace SffBuilder;
        // A broken header: the image is lost, but not the palette of the
        // sprites that follow it, whether it passes one on or has its own
        // (the colours that end its subfile).
        const auto broken = [](const QImage &image) { return encodePcx(image).replace(0, 1, "\x0B"); };
        const QImage a = SpriteSets::indexedImage(4, 3, 1);
        const QImage b = SpriteSets::indexedImage(4, 3, 2);
        SpriteSets::StageOwner stage;
        QSprites set(&stage, QStreamCache::Memory, false, -1);
        QVERIFY(load(set, v1({Subfile{1, 0, 0, 0, 0, false, encodePcx(a)}, Subfile{1, 1, 0, 0, 0, true, broken(a)},
                              Subfile{1, 2, 0, 0, 0, true, encodePcx(a)}, Subfile{2, 0, 0, 0, 0, false, broken(b)},
                              Subfile{2, 1, 0, 0, 0, true, encodePcx(b)}})));
        QList<QRgb> colours;
        for (int i = 0; i < set.count(); ++i)
            colours.append(set.at(i)->palette() ? set.at(i)->palette()->colors().at(7) : 0);
        QCOMPARE(colours, (QList<QRgb>{a.color(7), a.color(7), a.color(7), b.color(7), b.color(7)}));
        set.check();
        QCOMPARE(set.messages().count(QMessages::AnySeverity), 2);
        QCOMPARE(set.messages().at(0).text, QStringLiteral("Empty sprite!"));
        QCOMPARE(set.messages().at(1).index, 3);
    }

    void version1CharacterPaletteOrder()
    {
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        set.setUndoEnabled(false);
        QSpritePalette *character = set.addPalette(SpriteSets::colors(1), false, 1, 1);
        QSpritePalette *own = set.addPalette(SpriteSets::colors(2), false, 5, 0);
        const QList<std::pair<int, QSpritePalette *>> sprites{{0, character}, {10, own}, {20, character},
                                                              {30, character}, {40, own}};
        for (const auto &[group, palette] : sprites) {
            QSprite *sprite = set.add();
            sprite->setInfo(group, 1, 0, 0, 0, palette);
            sprite->setImage(SpriteSets::indexedImage(2, 2, group), Share);
        }
        QSignalSpy order(&set, &QSprites::orderMustBeChanged);
        // The save goes on whatever the receiver does.
        QVERIFY(set.toFile(path(QStringLiteral("order.sff")), QSprites::Version_101, false));
        // A new file's palette type is 0.
        QCOMPARE(readFile(path(QStringLiteral("order.sff"))).at(32), '\0');
        QCOMPARE(order.size(), 1);
        QCOMPARE(order.at(0).at(0).value<QList<uint>>(), (QList<uint>{0, 2}));
    }

    void refusedAndCancelledSavesKeepTheFile()
    {
        QRecordingUserPrompt prompt;
        const QString target = path(QStringLiteral("kept.sff"));
        QVERIFY(writeFile(target, "earlier"));
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        SpriteSets::fill(set);
        QVERIFY(!set.toFile(target, 0, false));
        QCOMPARE(criticalTexts(prompt), QStringList{QStringLiteral("Empty sprite!: The sprite at index 5 is empty. "
                                                                   "You can't save a SFF file with an empty sprite.")});
        QCOMPARE(readFile(target), QByteArray("earlier"));

        set.remove(4);
        uint calls = 0;
        connect(&set, &QSprites::progress, this, [&calls](uint pos, uint max, bool &allow) {
            if (calls++ == 0)
                QCOMPARE(max, 8u); // 4 sprites, 3 palettes and the one of the reduced true colour sprite
            allow = pos < 4;
        });
        QVERIFY(!set.toFile(target, QSprites::Version_200, false));
        QCOMPARE(readFile(target), QByteArray("earlier"));
        QCOMPARE(set.version(), quint32(QSprites::Version_200));
        QVERIFY(set.isModified());
    }

    void copiesLeaveTheSetAsItWas()
    {
        QRecordingUserPrompt prompt;
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(load(set, SffBuilder::v2(QSprites::Version_201, {SffBuilder::Palette{0, 0, 256, 0,
                                                                                     SffBuilder::colors(1)}},
                                         {SffBuilder::Sprite{1, 0, 2, 2, 0, 0, 0, 2, 8,
                                                             encodeRle8(lowIndexes(2, 2))}}),
                     QStringLiteral("original.sff")));
        const QString original = set.fileName();
        const QStreamCacheEntry *entry = set.at(0)->data()->entry();
        set.at(0)->setOffsetX(9);
        // A backup: written as PNG8, but the store keeps its RLE8 and the set its name and state.
        QVERIFY(set.toFile(path(QStringLiteral("backup.sff")), 0, true));
        QCOMPARE(set.cache()->filterOf(entry), int(QStreamCacheFilter::RLE8));
        QCOMPARE(set.fileName(), original);
        QVERIFY(set.isModified());
        // A real save keeps the encoding it wrote, so that the next one copies it.
        QVERIFY(set.toFile(path(QStringLiteral("saved.sff")), 0, false));
        QCOMPARE(set.cache()->filterOf(entry), int(QStreamCacheFilter::PNG));
        QVERIFY(!set.isModified());
    }

    void keepingTheName()
    {
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        SpriteSets::fill(set);
        set.remove(4);
        const QString first = path(QStringLiteral("first.sff"));
        const QString second = path(QStringLiteral("second.sff"));
        QVERIFY(set.toFile(first, 0, false));
        QVERIFY(set.toFile(second, 0, false));
        QSprites other(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(other.fromFile(first, false));
        // A backup opens under the name of the file it stands for.
        QVERIFY(other.fromFile(second, true));
        QCOMPARE(other.fileName(), first);
        QCOMPARE(other.count(), 4);
    }

    void cancelledLoadLeavesNothing()
    {
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        SpriteSets::fill(set);
        set.remove(4);
        const QString file = path(QStringLiteral("cancel.sff"));
        QVERIFY(set.toFile(file, QSprites::Version_201, false));
        QSprites other(nullptr, QStreamCache::Memory, false, -1);
        QList<std::pair<uint, uint>> seen;
        connect(&other, &QSprites::progress, this, [&seen](uint pos, uint max, bool &allow) {
            seen.append({pos, max});
            allow = pos < 5;
        });
        QVERIFY(!other.fromFile(file, false));
        QCOMPARE(other.count(), 0);
        QCOMPARE(other.paletteCount(), 0);
        QVERIFY(other.fileName().isEmpty());
        QCOMPARE(seen.first(), (std::pair<uint, uint>(0, 7)));
        QCOMPARE(seen.last().first, 5u);
    }

    void overlappingDataIsReadOnce()
    {
        using namespace SffBuilder;
        // Thousands of nodes over one stretch of bytes, each a little shorter:
        // the load may not read the stretch once for each.
        QByteArray big(64 * 1024, '\0');
        QList<Sprite> sprites;
        sprites.append(Sprite{0, 0, 256, 256, 0, 0, 0, 2, 8, big});
        for (int i = 1; i < 3000; ++i) {
            Sprite s{0, i, 256, 256, 0, 0, 0, 2, 8, QByteArray()};
            s.offset = 0;
            s.length = big.size() + 4 - i;
            sprites.append(s);
        }
        const QByteArray bytes = v2(QSprites::Version_201, {Palette{0, 0, 256, 0, colors(1)}}, sprites);
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(load(set, bytes));
        QCOMPARE(set.count(), 3000);
        qint64 held = 0;
        QSet<const QSpriteData *> images;
        for (int i = 0; i < set.count(); ++i) {
            const QSpriteData *data = set.at(i)->data();
            if (data && !images.contains(data)) {
                images.insert(data);
                held += set.cache()->raw(data->entry()).size();
            }
        }
        QVERIFY2(held <= 2 * bytes.size(), qPrintable(QString::number(held)));
    }
};

QTEST_MAIN(tst_SffFile)
#include "tst_sfffile.moc"
