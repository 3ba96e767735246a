#include "core/sprites/imagecodecs.h"

#include "corpussprites.h"
#include "sffbuilder.h"
#include "spritesets.h"
#include "testsupport.h"

#include <QDir>
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

    /**
     * The JSON object that `arguments` print when they succeed and it holds
     * every value of `expected`; otherwise an empty one, after saying what differs.
     */
    static QJsonObject printedJson(const QStringList &arguments, const QJsonObject &expected)
    {
        const Output result = cli(arguments);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        bool same = result.code == 0;
        for (auto it = expected.constBegin(); it != expected.constEnd(); ++it) {
            if (object.value(it.key()) != it.value()) {
                qWarning() << it.key() << "is" << object.value(it.key()) << "not" << it.value();
                same = false;
            }
        }
        return same ? object : QJsonObject();
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
                           {Sprite{0, 0, 4, 3, 1, 2, 0, 2, 8, encodeRle8(SpriteSets::indexedImage(4, 3, 0))},
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
        QVERIFY2(result.out.contains("Kind: character, as no DEF beside it names it\nVersion: 2.01\n"
                                     "Sprites: 3, palettes: 2\nFormats: PNG32 1 RLE8 1\n"
                                     "Linked sprites: 1, linked palettes: 1\nMessages: 63\n"),
                 result.out.constData());
        QVERIFY(result.out.contains("  error: Required sprite 5000, 0 is missing!\n"));
        QVERIFY(!printedJson({QStringLiteral("info"), file, QStringLiteral("--json")},
                           {{QStringLiteral("kind"), QStringLiteral("sprites")},
                            {QStringLiteral("version"), QStringLiteral("2.01")},
                            {QStringLiteral("sprites"), 3},
                            {QStringLiteral("palettes"), 2},
                            {QStringLiteral("formats"), QJsonObject{{QStringLiteral("PNG32"), 1}, {QStringLiteral("RLE8"), 1}}},
                            {QStringLiteral("linkedSprites"), 1},
                            {QStringLiteral("linkedPalettes"), 1}}).isEmpty());

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
        QVERIFY(result.out.startsWith((file + QStringLiteral(": error: Required sprite 5000, 0 is missing!\n")).toUtf8()));

        // To 1.01: the true colour sprite is reduced on the way.
        const QString out = path(QStringLiteral("out.sff"));
        result = cli({QStringLiteral("save"), file, out, QStringLiteral("--sff-version"), QStringLiteral("1.01")});
        QCOMPARE(result.code, 0);
        QVERIFY(!printedJson({QStringLiteral("info"), out, QStringLiteral("--json")},
                           {{QStringLiteral("version"), QStringLiteral("1.01")},
                            {QStringLiteral("sprites"), 3},
                            {QStringLiteral("formats"), QJsonObject{{QStringLiteral("PCX"), 2}}}}).isEmpty());
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
        const QDir dir(path(QStringLiteral("extracted")));
        const Output result = cli({QStringLiteral("sff"), QStringLiteral("extract"), file, dir.path()});
        QCOMPARE(result.code, 0);
        QCOMPARE(dir.entryList(QDir::Files).join(QLatin1Char(' ')),
                 QStringLiteral("0000_0-0.png 0001_0-1.png 0002_9000-0.png"));
        QCOMPARE(QDir(dir.filePath(QStringLiteral("palettes"))).entryList(QDir::Files).join(QLatin1Char(' ')),
                 QStringLiteral("1-1.act 1-2.act"));

        // Indexed sprites keep their indexes, with the palette's colours.
        const QImage indexed(dir.filePath(QStringLiteral("0000_0-0.png")));
        QCOMPARE(indexed.format(), QImage::Format_Indexed8);
        QCOMPARE(imagePixels(indexed), imagePixels(SpriteSets::indexedImage(4, 3, 0)));
        QCOMPARE(indexed.color(7), qRgb(7, 7 * 3 + 1, 255 - 7));
        // True colour ones come out with their alpha.
        const QImage argb(dir.filePath(QStringLiteral("0002_9000-0.png")));
        QCOMPARE(argb.pixel(2, 1), qRgba(10, 20, 30, 128));
        QCOMPARE(readFile(dir.filePath(QStringLiteral("palettes/1-2.act"))).size(), 768);
    }

    void theKindOfALoneFile_data()
    {
        QTest::addColumn<QByteArray>("def");
        QTest::addColumn<QString>("option");
        // The kind and where it came from; empty for a command line refused.
        QTest::addColumn<QString>("kind");
        QTest::newRow("no DEF") << QByteArray() << QString() << QStringLiteral("character ");
        QTest::newRow("a DEF that names another file")
            << QByteArray("[Files]\r\nsprite = other.sff\r\n") << QString() << QStringLiteral("character ");
        QTest::newRow("character") << QByteArray("[Files]\r\nsprite = SET.sff ; its sprites\r\n") << QString()
                                   << QStringLiteral("character x.def");
        QTest::newRow("stage") << QByteArray("\xEF\xBB\xBF[BGdef]\r\nspr = stages\\set.sff\r\n") << QString()
                               << QStringLiteral("stage x.def");
        QTest::newRow("storyboard") << QByteArray("[SceneDef]\nspr = set.sff\n") << QString()
                                    << QStringLiteral("storyboard x.def");
        QTest::newRow("font") << QByteArray("[Def]\r\nFile = \"set.sff\"\r\n") << QString() << QStringLiteral("font x.def");
        QTest::newRow("screenpack") << QByteArray("[Files]\r\nspr = set.sff\r\n") << QString()
                                    << QStringLiteral("other x.def");
        QTest::newRow("the option wins") << QByteArray("[BGDef]\r\nspr = set.sff\r\n") << QStringLiteral("character")
                                         << QStringLiteral("character --kind");
        QTest::newRow("a kind that isn't one") << QByteArray() << QStringLiteral("stages") << QString();
    }

    void theKindOfALoneFile()
    {
        QFETCH(QByteArray, def);
        QFETCH(QString, option);
        QFETCH(QString, kind);
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("set.sff"));
        QVERIFY(QFile::copy(spriteFile(), file));
        if (!def.isEmpty())
            QVERIFY(writeFile(dir.filePath(QStringLiteral("x.def")), def));
        QStringList arguments{QStringLiteral("info"), file, QStringLiteral("--json")};
        if (!option.isEmpty())
            arguments << QStringLiteral("--kind") << option;
        if (kind.isEmpty()) {
            const Output result = cli(arguments);
            QCOMPARE(result.code, 2);
            QVERIFY(result.err.contains("--kind wants character, stage, storyboard, font or other, not \"stages\""));
            return;
        }
        const QJsonObject object =
            printedJson(arguments, {{QStringLiteral("projectKind"), kind.section(QLatin1Char(' '), 0, 0)},
                                    {QStringLiteral("projectKindFrom"), kind.section(QLatin1Char(' '), 1)}});
        QVERIFY(!object.isEmpty());
        // Only a character must have the sprites the engine draws on its screens.
        QCOMPARE(object.value(QStringLiteral("messages")).toArray().size(),
                 kind.startsWith(QLatin1String("character")) ? 63 : 0);
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
        const QDir folder(path(QStringLiteral("fightfx")));
        result = cli({QStringLiteral("sff"), QStringLiteral("extract"), fightfx, folder.path()});
        QCOMPARE(result.code, 0);
        const QStringList portraits = folder.entryList({QStringLiteral("*_9000-0.png")});
        QCOMPARE(portraits.size(), 1);
        QList<QRgb> own;
        CorpusSprites::readBytes(readFile(fightfx), fightfx, [&](const CorpusSprites::Sprite &sprite) {
            if (sprite.number == portraits.first().left(4).toInt())
                own = decodePcx(sprite.data).colorTable();
        });
        QCOMPARE(own.size(), 256);
        QCOMPARE(QImage(folder.filePath(portraits.first())).colorTable().mid(1), own.mid(1));
    }

    void projectCountsComeFromItsSprites()
    {
        const QString def = TestSupport::corpusDir() + QStringLiteral("/elecbyte-mugen10/chars/kfm/kfm.def");
        if (!QFileInfo::exists(def))
            QSKIP("the corpus isn't there");
        const QJsonObject counts = printedJson({QStringLiteral("info"), def, QStringLiteral("--json")}, {})
                                       .value(QStringLiteral("counts"))
                                       .toObject();
        // kfm.sff holds 281 sprites and its own 7 palettes, which replace those of the DEF.
        QCOMPARE(counts.value(QStringLiteral("sprites")).toInt(), 281);
        QCOMPARE(counts.value(QStringLiteral("palettes")).toInt(), 7);
    }
};

QTEST_MAIN(tst_CliSprites)
#include "tst_clisprites.moc"
