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
    QByteArray bytes = "RIFF" + QByteArray(4, '\0') + "PAL data" + QByteArray(4, '\0')
        + QByteArray("\x00\x03\x00\x01", 4) + entries;
    qToLittleEndian<quint32>(4 + 8 + 4 + quint32(entries.size()), bytes.data() + 4);
    qToLittleEndian<quint32>(chunkSize, bytes.data() + 16);
    return bytes;
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

/** Loads `data` as a file of `suffix`. */
QRGBPal load(const QByteArray &data, const QString &suffix, bool *ok = nullptr)
{
    QRGBPal colors;
    QRGBPalette palette(&colors);
    const bool loaded = palette.fromData(data, suffix);
    if (ok)
        *ok = loaded;
    return colors;
}

/** "i=r,g,b,a" for each entry given. */
QString entries(const QRGBPal &colors, const QList<int> &indexes)
{
    QStringList list;
    for (const int i : indexes) {
        const QRGBPalEntry &e = colors.entries[i];
        list.append(QStringLiteral("%1=%2,%3,%4,%5").arg(i).arg(e.red).arg(e.green).arg(e.blue).arg(e.alpha));
    }
    return list.join(QLatin1Char(' '));
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
            const QRGBPalEntry &e = colors.entries[i];
            QCOMPARE(QList<int>({e.red, e.green, e.blue, e.alpha}),
                     QList<int>({uchar(bytes[at]), uchar(bytes[at + 1]), uchar(bytes[at + 2]), i ? 255 : 0}));
        }
        QTemporaryDir dir;
        const QString copy = dir.filePath(QStringLiteral("copy.act"));
        QVERIFY(palette.toFile(copy));
        QCOMPARE(TestSupport::readFile(copy), bytes.left(768));
        // A folder can't be written over: false, and nothing lost.
        QVERIFY(!palette.toFile(dir.path()));
    }

    void reads_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QString>("suffix");
        // The entries that count, "index=red,green,blue,alpha".
        QTest::addColumn<QString>("expected");
        const QString act = QStringLiteral("act");
        const QString pal = QStringLiteral("pal");
        const QString acoSuffix = QStringLiteral("aco");
        const QString aseSuffix = QStringLiteral("ase");
        const QString actEntries = QStringLiteral("0=255,0,253,0 1=254,1,250,255 255=0,255,0,255");
        QTest::newRow("act: 768 bytes") << actBytes() << act << actEntries;
        QTest::newRow("act: 772 bytes with count and transparency")
            << actBytes() + QByteArray("\x01\x00\x00\x00", 4) << act << actEntries;

        // The last entry of the file stays out; after the reversal, entry 0 is black.
        QTest::newRow("riff: chunk of 1028 reads 255 colours")
            << riff(1028) << pal << QStringLiteral("0=0,0,0,0 1=254,127,1,255 255=0,0,255,255");

        const QByteArray head = "JASC-PAL\r\n0100\r\n256\r\n";
        QTest::newRow("jasc: colours") << head + "1 2 3\r\n4 5 6 7\r\n\r\n8 9 10\r\n" << pal
                                       << QStringLiteral("0=1,2,3,0 1=4,5,6,7 2=8,9,10,255");
        QTest::newRow("jasc: a bad line keeps its place") << head + "1 2\r\n4 5 6\r\n7 8 9\r\n" << pal
                                                          << QStringLiteral("0=0,0,0,0 1=4,5,6,255 2=7,8,9,255");
        QTest::newRow("jasc: clamped") << head + "300 999 0 256\r\n1000 1 1\r\n" << pal
                                       << QStringLiteral("0=255,255,0,0 1=0,0,0,0 2=0,0,0,0");

        const QByteArray painter = "ROWS 12\r\nCOLS 16\r\nWIDTH 16\r\nHEIGHT 16\r\nTEXTHEIGHT 0\r\nSPACING 1\r\n"
                                   "R: 10, G: 20, B: 30\r\nR:40,G:50,B:60 A: 70\r\nnot a colour\r\nR: 300, G: 1, B: 2\r\n";
        // The header takes no place.
        QTest::newRow("painter: swatches") << painter << QStringLiteral("txt")
                                           << QStringLiteral("0=10,20,30,0 1=40,50,60,70 2=255,1,2,255 3=0,0,0,0");

        QTest::newRow("aco: every space")
            << aco(1, {{0, 0, 0, 0, 0},
                       {0, 257 * 10, 257 * 20, 257 * 30 + 256, 0},
                       {1, quint16(qRound(120 * 182.5487)), 65535, 65535, 0},
                       {7, 1, 2, 3, 4},
                       {2, 65535, 0, 65535, 65535},
                       {8, 5000, 0, 0, 0}})
            << acoSuffix << QStringLiteral("1=10,20,30,255 2=0,255,0,255 3=255,0,255,255 4=128,128,128,255");
        const QByteArray two = aco(1, {{0, 0, 0, 0, 0}, {0, 257, 514, 771, 0}});
        QTest::newRow("aco: more colours than the file holds")
            << QByteArray(two).replace(2, 2, be16(60000)) << acoSuffix << QStringLiteral("1=1,2,3,255 2=0,0,0,0");
        QTest::newRow("aco: grey beyond 100%") << aco(1, {{0, 0, 0, 0, 0}, {8, 65535, 0, 0, 0}}) << acoSuffix
                                               << QStringLiteral("1=0,0,0,255");

        const QByteArray groupStart = be16(0xC001) + be32(8) + be16(2) + QByteArray("\0g\0\0", 4);
        const QByteArray groupEnd = be16(0xC002) + be32(0) + be16(0);
        const QByteArray black = aseColour("RGB ", {0, 0, 0});
        const QByteArray white = aseColour("RGB ", {1, 1, 1});
        QTest::newRow("ase: models in a group")
            << ase(8, black + groupStart + aseColour("RGB ", {1.0f, 0.5f, 0.0f}) + aseColour("LAB ", {1, 2, 3})
                          + aseColour("CMYK", {0, 1, 0, 0}) + aseColour("Gray", {0.2f}) + groupEnd)
            << aseSuffix << QStringLiteral("1=255,128,0,255 2=255,0,255,255 3=51,51,51,255");
        QTest::newRow("ase: clamped, and a NaN is 0")
            << ase(4, black + aseColour("RGB ", {2.0f, -1.0f, std::nanf("")}) + be16(9) + be32(3) + "xyz"
                          + aseColour("Gray", {1.0f}))
            << aseSuffix << QStringLiteral("1=255,0,0,255 2=255,255,255,255 3=0,0,0,0");
        QTest::newRow("ase: more blocks than the file holds") << ase(0x7FFFFFFF, black + white) << aseSuffix
                                                              << QStringLiteral("1=255,255,255,255 2=0,0,0,0");
    }

    void reads()
    {
        QFETCH(QByteArray, data);
        QFETCH(QString, suffix);
        QFETCH(QString, expected);
        bool ok = false;
        const QRGBPal colors = load(data, suffix, &ok);
        QVERIFY(ok);
        QList<int> indexes;
        for (const QString &entry : expected.split(QLatin1Char(' ')))
            indexes.append(entry.section(QLatin1Char('='), 0, 0).toInt());
        QCOMPARE(entries(colors, indexes), expected);
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
        const bool pcx = suffix == QLatin1String("pcx");
        const auto encoded = [&suffix, pcx](const QImage &image) {
            QByteArray data = pcx ? encodePcx(image) : QByteArray();
            QBuffer buffer(&data);
            if (!pcx && buffer.open(QIODevice::WriteOnly))
                image.save(&buffer, qPrintable(suffix));
            return data;
        };
        // PCX always carries 256 colours; a short table leaves the rest of
        // the array as it was.
        QRGBPal colors;
        for (QRGBPalEntry &e : colors.entries)
            e = {1, 2, 3, 4};
        QRGBPalette palette(&colors);
        QSignalSpy changing(&palette, &QRGBPalette::changing);
        QSignalSpy changed(&palette, &QRGBPalette::changed);
        QVERIFY(palette.fromData(encoded(image), suffix.toUpper()));
        const QString loaded = entries(colors, {0, 15, 16});
        QCOMPARE(loaded, QStringLiteral("0=0,100,200,0 15=150,100,185,255 16=")
                             + QLatin1String(pcx ? "0,0,0,255" : "1,2,3,4"));
        // True colour has no table to give: the load fails and changes nothing.
        QVERIFY(!palette.fromData(encoded(QImage(3, 3, QImage::Format_RGB32)), suffix));
        QCOMPARE(entries(colors, {0, 15, 16}), loaded);
        QCOMPARE(changing.size(), 2);
        QCOMPARE(changed.size(), 1);

        // Nine million flat pixels pack into a few kilobytes: far more than
        // a colour table is worth decoding.
        if (suffix == QLatin1String("png")) {
            QImage huge(3000, 3000, QImage::Format_Indexed8);
            huge.setColorTable(table);
            huge.fill(0);
            QVERIFY(!palette.fromData(encoded(huge), suffix));
            QCOMPARE(entries(colors, {0, 15, 16}), loaded);
        }
    }

    void hostileFilesLoadWithoutHarm_data()
    {
        QTest::addColumn<QByteArray>("valid");
        QTest::addColumn<QString>("suffix");
        // Files that the reader refuses: they load all the same, as all 0.
        QTest::addColumn<QList<QByteArray>>("refused");
        QTest::newRow("act") << actBytes() << QStringLiteral("act") << QList<QByteArray>{actBytes().left(767), {}};
        // A chunk of 1036, one below its header, one of 4 GB; data cut short; not a palette.
        QTest::newRow("riff") << riff(1028) << QStringLiteral("pal")
                              << QList<QByteArray>{riff(1036), riff(4), riff(0xFFFFFFFF), riff(1028).left(600),
                                                   riff(1028).replace(8, 4, "WAVE")};
        // Unix line ends, another version, a header alone.
        QTest::newRow("jasc") << QByteArray("JASC-PAL\r\n0100\r\n2\r\n1 2 3\r\n4 5 6 7\r\n") << QStringLiteral("pal")
                              << QList<QByteArray>{"JASC-PAL\n0100\n256\n1 2 3\n", "JASC-PAL\r\n0200\r\n256\r\n1 2 3\r\n",
                                                   "JASC-PAL\r\n"};
        // Cut short, version 2 alone, and a RIFF palette: the suffix wins over the first bytes.
        const QByteArray two = aco(1, {{0, 0, 0, 0, 0}, {0, 257, 514, 771, 0}});
        QTest::newRow("aco") << aco(1, {{0, 1, 2, 3, 4}, {1, 5, 6, 7, 8}, {2, 1, 1, 1, 1}, {8, 3, 0, 0, 0}})
                             << QStringLiteral("aco")
                             << QList<QByteArray>{two.left(16), QByteArray(two).replace(0, 2, be16(2)), riff(1028)};
        // No blocks, a negative count, cut in a colour, a block longer than the file, another version.
        const QByteArray black = aseColour("RGB ", {0, 0, 0});
        const QByteArray white = aseColour("RGB ", {1, 1, 1});
        QTest::newRow("ase") << ase(3, black + aseColour("CMYK", {1, 0, 1, 0}) + aseColour("Gray", {1}))
                             << QStringLiteral("ase")
                             << QList<QByteArray>{ase(0, black + white), ase(0xFFFFFFFF, black + white),
                                                  ase(3, black + white.left(20)),
                                                  ase(3, black + be16(7) + be32(0xFFFFFFF0) + white),
                                                  ase(2, black).replace(6, 2, be16(1))};
        // Without "ROWS" the text is an ACT file, too short to read.
        QTest::newRow("painter") << QByteArray("ROWS 1\nR: 1, G: 2, B: 3 A: 4\n") << QStringLiteral("txt")
                                 << QList<QByteArray>{"R: 1, G: 2, B: 3 A: 4\n"};
        QImage image(3, 3, QImage::Format_Indexed8);
        image.setColorTable({qRgb(1, 2, 3), qRgb(4, 5, 6)});
        image.fill(1);
        QTest::newRow("pcx") << encodePcx(image) << QStringLiteral("pcx") << QList<QByteArray>();
    }

    void hostileFilesLoadWithoutHarm()
    {
        QFETCH(QByteArray, valid);
        QFETCH(QString, suffix);
        QFETCH(QList<QByteArray>, refused);
        for (const QByteArray &data : refused) {
            bool ok = false;
            QVERIFY(load(data, suffix, &ok).sameColors(QRGBPal()));
            QVERIFY(ok);
        }
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
};

QTEST_MAIN(tst_PaletteFiles)
#include "tst_palettefiles.moc"
