#include "core/sprites/imagecodecs.h"

#include "corpussprites.h"
#include "sffbuilder.h"
#include "testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::readFile;
using TestSupport::writeFile;

/** The verbs of sprite files, through the real program. */
class tst_CliSprites : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }

    using Output = TestSupport::CliResult;
    static Output cli(const QStringList &arguments) { return TestSupport::runCli(arguments); }

    static QImage indexes(int width, int height, int seed)
    {
        QImage image(width, height, QImage::Format_Indexed8);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                image.scanLine(y)[x] = uchar((x + y * 3 + seed) % 200 + 1);
        }
        return image;
    }

    /**
     * A 2.01 file: palettes (1,1) and (1,2), the second linked to the first;
     * sprites (0,0) RLE8, (0,1) linked to it, (9000,0) PNG32 of true colour.
     */
    QString spriteFile()
    {
        using namespace SffBuilder;
        QImage argb(3, 2, QImage::Format_ARGB32);
        argb.fill(qRgba(10, 20, 30, 128));
        const QString file = path(QStringLiteral("set.sff"));
        writeFile(file, v2(0x02000100, {Palette{1, 1, 256, 0, colors(1)}, Palette{1, 2, 256, 0, QByteArray()}},
                           {Sprite{0, 0, 4, 3, 1, 2, 0, 2, 8, encodeRle8(indexes(4, 3, 0))},
                            Sprite{0, 1, 4, 3, 0, 0, 0, 1, 8, QByteArray()},
                            Sprite{9000, 0, 3, 2, 0, 0, 0, 12, 32, encodePng(argb)}}));
        return file;
    }

