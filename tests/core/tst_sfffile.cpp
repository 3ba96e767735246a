#include "core/base/quserprompt.h"
#include "core/sprites/imagecodecs.h"
#include "core/sprites/qsprites.h"
#include "core/sprites/qstreamcachefilter.h"
#include "core/sprites/sfffile.h"

#include "corpussprites.h"
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
    for (qsizetype i = 3; !withAlpha && i < bytes.size(); i += 4)
        bytes[i] = 0;
    return hex(QStreamCache::hash(bytes));
}

/** Name and axis of a sprite, "place: group,index axis x,y". */
QString spriteName(const QSprites &set, int i)
{
    const QSprite *sprite = set.at(i);
    return QString::asprintf("%d: %d,%d axis %d,%d", i, sprite->itemGroup(), sprite->itemIndex(), sprite->offsetX(),
                             sprite->offsetY());
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
        QString line = spriteName(set, i) + QStringLiteral(" flags %1").arg(sprite->flags());
        if (const QSpriteData *data = sprite->data()) {
            images.insert(data, images.value(data, i));
            line += QString::asprintf(" %dx%d format %d pixels ", data->width(), data->height(), data->format())
                + hex(QStreamCache::hash(data->pixels())) + QStringLiteral(" image of #%1").arg(images.value(data));
        }
        if (const QSpritePalette *palette = sprite->palette()) {
            palettes.insert(palette, palettes.value(palette, i));
            line += QStringLiteral(" colours %1 palette of #%2").arg(colourKey(palette, withAlpha)).arg(palettes.value(palette));
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
        arrays.insert(palette->rgbPal(), arrays.value(palette->rgbPal(), i));
        lines.append(QString::asprintf("%d: %d,%d count %d colours ", i, palette->itemGroup(), palette->itemIndex(),
                                       palette->colorCount())
                     + colourKey(palette, true) + QStringLiteral(" array of #%1").arg(arrays.value(palette->rgbPal())));
    }
    return lines;
}

