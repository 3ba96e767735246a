#include "core/sprites/imagecodecs.h"
#include "core/sprites/qstreamcachefilter.h"

#include "corpussprites.h"
#include "rle5encoder.h"
#include "testsupport.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QtEndian>
#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(QImageInfo)

namespace {

using PixelFunction = std::function<uint(int x, int y)>;

/** An image whose padding bytes are 0xEE, so that an encoder reading them shows. */
QImage makeImage(int width, int height, QImage::Format format, const PixelFunction &pixel)
{
    QImage image(width, height, format);
    image.fill(0);
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
    QImageInfo info;
    info.width = quint16(width);
    info.height = quint16(height);
    info.format = format;
    return info;
}

QImageInfo infoOf(const QImage &image)
{
    return infoOf(image.width(), image.height(), image.format());
}

/** The indexed image of decoded pixels. */
QImage indexedPixels(const QByteArray &pixels, int width, int height)
{
    return imageFromPixels(pixels, infoOf(width, height));
}

/** Test images of every shape the encoders must handle. */
void addSyntheticRows(int valueMask)
{
    QTest::addColumn<QImage>("image");
    auto random = [valueMask](quint32 seed) {
        return [valueMask, seed](int x, int y) {
            return uint(QRandomGenerator(seed + quint32(y) * 10007 + quint32(x)).bounded(256)) & uint(valueMask);
        };
    };
    auto runs = [valueMask](int x, int y) {
        return uint((x / 5 + y / 3 + (x * y) / 97) & valueMask);
    };
    // Repeated short patterns make the copy packets of LZ5 appear in groups.
    auto patterns = [valueMask](int x, int y) {
        static const uchar pattern[] = {1, 2, 3, 4, 9, 1, 2, 3, 7, 7, 7, 1, 2, 3, 4, 30, 31, 1};
        return uint(pattern[(x * 3 + y * 5 + (x / 17)) % sizeof(pattern)] & valueMask);
    };
    QTest::newRow("1x1") << indexed(1, 1, [](int, int) { return 17u; });
    QTest::newRow("odd width 3x5 random") << indexed(3, 5, random(1));
    QTest::newRow("random 61x47") << indexed(61, 47, random(2));
    QTest::newRow("runs 200x64") << indexed(200, 64, runs);
    QTest::newRow("gradient 255x3") << indexed(255, 3, [valueMask](int x, int) { return uint(x) & uint(valueMask); });
    QTest::newRow("one colour 301x7") << indexed(301, 7, [valueMask](int, int) { return 0x1Fu & uint(valueMask); });
    QTest::newRow("patterns 97x31") << indexed(97, 31, patterns);
    QTest::newRow("far repeats 1500x3") << indexed(1500, 3, [valueMask](int x, int y) {
        return uint((x % 700) * 13 + y) % 29 & uint(valueMask);
    });
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

/** The data of the PNG chunk `type`; empty when the file has none. */
QByteArray pngChunk(const QByteArray &png, const char *type)
{
    qsizetype at = 8;
    while (at + 12 <= png.size()) {
        const quint32 length = qFromBigEndian<quint32>(png.constData() + at);
        if (png.mid(at + 4, 4) == type)
            return png.mid(at + 8, length);
        at += 12 + qsizetype(length);
    }
    return QByteArray();
}

using PixelDecoder = QByteArray (*)(const QByteArray &, const QImageInfo &);

PixelDecoder pixelDecoder(const QString &codec)
{
    if (codec == QLatin1String("rle8"))
        return decodeRle8;
    return codec == QLatin1String("rle5") ? decodeRle5 : decodeLz5;
}

using Decoder = std::function<bool(const QByteArray &)>;

/** Decoders under hostile input. They answer whether the result had a sane size. */
Decoder decoderOf(const QString &codec, const QImageInfo &info)
{
    if (codec == QLatin1String("pcx"))
        return [](const QByteArray &data) {
            const QImage image = decodePcx(data);
            return image.isNull() || image.width() * image.height() <= 32 * data.size();
        };
    if (codec == QLatin1String("png"))
        return [](const QByteArray &data) {
            const QImage image = decodePng(data);
            return image.isNull() || image.width() > 0;
        };
    const PixelDecoder decode = pixelDecoder(codec);
    return [decode, info](const QByteArray &data) {
        const QByteArray pixels = decode(data, info);
        return pixels.isEmpty() || pixels.size() == info.byteCount();
    };
}

} // namespace

class tst_ImageCodecs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // RLE8

