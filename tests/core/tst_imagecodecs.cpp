#include "core/sprites/imagecodecs.h"
#include "core/sprites/qstreamcachefilter.h"

#include "corpussprites.h"
#include "rle5encoder.h"
#include "testsupport.h"

#include <QRandomGenerator>
#include <QtEndian>
#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(QImageInfo)

/** Encoded data and the size it is decoded to. */
using Inputs = QList<std::pair<QByteArray, QImageInfo>>;
Q_DECLARE_METATYPE(Inputs)

namespace {

using PixelFunction = std::function<uint(int x, int y)>;

/** An image whose padding bytes are 0xEE, so that an encoder reading them shows. */
QImage makeImage(int width, int height, QImage::Format format, const PixelFunction &pixel)
{
    QImage image(width, height, format);
    std::memset(image.bits(), 0xEE, size_t(image.sizeInBytes()));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (format == QImage::Format_Indexed8)
                image.scanLine(y)[x] = uchar(pixel(x, y));
            else
                reinterpret_cast<QRgb *>(image.scanLine(y))[x] = pixel(x, y);
        }
    }
    if (format == QImage::Format_Indexed8) {
        QList<QRgb> colours;
        for (int i = 0; i < 256; ++i)
            colours.append(qRgb(i, 255 - i, (i * 7) & 255));
        image.setColorTable(colours);
    }
    return image;
}

QImage indexed(int width, int height, const PixelFunction &pixel)
{
    return makeImage(width, height, QImage::Format_Indexed8, pixel);
}

QImage indexedFromBytes(const QByteArray &hex, int width = -1)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    const int w = width < 0 ? int(bytes.size()) : width;
    return indexed(w, int(bytes.size()) / w, [&](int x, int y) { return uchar(bytes[y * w + x]); });
}

/** Only the pixels inside the width count: padding is nobody's business. */
bool samePixels(const QImage &a, const QImage &b)
{
    if (a.size() != b.size() || a.format() != b.format())
        return false;
    const qsizetype lineBytes = (qsizetype(a.width()) * a.depth() + 7) / 8;
    for (int y = 0; y < a.height(); ++y) {
        if (std::memcmp(a.constScanLine(y), b.constScanLine(y), size_t(lineBytes)) != 0)
            return false;
    }
    return true;
}

QImageInfo infoOf(int width, int height, int format = QImageInfo::Indexed)
{
    return QImageInfo{quint16(width), quint16(height), format};
}

QImageInfo infoOf(const QImage &image)
{
    return infoOf(image.width(), image.height(), image.format());
}

/** An indexed image's pixels line after line, with nothing between lines: what the RLE5 writer takes. */
QByteArray linear(const QImage &image)
{
    QByteArray bytes;
    for (int y = 0; y < image.height(); ++y)
        bytes.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
    return bytes;
}

using PixelDecoder = QByteArray (*)(const QByteArray &, const QImageInfo &);

/** One encoding: its writer, and its reader as pixels of a given size or as an image of its own. */
struct Codec
{
    std::function<QByteArray(const QImage &)> encode;
    PixelDecoder pixels = nullptr;
    QImage (*image)(const QByteArray &) = nullptr;

    QImage decode(const QByteArray &data, const QImageInfo &info) const
    {
        return pixels ? imageFromPixels(pixels(data, info), info) : image(data);
    }
};

/** "rle8", "rle5" (written by the tests' own writer), "lz5", "lz5 runs" (no copies), "pcx", "png". */
Codec codec(const QString &name)
{
    if (name == QLatin1String("rle8"))
        return {encodeRle8, decodeRle8};
    if (name == QLatin1String("rle5"))
        return {[](const QImage &image) { return Rle5Encoder::encode(linear(image)); }, decodeRle5};
    if (name.startsWith(QLatin1String("lz5"))) {
        const bool useLZ = name == QLatin1String("lz5");
        return {[useLZ](const QImage &image) { return encodeLz5(image, useLZ); }, decodeLz5};
    }
    if (name == QLatin1String("pcx"))
        return {encodePcx, nullptr, decodePcx};
    return {encodePng, nullptr, decodePng};
}