private Q_SLOTS:
    void info()
    {
        const QString file = spriteFile();
        Output result = cli({QStringLiteral("info"), file});
        QCOMPARE(result.code, 0);
        QVERIFY2(result.out.contains("Version: 2.01\nSprites: 3, palettes: 2\nFormats: PNG32 1 RLE8 1\n"
                                     "Linked sprites: 1, linked palettes: 1\nMessages: 63\n"),
                 result.out.constData());
        QVERIFY(result.out.contains("  error: Required sprite 5000, 0 is missing!\n"));

        result = cli({QStringLiteral("info"), file, QStringLiteral("--json")});
        QCOMPARE(result.code, 0);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(object.value(QStringLiteral("kind")).toString(), QStringLiteral("sprites"));
        QCOMPARE(object.value(QStringLiteral("version")).toString(), QStringLiteral("2.01"));
        QCOMPARE(object.value(QStringLiteral("sprites")).toInt(), 3);
        QCOMPARE(object.value(QStringLiteral("palettes")).toInt(), 2);
        QCOMPARE(object.value(QStringLiteral("formats")).toObject(),
                 (QJsonObject{{QStringLiteral("PNG32"), 1}, {QStringLiteral("RLE8"), 1}}));
        QCOMPARE(object.value(QStringLiteral("linkedSprites")).toInt(), 1);
        QCOMPARE(object.value(QStringLiteral("linkedPalettes")).toInt(), 1);
        QCOMPARE(object.value(QStringLiteral("messages")).toArray().size(), 63);

        // A damaged file is a failure with its reason, not a crash.
        const QString bad = path(QStringLiteral("bad.sff"));
        QVERIFY(writeFile(bad, QByteArray("ElecbyteSpr\0\0\0\0\x07", 16)));
        result = cli({QStringLiteral("info"), bad});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.contains("SFF version '7.0.0.0' not supported yet"), result.err.constData());
        QVERIFY(result.err.contains("can't be read as a sprite file"));
    }

    void checkAndSave()
    {
        const QString file = spriteFile();
        Output result = cli({QStringLiteral("check"), file});
        QCOMPARE(result.code, 1);
        QVERIFY(result.out.startsWith((file + QStringLiteral(": error: Required sprite 5000, 0 is missing!\n"))
                                          .toUtf8()));

        // To 1.01: the true colour sprite is reduced on the way.
        const QString out = path(QStringLiteral("out.sff"));
        result = cli({QStringLiteral("save"), file, out, QStringLiteral("--sff-version"), QStringLiteral("1.01")});
        QCOMPARE(result.code, 0);
        QCOMPARE(readFile(out).mid(12, 4), QByteArray("\x00\x01\x00\x01", 4));
        result = cli({QStringLiteral("info"), out, QStringLiteral("--json")});
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(object.value(QStringLiteral("version")).toString(), QStringLiteral("1.01"));
        QCOMPARE(object.value(QStringLiteral("sprites")).toInt(), 3);
        QCOMPARE(object.value(QStringLiteral("formats")).toObject(), (QJsonObject{{QStringLiteral("PCX"), 2}}));

        // Without a version the file keeps its own.
        result = cli({QStringLiteral("save"), out, path(QStringLiteral("again.sff"))});
        QCOMPARE(result.code, 0);
        QCOMPARE(readFile(path(QStringLiteral("again.sff"))).mid(12, 4), QByteArray("\x00\x01\x00\x01", 4));

        result = cli({QStringLiteral("save"), file, out, QStringLiteral("--sff-version"), QStringLiteral("3")});
        QCOMPARE(result.code, 2);
        QVERIFY(result.err.contains("--sff-version: 3 isn't 1.01, 2.00 or 2.01"));
    }

    void extract()
    {
        const QString file = spriteFile();
        const QString folder = path(QStringLiteral("extracted"));
        const Output result = cli({QStringLiteral("sff"), QStringLiteral("extract"), file, folder});
        QCOMPARE(result.code, 0);
        const QDir dir(folder);
        QCOMPARE(dir.entryList(QDir::Files),
                 (QStringList{QStringLiteral("0000_0-0.png"), QStringLiteral("0001_0-1.png"),
                              QStringLiteral("0002_9000-0.png")}));
        QCOMPARE(QDir(dir.filePath(QStringLiteral("palettes"))).entryList(QDir::Files),
                 (QStringList{QStringLiteral("1-1.act"), QStringLiteral("1-2.act")}));

        // Indexed sprites keep their indexes, with the palette's colours.
        const QImage indexed(dir.filePath(QStringLiteral("0000_0-0.png")));
        QCOMPARE(indexed.format(), QImage::Format_Indexed8);
        QCOMPARE(imagePixels(indexed), imagePixels(indexes(4, 3, 0)));
        QCOMPARE(indexed.color(7), qRgb(7, 7 * 3 + 1, 255 - 7));
        // True colour ones come out with their alpha.
        const QImage argb(dir.filePath(QStringLiteral("0002_9000-0.png")));
        QVERIFY(argb.hasAlphaChannel());
        QCOMPARE(argb.pixel(2, 1), qRgba(10, 20, 30, 128));
        QCOMPARE(readFile(dir.filePath(QStringLiteral("palettes/1-2.act"))).size(), 768);
    }

    void theKindOfALoneFile_data()
    {
        QTest::addColumn<QByteArray>("def");
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("from");
        QTest::newRow("no DEF") << QByteArray() << QString() << QStringLiteral("character") << QString();
        QTest::newRow("a DEF that names another file") << QByteArray("[Files]\r\nsprite = other.sff\r\n") << QString()
                                                       << QStringLiteral("character") << QString();
        QTest::newRow("character") << QByteArray("[Files]\r\nsprite = SET.sff ; its sprites\r\n") << QString()
                                   << QStringLiteral("character") << QStringLiteral("x.def");
        QTest::newRow("stage") << QByteArray("\xEF\xBB\xBF[BGdef]\r\nspr = stages\\set.sff\r\n") << QString()
                               << QStringLiteral("stage") << QStringLiteral("x.def");
        QTest::newRow("storyboard") << QByteArray("[SceneDef]\nspr = set.sff\n") << QString()
                                    << QStringLiteral("storyboard") << QStringLiteral("x.def");
        QTest::newRow("font") << QByteArray("[Def]\r\nFile = \"set.sff\"\r\n") << QString() << QStringLiteral("font")
                              << QStringLiteral("x.def");
        QTest::newRow("screenpack") << QByteArray("[Files]\r\nspr = set.sff\r\n") << QString()
                                    << QStringLiteral("other") << QStringLiteral("x.def");
        QTest::newRow("the option wins") << QByteArray("[BGDef]\r\nspr = set.sff\r\n") << QStringLiteral("character")
                                         << QStringLiteral("character") << QStringLiteral("--kind");
        QTest::newRow("a kind that isn't one") << QByteArray() << QStringLiteral("stages") << QString() << QString();
    }

    void theKindOfALoneFile()
    {
        QFETCH(QByteArray, def);
        QFETCH(QString, option);
        QFETCH(QString, kind);
        QFETCH(QString, from);
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("set.sff"));
        QVERIFY(QFile::copy(spriteFile(), file));
        if (!def.isEmpty())
            QVERIFY(writeFile(dir.filePath(QStringLiteral("x.def")), def));
        QStringList arguments{QStringLiteral("info"), file, QStringLiteral("--json")};
        if (!option.isEmpty())
            arguments << QStringLiteral("--kind") << option;
        const Output result = cli(arguments);
        if (kind.isEmpty()) {
            QCOMPARE(result.code, 2);
            QVERIFY(result.err.contains("--kind wants character, stage, storyboard, font or other, not \"stages\""));
            return;
        }
        QCOMPARE(result.code, 0);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(object.value(QStringLiteral("projectKind")).toString(), kind);
        QCOMPARE(object.value(QStringLiteral("projectKindFrom")).toString(), from);
        // Only a character must have the sprites the engine draws on its screens.
        QCOMPARE(object.value(QStringLiteral("messages")).toArray().size(), kind == QLatin1String("character") ? 63 : 0);
    }

    void corpusFilesTakeTheirKinds()
    {
        const QString corpus = TestSupport::corpusDir();
        if (corpus.isEmpty())
            QSKIP("the corpus isn't there");
        // Stages and fonts need none of a character's sprites.
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.sff")}).filter(
            QRegularExpression(QStringLiteral("/(stages|Takezo_Stage|font|fonts)/")));
        QVERIFY(files.size() > 30);
        Output result = cli(QStringList{QStringLiteral("check")} + files);
        QVERIFY2(!result.out.contains("Required sprite"), result.out.constData());

        // A screenpack's 9000,0 keeps its own colours, not those of sprite 0.
        const QString fightfx = corpus + QStringLiteral("/jdar2/data/fightfx.sff");
        const QString folder = path(QStringLiteral("fightfx"));
        result = cli({QStringLiteral("sff"), QStringLiteral("extract"), fightfx, folder});
        QCOMPARE(result.code, 0);
        const QStringList portraits = QDir(folder).entryList({QStringLiteral("*_9000-0.png")});
        QCOMPARE(portraits.size(), 1);
        const QImage portrait(QDir(folder).filePath(portraits.first()));
        QList<QRgb> own;
        CorpusSprites::readBytes(readFile(fightfx), fightfx, [&](const CorpusSprites::Sprite &sprite) {
            if (sprite.number == portraits.first().left(4).toInt())
                own = decodePcx(sprite.data).colorTable();
        });
        QCOMPARE(own.size(), 256);
        for (int i = 1; i < 256; ++i)
            QCOMPARE(portrait.color(i), own.at(i));
    }

    void projectCountsComeFromItsSprites()
    {
        const QString def = TestSupport::corpusDir() + QStringLiteral("/elecbyte-mugen10/chars/kfm/kfm.def");
        if (!QFileInfo::exists(def))
            QSKIP("the corpus isn't there");
        const Output result = cli({QStringLiteral("info"), def, QStringLiteral("--json")});
        QCOMPARE(result.code, 0);
        const QJsonObject counts =
            QJsonDocument::fromJson(result.out).object().value(QStringLiteral("counts")).toObject();
        // kfm.sff holds 281 sprites and its own 7 palettes, which replace those of the DEF.
        QCOMPARE(counts.value(QStringLiteral("sprites")).toInt(), 281);
        QCOMPARE(counts.value(QStringLiteral("palettes")).toInt(), 7);
    }
};

QTEST_MAIN(tst_CliSprites)
#include "tst_clisprites.moc"