    void rle8Encodes_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("single 0x55 is a run of one") << indexedFromBytes("55") << QByteArray("4155");
        QTest::newRow("single 0xC5 stands alone") << indexedFromBytes("c5") << QByteArray("c5");
        QTest::newRow("single 0x40 is a run of one") << indexedFromBytes("40") << QByteArray("4140");
        QTest::newRow("run of 63") << indexed(63, 1, [](int, int) { return 7u; }) << QByteArray("7f07");
        QTest::newRow("run of 64 leaves one") << indexed(64, 1, [](int, int) { return 7u; }) << QByteArray("7f0707");
        QTest::newRow("run spans line ends, padding skipped") << indexed(3, 2, [](int, int) { return 9u; })
                                                              << QByteArray("4609");
        QTest::newRow("mixed") << indexedFromBytes("0101807f3f") << QByteArray("420180417f3f");
    }

    void rle8Encodes()
    {
        QFETCH(QImage, image);
        QFETCH(QByteArray, expected);
        QCOMPARE(encodeRle8(image).toHex(), expected);
    }

    void rle8EncodesNothingForNothing()
    {
        QVERIFY(encodeRle8(QImage()).isEmpty());
        // A format that isn't a sprite format has no line bytes to write.
        QVERIFY(encodeRle8(QImage(4, 4, QImage::Format_RGB16)).isEmpty());
    }

    void rle8Decodes_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("format");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("control 0x40 eats its value and writes nothing")
            << QByteArray("400501") << 2 << 1 << 3 << QByteArray("01000000");
        QTest::newRow("lines wrap over the padding") << QByteArray("4609") << 3 << 2 << 3
                                                     << QByteArray("0909090009090900");
        QTest::newRow("run past the end of the image stops") << QByteArray("7f09") << 2 << 1 << 3
                                                             << QByteArray("09090000");
        QTest::newRow("run byte without value keeps what came before")
            << QByteArray("050245") << 4 << 1 << 3 << QByteArray("05020000");
        QTest::newRow("RGB lines hold three bytes a pixel") << QByteArray("4601") << 1 << 2 << 4
                                                            << QByteArray("0101010001010100");
        QTest::newRow("depth 0 never wraps") << QByteArray("4401") << 8 << 2 << 2 << QByteArray("0101010100000000");
    }

    void rle8Decodes()
    {
        QFETCH(QByteArray, data);
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(int, format);
        QFETCH(QByteArray, expected);
        QCOMPARE(decodeRle8(QByteArray::fromHex(data), infoOf(width, height, format)).toHex(), expected);
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

            const qsizetype stride = info.bytesPerLine();
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
                expected += flat.mid(qsizetype(line) * info.width, info.width).leftJustified(stride, '\0');

            QCOMPARE(decodeRle8(data, info), expected);
        }
    }

    void rle8RoundTrips_data() { addSyntheticRows(0xFF); }

    void rle8RoundTrips()
    {
        QFETCH(QImage, image);
        const QByteArray pixels = decodeRle8(encodeRle8(image), infoOf(image));
        QVERIFY(samePixels(indexedPixels(pixels, image.width(), image.height()), image));
    }

    // RLE5

    void rle5Decodes_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("colour after a set top bit is the whole byte") << QByteArray("0281c8") << 3 << 1
                                                                      << QByteArray("c8c8c800");
        QTest::newRow("no top bit: colour 0, then a short packet") << QByteArray("010125") << 4 << 1
                                                                   << QByteArray("00000505");
        QTest::newRow("short packet of eight") << QByteArray("0001e3") << 9 << 1
                                               << QByteArray("000303030303030303000000");
        QTest::newRow("wraps at the width") << QByteArray("058307") << 3 << 2 << QByteArray("0707070007070700");
        QTest::newRow("colour byte missing") << QByteArray("0583") << 2 << 1 << QByteArray("00000000");
        QTest::newRow("short packets cut off") << QByteArray("0083092122") << 4 << 1 << QByteArray("09010102");
        QTest::newRow("run past the end of the image stops") << QByteArray("ff8106") << 2 << 1
                                                             << QByteArray("06060000");
    }

    void rle5Decodes()
    {
        QFETCH(QByteArray, data);
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(QByteArray, expected);
        QCOMPARE(decodeRle5(QByteArray::fromHex(data), infoOf(width, height)).toHex(), expected);
    }

    void rle5CountsSevenBitsOfShortPackets()
    {
        // One pixel of colour 0, then 100 short packets: a five-bit count
        // would stop after 4 of them and read the rest as new runs.
        QByteArray data = QByteArray::fromHex("0064");
        QByteArray expected(1, '\0');
        for (int i = 0; i < 100; ++i) {
            data.append(char(0x20 | (i % 31 + 1)));
            expected.append(2, char(i % 31 + 1));
        }
        QCOMPARE(decodeRle5(data, infoOf(int(expected.size()), 1)), expected.leftJustified(204, '\0'));
    }

    void rle5RoundTrips_data()
    {
        // Long runs carry any colour; short packets only five bits.
        addSyntheticRows(0xFF);
    }

    void rle5RoundTrips()
    {
        QFETCH(QImage, image);
        QByteArray linear;
        for (int y = 0; y < image.height(); ++y)
            linear.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
        const QByteArray pixels = decodeRle5(Rle5Encoder::encode(linear), infoOf(image));
        QVERIFY(samePixels(indexedPixels(pixels, image.width(), image.height()), image));
    }

    // LZ5

    void lz5Encodes_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QByteArray>("expected");
        auto run = [](int length) { return indexed(length, 1, [](int, int) { return 3u; }); };
        QTest::newRow("run of 7 is short") << run(7) << QByteArray("00e3");
        QTest::newRow("run of 8 is long") << run(8) << QByteArray("000300");
        QTest::newRow("run of 263 is one long packet") << run(263) << QByteArray("0003ff");
        QTest::newRow("run of 264 is two packets") << run(264) << QByteArray("0003ff23");
        // Only the low five bits of a run's colour are kept.
        QTest::newRow("colour of a run loses its top bits") << indexedFromBytes("e5") << QByteArray("0025");
        // Three runs, then one short copy: a group left incomplete keeps its
        // offset byte and no bits in the top of its length byte.
        QTest::newRow("incomplete group") << indexedFromBytes("050607050607050607050607")
                                          << QByteArray("0825262708" "02");
        // Four short copies: the fourth has no offset byte; its distance - 1
        // (3) sits in the top bits of the four length bytes, the lowest two
        // in the fourth.
        QTest::newRow("group of four") << indexedFromBytes("010203010203070102030801020309010203")
                                       << QByteArray("a8212223020227020328020302" "29c2");
    }

    void lz5Encodes()
    {
        QFETCH(QImage, image);
        QFETCH(QByteArray, expected);
        QCOMPARE(encodeLz5(image, true).toHex(), expected);
    }

    void lz5NeverMatchesPureRuns()
    {
        // Every distance matches a run of one colour, but with no change in
        // it; only run packets come out: 263 + 263 + 74.
        const QImage image = indexed(600, 1, [](int, int) { return 3u; });
        QCOMPARE(encodeLz5(image, true).toHex(), QByteArray("0003ff03ff0342"));
    }

    void lz5WithoutLZWritesOnlyRuns()
    {
        const QImage image = indexedFromBytes("010203010203010203");
        QCOMPARE(encodeLz5(image, false).toHex(), QByteArray("002122232122232122" "0023"));
    }

    void lz5DecodesRecycledBits()
    {
        // 296 pixels of five-bit noise from runs, then four short copies
        // whose last distance (230 - 1 = 0b11100101) is spread over the top
        // bits of the four length bytes, then a long copy from 399 back.
        QByteArray expected;
        QByteArray data;
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
        // Packets 296..301: four short copies, a short run, the long copy.
        data.append(char(0x2F));
        data.append(char(0xC0 | 4)).append(char(9));  // 5 from 10, top bits 11
        copy(10, 5);
        data.append(char(0x80 | 2)).append(char(99)); // 3 from 100, top bits 10
        copy(100, 3);
        data.append(char(0x40 | 60)).append(char(0)); // 61 from 1, top bits 01
        copy(1, 61);
        data.append(char(0x40 | 63));                  // 64 from 0b11100101 + 1
        copy(230, 64);
        data.append(char(0x20 | 17));                  // one pixel of 17
        expected.append(char(17));
        data.append(char((398 >> 8) << 6)).append(char(398 & 0xFF)).append(char(250 - 3));
        copy(399, 250);
        const int width = 100;
        const int height = int(expected.size()) / width + 1;
        const QByteArray pixels = decodeLz5(data, infoOf(width, height));
        QCOMPARE(pixels.left(expected.size()).toHex(), expected.toHex());
        QCOMPARE(pixels.mid(expected.size()), QByteArray(pixels.size() - expected.size(), '\0'));
    }

    void lz5StopsAtOffsetsBeforeTheStart()
    {
        // One pixel, then a copy from six back: the stream is broken there,
        // and what was decoded before stays.
        QCOMPARE(decodeLz5(QByteArray::fromHex("02210205212121"), infoOf(8, 1)).toHex(),
                 QByteArray("0100000000000000"));
    }

    void lz5RoundTrips_data() { addSyntheticRows(0x1F); }

    void lz5RoundTrips()
    {
        QFETCH(QImage, image);
        for (const bool useLZ : {true, false}) {
            const QByteArray pixels = decodeLz5(encodeLz5(image, useLZ), infoOf(image));
            QVERIFY2(samePixels(indexedPixels(pixels, image.width(), image.height()), image),
                     useLZ ? "with copies" : "runs only");
        }
    }

    // PCX

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
        header[8] = 2;   // xmax
        header[10] = 1;  // ymax
        header[65] = 1;  // planes
        header[66] = 3;  // bytes per line: the width, not made even
        header[68] = 1;  // palette type
        QCOMPARE(pcx.left(128).toHex(), header.toHex());
        // A value of 192 or above is written as a run of one.
        QCOMPARE(pcx.mid(128, 7).toHex(), QByteArray("c205c1c8010203"));
        QCOMPARE(pcx.at(135), char(12));
        QCOMPARE(uchar(pcx.at(136 + 3 * 200)), uchar(qRed(image.color(200))));
        QCOMPARE(uchar(pcx.at(136 + 3 * 200 + 2)), uchar(qBlue(image.color(200))));
    }

    void pcxRoundTrips_data()
    {
        QTest::addColumn<QImage>("image");
        auto rgb = [](int x, int y) { return qRgb(x * 40, y * 30, (x * y) & 255); };
        auto argb = [](int x, int y) { return qRgba(x * 40, y * 30, 200, (x + y) * 20); };
        QTest::newRow("indexed, one plane") << indexed(33, 9, [](int x, int y) { return uint(x * y + x / 3) & 255; });
        QTest::newRow("indexed 1x1 of 200") << indexed(1, 1, [](int, int) { return 200u; });
        QTest::newRow("indexed long runs") << indexed(150, 2, [](int x, int) { return x < 140 ? 250u : 3u; });
        QTest::newRow("RGB, three planes") << makeImage(5, 4, QImage::Format_RGB32, rgb);
        QTest::newRow("ARGB, four planes") << makeImage(6, 3, QImage::Format_ARGB32, argb);
    }

    void pcxRoundTrips()
    {
        QFETCH(QImage, image);
        const QImage decoded = decodePcx(encodePcx(image));
        QVERIFY(samePixels(decoded, image));
        if (image.format() == QImage::Format_Indexed8)
            QCOMPARE(decoded.colorTable(), image.colorTable());
    }

    void pcxPlanesFromOtherFormats()
    {
        // What isn't a sprite format is written as the nearest one.
        QImage rgb888(2, 2, QImage::Format_RGB888);
        rgb888.fill(qRgb(10, 20, 30));
        const QByteArray pcx = encodePcx(rgb888);
        QCOMPARE(int(pcx.at(65)), 3);
        const QImage decoded = decodePcx(pcx);
        QCOMPARE(decoded.format(), QImage::Format_RGB32);
        QCOMPARE(decoded.pixel(1, 1), qRgb(10, 20, 30));
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

    void pcxDropsBytesBeyondTheWidth()
    {
        // Width 3, four bytes a line as other tools write them.
        QByteArray pcx = encodePcx(indexed(3, 2, [](int, int) { return 0u; }));
        pcx[66] = 4;
        pcx = pcx.left(128) + QByteArray::fromHex("01020309" "04050609");
        QCOMPARE(imagePixels(decodePcx(pcx)).toHex(), QByteArray("0102030004050600"));
    }

    void pcxRejectsHeaders_data()
    {
        QTest::addColumn<int>("offset");
        QTest::addColumn<int>("value");
        QTest::newRow("manufacturer") << 0 << 11;
        QTest::newRow("version") << 1 << 3;
        QTest::newRow("16 bits per pixel") << 3 << 16;
        QTest::newRow("two planes") << 65 << 2;
        QTest::newRow("24 bits in one plane") << 3 << 24;
        QTest::newRow("xmax below xmin") << 4 << 9;
        QTest::newRow("bytes per line below the width") << 66 << 2;
        // 64k x 64k from ten bytes of data.
        QTest::newRow("huge size") << -1 << 0;
    }

    void pcxRejectsHeaders()
    {
        QFETCH(int, offset);
        QFETCH(int, value);
        QByteArray pcx = encodePcx(indexed(3, 3, [](int x, int) { return uint(x); }));
        QVERIFY(!decodePcx(pcx).isNull());
        if (offset >= 0) {
            pcx[offset] = char(value);
        } else {
            pcx = pcx.left(128) + QByteArray(10, '\x05');
            qToLittleEndian<quint16>(0xFFFF, pcx.data() + 8);
            qToLittleEndian<quint16>(0xFFFF, pcx.data() + 10);
            qToLittleEndian<quint16>(0xFFFF, pcx.data() + 66);
        }
        QVERIFY(decodePcx(pcx).isNull());
    }

    // PNG

    void pngOfAnIndexedImageHoldsNoColours()
    {
        const QImage image = indexed(7, 5, [](int x, int y) { return uint(x * 30 + y); });
        const QByteArray png = encodePng(image);
        const QByteArray palette = pngChunk(png, "PLTE");
        QCOMPARE(palette, QByteArray(768, '\0'));
        const QImage decoded = decodePng(png);
        // The indexes are what the file keeps.
        QCOMPARE(decoded.format(), QImage::Format_Indexed8);
        QVERIFY(samePixels(decoded, image));
        QCOMPARE(decoded.colorTable(), QList<QRgb>(256, 0xFF000000u));
        // The caller's image keeps its colours.
        QCOMPARE(image.color(1), qRgb(1, 254, 7));
    }

    void pngRoundTrips_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::newRow("RGB") << makeImage(9, 4, QImage::Format_RGB32, [](int x, int y) { return qRgb(x, y, 99); });
        QTest::newRow("ARGB") << makeImage(3, 8, QImage::Format_ARGB32,
                                           [](int x, int y) { return qRgba(x * 50, 0, y, y * 30); });
    }

    void pngRoundTrips()
    {
        QFETCH(QImage, image);
        QVERIFY(samePixels(decodePng(encodePng(image)), image));
    }

    void pngRefusesSizesItsDataCantFill()
    {
        QByteArray png = encodePng(indexed(2, 2, [](int, int) { return 1u; }));
        QVERIFY(!decodePng(png).isNull());
        // IHDR starts at 8 + 8: width and height, then its CRC after 13 bytes.
        qToBigEndian<quint32>(60000, png.data() + 16);
        qToBigEndian<quint32>(60000, png.data() + 20);
        qToBigEndian<quint32>(crc32(png.mid(12, 17)), png.data() + 29);
        QVERIFY(decodePng(png).isNull());
        QVERIFY(decodePng(QByteArray("not a png")).isNull());
        QVERIFY(encodePng(QImage()).isEmpty());
    }

    // Filters

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
        QTest::newRow("PCX") << int(QStreamCacheFilter::PCX);
        QTest::newRow("RLE8") << int(QStreamCacheFilter::RLE8);
        QTest::newRow("LZ5") << int(QStreamCacheFilter::LZ5);
        QTest::newRow("PNG") << int(QStreamCacheFilter::PNG);
    }

    void corpusSprites()
    {
        QFETCH(int, filter);
        if (TestSupport::corpusDir().isEmpty())
            QSKIP("The corpus isn't there");
        const QList<CorpusSprites::Sprite> sprites = CorpusSprites::withFilter(TestSupport::corpusDir(), filter);
        QVERIFY(sprites.size() > 10);
        for (const CorpusSprites::Sprite &sprite : sprites) {
            const QString where = QStringLiteral("%1 #%2").arg(sprite.file).arg(sprite.number);
            QImage image;
            switch (filter) {
            case QStreamCacheFilter::PCX:
                image = decodePcx(sprite.data);
                QVERIFY2(!image.isNull(), qPrintable(where));
                QVERIFY2(samePixels(decodePcx(encodePcx(image)), image), qPrintable(where));
                continue;
            case QStreamCacheFilter::PNG:
                image = decodePng(sprite.data);
                QVERIFY2(!image.isNull(), qPrintable(where));
                QCOMPARE(image.width(), int(sprite.info.width));
                QCOMPARE(image.height(), int(sprite.info.height));
                QVERIFY2(samePixels(decodePng(encodePng(image)), image), qPrintable(where));
                continue;
            case QStreamCacheFilter::RLE8:
                image = indexedPixels(decodeRle8(sprite.data, sprite.info), sprite.info.width, sprite.info.height);
                QVERIFY2(samePixels(indexedPixels(decodeRle8(encodeRle8(image), sprite.info), image.width(), image.height()),
                                    image),
                         qPrintable(where));
                break;
            case QStreamCacheFilter::LZ5:
                image = indexedPixels(decodeLz5(sprite.data, sprite.info), sprite.info.width, sprite.info.height);
                QVERIFY2(samePixels(indexedPixels(decodeLz5(encodeLz5(image, true), sprite.info), image.width(), image.height()),
                                    image),
                         qPrintable(where));
                break;
            }
            QVERIFY2(!image.isNull(), qPrintable(where));
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
        if (!file.isEmpty())
            sprites.removeIf([&](const CorpusSprites::Sprite &sprite) { return !sprite.file.endsWith(file); });
        QVERIFY(!sprites.isEmpty());
        for (const CorpusSprites::Sprite &sprite : std::as_const(sprites)) {
            const QString where = QStringLiteral("%1 #%2").arg(sprite.file).arg(sprite.number);
            if (filter == QStreamCacheFilter::RLE8) {
                const QImage image = imageFromPixels(decodeRle8(sprite.data, sprite.info), sprite.info);
                QVERIFY2(encodeRle8(image) == sprite.data, qPrintable(where));
            } else {
                const QImage image = imageFromPixels(decodeLz5(sprite.data, sprite.info), sprite.info);
                QVERIFY2(encodeLz5(image, true) == sprite.data, qPrintable(where));
            }
        }
    }

    // Hostile input

    void hostileInput_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<QByteArray>("valid");
        QTest::addColumn<QImageInfo>("info");
        const QImage image = indexed(23, 11, [](int x, int y) { return uint((x / 3 + y * y) % 29); });
        QTest::newRow("rle8") << QStringLiteral("rle8") << encodeRle8(image) << infoOf(image);
        QByteArray linear;
        for (int y = 0; y < image.height(); ++y)
            linear.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
        QTest::newRow("rle5") << QStringLiteral("rle5") << Rle5Encoder::encode(linear) << infoOf(image);
        QTest::newRow("lz5") << QStringLiteral("lz5") << encodeLz5(image, true) << infoOf(image);
        QTest::newRow("pcx") << QStringLiteral("pcx") << encodePcx(image) << infoOf(image);
        QTest::newRow("png") << QStringLiteral("png") << encodePng(image) << infoOf(image);
    }

    void hostileInput()
    {
        QFETCH(QString, codec);
        QFETCH(QByteArray, valid);
        QFETCH(QImageInfo, info);
        const Decoder decode = decoderOf(codec, info);
        // Cut at every length.
        for (qsizetype length = 0; length < valid.size(); ++length)
            QVERIFY2(decode(valid.left(length)), qPrintable(QStringLiteral("cut at %1").arg(length)));
        // Bytes changed at random: runs past the end, copies from before the
        // start, headers that lie.
        QRandomGenerator random(11);
        for (int round = 0; round < 2000; ++round) {
            QByteArray bad = valid;
            const int changes = 1 + int(random.bounded(4));
            for (int i = 0; i < changes; ++i)
                bad[random.bounded(int(bad.size()))] = char(random.bounded(256));
            QVERIFY2(decode(bad), qPrintable(QStringLiteral("round %1").arg(round)));
        }
        // Decoded into an image smaller and larger than the data's own.
        const QImageInfo smaller = infoOf(info.width / 2, info.height / 2);
        const QImageInfo larger = infoOf(info.width * 3, info.height * 2);
        QVERIFY(decoderOf(codec, smaller)(valid));
        QVERIFY(decoderOf(codec, larger)(valid));
    }

    void decodersRefuseSizesTheirDataCantFill_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::newRow("rle8") << QStringLiteral("rle8");
        QTest::newRow("rle5") << QStringLiteral("rle5");
        QTest::newRow("lz5") << QStringLiteral("lz5");
    }

    void decodersRefuseSizesTheirDataCantFill()
    {
        QFETCH(QString, codec);
        const PixelDecoder decode = pixelDecoder(codec);
        const QByteArray data(10, '\x01');
        QVERIFY(decode(data, infoOf(65535, 65535, QImageInfo::ARGB)).isEmpty());
        QVERIFY(decode(QByteArray(), infoOf(4, 4)).isEmpty());
        QVERIFY(!decode(data, infoOf(8, 4)).isEmpty());
    }
};

QTEST_MAIN(tst_ImageCodecs)
#include "tst_imagecodecs.moc"