/** Test images of every shape the encoders must handle, as rows "codec: shape". */
void addSyntheticRows(const char *name, int valueMask)
{
    auto random = [valueMask](quint32 seed) {
        return [valueMask, seed](int x, int y) {
            return uint(QRandomGenerator(seed + quint32(y) * 10007 + quint32(x)).bounded(256)) & uint(valueMask);
        };
    };
    // Repeated short patterns make the copy packets of LZ5 appear in groups.
    auto patterns = [valueMask](int x, int y) {
        static const uchar pattern[] = {1, 2, 3, 4, 9, 1, 2, 3, 7, 7, 7, 1, 2, 3, 4, 30, 31, 1};
        return uint(pattern[(x * 3 + y * 5 + (x / 17)) % sizeof(pattern)] & valueMask);
    };
    const QList<std::pair<const char *, QImage>> images{
        {"1x1", indexed(1, 1, [](int, int) { return 17u; })},
        {"odd width 3x5 random", indexed(3, 5, random(1))},
        {"random 61x47", indexed(61, 47, random(2))},
        {"runs 200x64",
         indexed(200, 64, [valueMask](int x, int y) { return uint((x / 5 + y / 3 + (x * y) / 97) & valueMask); })},
        {"gradient 255x3", indexed(255, 3, [valueMask](int x, int) { return uint(x) & uint(valueMask); })},
        {"one colour 301x7", indexed(301, 7, [valueMask](int, int) { return 0x1Fu & uint(valueMask); })},
        {"patterns 97x31", indexed(97, 31, patterns)},
        {"far repeats 1500x3",
         indexed(1500, 3, [valueMask](int x, int y) { return uint((x % 700) * 13 + y) % 29 & uint(valueMask); })}};
    for (const auto &[shape, image] : images)
        QTest::addRow("%s: %s", name, shape) << QString::fromLatin1(name) << image;
}

/**
 * Runs of five-bit noise, then four short copies whose last distance
 * (230 - 1 = 0b11100101) is spread over the top bits of the four length
 * bytes, a short run, and a long copy from 399 back: the LZ5 stream in
 * `data`, what it decodes to in `expected`.
 */
void recycledBits(QByteArray &data, QByteArray &expected)
{
    QRandomGenerator random(7);
    for (int i = 0; i < 296; ++i) {
        if (i % 8 == 0)
            data.append('\0');
        const char colour = char(random.bounded(32));
        expected.append(colour);
        data.append(char(0x20 | colour));
    }
    auto copy = [&expected](int distance, int length) {
        for (int i = 0; i < length; ++i)
            expected.append(expected.at(expected.size() - distance));
    };
    data.append(char(0x2F));
    data.append(char(0xC0 | 4)).append(char(9)); // 5 from 10, top bits 11
    copy(10, 5);
    data.append(char(0x80 | 2)).append(char(99)); // 3 from 100, top bits 10
    copy(100, 3);
    data.append(char(0x40 | 60)).append(char(0)); // 61 from 1, top bits 01
    copy(1, 61);
    data.append(char(0x40 | 63)); // 64 from 0b11100101 + 1
    copy(230, 64);
    data.append(char(0x20 | 17)); // one pixel of 17
    expected.append(char(17));
    data.append(char((398 >> 8) << 6)).append(char(398 & 0xFF)).append(char(250 - 3));
    copy(399, 250);
}

quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = 0xFFFFFFFFu;
    for (const char c : bytes) {
        crc ^= uchar(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? (crc >> 1) ^ 0xEDB88320u : crc >> 1;
    }
    return ~crc;
}

} // namespace

