#include "core/sprites/imagecodecs.h"
#include "core/sprites/palettefiles.h"
#include "core/sprites/qrgbpalette.h"
#include "testsupport.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtEndian>
#include <QtTest>

#include <cstring>

// Found by argument lookup, for QCOMPARE of entries.
static bool operator==(const QRGBPalEntry &x, const QRGBPalEntry &y)
{
    return std::memcmp(&x, &y, 4) == 0;
}

static char *toString(const QRGBPalEntry &e)
{
    return qstrdup(qPrintable(QStringLiteral("(%1, %2, %3, %4)").arg(e.red).arg(e.green).arg(e.blue).arg(e.alpha)));
}

namespace {

QByteArray be16(quint16 v)
{
    QByteArray b(2, Qt::Uninitialized);
    qToBigEndian(v, b.data());
    return b;
}

QByteArray be32(quint32 v)
{
    QByteArray b(4, Qt::Uninitialized);
    qToBigEndian(v, b.data());
    return b;
}

QByteArray le32(quint32 v)
{
    QByteArray b(4, Qt::Uninitialized);
    qToLittleEndian(v, b.data());
    return b;
}

QByteArray beFloat(float f)
{
    quint32 bits = 0;
    std::memcpy(&bits, &f, sizeof bits);
    return be32(bits);
}

/** 768 bytes: entry i is (i, 255 - i, 3i). */
QByteArray actBytes()
{
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(char(i)).append(char(255 - i)).append(char(i * 3));
    return bytes;
}

/** A RIFF palette of 256 entries (i, i/2, 255 - i, flags 7) whose data chunk says `chunkSize`. */
QByteArray riff(quint32 chunkSize)
{
    QByteArray entries;
    for (int i = 0; i < 256; ++i)
        entries.append(char(i)).append(char(i / 2)).append(char(255 - i)).append(char(7));
    return "RIFF" + le32(4 + 8 + 4 + entries.size()) + "PAL data" + le32(chunkSize) + QByteArray("\x00\x03\x00\x01", 4)
           + entries;
}

QByteArray aco(quint16 version, const QList<QList<quint16>> &colours)
{
    QByteArray bytes = be16(version) + be16(quint16(colours.size()));
    for (const QList<quint16> &c : colours) {
        for (const quint16 word : c)
            bytes += be16(word);
    }
    return bytes;
}

QByteArray aseColour(const char *model, const QList<float> &values)
{
    QByteArray body = be16(2) + QByteArray("\0a\0\0", 4) + QByteArray(model, 4);
    for (const float v : values)
        body += beFloat(v);
    body += be16(2);
    return be16(1) + be32(quint32(body.size())) + body;
}

QByteArray ase(quint32 count, const QByteArray &blocks)
{
    return "ASEF" + be16(1) + be16(0) + be32(count) + blocks;
}

/** Loads `data` as a file of `suffix` into an array that starts as `start`. */
QRGBPal load(const QByteArray &data, const QString &suffix, bool *ok = nullptr, QRGBPal start = QRGBPal())
{
    QRGBPal colors = start;
    QRGBPalette palette(&colors);
    const bool loaded = palette.fromData(data, suffix);
    if (ok)
        *ok = loaded;
    return colors;
}

QRGBPalEntry entry(int r, int g, int b, int a = 255)
{
    return {uchar(r), uchar(g), uchar(b), uchar(a)};
}

/** Entries from 1 on against red, green, blue triples, opaque; -1 for an entry left 0. */
void compareEntries(const QRGBPal &colors, const QList<int> &expected)
{
    for (int i = 0; i * 3 < expected.size(); ++i) {
        const int *rgb = expected.constData() + i * 3;
        QCOMPARE(colors.entries[i + 1], rgb[0] < 0 ? entry(0, 0, 0, 0) : entry(rgb[0], rgb[1], rgb[2]));
    }
}

bool isZero(const QRGBPal &colors)
{
    return colors.sameColors(QRGBPal());
}

} // namespace