/** What a person sees of each sprite: name, axis and the colours of its pixels. */
QStringList describeLooks(const QSprites &set)
{
    QStringList lines;
    for (int i = 0; i < set.count(); ++i) {
        const QImage look = set.at(i)->image(Default).convertToFormat(QImage::Format_RGB32);
        lines.append(spriteName(set, i) + QStringLiteral(" look ") + hex(QStreamCache::hash(imagePixels(look))));
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

QStringList criticalTexts(const QRecordingUserPrompt &prompt)
{
    QStringList texts;
    for (const QRecordingUserPrompt::Call &call : prompt.calls)
        texts.append(call.title + QStringLiteral(": ") + call.text);
    return texts;
}

/** Compares `actual` with `expected`, or with its start when `expected` ends with "...". */
void compareStart(QStringList actual, QStringList expected)
{
    if (!expected.isEmpty() && expected.last() == QLatin1String("...")) {
        expected.removeLast();
        actual = actual.mid(0, expected.size());
    }
    QCOMPARE(actual, expected);
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

    /** A row for each corpus file of at most `cap` bytes that `take` accepts. */
    static void corpusRows(qint64 cap, const std::function<bool(const QString &)> &take)
    {
        TestSupport::addCorpusRows({QStringLiteral("*.sff")}, "file",
                                   [&](const QString &file) { return QFileInfo(file).size() <= cap && take(file); });
    }

private Q_SLOTS:
    void corpus_data()
    {
        corpusRows(CorpusSizeCap, [](const QString &) { return true; });
    }

    void corpus()
    {
        QFETCH(QString, file);
        const QByteArray original = readFile(file);
        QRecordingUserPrompt prompt;
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(set.fromFile(file, false));
        QCOMPARE(set.version(), u32(original, 12));
        const bool version1 = set.version() == QSprites::Version_101;
        const QList<CorpusSprites::Sprite> nodes = version1 ? QList<CorpusSprites::Sprite>() : CorpusSprites::nodes(original);

        // Counts and formats are those of the file.
        QCOMPARE(quint32(set.count()), u32(original, version1 ? 20 : 40));
        if (!version1)
            QCOMPARE(quint32(set.paletteCount()), u32(original, 48));
        for (int i = 0; i < nodes.size(); ++i) {
            const QSpriteData *data = set.at(i)->data();
            if (nodes[i].data.isEmpty())
                continue;
            QCOMPARE(data->format(), QImageInfo::formatOfDepth(nodes[i].depth));
            // Unless an equal image before it took its place.
            int holder = 0;
            while (set.at(holder)->data() != data)
                ++holder;
            QVERIFY(data->cache()->filterOf(data->entry()) == nodes[i].filter || holder < i);
            QVERIFY2(!data->image().isNull(), qPrintable(QStringLiteral("sprite %1").arg(i)));
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
        if (version1) {
            // The palette type of the header stays as its author set it.
            QCOMPARE(readFile(saved).at(32), original.at(32));
            return;
        }
        QCOMPARE(describePalettes(again), describePalettes(set));
        // Whatever 2.00 files hold in the fourth byte, colour 0 is transparent and the others opaque.
        for (int p = 0; p < set.paletteCount() && set.version() == QSprites::Version_200; ++p) {
            for (int c = 0; c < QRGBPal::Size; ++c)
                QCOMPARE(set.paletteAt(p)->rgbPal()->entries[c].alpha, uchar(c ? 255 : 0));
        }
        // Images stored in the form the version writes go out byte for byte.
        const QList<CorpusSprites::Sprite> after = CorpusSprites::nodes(readFile(saved));
        int copied = 0;
        for (int i = 0; i < nodes.size(); ++i) {
            if (nodes[i].format == after[i].format && !nodes[i].data.isEmpty() && !after[i].data.isEmpty()) {
                QCOMPARE(after[i].data, nodes[i].data);
                ++copied;
            }
        }
        // The engine's own tools write what we write: nothing of theirs is re-encoded.
        if (file.contains(QLatin1String("elecbyte-mugen10/chars")))
            QVERIFY(copied > 0);
    }

    void conversions_data()
    {
        // A few files of each version, and a font of true colour with
        // transparency; every sprite goes through the PNG and PCX encoders
        // three times.
        QHash<quint32, int> taken;
        corpusRows(CorpusSizeCap / 8, [&taken](const QString &file) {
            const QByteArray head = readFile(file).left(512);
            const quint32 version = u32(head, 12);
            // Sets of true colour sprites alone can't go to 2.00 or 1.01:
            // there is no palette for them.
            if (version != QSprites::Version_101 && u32(head, 48) == 0)
                return false;
            return file.endsWith(QLatin1String("fonts/Menu2.sff")) || taken[version]++ < 3;
        });
    }

    void conversions()
    {
        QFETCH(QString, file);
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
                // True colour images were reduced to indexed ones, in memory
                // too, with index 0 where they were transparent.
                for (int i = 0; i < set->count(); ++i)
                    QCOMPARE(set->at(i)->data()->format(), int(QImageInfo::Indexed));
                for (auto it = trueColour.cbegin(); it != trueColour.cend(); ++it)
                    QVERIFY2(transparencyKept(*it, set->at(it.key())->image(NoColorTable)),
                             qPrintable(QString::number(it.key())));
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
        for (int i = 0; i < lastLooks.size(); ++i) {
            if (!trueColour.contains(i))
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
        // What the load and a save shown; what the check says. A list that
        // ends with "..." gives only the start.
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<QStringList>("reported");

        const Palette palette{0, 0, 256, 0, colors(1)};
        const Sprite sprite{1, 0, 2, 2, 0, 0, 0, 2, 8, encodeRle8(SpriteSets::lowIndexes(2, 2))};
        const QString error = QStringLiteral("Sprite loading error: ") + path(QStringLiteral("test.sff"));
        const auto empty = [](int sprite) {
            return QStringLiteral("Empty sprite!: The sprite at index %1 is empty. You can't save a SFF file with an "
                                  "empty sprite.")
                .arg(sprite);
        };

        QTest::newRow("unknown signature") << QByteArray("ElecbyteSnd\0", 12) + QByteArray(500, '\0') << false
                                           << 0 << QStringList() << QStringList();
        QTest::newRow("unknown version")
            << v2(0x03000102, {palette}, {sprite}) << false << 0
            << QStringList{QStringLiteral("Sprite loading error: %1(0): SFF version '3.0.1.2' not supported yet")
                               .arg(path(QStringLiteral("test.sff")))}
            << QStringList();
        QTest::newRow("header cut short") << v2(QSprites::Version_201, {}, {}).left(100) << false << 0
                                          << QStringList{error + QStringLiteral("(0): The file is damaged: its header "
                                                                                "is incomplete.")}
                                          << QStringList();
        Sprite forward = sprite;
        forward.data.clear();
        forward.link = 1;
        forward.index = 1;
        QTest::newRow("sprite linked forward")
            << v2(QSprites::Version_201, {palette}, {forward, sprite}) << true << 2
            << QStringList{error + QStringLiteral("(0): Sprite incorrectly linked to the index 1"), empty(1)}
            << QStringList{QStringLiteral("0 sprite:0 Empty sprite!")};
        Sprite badPalette = sprite;
        badPalette.palette = 3;
        QTest::newRow("palette index out of range")
            << v2(QSprites::Version_201, {palette}, {badPalette}) << true << 1
            << QStringList{error + QStringLiteral("(0): Sprite incorrectly linked to the palette index 3")}
            << QStringList{QStringLiteral("0 sprite:0 Indexed sprite without palette!")};
        // A linked palette's colours aren't read; one linked ahead of itself stays empty.
        QTest::newRow("palette linked forward")
            << v2(QSprites::Version_201,
                  {Palette{1, 1, 256, 1, QByteArray()}, Palette{1, 2, 256, 0, colors(1)}, Palette{1, 3, 256, 1, QByteArray()}},
                  {sprite})
            << true << 1
            << QStringList{QStringLiteral("Empty palette!: The palette at index 1 is empty. You can't save a SFF "
                                          "file with an empty palette.")}
            << QStringList{QStringLiteral("0 palette:0 Empty palette!")};
        // Nothing may make it a link to sprite 0 on a save.
        Sprite pastTheEnd = sprite;
        pastTheEnd.index = 1;
        pastTheEnd.offset = 0x7FFFFFF0;
        pastTheEnd.length = 0x7FFFFFFF;
        QTest::newRow("data past the end")
            << v2(QSprites::Version_201, {palette}, {sprite, pastTheEnd}) << true << 2 << QStringList{empty(2)}
            << QStringList{QStringLiteral("0 sprite:1 Empty sprite!"),
                           QStringLiteral("0 sprite:1 Sprite data beyond the end of the file!")};
        // Nor a link to palette 0.
        QTest::newRow("palette of no colours")
            << v2(QSprites::Version_201, {palette, Palette{0, 1, 0, 0, colors(2)}}, {sprite}) << true << 1
            << QStringList()
            << QStringList{QStringLiteral("1 palette:1 Palette with a colour count of 0, read as 256 colours!")};
        // What lies behind the nodes reads as more nodes, up to the end of
        // the file and no further.
        const QByteArray counts = v2(QSprites::Version_201, {palette}, {sprite}, 0x10000000, 0x7FFFFFFF);
        const qsizetype sprites = (counts.size() - qsizetype(u32(counts, 36))) / 28;
        QTest::newRow("counts beyond the file")
            << counts << true << int(sprites)
            << QStringList{error + QStringLiteral("(0): The file is damaged: it ends before its items; %1 of %2 could "
                                                  "be read.")
                                       .arg(sprites + (counts.size() - 512) / 16)
                                       .arg(0x10000000ull + 0x7FFFFFFF),
                           QStringLiteral("...")}
            << QStringList{QStringLiteral("...")};
        // Hundreds of nodes over one stretch of bytes, each a little
        // shorter, and so each another image: the load may not read the
        // stretch once for each.
        QByteArray stretch(4096, Qt::Uninitialized);
        for (int i = 0; i < stretch.size(); ++i)
            stretch[i] = char(1 + i % 63);
        QList<Sprite> overlapping{Sprite{0, 0, 64, 64, 0, 0, 0, 2, 8, stretch, 0, DecompressOnLoad}};
        for (int i = 1; i < 300; ++i) {
            Sprite s{0, i, 64, 64, 0, 0, 0, 2, 8, QByteArray(), 0, DecompressOnLoad};
            s.offset = 0;
            s.length = 4096 + 4 - i;
            overlapping.append(s);
        }
        QTest::newRow("overlapping data") << v2(QSprites::Version_201, {palette}, overlapping) << true << 300
                                          << QStringList{QStringLiteral("...")} << QStringList{QStringLiteral("...")};
        QTest::newRow("1.01 count beyond the file")
            << v1({Subfile{0, 0, 0, 0, 0, false, encodePcx(SpriteSets::indexedImage(3, 3, 1))}}, 1000000) << true << 1
            << QStringList{error + QStringLiteral("(0): The file is damaged: it ends before its items; 1 of 1000000 "
                                                  "could be read.")}
            << QStringList();
        QTest::newRow("1.01 linked forward")
            << v1({Subfile{0, 0, 0, 0, 4, false, QByteArray()}}) << true << 1
            << QStringList{error + QStringLiteral("(0): Sprite incorrectly linked to the index 4"), empty(1)}
            << QStringList{QStringLiteral("0 sprite:0 Empty sprite!")};
        QTest::newRow("1.01 data that isn't a PCX") << v1({Subfile{0, 0, 0, 0, 0, false, QByteArray(300, 'x')}})
                                                    << true << 1 << QStringList{empty(1)}
                                                    << QStringList{QStringLiteral("0 sprite:0 Empty sprite!")};
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
        QVERIFY(!set.isModified());
        QVERIFY(set.undoEnabled());
        QVERIFY(!set.blockChanged());
        if (!loads) {
            QCOMPARE(set.paletteCount(), 0);
            compareStart(criticalTexts(prompt), shown);
            return;
        }
        // Whatever the nodes claim, the store holds about what the file holds.
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
        set.check();
        compareStart(SpriteSets::messageTexts(set), reported);
        // Empty items can't be saved. Without errors, what is saved comes
        // back as it was read: nothing turned into a link.
        const QString saved = path(QStringLiteral("malformed-saved.sff"));
        const bool hasEmpty = !SpriteSets::messageTexts(set).filter(QStringLiteral(" Empty ")).isEmpty();
        QCOMPARE(set.toFile(saved, 0, true), !hasEmpty);
        compareStart(criticalTexts(prompt), shown);
        if (!hasEmpty && set.messages().count(QMessages::Error) == 0) {
            QSprites again(&stage, QStreamCache::Memory, false, -1);
            QVERIFY(again.fromFile(saved, false));
            QCOMPARE(describeSprites(again, true), describeSprites(set, true));
            QCOMPARE(describePalettes(again), describePalettes(set));
        }
    }

    void rawAndRle5Sprites()
    {
        using namespace SffBuilder;
        // Nothing of ours writes RLE5 or raw pixels, and the corpus has no RLE5.
        const QImage image = SpriteSets::lowIndexes(13, 5);
        QByteArray packed;
        for (int y = 0; y < image.height(); ++y)
            packed.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(load(set, v2(QSprites::Version_200, {Palette{0, 0, 32, 0, colors(3).left(128)}},
                             {Sprite{1, 0, 13, 5, 2, 3, 0, 3, 5, Rle5Encoder::encode(packed)},
                              Sprite{1, 1, 13, 5, 0, 0, 0, 0, 8, packed}})));
        QCOMPARE(set.cache()->filterOf(set.at(0)->data()->entry()), int(QStreamCacheFilter::RLE5));
        QCOMPARE(imagePixels(set.at(0)->image(NoColorTable)), imagePixels(image));
        // The raw sprite holds the same pixels: it is linked to the first one.
        QCOMPARE(set.at(1)->data(), set.at(0)->data());
    }

    void formatsWritten_data()
    {
        QTest::addColumn<quint32>("version");
        QTest::addColumn<QString>("nodes");
        // Format:depth of the sprites: indexed with 256 colours, indexed
        // with 32, the first image with the palette of 32 (linked), RGB,
        // ARGB, and indexes above 31 with the palette of 32. Five bits hold
        // neither of the last two. In 2.00 the true colour images are
        // reduced; their few colours make palettes of 32.
        QTest::newRow("2.00") << quint32(QSprites::Version_200) << QStringLiteral("2:8 4:5 1:8 4:5 4:5 2:8");
        QTest::newRow("2.01") << quint32(QSprites::Version_201) << QStringLiteral("10:8 4:5 1:8 11:24 12:32 10:8");
    }

    void formatsWritten()
    {
        QFETCH(quint32, version);
        QFETCH(QString, nodes);
        QRecordingUserPrompt prompt;
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        // A colour with an alpha of its own, which only 2.01 keeps.
        QRGBPal translucent = SpriteSets::colors(1);
        translucent.entries[5].alpha = 77;
        QSpritePalette *full = set.addPalette(translucent, false, 1, 0);
        QSpritePalette *small = set.addPalette(SpriteSets::thirtyTwoColours(), false, 1, 1);
        const QImage indexed = SpriteSets::indexedImage(9, 4, 1);
        QImage argb = SpriteSets::rgbImage(5, 5, 2).convertToFormat(QImage::Format_ARGB32);
        argb.setPixel(0, 0, qRgba(1, 2, 3, 4));
        const QList<std::pair<QSpritePalette *, QImage>> sprites{
            {full, indexed}, {small, SpriteSets::lowIndexes(6, 6)}, {small, indexed}, {nullptr, SpriteSets::rgbImage(5, 5, 1)},
            {nullptr, argb}, {small, SpriteSets::indexedImage(7, 7, 3)}};
        for (const auto &[palette, image] : sprites) {
            QSprite *sprite = set.add();
            const int index = set.count() - 1;
            sprite->setInfo(2, index, index, -index, index == 1 ? DecompressOnLoad : 0, palette);
            sprite->setImage(image, Share);
        }
        QCOMPARE(set.at(2)->data(), set.at(0)->data());
        const QStringList before = describeSprites(set, true);

        const QString saved = path(QStringLiteral("formats.sff"));
        QVERIFY(set.toFile(saved, version, false));
        const QByteArray bytes = readFile(saved);
        const QList<CorpusSprites::Sprite> written = CorpusSprites::nodes(bytes);
        QStringList formats;
        for (const CorpusSprites::Sprite &node : written)
            formats.append(QStringLiteral("%1:%2").arg(node.format).arg(node.depth));
        QCOMPARE(formats.join(QLatin1Char(' ')), nodes);
        QCOMPARE(written[2].link, 0);
        QCOMPARE(written[2].palette, 1);
        if (version == QSprites::Version_201) {
            // PNG8 keeps indexes only: its colour table is all black.
            const QImage png = QImage::fromData(written[0].data, "PNG");
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
    }

    void version1Subfiles()
    {
        using namespace SffBuilder;
        const QImage a = SpriteSets::indexedImage(7, 3, 1);
        const QImage b = SpriteSets::indexedImage(4, 4, 2);
        QSprites set(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(load(set, v1({Subfile{0, 0, 5, 6, 0, false, encodePcx(a), 3},  // a wrong length, a right next offset
                              Subfile{3, 0, 1, 1, 0, true, QByteArray()},       // linked to sprite 0
                              Subfile{3, 1, 0, 0, 0, false, encodePcx(b)}}))); // link 0 with data: not linked
        QCOMPARE(set.count(), 3);
        QCOMPARE(imagePixels(set.at(0)->image(NoColorTable)), imagePixels(a));
        QCOMPARE(set.at(0)->offsetX(), 5);
        QCOMPARE(set.at(1)->data(), set.at(0)->data());
        QCOMPARE(set.at(1)->palette(), set.at(0)->palette());
        QCOMPARE(imagePixels(set.at(2)->image(NoColorTable)), imagePixels(b));
        // (0, 0) of a character takes the character palette (1, 1).
        QCOMPARE(set.at(0)->palette(), set.palette(1, 1));
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
        QCOMPARE(SpriteSets::messageTexts(set),
                 QStringList({QStringLiteral("0 sprite:1 Empty sprite!"), QStringLiteral("0 sprite:3 Empty sprite!")}));
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
        QCOMPARE(order.size(), 1);
        QCOMPARE(order.at(0).at(0).value<QList<uint>>(), (QList<uint>{0, 2}));
        // A new file's palette type is 0.
        QCOMPARE(readFile(path(QStringLiteral("order.sff"))).at(32), '\0');
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
        QVERIFY(load(set,
                     SffBuilder::v2(QSprites::Version_201, {SffBuilder::Palette{0, 0, 256, 0, SffBuilder::colors(1)}},
                                    {SffBuilder::Sprite{1, 0, 2, 2, 0, 0, 0, 2, 8, encodeRle8(SpriteSets::lowIndexes(2, 2))}}),
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
        // An older version with nothing to reduce (a test run) leaves no step to undo.
        QVERIFY(set.toFile(path(QStringLiteral("copy101.sff")), QSprites::Version_101, true));
        QVERIFY(!set.isModified());
    }

    void loadsThatKeepTheNameOrStop()
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

        // A load stopped through progress leaves nothing.
        QList<std::pair<uint, uint>> seen;
        connect(&other, &QSprites::progress, this, [&seen](uint pos, uint max, bool &allow) {
            seen.append({pos, max});
            allow = pos < 5;
        });
        QVERIFY(!other.fromFile(second, false));
        QCOMPARE(other.count(), 0);
        QCOMPARE(other.paletteCount(), 0);
        QVERIFY(other.fileName().isEmpty());
        QCOMPARE(seen.first(), (std::pair<uint, uint>(0, 7)));
        QCOMPARE(seen.last().first, 5u);
    }
};

QTEST_MAIN(tst_SffFile)
#include "tst_sfffile.moc"