class tst_ImageCodecs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void encodes_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const QImage &image, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(name).section(QLatin1Char(':'), 0, 0) << image << QByteArray(expected);
        };
        const auto run = [](int length, uint value) { return indexed(length, 1, [value](int, int) { return value; }); };
        row("rle8: single 0x55 is a run of one", indexedFromBytes("55"), "4155");
        row("rle8: single 0xC5 stands alone", indexedFromBytes("c5"), "c5");
        row("rle8: single 0x40 is a run of one", indexedFromBytes("40"), "4140");
        row("rle8: run of 63", run(63, 7), "7f07");
        row("rle8: run of 64 leaves one", run(64, 7), "7f0707");
        row("rle8: run spans line ends, padding skipped", indexed(3, 2, [](int, int) { return 9u; }), "4609");
        row("rle8: mixed", indexedFromBytes("0101807f3f"), "420180417f3f");
        row("rle8: nothing for nothing", QImage(), "");
        // A format that isn't a sprite format has no line bytes to write.
        row("rle8: not a sprite format", QImage(4, 4, QImage::Format_RGB16), "");
        row("lz5: run of 7 is short", run(7, 3), "00e3");
        row("lz5: run of 8 is long", run(8, 3), "000300");
        row("lz5: run of 263 is one long packet", run(263, 3), "0003ff");
        row("lz5: run of 264 is two packets", run(264, 3), "0003ff23");
        // Every distance matches a run of one colour, but with no change in
        // it: only run packets come out, 263 + 263 + 74.
        row("lz5: pure runs are never copies", run(600, 3), "0003ff03ff0342");
        row("lz5: a run keeps five bits of its colour", indexedFromBytes("e5"), "0025");
        // Three runs, then one short copy: a group left incomplete keeps its
        // offset byte and no bits in the top of its length byte.
        row("lz5: incomplete group", indexedFromBytes("050607050607050607050607"), "0825262708" "02");
        // Four short copies: the fourth has no offset byte; its distance - 1
        // (3) sits in the top bits of the four length bytes, the lowest two
        // in the fourth.
        row("lz5: group of four", indexedFromBytes("010203010203070102030801020309010203"),
            "a8212223020227020328020302" "29c2");
        row("lz5 runs: no copies", indexedFromBytes("010203010203010203"), "002122232122232122" "0023");
    }

    void encodes()
    {
        QFETCH(QString, codec);
        QFETCH(QImage, image);
        QFETCH(QByteArray, expected);
        QCOMPARE(::codec(codec).encode(image).toHex(), expected);
    }

    void decodes_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QImageInfo>("info");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const char *codec, const QByteArray &hex, const QImageInfo &info,
                            const QByteArray &expected) {
            QTest::newRow(name) << QString::fromLatin1(codec) << QByteArray::fromHex(hex) << info
                                << QByteArray::fromHex(expected);
        };
        // Packets of every kind on indexed lines come through the random streams below.
        row("rle8: lines wrap over the padding", "rle8", "4609", infoOf(3, 2), "0909090009090900");
        row("rle8: RGB lines hold three bytes a pixel", "rle8", "4601", infoOf(1, 2, QImageInfo::RGB),
            "0101010001010100");
        row("rle8: depth 0 never wraps", "rle8", "4401", infoOf(8, 2, 2), "0101010100000000");
        row("rle5: colour after a set top bit is the whole byte", "rle5", "0281c8", infoOf(3, 1), "c8c8c800");
        row("rle5: no top bit, colour 0, then a short packet", "rle5", "010125", infoOf(4, 1), "00000505");
        row("rle5: short packet of eight", "rle5", "0001e3", infoOf(9, 1), "000303030303030303000000");
        row("rle5: wraps at the width", "rle5", "058307", infoOf(3, 2), "0707070007070700");
        row("rle5: colour byte missing", "rle5", "0583", infoOf(2, 1), "00000000");
        row("rle5: short packets cut off", "rle5", "0083092122", infoOf(4, 1), "09010102");
        row("rle5: run past the end of the image stops", "rle5", "ff8106", infoOf(2, 1), "06060000");
        // One pixel of colour 0, then 100 short packets: a five-bit count
        // would stop after 4 of them and read the rest as new runs.
        QByteArray packets = QByteArray::fromHex("0064");
        QByteArray unpacked(1, '\0');
        for (int i = 0; i < 100; ++i) {
            packets.append(char(0x20 | (i % 31 + 1)));
            unpacked.append(2, char(i % 31 + 1));
        }
        QTest::newRow("rle5: seven bits count the short packets")
            << QStringLiteral("rle5") << packets << infoOf(int(unpacked.size()), 1) << unpacked.leftJustified(204, '\0');
        // One pixel, then a copy from six back: the stream is broken there,
        // and what was decoded before stays.
        row("lz5: stops at an offset before the start", "lz5", "02210205212121", infoOf(8, 1), "0100000000000000");
        QByteArray stream;
        QByteArray expected;
        recycledBits(stream, expected);
        const QImageInfo info = infoOf(100, int(expected.size()) / 100 + 1);
        QTest::newRow("lz5: recycled bits of short copies")
            << QStringLiteral("lz5") << stream << info << expected.leftJustified(info.byteCount(), '\0');
        // Width 3, four bytes a line as other tools write them.
        QByteArray pcx = encodePcx(indexed(3, 2, [](int, int) { return 0u; }));
        pcx[66] = 4;
        QTest::newRow("pcx: bytes beyond the width are dropped")
            << QStringLiteral("pcx") << pcx.left(128) + QByteArray::fromHex("01020309" "04050609") << QImageInfo()
            << QByteArray::fromHex("0102030004050600");
    }

    void decodes()
    {
        QFETCH(QString, codec);
        QFETCH(QByteArray, data);
        QFETCH(QImageInfo, info);
        QFETCH(QByteArray, expected);
        const Codec c = ::codec(codec);
        QCOMPARE((c.pixels ? c.pixels(data, info) : imagePixels(c.image(data))).toHex(), expected.toHex());
    }

    void rle8DecodesAnyPacketsAsAPlainLoopWould()
    {
        // The decoder takes packets many at a time; a plain loop over
        // random streams, rich in runs whose value bytes look like runs
        // too, says what each must give.
        QRandomGenerator random(8);
        for (int round = 0; round < 400; ++round) {
            const QImageInfo info = infoOf(random.bounded(1, 300), random.bounded(1, 40));
            // Enough data that it could fill the image: less is refused outright.
            const int least = info.width * info.height / 31 + 2;
            QByteArray data(random.bounded(least, info.width * info.height + 64), Qt::Uninitialized);
            for (char &byte : data)
                byte = char(random.bounded(3) == 0 ? 0x40 | random.bounded(64) : random.bounded(256));

            QByteArray flat;
            for (qsizetype i = 0; i < data.size() && flat.size() < qsizetype(info.width) * info.height; ++i) {
                const uchar byte = uchar(data.at(i));
                if ((byte & 0xC0) != 0x40)
                    flat.append(char(byte));
                else if (i + 1 < data.size())
                    flat.append(QByteArray(byte & 0x3F, data.at(++i)));
            }
            flat = flat.leftJustified(qsizetype(info.width) * info.height, '\0', true);
            QByteArray expected;
            for (int line = 0; line < info.height; ++line)
                expected += flat.mid(qsizetype(line) * info.width, info.width).leftJustified(info.bytesPerLine(), '\0');

            QCOMPARE(decodeRle8(data, info), expected);
        }
    }

    void roundTrips_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<QImage>("image");
        // Long runs of RLE5 carry any colour, its short packets and LZ5 only five bits.
        addSyntheticRows("rle8", 0xFF);
        addSyntheticRows("rle5", 0xFF);
        addSyntheticRows("lz5", 0x1F);
        addSyntheticRows("lz5 runs", 0x1F);
        const QString pcx = QStringLiteral("pcx");
        QTest::newRow("pcx: indexed, one plane")
            << pcx << indexed(33, 9, [](int x, int y) { return uint(x * y + x / 3) & 255; });
        QTest::newRow("pcx: indexed 1x1 of 200") << pcx << indexed(1, 1, [](int, int) { return 200u; });
        QTest::newRow("pcx: indexed long runs") << pcx << indexed(150, 2, [](int x, int) { return x < 140 ? 250u : 3u; });
        QTest::newRow("pcx: RGB, three planes")
            << pcx << makeImage(5, 4, QImage::Format_RGB32, [](int x, int y) { return qRgb(x * 40, y * 30, (x * y) & 255); });
        QTest::newRow("pcx: ARGB, four planes")
            << pcx
            << makeImage(6, 3, QImage::Format_ARGB32, [](int x, int y) { return qRgba(x * 40, y * 30, 200, (x + y) * 20); });
        // What isn't a sprite format is written as the nearest one.
        QImage rgb888(2, 2, QImage::Format_RGB888);
        rgb888.fill(qRgb(10, 20, 30));
        QTest::newRow("pcx: RGB888 as three planes") << pcx << rgb888;
        // The indexes are what the file keeps; the colours are the palette's business.
        QTest::newRow("png: indexed") << QStringLiteral("png") << indexed(7, 5, [](int x, int y) { return uint(x * 30 + y); });
        QTest::newRow("png: RGB") << QStringLiteral("png")
                                  << makeImage(9, 4, QImage::Format_RGB32, [](int x, int y) { return qRgb(x, y, 99); });
        QTest::newRow("png: ARGB") << QStringLiteral("png")
                                   << makeImage(3, 8, QImage::Format_ARGB32,
                                                [](int x, int y) { return qRgba(x * 50, 0, y, y * 30); });
    }

    void roundTrips()
    {
        QFETCH(QString, codec);
        QFETCH(QImage, image);
        const Codec c = ::codec(codec);
        const QByteArray encoded = c.encode(image);
        const QImage decoded = c.decode(encoded, infoOf(image));
        const QImage expected =
            image.format() == QImage::Format_RGB888 ? image.convertToFormat(QImage::Format_RGB32) : image;
        QVERIFY(samePixels(decoded, expected));
        if (codec == QLatin1String("pcx")) {
            QCOMPARE(int(encoded.at(65)), image.depth() == 8 ? 1 : decoded.hasAlphaChannel() ? 4 : 3);
            QCOMPARE(decoded.colorTable(), image.colorTable());
        } else if (codec == QLatin1String("png") && image.depth() == 8) {
            QCOMPARE(decoded.colorTable(), QList<QRgb>(256, 0xFF000000u));
        }
    }

    void pcxEncodesHeaderAndPalette()
    {
        QImage image = indexedFromBytes("0505c8" "010203", 3);
        const QByteArray pcx = encodePcx(image);
        QCOMPARE(pcx.size(), 128 + 7 + 1 + 768);
        QByteArray header(128, '\0');
        header[0] = 10;
        header[1] = 5;
        header[2] = 1;
        header[3] = 8;
        header[8] = 2;  // xmax
        header[10] = 1; // ymax
        header[65] = 1; // planes
        header[66] = 3; // bytes per line: the width, not made even
        header[68] = 1; // palette type
        QCOMPARE(pcx.left(128).toHex(), header.toHex());
        // A value of 192 or above is written as a run of one.
        QCOMPARE(pcx.mid(128, 7).toHex(), QByteArray("c205c1c8010203"));
        QCOMPARE(pcx.at(135), char(12));
        QCOMPARE(uchar(pcx.at(136 + 3 * 200)), uchar(qRed(image.color(200))));
        QCOMPARE(uchar(pcx.at(136 + 3 * 200 + 2)), uchar(qBlue(image.color(200))));
    }

    void pcxColourTable_data()
    {
        QTest::addColumn<int>("cut");
        QTest::addColumn<int>("colours");
        QTest::newRow("whole") << 0 << 256;
        // Sprite files cut the table of sprites that share the previous palette.
        QTest::newRow("table cut, marker kept") << 768 << 0;
        QTest::newRow("marker cut too") << 769 << 0;
        QTest::newRow("table cut short") << 300 << 256;
    }

    void pcxColourTable()
    {
        QFETCH(int, cut);
        QFETCH(int, colours);
        const QImage image = indexed(4, 4, [](int x, int y) { return uint(x + 4 * y); });
        QByteArray pcx = encodePcx(image);
        pcx.chop(cut);
        const QImage decoded = decodePcx(pcx);
        QVERIFY(samePixels(decoded, image));
        QCOMPARE(decoded.colorCount(), colours);
        if (colours > 0) {
            QCOMPARE(decoded.color(5), image.color(5));
            // What the cut took is black.
            QCOMPARE(decoded.color(255), cut ? qRgb(0, 0, 0) : image.color(255));
        }
    }

    void filtersGiveTheEntrysLayoutOrNothing()
    {
        const QImage image = indexed(5, 3, [](int x, int y) { return uint(x + y); });
        const QImageInfo info = infoOf(image);
        const QByteArray pixels = imagePixels(image);
        QCOMPARE(streamCacheFilter(QStreamCacheFilter::PCX)->decode(encodePcx(image), info), pixels);
        QCOMPARE(streamCacheFilter(QStreamCacheFilter::PNG)->decode(encodePng(image), info), pixels);
        QCOMPARE(streamCacheFilter(QStreamCacheFilter::RLE8)->decode(encodeRle8(image), info).size(), pixels.size());
        // A file image of another size than the entry's is no image of it.
        QVERIFY(streamCacheFilter(QStreamCacheFilter::PCX)->decode(encodePcx(image), infoOf(5, 4)).isEmpty());
        QVERIFY(streamCacheFilter(QStreamCacheFilter::PNG)->decode(encodePng(image), infoOf(4, 3)).isEmpty());
        QVERIFY(!streamCacheFilter(QStreamCacheFilter::Raw));
        QVERIFY(!streamCacheFilter(6));
        QVERIFY(!streamCacheFilter(-1));
    }

    // The corpus

    void corpusSprites_data()
    {
        QTest::addColumn<int>("filter");
        QTest::addColumn<QString>("codec");
        QTest::newRow("PCX") << int(QStreamCacheFilter::PCX) << QStringLiteral("pcx");
        QTest::newRow("RLE8") << int(QStreamCacheFilter::RLE8) << QStringLiteral("rle8");
        QTest::newRow("LZ5") << int(QStreamCacheFilter::LZ5) << QStringLiteral("lz5");
        QTest::newRow("PNG") << int(QStreamCacheFilter::PNG) << QStringLiteral("png");
    }

    void corpusSprites()
    {
        QFETCH(int, filter);
        QFETCH(QString, codec);
        if (TestSupport::corpusDir().isEmpty())
            QSKIP("The corpus isn't there");
        const Codec c = ::codec(codec);
        const QList<CorpusSprites::Sprite> sprites = CorpusSprites::withFilter(TestSupport::corpusDir(), filter);
        QVERIFY(sprites.size() > 10);
        for (const CorpusSprites::Sprite &sprite : sprites) {
            const QString where = QStringLiteral("%1 #%2").arg(sprite.file).arg(sprite.number);
            const QImage image = c.decode(sprite.data, sprite.info);
            QVERIFY2(!image.isNull(), qPrintable(where));
            QVERIFY2(samePixels(c.decode(c.encode(image), infoOf(image)), image), qPrintable(where));
            // The nodes' sizes are those of the images in them.
            if (filter != QStreamCacheFilter::PCX)
                QCOMPARE(image.size(), QSize(sprite.info.width, sprite.info.height));
            if (c.pixels)
                QCOMPARE(qsizetype(sprite.decodedSize), qsizetype(image.width()) * image.height());
        }
    }

    void corpusEncodesAsTheFilesDo_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("filter");
        // Every RLE8 sprite of the corpus, whatever wrote it.
        QTest::newRow("RLE8") << QString() << int(QStreamCacheFilter::RLE8);
        // Elecbyte's own tool also copies at distance 1, so its LZ5 sprites
        // (the Kung Fu Man files) decode alike but differ in bytes; these
        // were written the way we write.
        QTest::newRow("LZ5 font") << QStringLiteral("ikemen-screenpack/font/f-4x6.sff") << int(QStreamCacheFilter::LZ5);
        QTest::newRow("LZ5 stage") << QStringLiteral("ikemen-screenpack/stages/stageZ.sff")
                                   << int(QStreamCacheFilter::LZ5);
    }

    void corpusEncodesAsTheFilesDo()
    {
        QFETCH(QString, file);
        QFETCH(int, filter);
        if (TestSupport::corpusDir().isEmpty())
            QSKIP("The corpus isn't there");
        QList<CorpusSprites::Sprite> sprites = CorpusSprites::withFilter(TestSupport::corpusDir(), filter);
        sprites.removeIf([&](const CorpusSprites::Sprite &sprite) { return !sprite.file.endsWith(file); });
        QVERIFY(!sprites.isEmpty());
        const Codec c = codec(filter == QStreamCacheFilter::RLE8 ? QStringLiteral("rle8") : QStringLiteral("lz5"));
        for (const CorpusSprites::Sprite &sprite : std::as_const(sprites)) {
            QVERIFY2(c.encode(c.decode(sprite.data, sprite.info)) == sprite.data,
                     qPrintable(QStringLiteral("%1 #%2").arg(sprite.file).arg(sprite.number)));
        }
    }

    // Hostile input

    void hostileInput_data()
    {
        QTest::addColumn<QString>("codec");
        // Besides cut and changed data: data that can't fill the size it
        // claims, for which a decoder gives nothing.
        QTest::addColumn<Inputs>("refused");
        const QByteArray pcx = encodePcx(indexed(3, 3, [](int x, int) { return uint(x); }));
        Inputs headers;
        // Manufacturer, version, 16 bits per pixel, two planes, 24 bits in
        // one plane, xmax below xmin, bytes per line below the width.
        const QList<std::pair<int, char>> lies{{0, 11}, {1, 3}, {3, 16}, {65, 2}, {3, 24}, {4, 9}, {66, 2}};
        for (const auto &[offset, value] : lies) {
            headers.append({pcx, QImageInfo()});
            headers.last().first[offset] = value;
        }
        // 64k x 64k from ten bytes of data.
        QByteArray huge = pcx.left(128) + QByteArray(10, '\x05');
        for (const int at : {8, 10, 66})
            qToLittleEndian<quint16>(0xFFFF, huge.data() + at);
        headers.append({huge, QImageInfo()});
        // IHDR starts at 8 + 8: width and height, then its CRC after 13 bytes.
        QByteArray png = encodePng(indexed(2, 2, [](int, int) { return 1u; }));
        qToBigEndian<quint32>(60000, png.data() + 16);
        qToBigEndian<quint32>(60000, png.data() + 20);
        qToBigEndian<quint32>(crc32(png.mid(12, 17)), png.data() + 29);
        const Inputs pixels{{QByteArray(10, '\x01'), infoOf(65535, 65535, QImageInfo::ARGB)},
                                                              {QByteArray(), infoOf(4, 4)}};
        for (const char *name : {"rle8", "rle5", "lz5"})
            QTest::newRow(name) << QString::fromLatin1(name) << pixels;
        QTest::newRow("pcx") << QStringLiteral("pcx") << headers;
        QTest::newRow("png") << QStringLiteral("png")
                             << Inputs{{png, QImageInfo()}, {"not a png", QImageInfo()}};
    }

    void hostileInput()
    {
        QFETCH(QString, codec);
        QFETCH(Inputs, refused);
        const Codec c = ::codec(codec);
        for (const auto &[data, info] : refused)
            QVERIFY(c.pixels ? c.pixels(data, info).isEmpty() : c.image(data).isNull());
        const QImage image = indexed(23, 11, [](int x, int y) { return uint((x / 3 + y * y) % 29); });
        const QByteArray valid = c.encode(image);
        // Pixels of exactly the size asked, an image no larger than its data
        // could fill, or nothing.
        const qsizetype ratio = codec == QLatin1String("pcx") ? 32 : 1032 * 4;
        const auto sane = [&c, ratio](const QByteArray &data, const QImageInfo &info) {
            if (c.pixels) {
                const QByteArray pixels = c.pixels(data, info);
                return pixels.isEmpty() || pixels.size() == info.byteCount();
            }
            const QImage decoded = c.image(data);
            return decoded.isNull() || (decoded.width() > 0 && decoded.width() * decoded.height() <= ratio * data.size());
        };
        const QImageInfo info = infoOf(image);
        // Cut at every length.
        for (qsizetype length = 0; length < valid.size(); ++length)
            QVERIFY2(sane(valid.left(length), info), qPrintable(QStringLiteral("cut at %1").arg(length)));
        // Bytes changed at random: runs past the end, copies from before the
        // start, headers that lie.
        QRandomGenerator random(11);
        for (int round = 0; round < 2000; ++round) {
            QByteArray bad = valid;
            const int changes = 1 + int(random.bounded(4));
            for (int i = 0; i < changes; ++i)
                bad[random.bounded(int(bad.size()))] = char(random.bounded(256));
            QVERIFY2(sane(bad, info), qPrintable(QStringLiteral("round %1").arg(round)));
        }
        // Decoded into an image smaller and larger than the data's own.
        QVERIFY(sane(valid, infoOf(info.width / 2, info.height / 2)));
        QVERIFY(sane(valid, infoOf(info.width * 3, info.height * 2)));
    }
};

QTEST_MAIN(tst_ImageCodecs)
#include "tst_imagecodecs.moc"