class tst_PaletteFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void corpusActFiles_data()
    {
        QTest::addColumn<QString>("file");
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.act")});
        if (files.isEmpty())
            QSKIP("the corpus isn't there");
        for (const QString &file : files)
            QTest::newRow(qPrintable(file.mid(TestSupport::corpusDir().size() + 1))) << file;
    }

    void corpusActFiles()
    {
        QFETCH(QString, file);
        const QByteArray bytes = TestSupport::readFile(file);
        QVERIFY(bytes.size() >= 768);
        QRGBPal colors;
        QRGBPalette palette(&colors);
        QVERIFY(palette.fromFile(file));
        // The engine's order is the reverse of the array's; entry 0 is the transparent one.
        for (int i = 0; i < 256; ++i) {
            const int at = (255 - i) * 3;
            QCOMPARE(colors.entries[i], entry(uchar(bytes[at]), uchar(bytes[at + 1]), uchar(bytes[at + 2]), i ? 255 : 0));
        }
        QTemporaryDir dir;
        const QString copy = dir.filePath(QStringLiteral("copy.act"));
        QVERIFY(palette.toFile(copy));
        QCOMPARE(TestSupport::readFile(copy), bytes.left(768));
    }

    void actFiles_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<bool>("read");
        QTest::newRow("768 bytes") << actBytes() << true;
        QTest::newRow("772 bytes with count and transparency") << actBytes() + QByteArray("\x01\x00\x00\x00", 4) << true;
        QTest::newRow("767 bytes") << actBytes().left(767) << false;
        QTest::newRow("empty") << QByteArray() << false;
    }

    void actFiles()
    {
        QFETCH(QByteArray, data);
        QFETCH(bool, read);
        bool ok = false;
        const QRGBPal colors = load(data, QStringLiteral("act"), &ok);
        // A refused file still loads, as all 0.
        QVERIFY(ok);
        if (!read) {
            QVERIFY(isZero(colors));
            return;
        }
        QCOMPARE(colors.entries[0], entry(255, 0, 253, 0));
        QCOMPARE(colors.entries[1], entry(254, 1, 250));
        QCOMPARE(colors.entries[255], entry(0, 255, 0));
    }

    void anActSaveLoadsBack()
    {
        QRGBPal colors;
        for (int i = 0; i < 256; ++i)
            colors.entries[i] = entry(i, i ^ 0x55, 7, i % 3 ? 9 : 0);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("p.act"));
        QVERIFY(QRGBPalette(&colors).toFile(path));
        QCOMPARE(TestSupport::readFile(path).size(), 768);
        QRGBPal again;
        QVERIFY(QRGBPalette(&again).fromFile(path));
        for (int i = 0; i < 256; ++i)
            QCOMPARE(again.entries[i], entry(i, i ^ 0x55, 7, i ? 255 : 0));
        // A folder can't be written over: false, and nothing lost.
        QVERIFY(!QRGBPalette(&colors).toFile(dir.path()));
    }

    void riffFiles_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<bool>("read");
        QTest::newRow("chunk of 1028 reads 255 colours") << riff(1028) << true;
        QTest::newRow("chunk of 1036 is refused") << riff(1036) << false;
        QTest::newRow("chunk below its header") << riff(4) << false;
        QTest::newRow("chunk of 4 GB") << riff(0xFFFFFFFF) << false;
        QTest::newRow("data cut short") << riff(1028).left(600) << false;
        QTest::newRow("not a palette") << riff(1028).replace(8, 4, "WAVE") << false;
    }

    void riffFiles()
    {
        QFETCH(QByteArray, data);
        QFETCH(bool, read);
        bool ok = false;
        const QRGBPal colors = load(data, QStringLiteral("pal"), &ok);
        QVERIFY(ok);
        if (!read) {
            QVERIFY(isZero(colors));
            return;
        }
        // The last entry of the file stays out; after the reversal, entry 0 is black.
        QCOMPARE(colors.entries[0], entry(0, 0, 0, 0));
        QCOMPARE(colors.entries[1], entry(254, 127, 1));
        QCOMPARE(colors.entries[255], entry(0, 0, 255));
    }

    void jascFiles_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QList<int>>("expected");
        QByteArray head = "JASC-PAL\r\n0100\r\n256\r\n";
        // Expected: red, green, blue, alpha of entries 0, 1 and 2.
        QTest::newRow("colours") << head + "1 2 3\r\n4 5 6 7\r\n\r\n8 9 10\r\n"
                                 << QList<int>({1, 2, 3, 0, 4, 5, 6, 7, 8, 9, 10, 255});
        QTest::newRow("a bad line keeps its place") << head + "1 2\r\n4 5 6\r\n7 8 9\r\n"
                                                    << QList<int>({0, 0, 0, 0, 4, 5, 6, 255, 7, 8, 9, 255});
        QTest::newRow("clamped") << head + "300 999 0 256\r\n1000 1 1\r\n"
                                 << QList<int>({255, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
        QTest::newRow("unix line ends") << QByteArray("JASC-PAL\n0100\n256\n1 2 3\n")
                                        << QList<int>({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
        QTest::newRow("another version") << QByteArray("JASC-PAL\r\n0200\r\n256\r\n1 2 3\r\n")
                                         << QList<int>({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
        QTest::newRow("header only") << QByteArray("JASC-PAL\r\n") << QList<int>({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    }

    void jascFiles()
    {
        QFETCH(QByteArray, data);
        QFETCH(QList<int>, expected);
        const QRGBPal colors = load(data, QStringLiteral("pal"));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(colors.entries[i], entry(expected[i * 4], expected[i * 4 + 1], expected[i * 4 + 2], expected[i * 4 + 3]));
    }

    void painterSwatches()
    {
        const QByteArray data = "ROWS 12\r\nCOLS 16\r\nWIDTH 16\r\nHEIGHT 16\r\nTEXTHEIGHT 0\r\nSPACING 1\r\n"
                                "R: 10, G: 20, B: 30\r\nR:40,G:50,B:60 A: 70\r\nnot a colour\r\nR: 300, G: 1, B: 2\r\n";
        const QRGBPal colors = load(data, QStringLiteral("txt"));
        // The header takes no place.
        QCOMPARE(colors.entries[0], entry(10, 20, 30, 0));
        QCOMPARE(colors.entries[1], entry(40, 50, 60, 70));
        QCOMPARE(colors.entries[2], entry(255, 1, 2));
        QCOMPARE(colors.entries[3], entry(0, 0, 0, 0));
        // Without "ROWS" the same text is an ACT file, too short to read.
        QVERIFY(isZero(load(data.mid(9), QStringLiteral("txt"))));
    }

    void acoFiles_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QList<int>>("expected");
        // Expected: red, green, blue of entries 1 to 4, all opaque; -1 for untouched.
        QTest::newRow("every space")
            << aco(1, {{0, 0, 0, 0, 0},
                       {0, 257 * 10, 257 * 20, 257 * 30 + 256, 0},
                       {1, quint16(qRound(120 * 182.5487)), 65535, 65535, 0},
                       {7, 1, 2, 3, 4},
                       {2, 65535, 0, 65535, 65535},
                       {8, 5000, 0, 0, 0}})
            << QList<int>({10, 20, 30, 0, 255, 0, 255, 0, 255, 128, 128, 128});
        QTest::newRow("cut short") << aco(1, {{0, 0, 0, 0, 0}, {0, 257, 514, 771, 0}}).left(16)
                                   << QList<int>({-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1});
        QTest::newRow("version 2 alone") << aco(2, {{0, 0, 0, 0, 0}, {0, 257, 514, 771, 0}})
                                         << QList<int>({-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1});
        QTest::newRow("more colours than the file holds")
            << aco(1, {{0, 0, 0, 0, 0}, {0, 257, 514, 771, 0}}).replace(2, 2, be16(60000))
            << QList<int>({1, 2, 3, -1, -1, -1, -1, -1, -1, -1, -1, -1});
        QTest::newRow("grey beyond 100%") << aco(1, {{0, 0, 0, 0, 0}, {8, 65535, 0, 0, 0}})
                                          << QList<int>({0, 0, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1});
    }

    void acoFiles()
    {
        QFETCH(QByteArray, data);
        QFETCH(QList<int>, expected);
        compareEntries(load(data, QStringLiteral("aco")), expected);
    }

    void theAcoSuffixWinsOverTheFirstBytes()
    {
        // A RIFF palette named .aco is read as ACO, which refuses it.
        QVERIFY(isZero(load(riff(1028), QStringLiteral("ACO"))));
        QVERIFY(!isZero(load(riff(1028), QStringLiteral("pal"))));
    }

    void aseFiles_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QList<int>>("expected");
        // Expected: red, green, blue of entries 1 to 3, all opaque; -1 for untouched.
        const QByteArray groupStart = be16(0xC001) + be32(8) + be16(2) + QByteArray("\0g\0\0", 4);
        const QByteArray groupEnd = be16(0xC002) + be32(0) + be16(0);
        QTest::newRow("models in a group")
            << ase(8, aseColour("RGB ", {0, 0, 0}) + groupStart + aseColour("RGB ", {1.0f, 0.5f, 0.0f})
                          + aseColour("LAB ", {1, 2, 3}) + aseColour("CMYK", {0, 1, 0, 0}) + aseColour("Gray", {0.2f})
                          + groupEnd)
            << QList<int>({255, 128, 0, 255, 0, 255, 51, 51, 51});
        QTest::newRow("clamped, and a NaN is 0")
            << ase(4, aseColour("RGB ", {0, 0, 0}) + aseColour("RGB ", {2.0f, -1.0f, std::nanf("")})
                          + be16(9) + be32(3) + "xyz" + aseColour("Gray", {1.0f}))
            << QList<int>({255, 0, 0, 255, 255, 255, -1, -1, -1});
        QTest::newRow("no blocks") << ase(0, aseColour("RGB ", {0, 0, 0}) + aseColour("RGB ", {1, 1, 1}))
                                   << QList<int>({-1, -1, -1, -1, -1, -1, -1, -1, -1});
        QTest::newRow("a negative count") << ase(0xFFFFFFFF, aseColour("RGB ", {0, 0, 0}) + aseColour("RGB ", {1, 1, 1}))
                                          << QList<int>({-1, -1, -1, -1, -1, -1, -1, -1, -1});
        QTest::newRow("more blocks than the file holds")
            << ase(0x7FFFFFFF, aseColour("RGB ", {0, 0, 0}) + aseColour("RGB ", {1, 1, 1}))
            << QList<int>({255, 255, 255, -1, -1, -1, -1, -1, -1});
        QTest::newRow("cut in a colour") << ase(3, aseColour("RGB ", {0, 0, 0}) + aseColour("RGB ", {1, 1, 1}).left(20))
                                         << QList<int>({-1, -1, -1, -1, -1, -1, -1, -1, -1});
        QTest::newRow("a block longer than the file")
            << ase(3, aseColour("RGB ", {0, 0, 0}) + be16(7) + be32(0xFFFFFFF0) + aseColour("RGB ", {1, 1, 1}))
            << QList<int>({-1, -1, -1, -1, -1, -1, -1, -1, -1});
        QTest::newRow("another version") << ase(2, aseColour("RGB ", {0, 0, 0})).replace(6, 2, be16(1))
                                         << QList<int>({-1, -1, -1, -1, -1, -1, -1, -1, -1});
    }

    void aseFiles()
    {
        QFETCH(QByteArray, data);
        QFETCH(QList<int>, expected);
        compareEntries(load(data, QStringLiteral("ase")), expected);
    }

    void imageColourTables_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::newRow("png") << QStringLiteral("png");
        QTest::newRow("bmp") << QStringLiteral("bmp");
        QTest::newRow("pcx") << QStringLiteral("pcx");
    }

    void imageColourTables()
    {
        QFETCH(QString, suffix);
        QImage image(4, 4, QImage::Format_Indexed8);
        QList<QRgb> table;
        for (int i = 0; i < 16; ++i)
            table.append(qRgb(i * 10, 100, 200 - i));
        image.setColorTable(table);
        image.fill(3);
        QByteArray data;
        if (suffix == QLatin1String("pcx")) {
            // PCX always carries 256 colours.
            data = encodePcx(image);
            table.resize(256, qRgb(0, 0, 0));
        } else {
            QBuffer buffer(&data);
            buffer.open(QIODevice::WriteOnly);
            QVERIFY(image.save(&buffer, qPrintable(suffix)));
        }
        QRGBPal start;
        for (QRGBPalEntry &e : start.entries)
            e = entry(1, 2, 3, 4);
        bool ok = false;
        const QRGBPal colors = load(data, suffix.toUpper(), &ok, start);
        QVERIFY(ok);
        QCOMPARE(colors.entries[0], entry(0, 100, 200, 0));
        QCOMPARE(colors.entries[15], entry(150, 100, 185));
        // A short table leaves the rest of the array as it was.
        QCOMPARE(colors.entries[16], table.size() > 16 ? entry(0, 0, 0) : entry(1, 2, 3, 4));

        // True colour has no table to give: the load fails and changes nothing.
        QByteArray rgb;
        QBuffer buffer(&rgb);
        buffer.open(QIODevice::WriteOnly);
        QImage(3, 3, QImage::Format_RGB32).save(&buffer, "PNG");
        QRGBPal untouched = start;
        QRGBPalette palette(&untouched);
        QSignalSpy changed(&palette, &QRGBPalette::changed);
        QVERIFY(!palette.fromData(rgb, QStringLiteral("png")));
        QVERIFY(untouched.sameColors(start));
        QCOMPARE(changed.size(), 0);

        // Nine million flat pixels pack into a few kilobytes: far more than
        // a colour table is worth decoding.
        if (suffix == QLatin1String("png")) {
            QImage huge(3000, 3000, QImage::Format_Indexed8);
            huge.setColorTable(table);
            huge.fill(0);
            QByteArray packed;
            QBuffer out(&packed);
            out.open(QIODevice::WriteOnly);
            QVERIFY(huge.save(&out, "PNG"));
            QVERIFY(!palette.fromData(packed, QStringLiteral("png")));
            QVERIFY(untouched.sameColors(start));
        }
    }

    void loadsAreAnnounced()
    {
        QRGBPal colors;
        QRGBPalette palette(&colors);
        QStringList heard;
        connect(&palette, &QRGBPalette::changing, this, [&heard] { heard.append(QStringLiteral("changing")); });
        connect(&palette, &QRGBPalette::changed, this, [&heard] { heard.append(QStringLiteral("changed")); });
        QVERIFY(palette.fromData(actBytes(), QStringLiteral("act")));
        QCOMPARE(heard, QStringList({QStringLiteral("changing"), QStringLiteral("changed")}));
        heard.clear();
        QVERIFY(!palette.fromFile(QStringLiteral("/nowhere/at/all.act")));
        QCOMPARE(heard, QStringList({QStringLiteral("changing")}));
    }

    void hostileFilesLoadWithoutHarm_data()
    {
        QTest::addColumn<QByteArray>("valid");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("act") << actBytes() << QStringLiteral("act");
        QTest::newRow("riff") << riff(1028) << QStringLiteral("pal");
        QTest::newRow("jasc") << QByteArray("JASC-PAL\r\n0100\r\n2\r\n1 2 3\r\n4 5 6 7\r\n") << QStringLiteral("pal");
        QTest::newRow("aco") << aco(1, {{0, 1, 2, 3, 4}, {1, 5, 6, 7, 8}, {2, 1, 1, 1, 1}, {8, 3, 0, 0, 0}})
                             << QStringLiteral("aco");
        QTest::newRow("ase") << ase(3, aseColour("RGB ", {0, 0, 0}) + aseColour("CMYK", {1, 0, 1, 0}) + aseColour("Gray", {1}))
                             << QStringLiteral("ase");
        QTest::newRow("painter") << QByteArray("ROWS 1\nR: 1, G: 2, B: 3 A: 4\n") << QStringLiteral("txt");
        QImage image(3, 3, QImage::Format_Indexed8);
        image.setColorTable({qRgb(1, 2, 3), qRgb(4, 5, 6)});
        image.fill(1);
        QTest::newRow("pcx") << encodePcx(image) << QStringLiteral("pcx");
    }

    void hostileFilesLoadWithoutHarm()
    {
        QFETCH(QByteArray, valid);
        QFETCH(QString, suffix);
        // Every cut of a valid file, and random bytes over it.
        for (int size = 0; size <= valid.size(); ++size)
            load(valid.left(size), suffix);
        QRandomGenerator random(42);
        for (int round = 0; round < 200; ++round) {
            QByteArray bytes = valid;
            for (int k = 0; k < 4; ++k)
                bytes[random.bounded(int(bytes.size()))] = char(random.bounded(256));
            load(bytes, suffix);
        }
    }

    void dialogFilters()
    {
        QCOMPARE(QRGBPalette::openFilter(QStringLiteral("Palettes")),
                 QStringLiteral("Palettes (*.act *.pcx *.png *.bmp *.pal *.aco *.ase *.txt);;"
                                "Adobe Color Table (*.act);;Personal Computer eXchange (*.pcx);;"
                                "Portable Network Graphic (*.png);;Bitmap (*.bmp);;RIFF / Jasc Palette (*.pal);;"
                                "Adobe Color Swatch (*.aco);;Adobe Swatch Exchange (*.ase);;"
                                "Corel Painter Swatches (*.txt)"));
        QCOMPARE(QRGBPalette::saveFilter(), QStringLiteral("Adobe Color Table (*.act)"));
    }
};

QTEST_MAIN(tst_PaletteFiles)
#include "tst_palettefiles.moc"
