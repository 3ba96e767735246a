#include "core/base/quserprompt.h"
#include "core/sprites/imagecodecs.h"
#include "core/sprites/qsprites.h"
#include "spritesets.h"
#include "testsupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QtTest>

#include <functional>

using namespace SpriteSets;

using Operation = std::function<void(QSprites &)>;
Q_DECLARE_METATYPE(Operation)

namespace {

/** An indexed image with a frame of index 0 around a block of content. */
QImage framed(int width, int height, QRect content, int seed)
{
    QImage image(width, height, QImage::Format_Indexed8);
    image.setColorTable(colors(seed).toColorVector());
    image.fill(0);
    for (int y = content.top(); y <= content.bottom(); ++y) {
        for (int x = content.left(); x <= content.right(); ++x)
            image.scanLine(y)[x] = uchar(1 + (x + y + seed) % 200);
    }
    return image;
}

/** The sprites' names in the list's order: "group,index group,index ...". */
QString names(const QSprites &set)
{
    QStringList list;
    for (int i = 0; i < set.count(); ++i)
        list.append(QStringLiteral("%1,%2").arg(set.at(i)->itemGroup()).arg(set.at(i)->itemIndex()));
    return list.join(QLatin1Char(' '));
}

} // namespace

class tst_SpriteCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyChangeUndoesAndRedoesExactly_data()
    {
        QTest::addColumn<Operation>("prepare");
        QTest::addColumn<Operation>("operation");
        // A row's operation, and what sets it up before the stack is cleared.
        const auto row = [](const char *name, Operation op, Operation prepare = {}) {
            QTest::newRow(name) << prepare << op;
        };
        row("add", [](QSprites &s) { s.add(); });
        row("insert", [](QSprites &s) { s.insert(1); });
        row("remove a sharer", [](QSprites &s) { s.remove(0); });
        row("remove the other sharer", [](QSprites &s) { s.remove(3); });
        row("remove a unique image", [](QSprites &s) { s.remove(1); });
        row("remove an empty sprite", [](QSprites &s) { s.remove(4); });
        // Two handles of equal pixels: the one removed comes back as its own.
        row("remove an image equal to another", [](QSprites &s) { s.remove(1); },
            [](QSprites &s) { s.at(1)->setImage(indexedImage(8, 6, 1), NoShare); });
        row("move", [](QSprites &s) { s.move(0, 4); });
        row("group", [](QSprites &s) { s.at(1)->setItemGroup(77); });
        row("axis", [](QSprites &s) { s.at(1)->setOffsetY(-9); });
        row("flag", [](QSprites &s) { s.at(0)->setFlag(DecompressOnLoad, true); });
        row("palette", [](QSprites &s) { s.at(0)->setPalette(s.paletteAt(2)); });
        row("all info", [](QSprites &s) { s.at(2)->setInfo(1, 2, 3, 4, 1, s.paletteAt(1)); });
        row("image, share", [](QSprites &s) { s.at(0)->setImage(indexedImage(3, 3, 8), Share); });
        row("image, no share", [](QSprites &s) { s.at(0)->setImage(indexedImage(3, 3, 8), NoShare); });
        row("image, ask", [](QSprites &s) { s.at(3)->setImage(indexedImage(3, 3, 8), AskToShare); });
        row("image joins an equal one", [](QSprites &s) { s.at(1)->setImage(indexedImage(8, 6, 1), Share); });
        row("image leaves a sharer for an equal one", [](QSprites &s) {
            s.at(0)->setImage(indexedImage(5, 7, 2), Share);
        });
        row("image, null", [](QSprites &s) { s.at(3)->setImage(QImage(), Share); });
        row("image of an empty sprite", [](QSprites &s) { s.at(4)->setImage(rgbImage(2, 9, 4), Share); });
        row("image with its own palette", [](QSprites &s) {
            s.at(1)->setImage(indexedImage(4, 4, 30), Share, false, OwnPalette);
        });
        row("image adapted", [](QSprites &s) { s.at(2)->setImage(rgbImage(6, 2, 1), Share, false, AdaptImage, {1, 2}); });
        row("duplicate", [](QSprites &s) { s.at(0)->duplicate(); });
        row("crop a shared image", [](QSprites &s) { s.at(3)->crop(); },
            [](QSprites &s) { s.at(0)->setImage(framed(10, 8, QRect(2, 1, 5, 4), 1), Share); });
        row("crop everything", [](QSprites &s) { s.cropAll(true, 0, true, 0, 0); });
        row("split", [](QSprites &s) { s.at(2)->splitRGB(); });
        row("organize, 2.01", [](QSprites &s) { s.autoOrganize(); });
        row("organize, 1.01", [](QSprites &s) { s.autoOrganize(); },
            [](QSprites &s) { s.setVersion(QSprites::Version_101); });
        row("remove a group", [](QSprites &s) { s.removeGroup(5, true, 0, 0); });
        row("remove part of a group", [](QSprites &s) { s.removeGroup(5, false, 1, 2); });
        row("rename a group", [](QSprites &s) { s.renameGroup(5, 6, false, 0, 1); });
        row("add a palette", [](QSprites &s) { s.addPalette(colors(9), false, 4, -1); });
        row("add a palette of shared colours", [](QSprites &s) { s.addPalette(colors(2), false, 4, -1); });
        row("insert a palette", [](QSprites &s) { s.insertPalette(1, colors(9), false, 4, 4); });
        row("remove a palette in use", [](QSprites &s) { s.removePalette(0); });
        row("remove a palette sharing colours", [](QSprites &s) { s.removePalette(1); });
        row("move a palette", [](QSprites &s) { s.movePalette(0, 2); });
        row("palette info", [](QSprites &s) { s.paletteAt(2)->setInfo(8, 8, 32); });
        row("colours, share", [](QSprites &s) { s.paletteAt(1)->setColors(colors(6), Share); });
        row("colours, no share", [](QSprites &s) { s.paletteAt(1)->setColors(colors(6), NoShare); });
        row("colours join others", [](QSprites &s) { s.paletteAt(0)->setColors(colors(2), Share); });
        row("colours of an unshared palette", [](QSprites &s) { s.paletteAt(0)->setColors(colors(6), Share); });
        row("remove duplicate palettes", [](QSprites &s) { s.removeDuplicatePalettes(); });
        row("remove unused palettes", [](QSprites &s) { s.removeUnusedPalettes(); },
            [](QSprites &s) {
                s.addPalette(colors(11), false, 2, 0);
                s.addPalette(colors(12), false, 1, 3);
            });
        row("clear palettes", [](QSprites &s) { s.clearPalettes(); });
        row("organize palettes", [](QSprites &s) { s.palettes()->autoOrganize(); },
            [](QSprites &s) { s.palettes()->move(2, 0); });
        row("paste", [](QSprites &s) {
            QVERIFY(s.copy(1));
            s.paste();
        });
    }

    void everyChangeUndoesAndRedoesExactly()
    {
        QFETCH(Operation, prepare);
        QFETCH(Operation, operation);
        QSprites set(nullptr, 1, true, -1);
        fill(set);
        if (prepare) {
            prepare(set);
            set.undoStack()->clear();
            set.setModified(false);
        }
        QRecordingUserPrompt prompt;
        connect(&set, &QSprites::dataSharing, this, [](QList<uint> &items) { items = {0}; });
        const QString before = set.dump();
        operation(set);
        const QString after = set.dump();
        QVERIFY(after != before);
        QVERIFY(set.isModified());
        // One step takes the whole operation back, exactly, and brings it again.
        QCOMPARE(set.undoStack()->count(), 1);
        set.undoStack()->undo();
        QCOMPARE(set.dump(), before);
        set.undoStack()->redo();
        QCOMPARE(set.dump(), after);
        set.undoStack()->undo();
        QCOMPARE(set.dump(), before);
    }

    void undoComesBackToTheSavedState()
    {
        QSprites set(nullptr, 0, false, -1);
        fill(set);
        set.at(0)->setItemGroup(1);
        set.at(0)->setItemGroup(2);
        set.setModified(false);
        set.at(0)->setItemGroup(3);
        QVERIFY(set.isModified());
        set.undoStack()->undo();
        QVERIFY(!set.isModified());
        set.undoStack()->undo();
        QVERIFY(set.isModified());
        set.undoStack()->redo();
        QVERIFY(!set.isModified());
        // A change made with undo off can't be taken back: the stack is dropped.
        set.setUndoEnabled(false);
        set.at(1)->setItemGroup(9);
        set.setUndoEnabled(true);
        QCOMPARE(set.undoStack()->count(), 0);
        QVERIFY(set.isModified());
    }

    void cropFindsTheContent_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QRect>("box");
        QImage blank(6, 6, QImage::Format_Indexed8);
        blank.fill(0);
        QTest::newRow("nothing but index 0") << blank << QRect();
        QTest::newRow("content everywhere") << indexedImage(4, 3, 1) << QRect();
        QTest::newRow("one pixel") << framed(6, 6, QRect(5, 0, 1, 1), 2) << QRect(5, 0, 1, 1);
        QImage rgb(7, 5, QImage::Format_RGB32);
        rgb.fill(qRgb(9, 9, 9));
        rgb.setPixel(1, 2, qRgb(9, 9, 10));
        rgb.setPixel(3, 4, qRgb(0, 0, 0));
        QTest::newRow("true colour, against the top left") << rgb << QRect(1, 2, 3, 3);
    }

    void cropFindsTheContent()
    {
        QFETCH(QImage, image);
        QFETCH(QRect, box);
        QSprites set(nullptr, 0, false, -1);
        QSprite *sprite = set.add();
        sprite->setImage(image, Share);
        const QImage before = sprite->image(NoColorTable);
        QCOMPARE(sprite->crop(), !box.isNull());
        const QImage after = sprite->image(NoColorTable);
        if (box.isNull()) {
            QCOMPARE(imagePixels(after), imagePixels(before));
        } else {
            QCOMPARE(after.size(), box.size());
            QCOMPARE(imagePixels(after), imagePixels(before.copy(box)));
            QCOMPARE(QPoint(sprite->offsetX(), sprite->offsetY()), -box.topLeft());
        }
    }

    void cropAllCropsASharedImageOnce()
    {
        QSprites set(nullptr, 0, false, -1);
        fill(set);
        set.at(0)->setImage(framed(10, 8, QRect(2, 1, 5, 4), 1), Share);
        set.at(1)->setImage(framed(9, 9, QRect(4, 4, 2, 2), 2), Share);
        QList<uint> positions;
        connect(&set, &QSprites::progress, this, [&positions](uint pos, uint max, bool &) {
            positions.append(pos);
            QCOMPARE(max, 5u);
        });
        const int steps = set.undoStack()->count();
        set.cropAll(true, 0, true, 0, 0);
        QCOMPARE(set.undoStack()->count(), steps + 1);
        QCOMPARE(positions, QList<uint>({0, 1, 2, 3, 4}));
        // Every sharer keeps its image where it was, each by its own axis.
        QCOMPARE(set.at(3)->data(), set.at(0)->data());
        QCOMPARE(set.at(0)->imageProperties().width, quint16(5));
        QCOMPARE(QPoint(set.at(0)->offsetX(), set.at(0)->offsetY()), QPoint(8, 19));
        QCOMPARE(QPoint(set.at(3)->offsetX(), set.at(3)->offsetY()), QPoint(-2, -1));
        QCOMPARE(QPoint(set.at(1)->offsetX(), set.at(1)->offsetY()), QPoint(-1, 0));
        QCOMPARE(set.at(0)->image(NoColorTable).pixelIndex(0, 0), 1 + (2 + 1 + 1) % 200);
        // Nothing left to cut: no crop and no step.
        QVERIFY(!set.at(0)->crop());
        QCOMPARE(set.undoStack()->count(), steps + 1);

        // A stop ends the loop; the step is still one, and whole.
        set.undoStack()->undo();
        disconnect(&set, &QSprites::progress, this, nullptr);
        connect(&set, &QSprites::progress, this, [](uint pos, uint, bool &allow) { allow = pos < 1; });
        set.cropAll(true, 0, true, 0, 0);
        QCOMPARE(set.undoStack()->count(), steps + 1);
        QCOMPARE(set.at(0)->imageProperties().width, quint16(5));
        QCOMPARE(set.at(1)->imageProperties().width, quint16(9));
    }

    void splitGivesThreeChannelsAndACollision()
    {
        QSprites set(nullptr, 0, false, -1);
        QSprite *sprite = set.add();
        sprite->setInfo(10, 5, 3, 4, DecompressOnLoad, nullptr);
        QImage image(2, 1, QImage::Format_RGB32);
        image.setPixel(0, 0, qRgb(10, 20, 30));
        image.setPixel(1, 0, qRgb(200, 100, 50));
        sprite->setImage(image, Share);
        sprite->splitRGB();
        QCOMPARE(names(set), QStringLiteral("10,5 10,6 10,6"));
        for (int channel = 0; channel < 3; ++channel) {
            const QSprite *split = set.at(channel);
            QCOMPARE(QPoint(split->offsetX(), split->offsetY()), QPoint(3, 4));
            QCOMPARE(split->flags(), quint16(DecompressOnLoad));
            const QImage result = split->image(Default);
            QCOMPARE(result.format(), QImage::Format_Indexed8);
            QCOMPARE(result.pixelIndex(0, 0), QList<int>({10, 20, 30}).at(channel));
            QCOMPARE(result.pixelIndex(1, 0), QList<int>({200, 100, 50}).at(channel));
            // A gradient of the channel, opaque from entry 0.
            QCOMPARE(result.color(0), qRgba(0, 0, 0, 255));
            QCOMPARE(result.color(200), channel == 0 ? qRgb(200, 0, 0) : channel == 1 ? qRgb(0, 200, 0) : qRgb(0, 0, 200));
            QCOMPARE(split->palette()->itemGroup(), 10);
        }
        set.check();
        QVERIFY(messageTexts(set).contains(QStringLiteral("1 sprite:2 The group 10, index 6 is already in use by sprite #2!")));
    }

    void autoOrganizeOrders_data()
    {
        QTest::addColumn<quint32>("version");
        QTest::addColumn<QString>("expected");
        // Sprites: 20,1 (pal 2,1); 9000,1 (pal 1,1); 3,0 (none); 9000,0 (none);
        // 4,0 (pal 1,1); 1,0 (pal 2,1); 2,0 (pal 3,1).
        QTest::newRow("2.01: by group and index") << quint32(QSprites::Version_201)
                                                  << QStringLiteral("1,0 2,0 3,0 4,0 20,1 9000,0 9000,1");
        QTest::newRow("1.01: 9000, the character's palette, each palette together, none last")
            << quint32(QSprites::Version_101) << QStringLiteral("9000,0 9000,1 4,0 1,0 20,1 2,0 3,0");
    }

    void autoOrganizeOrders()
    {
        QFETCH(quint32, version);
        QFETCH(QString, expected);
        QSprites set(nullptr, 0, false, -1);
        set.setVersion(version);
        QSpritePalette *character = set.addPalette(colors(1), false, 1, 1);
        QSpritePalette *first = set.addPalette(colors(2), false, 2, 1);
        QSpritePalette *second = set.addPalette(colors(3), false, 3, 1);
        const struct
        {
            int group, index;
            QSpritePalette *palette;
        } sprites[] = {{20, 1, first}, {9000, 1, character}, {3, 0, nullptr}, {9000, 0, nullptr},
                       {4, 0, character}, {1, 0, first}, {2, 0, second}};
        for (const auto &s : sprites)
            set.add()->setInfo(s.group, s.index, 0, 0, 0, s.palette);
        const int steps = set.undoStack()->count();
        set.autoOrganize();
        QCOMPARE(names(set), expected);
        QCOMPARE(set.undoStack()->count(), steps + 1);
    }

    void paletteRemovals()
    {
        QSprites set(nullptr, 0, false, -1);
        fill(set);
        set.addPalette(colors(1), false, 4, 4);
        set.addPalette(colors(20), false, 1, 9);
        set.addPalette(colors(21), false, 6, 6);
        // Palettes: 0,0 (colours 1); 1,1 and 1,2 (one array of colours 2);
        // 4,4 (colours 1 again); 1,9; 6,6. Sprites use 0,0 and 1,1.
        set.removeDuplicatePalettes();
        QCOMPARE(set.paletteCount(), 4);
        QCOMPARE(set.paletteAt(1)->itemIndex(), 1);
        QCOMPARE(set.paletteAt(2)->itemIndex(), 9);
        set.removeUnusedPalettes();
        // Group 1 stays even when no sprite uses it.
        QCOMPARE(set.paletteCount(), 3);
        QCOMPARE(set.paletteAt(2)->itemGroup(), 1);
        QCOMPARE(set.undoStack()->count(), 3 + 2);
        // Nothing to remove: no step at all.
        set.removeDuplicatePalettes();
        set.removeUnusedPalettes();
        QCOMPARE(set.undoStack()->count(), 3 + 2);
    }

    void pasteOfAForeignImage()
    {
        QSprites set(nullptr, 0, false, -1);
        fill(set);
        set.setCurrentIndex(2);
        QGuiApplication::clipboard()->setImage(indexedImage(3, 2, 40));
        QVERIFY(set.paste());
        const QSprite *pasted = set.at(2);
        QCOMPARE(QList<int>({pasted->itemGroup(), pasted->itemIndex(), pasted->offsetX(), pasted->offsetY(), pasted->flags()}),
                 QList<int>({0, 0, 0, 0, 0}));
        QCOMPARE(pasted->image(Default).colorTable().at(9), colors(40).rgba(9));
        QCOMPARE(set.currentIndex(), 3);

        // A copy carries the sprite's numbers with it.
        QVERIFY(set.copy(1));
        QVERIFY(set.paste());
        const QSprite *copy = set.at(3);
        QCOMPARE(QList<int>({copy->itemGroup(), copy->itemIndex(), copy->offsetX(), copy->offsetY(), copy->flags()}),
                 QList<int>({5, 0, 3, 4, DecompressOnLoad}));
        QCOMPARE(copy->data(), set.at(1)->data());
        QCOMPARE(copy->palette(), set.at(1)->palette());

        QVERIFY(!set.copy(6));
        QGuiApplication::clipboard()->clear();
        const int steps = set.undoStack()->count();
        QVERIFY(!set.paste());
        QCOMPARE(set.undoStack()->count(), steps);
    }

    void axisBoundsAndTheAlignedImage()
    {
        QSprites set(nullptr, 0, false, -1);
        fill(set);
        QPoint maxAxis;
        QPoint maxRest;
        const auto bounds = [&](bool all, int group, int start, int end) {
            set.axisBounds(all, group, start, end, maxAxis, maxRest);
            return QList<QPoint>({maxAxis, maxRest});
        };
        // 5,0: 5x7 at 3,4; 5,2: 4x4 at -1,-2; 5,1: 8x6 at 0,0.
        QCOMPARE(bounds(false, 5, 0, 65535), QList<QPoint>({QPoint(3, 4), QPoint(8, 6)}));
        QCOMPARE(bounds(true, 0, 0, 0), QList<QPoint>({QPoint(10, 20), QPoint(8, 6)}));
        QCOMPARE(bounds(false, 5, 1, 1), QList<QPoint>({QPoint(0, 0), QPoint(8, 6)}));

        const QSprite *sprite = set.at(1);
        const QImage canvas = sprite->alignedImage(QPoint(5, 6), QPoint(4, 5));
        QCOMPARE(canvas.size(), QSize(9, 11));
        QCOMPARE(canvas.format(), QImage::Format_Indexed8);
        QCOMPARE(canvas.colorTable(), sprite->image(Default).colorTable());
        // The axis (3, 4) lands on (5, 6): the image starts at (2, 2).
        const QImage image = sprite->image();
        QCOMPARE(QList<int>(
                     {canvas.pixelIndex(1, 1), canvas.pixelIndex(2, 2), canvas.pixelIndex(6, 8), canvas.pixelIndex(7, 9)}),
                 QList<int>({0, image.pixelIndex(0, 0), image.pixelIndex(4, 6), 0}));

        QTemporaryDir dir;
        for (const QString &name : {QStringLiteral("a.pcx"), QStringLiteral("a.png"), QStringLiteral("a.bmp")}) {
            const QString path = dir.filePath(name);
            QVERIFY(sprite->saveAligned(path, QPoint(5, 6), QPoint(4, 5)));
            const QImage written = name.endsWith(QLatin1String("pcx")) ? decodePcx(TestSupport::readFile(path)) : QImage(path);
            QCOMPARE(written.size(), canvas.size());
            QCOMPARE(written.pixel(4, 5), canvas.pixel(4, 5));
        }
        QVERIFY(!set.at(4)->saveAligned(dir.filePath(QStringLiteral("empty.png")), maxAxis, maxRest));
    }
};

QTEST_MAIN(tst_SpriteCommands)
#include "tst_spritecommands.moc"
