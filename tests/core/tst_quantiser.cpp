#include "core/sprites/qrgbpalette.h"
#include "core/sprites/quantiser.h"

#include <QRandomGenerator>
#include <QtTest>

namespace {

QImage imageOf(const QList<QRgb> &pixels)
{
    QImage image(int(pixels.size()), 1, QImage::Format_RGB32);
    for (int x = 0; x < pixels.size(); ++x)
        image.setPixel(x, 0, pixels.at(x));
    return image;
}

} // namespace

class tst_Quantiser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leaves_data()
    {
        QTest::addColumn<int>("maxColors");
        QTest::addColumn<int>("depth");
        QTest::addColumn<QList<QRgb>>("pixels");
        QTest::addColumn<QList<QRgb>>("expected");
        // Out of order, to show that the output follows the tree, not the pixels.
        QList<QRgb> ramp;
        QList<QRgb> sorted;
        for (int i = 0; i < 256; ++i) {
            ramp.append(qRgb((i * 97) % 256, 0, 0));
            sorted.append(qRgb(i, 0, 0));
        }
        QTest::newRow("a red ramp needs no reduction") << 256 << 8 << ramp << sorted;
        // Three colours in two leaves: the last two made share a parent one
        // level up, and it is the newest node of the deepest level. A leaf
        // is the average of its pixels, rounded down; the rest stays 0.
        QTest::newRow("reduction folds the newest deepest node")
            << 2 << 8 << QList<QRgb>({qRgb(0, 0, 0), qRgb(255, 255, 254), qRgb(255, 255, 255), qRgb(255, 255, 255)})
            << QList<QRgb>({qRgb(0, 0, 0), qRgb(255, 255, 254), qRgba(0, 0, 0, 0)});
        // Both colours differ at the top bit: only the root can hold them in
        // one, and later pixels end there.
        QTest::newRow("fewer colours than the root's children")
            << 1 << 8 << QList<QRgb>({qRgb(0, 0, 0), qRgb(200, 100, 50), qRgb(100, 50, 25)})
            << QList<QRgb>({qRgb(100, 50, 25)});
        QTest::newRow("a shallow tree groups by the top bits")
            << 256 << 3 << QList<QRgb>({qRgb(0, 0, 0), qRgb(31, 31, 31), qRgb(32, 0, 0)})
            << QList<QRgb>({qRgb(15, 15, 15), qRgb(32, 0, 0)});
    }

    void leaves()
    {
        QFETCH(int, maxColors);
        QFETCH(int, depth);
        QFETCH(QList<QRgb>, pixels);
        QFETCH(QList<QRgb>, expected);
        OctreeQuantizer quantizer(maxColors, depth);
        quantizer.addImage(imageOf(pixels));
        // The leaves come first, opaque; the rest of the array is 0.
        const auto opaque = [](QRgb c) { return qAlpha(c) == 255; };
        QCOMPARE(quantizer.leafCount(), int(std::count_if(expected.cbegin(), expected.cend(), opaque)));
        QCOMPARE(quantizer.palette().toColorVector().mid(0, expected.size()), expected);
    }

    void manyColoursStayWithinTheLimit_data()
    {
        QTest::addColumn<int>("maxColors");
        QTest::addColumn<int>("depth");
        QTest::newRow("256, 8 levels") << 256 << 8;
        QTest::newRow("16, 8 levels") << 16 << 8;
        QTest::newRow("256, 3 levels") << 256 << 3;
    }

    void manyColoursStayWithinTheLimit()
    {
        QFETCH(int, maxColors);
        QFETCH(int, depth);
        QImage image(64, 64, QImage::Format_ARGB32);
        QRandomGenerator random(7);
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x)
                image.setPixel(x, y, random.generate());
        }
        QRGBPal colors;
        QRGBPalette palette(&colors);
        palette.quantize(image, maxColors, depth);
        // Every colour made is opaque; the rest of the array stays 0.
        int made = 0;
        while (made < 256 && colors.entries[made].alpha == 255)
            ++made;
        QVERIFY(made > 0 && made <= maxColors);
        for (int i = made; i < 256; ++i)
            QCOMPARE(colors.rgba(i), 0u);
    }

    void adaptingKeepsAlphaOnlyWhereTheImageHasIt()
    {
        QRGBPal colors;
        colors.entries[0] = {0, 0, 0, 0};
        colors.entries[1] = {0, 0, 0, 255};
        colors.entries[2] = {250, 250, 250, 255};
        // Opaque black: without alpha both entries are opaque black, and the first wins.
        const QImage rgb = imageOf({qRgb(0, 0, 0), qRgb(240, 255, 255)});
        QImage adapted = QRGBPalette::adaptImage(rgb, colors);
        QCOMPARE(adapted.format(), QImage::Format_Indexed8);
        QCOMPARE(adapted.pixelIndex(0, 0), 0);
        QCOMPARE(adapted.pixelIndex(1, 0), 2);
        QCOMPARE(adapted.color(0), qRgb(0, 0, 0));
        // An ARGB image sees the palette's transparency.
        adapted = QRGBPalette::adaptImage(rgb.convertToFormat(QImage::Format_ARGB32), colors);
        QCOMPARE(adapted.pixelIndex(0, 0), 1);
        QCOMPARE(adapted.color(0), qRgba(0, 0, 0, 0));
        // So does an indexed image with transparency in its table, and not one without.
        QImage indexed(1, 1, QImage::Format_Indexed8);
        indexed.setColorTable({qRgba(0, 0, 0, 255), qRgba(9, 9, 9, 0)});
        indexed.fill(0);
        QCOMPARE(QRGBPalette::adaptImage(indexed, colors).pixelIndex(0, 0), 1);
        indexed.setColorTable({qRgba(0, 0, 0, 255)});
        QCOMPARE(QRGBPalette::adaptImage(indexed, colors).pixelIndex(0, 0), 0);
    }

    void nearestColour_data()
    {
        QTest::addColumn<QRgb>("color");
        QTest::addColumn<int>("expected");
        QTest::newRow("exact") << qRgb(10, 20, 30) << 3;
        QTest::newRow("closest") << qRgb(12, 21, 29) << 3;
        QTest::newRow("equal colours, alpha decides") << qRgba(200, 0, 0, 10) << 5;
        QTest::newRow("a full tie, the first") << qRgb(0, 0, 0) << 0;
    }

    void nearestColour()
    {
        QFETCH(QRgb, color);
        QFETCH(int, expected);
        QRGBPal colors;
        colors.entries[3] = {10, 20, 30, 255};
        colors.entries[4] = {200, 0, 0, 255};
        colors.entries[5] = {200, 0, 0, 0};
        QRGBPalette palette(&colors);
        QCOMPARE(palette.nearestColor(color), expected);
    }
};

QTEST_MAIN(tst_Quantiser)
#include "tst_quantiser.moc"
