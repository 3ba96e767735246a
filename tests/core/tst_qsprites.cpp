#include "core/base/quserprompt.h"
#include "core/sprites/imagecodecs.h"
#include "core/sprites/qsprites.h"
#include "core/sprites/spritecommands.h"
#include "spritesets.h"

#include <QSignalSpy>
#include <QtTest>

using namespace SpriteSets;

namespace {

/** The required sprites of a character, so that the check has nothing to say of them. */
void addRequired(QSprites &set)
{
    for (const int group : {5000, 5001, 5002, 5010, 5011, 5012, 5020, 5030, 5031, 5032, 5040, 5041, 5042, 5060, 5061,
                            5062, 5070, 5071, 5072}) {
        for (int index = 0; index <= 50; index += 10)
            set.add()->setInfo(group, index, 0, 0, 0, nullptr);
    }
}

/** The text of the only call of the prompt, "title: text", or how many calls there were. */
QString onlyCall(const QRecordingUserPrompt &prompt)
{
    if (prompt.calls.size() != 1)
        return QString::number(prompt.calls.size());
    return prompt.calls.at(0).title + QStringLiteral(": ") + prompt.calls.at(0).text;
}

} // namespace

class tst_QSprites : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theListAndItsModel()
    {
        QSprites set(nullptr, 0, false, -1);
        QSignalSpy inserted(&set, &QAbstractItemModel::rowsInserted);
        QSignalSpy moved(&set, &QAbstractItemModel::rowsMoved);
        QSprite *first = set.add();
        QSprite *last = set.insert(99);
        QSprite *middle = set.insert(1);
        QCOMPARE(inserted.size(), 3);
        QCOMPARE(QList<QSprite *>({set.at(-1), set.at(0), set.at(1), set.at(2), set.at(3)}),
                 QList<QSprite *>({nullptr, first, middle, last, nullptr}));
        middle->setInfo(9000, 1, 0, 0, 0, nullptr);
        QCOMPARE(QList<int>({set.find(0, 9000, 1), set.find(2, 9000, 1)}), QList<int>({1, -1}));
        QCOMPARE(set.data(set.index(1), Qt::ToolTipRole).toString(), QStringLiteral("9000, 1"));
        QVERIFY(!set.data(set.index(3), Qt::ToolTipRole).isValid());
        // Equal places and places out of range change nothing.
        set.move(1, 1);
        set.move(0, 3);
        set.remove(3);
        set.remove(-1);
        QCOMPARE(QList<int>({int(moved.size()), set.count()}), QList<int>({0, 3}));
        set.move(0, 2);
        QCOMPARE(QList<int>({int(moved.size()), first->index()}), QList<int>({1, 2}));
        set.remove(2);
        QCOMPARE(set.count(), 2);
        QVERIFY(set.isModified());
    }

    void addPaletteMatchesExistingColoursWithoutUndo()
    {
        QSprites set(nullptr, 0, false, -1);
        QSpritePalette *first = set.addPalette(colors(4), true, 3, 3);
        const int steps = set.undoStack()->count();
        QCOMPARE(set.addPalette(colors(4), true, 9, 9), first);
        QCOMPARE(set.paletteCount(), 1);
        QCOMPARE(set.undoStack()->count(), steps);
        // Without matching, equal colours still share one array.
        QCOMPARE(set.addPalette(colors(4), false, 9, 9)->rgbPal(), first->rgbPal());
        QCOMPARE(first->rgbPal()->refCount, 2);
    }

    void negativeIndexesNumberOnInTheGroup_data()
    {
        QTest::addColumn<QList<int>>("indexes");
        QTest::addColumn<int>("expected");
        QTest::newRow("new group") << QList<int>() << 0;
        QTest::newRow("after the highest") << QList<int>({4, 9, 2}) << 10;
        QTest::newRow("16 bits wrap") << QList<int>({65535}) << 0;
        QTest::newRow("only 16 bits of the highest count") << QList<int>({65536 + 7}) << 8;
    }

    void negativeIndexesNumberOnInTheGroup()
    {
        QFETCH(QList<int>, indexes);
        QFETCH(int, expected);
        QSprites set(nullptr, 0, false, -1);
        set.addPalette(colors(0), false, 2, 500);
        for (int i = 0; i < indexes.size(); ++i)
            set.addPalette(colors(i + 1), false, 7, indexes.at(i));
        QCOMPARE(set.addPalette(colors(99), false, 7, -1)->itemIndex(), expected);
    }

    void colourCountFollowsTheRepeatedTail_data()
    {
        QTest::addColumn<int>("differing");
        QTest::addColumn<int>("count");
        QTest::newRow("everything from 32 repeats entry 255") << 31 << 32;
        QTest::newRow("a different colour at 32") << 32 << 256;
        QTest::newRow("a different colour at 254") << 254 << 256;
        QTest::newRow("all alike") << -1 << 32;
    }

    void colourCountFollowsTheRepeatedTail()
    {
        QFETCH(int, differing);
        QFETCH(int, count);
        QRGBPal pal;
        for (int i = 0; i < QRGBPal::Size; ++i)
            pal.entries[i] = i <= differing ? QRGBPalEntry{uchar(i), 1, 2, 255} : QRGBPalEntry{10, 20, 30, 255};
        QSprites set(nullptr, 0, false, -1);
        QSpritePalette *palette = set.addPalette(pal, false, 1, 1);
        QCOMPARE(int(palette->colorCount()), count);
        // No colours at all would be saved as a link to the first palette.
        palette->setColorCount(0);
        QCOMPARE(int(palette->colorCount()), 1);
    }

    void identicalImagesShareOneHandle()
    {
        QSprites set(nullptr, 0, false, -1);
        QSprite *a = set.add();
        QSprite *b = set.add();
        a->setImage(indexedImage(6, 5, 1), Share);
        b->setImage(indexedImage(6, 5, 1), Share);
        QCOMPARE(b->data(), a->data());
        QVERIFY(a->imageIsShared());
        QCOMPARE(QList<int>({a->data()->refCount(), set.cache()->count()}), QList<int>({2, 1}));
        // Both took their colours from the image: one palette, group 0, entry 0 transparent.
        QCOMPARE(set.paletteCount(), 1);
        QCOMPARE(a->palette(), b->palette());
        QCOMPARE(a->palette()->itemGroup(), 0);
        QCOMPARE(a->palette()->rgbPal()->entries[0].alpha, uchar(0));
        set.add()->setImage(indexedImage(6, 5, 1), NoShare);
        QCOMPARE(set.cache()->count(), 2);

        // A null image releases one reference only.
        a->setImage(QImage(), Share);
        QCOMPARE(a->data(), nullptr);
        QCOMPARE(b->data()->refCount(), 1);
        b->setImage(QImage(), Share);
        QCOMPARE(set.cache()->count(), 1);
    }

    void aChangeOfASharedImage_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QList<uint>>("followers");
        QTest::addColumn<QList<int>>("changed");
        QTest::addColumn<QList<int>>("refCounts");
        QTest::newRow("share: all change") << int(Share) << QList<uint>() << QList<int>({0, 1, 2}) << QList<int>({3, 3, 3});
        QTest::newRow("no share: only the one") << int(NoShare) << QList<uint>() << QList<int>({0}) << QList<int>({1, 2, 2});
        QTest::newRow("ask: one follows") << int(AskToShare) << QList<uint>({2}) << QList<int>({0, 2}) << QList<int>({2, 1, 2});
        QTest::newRow("ask: none follows") << int(AskToShare) << QList<uint>() << QList<int>({0}) << QList<int>({1, 2, 2});
        QTest::newRow("ask: a stranger can't follow") << int(AskToShare) << QList<uint>({3, 77}) << QList<int>({0})
                                                      << QList<int>({1, 2, 2});
    }

    void aChangeOfASharedImage()
    {
        QFETCH(int, mode);
        QFETCH(QList<uint>, followers);
        QFETCH(QList<int>, changed);
        QFETCH(QList<int>, refCounts);
        QSprites set(nullptr, 0, false, -1);
        for (const int seed : {1, 1, 1, 9})
            set.add()->setImage(indexedImage(4, 4, seed), Share);
        QList<uint> offered;
        connect(&set, &QSprites::dataSharing, this, [&](QList<uint> &items) {
            offered = items;
            items = followers;
        });
        set.at(0)->setImage(indexedImage(4, 4, 5), mode);
        QCOMPARE(offered, mode == AskToShare ? QList<uint>({1, 2}) : QList<uint>());
        for (int i = 0; i < 3; ++i) {
            const QImage expected = indexedImage(4, 4, changed.contains(i) ? 5 : 1);
            QCOMPARE(imagePixels(set.at(i)->image(NoColorTable)), imagePixels(expected));
            QCOMPARE(set.at(i)->data()->refCount(), refCounts.at(i));
        }
    }

    void trueColourBelow201IsAWarning_data()
    {
        QTest::addColumn<quint32>("version");
        QTest::addColumn<int>("action");
        QTest::addColumn<bool>("warned");
        QTest::newRow("1.01") << quint32(QSprites::Version_101) << int(Ignore) << true;
        QTest::newRow("2.00") << quint32(QSprites::Version_200) << int(OwnPalette) << true;
        QTest::newRow("2.01") << quint32(QSprites::Version_201) << int(Ignore) << false;
        QTest::newRow("adapted") << quint32(QSprites::Version_101) << int(AdaptImage) << false;
    }

    void trueColourBelow201IsAWarning()
    {
        QFETCH(quint32, version);
        QFETCH(int, action);
        QFETCH(bool, warned);
        QSprites set(nullptr, 0, false, -1);
        set.setVersion(version);
        set.add();
        set.add()->setInfo(12, 34, 0, 0, 0, nullptr);
        QRecordingUserPrompt prompt;
        set.at(1)->setImage(rgbImage(3, 3, 1), Share, false, action);
        QCOMPARE(onlyCall(prompt),
                 warned ? QStringLiteral("Warning!: The image to be set to the sprite 12, 34 (#2) isn't color "
                                         "indexed.\nFor the current SFF version, the image will be converted to "
                                         "indexed with an optimized palette when you save the file.")
                        : QStringLiteral("0"));
        QVERIFY(!warned || prompt.calls.at(0).kind == QRecordingUserPrompt::Warning);
        // The image stays as it was given until a save converts it.
        QCOMPARE(set.at(1)->imageProperties().format, int(QImageInfo::RGB));
    }

    void paletteActions()
    {
        QSprites set(nullptr, 0, false, -1);
        QSpritePalette *target = set.addPalette(colors(7), false, 1, 1);
        QSprite *sprite = set.add();

        // Swap: the palette is taken, the pixels stay.
        const QImage image = indexedImage(5, 5, 3);
        sprite->setImage(image, Share, false, SwapPalette, {1, 1});
        QCOMPARE(sprite->palette(), target);
        QCOMPARE(imagePixels(sprite->image(NoColorTable)), imagePixels(image));
        QCOMPARE(set.paletteCount(), 1);

        // Own: the image's colours become a palette of group 0.
        sprite->setImage(image, Share, false, OwnPalette);
        QCOMPARE(set.paletteCount(), 2);
        QCOMPARE(sprite->palette()->itemGroup(), 0);
        QCOMPARE(sprite->image(Default).colorTable().at(5), image.colorTable().at(5));

        // Adapt: a true colour image comes in with the palette's colours.
        QImage rgb(2, 1, QImage::Format_RGB32);
        rgb.setPixel(0, 0, colors(7).rgba(40) | 0xFF000000u);
        rgb.setPixel(1, 0, colors(7).rgba(200) | 0xFF000000u);
        sprite->setImage(rgb, Share, false, AdaptImage, {1, 1});
        QCOMPARE(sprite->palette(), target);
        const QImage adapted = sprite->image(NoColorTable);
        QCOMPARE(QList<int>({adapted.format(), adapted.pixelIndex(0, 0), adapted.pixelIndex(1, 0)}),
                 QList<int>({QImage::Format_Indexed8, 40, 200}));

        // Reversed: index p becomes 255 - p and the colours follow.
        sprite->setImage(image, Share, true, OwnPalette);
        const QImage reversed = sprite->image(Default);
        QCOMPARE(reversed.pixelIndex(2, 3), 255 - image.pixelIndex(2, 3));
        QCOMPARE(reversed.pixel(2, 3) | 0xFF000000u, image.pixel(2, 3) | 0xFF000000u);
    }

    void imagesWithTheirPalettesOrRemapped()
    {
        QSprites set(nullptr, 0, false, -1);
        set.addPalette(colors(1), false, 1, 1);
        set.addPalette(colors(2), false, 1, 2);
        QSprite *sprite = set.add();
        sprite->setImage(indexedImage(3, 3, 1), Share, false, SwapPalette, {1, 1});
        QVERIFY(sprite->image(NoColorTable).colorTable().isEmpty());
        QCOMPARE(sprite->image(Default).colorTable(), colors(1).toColorVector());
        // Without a row for its palette, Remapped is Default.
        QCOMPARE(sprite->image(Remapped).colorTable(), colors(1).toColorVector());
        // Rows of (1, 1, 1, 1) go at the end; the first row of a source counts.
        QRemapModel *remaps = set.remaps();
        QCOMPARE(remaps->headerData(3, Qt::Horizontal).toString(), QStringLiteral("Dst Num"));
        remaps->insertRows(0, 2);
        remaps->setData(remaps->index(0, 3), 2);
        QCOMPARE(sprite->image(Remapped).colorTable(), colors(2).toColorVector());
        // A destination that doesn't exist leaves the palette's own colours.
        remaps->setData(remaps->index(0, 3), 5);
        QCOMPARE(sprite->image(Remapped).colorTable(), colors(1).toColorVector());
        sprite->setPalette(nullptr);
        QCOMPARE(sprite->image(Default).colorTable(), QList<QRgb>(256, 0));
        QCOMPARE(sprite->image(Remapped).colorTable(), QList<QRgb>(256, 0));
    }

    void setColorsAndItsSharers_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<bool>("allChange");
        QTest::newRow("share") << int(Share) << QList<bool>() << true;
        QTest::newRow("no share") << int(NoShare) << QList<bool>() << false;
        QTest::newRow("ask, yes") << int(AskToShare) << QList<bool>({true}) << true;
        QTest::newRow("ask, no") << int(AskToShare) << QList<bool>({false}) << false;
    }

    void setColorsAndItsSharers()
    {
        QFETCH(int, mode);
        QFETCH(QList<bool>, answers);
        QFETCH(bool, allChange);
        QSprites set(nullptr, 0, false, -1);
        QSpritePalette *a = set.addPalette(colors(1), false, 1, 1);
        QSpritePalette *b = set.addPalette(colors(1), false, 1, 2);
        QRecordingUserPrompt prompt;
        for (const bool answer : answers)
            prompt.answer({answer});
        a->setColors(colors(5), mode);
        QCOMPARE(onlyCall(prompt),
                 answers.isEmpty() ? QStringLiteral("0")
                                   : QStringLiteral("Palette changes: Do you want to use this colors in all other "
                                                    "instances of this palette?"));
        QVERIFY(answers.isEmpty() || !prompt.calls.at(0).defaultYes);
        QCOMPARE(a->colors(), colors(5).toColorVector());
        QCOMPARE(b->colors(), (allChange ? colors(5) : colors(1)).toColorVector());
        QCOMPARE(a->isShared(), allChange);

        // Colours equal to another palette's join its array, unless told not to.
        b->setColors(colors(5), AskToShare);
        QCOMPARE(b->rgbPal(), a->rgbPal());
        b->setColors(colors(5).toColorVector(), NoShare);
        QVERIFY(b->rgbPal() != a->rgbPal());
        QCOMPARE(a->rgbPal()->refCount, 1);
    }

    void removingAPaletteMovesItsSprites()
    {
        QSprites set(nullptr, 0, false, -1);
        fill(set);
        // Sprites 0 and 3 use palette 0: they take the first that stays.
        set.removePalette(0);
        QCOMPARE(set.at(0)->palette(), set.paletteAt(0));
        QCOMPARE(set.at(3)->palette(), set.paletteAt(0));
        QCOMPARE(set.paletteAt(0)->itemIndex(), 1);
        set.removePalette(5);
        QCOMPARE(set.paletteCount(), 2);
        set.clearPalettes();
        QCOMPARE(set.paletteCount(), 0);
        QCOMPARE(set.at(0)->palette(), nullptr);
    }

    void duplicateSharesImageAndPalette()
    {
        QSprites set(nullptr, 0, false, -1);
        fill(set);
        QSprite *copy = set.at(1)->duplicate();
        QCOMPARE(set.at(2), copy);
        QCOMPARE(copy->data(), set.at(1)->data());
        QCOMPARE(copy->palette(), set.at(1)->palette());
        QCOMPARE(QList<int>({copy->itemGroup(), copy->itemIndex(), copy->offsetX(), copy->flags(), copy->data()->refCount()}),
                 QList<int>({5, 0, 3, DecompressOnLoad, 2}));
    }

    void theCheckOfACharacter()
    {
        QSprites set(nullptr, 0, false, -1);
        fill(set);
        set.setVersion(QSprites::Version_200);
        set.add()->setInfo(5, 0, 0, 0, 0, nullptr);
        set.add()->setInfo(5, 0, 0, 0, 0, nullptr);
        set.paletteAt(1)->setItemIndex(2);
        // Only a file can hold a palette without colours (one linked ahead of itself).
        RawSpriteEdits::attachColors(set.addPalette(colors(9), false, 3, 3), nullptr);
        set.check();
        const QStringList texts = messageTexts(set);
        // The 63 required sprites come between the sprites and the palettes.
        QCOMPARE(texts.size(), 7 + 63 + 2);
        QCOMPARE(texts.mid(0, 7),
                 QStringList({
                     QStringLiteral("0 sprite:2 Image format not supported for the current version (automatic "
                                    "conversion to 8bit will be made on save)!"),
                     QStringLiteral("0 sprite:4 Empty sprite!"),
                     QStringLiteral("0 sprite:5 Empty sprite!"),
                     QStringLiteral("1 sprite:5 The group 5, index 0 is already in use by sprite #2!"),
                     QStringLiteral("0 sprite:6 Empty sprite!"),
                     // From the closest back, each numbered as the editor shows it.
                     QStringLiteral("1 sprite:6 The group 5, index 0 is already in use by sprite #6!"),
                     QStringLiteral("1 sprite:6 The group 5, index 0 is already in use by sprite #2!"),
                 }));
        QCOMPARE(texts.at(7), QStringLiteral("0 sprite:-1 Required sprite 5000, 0 is missing!"));
        QCOMPARE(texts.at(7 + 62), QStringLiteral("0 sprite:-1 Required sprite 5072, 20 is missing!"));
        QVERIFY(texts.contains(QStringLiteral("0 sprite:-1 Required sprite 5032, 50 is missing!")));
        QVERIFY(!texts.contains(QStringLiteral("0 sprite:-1 Required sprite 5060, 20 is missing!")));
        QCOMPARE(texts.mid(7 + 63),
                 QStringList({QStringLiteral("1 palette:2 The group 1, index 2 is already in use by palette #2!"),
                              QStringLiteral("0 palette:3 Empty palette!")}));
        QCOMPARE(set.messages().count(QMessages::Error), 4 + 63 + 1);

        addRequired(set);
        set.check();
        QCOMPARE(messageTexts(set).filter(QStringLiteral("Required")).size(), 0);
    }

    void aStageNeedsNoRequiredSprites()
    {
        StageOwner stage;
        QSprites set(&stage, 0, false, -1);
        set.add()->setImage(indexedImage(2, 2, 1), Share);
        set.check();
        QCOMPARE(messageTexts(set), QStringList());
        // The check reached the project's list once, at its end.
        QCOMPARE(stage.list.rowCount(), 0);
        set.at(0)->setImage(QImage(), Share);
        set.check();
        QCOMPARE(stage.list.rowCount(), 1);
        QCOMPARE(stage.list.data(stage.list.index(0)).toString(), QStringLiteral("SFF(1): Empty sprite!"));
    }

    void theCharacterPaletteAtItsPlace_data()
    {
        QTest::addColumn<QList<int>>("previous");
        QTest::addColumn<QList<int>>("sprite");
        QTest::addColumn<bool>("warned");
        // Pairs of group, index and palette group (0 for none).
        QTest::newRow("after a sprite of another palette") << QList<int>({10, 0, 2}) << QList<int>({20, 0, 1}) << true;
        QTest::newRow("after a sprite without palette") << QList<int>({10, 0, 0}) << QList<int>({20, 0, 1}) << true;
        QTest::newRow("after a character palette sprite") << QList<int>({10, 0, 1}) << QList<int>({20, 0, 1}) << false;
        QTest::newRow("after 9000,0") << QList<int>({9000, 0, 2}) << QList<int>({20, 0, 1}) << false;
        QTest::newRow("after 0,0") << QList<int>({0, 0, 0}) << QList<int>({20, 0, 1}) << false;
        QTest::newRow("9000,0 itself") << QList<int>({10, 0, 2}) << QList<int>({9000, 0, 1}) << false;
        QTest::newRow("0,0 itself") << QList<int>({10, 0, 2}) << QList<int>({0, 0, 1}) << false;
        QTest::newRow("another palette") << QList<int>({10, 0, 2}) << QList<int>({20, 0, 2}) << false;
    }

    void theCharacterPaletteAtItsPlace()
    {
        QFETCH(QList<int>, previous);
        QFETCH(QList<int>, sprite);
        QFETCH(bool, warned);
        const QString text = QStringLiteral("Sprite can't receive the group 1 (character) palette at his position!");
        QSprites set(nullptr, 0, false, -1);
        set.setVersion(QSprites::Version_101);
        QSpritePalette *palettes[] = {nullptr, set.addPalette(colors(1), false, 1, 1), set.addPalette(colors(2), false, 2, 1)};
        for (const QList<int> &s : {previous, sprite}) {
            QSprite *added = set.add();
            added->setImage(indexedImage(2, 2, 1), NoShare);
            added->setInfo(s.at(0), s.at(1), 0, 0, 0, palettes[s.at(2)]);
        }
        set.check();
        QCOMPARE(messageTexts(set).contains(QStringLiteral("1 sprite:1 ") + text), warned);
        // Never at the first place.
        set.move(1, 0);
        set.check();
        QVERIFY(!messageTexts(set).contains(QStringLiteral("1 sprite:0 ") + text));
        // A later version passes the palette by index, wherever the sprite stands.
        set.move(0, 1);
        set.setVersion(QSprites::Version_200);
        set.check();
        QVERIFY(messageTexts(set).filter(text).isEmpty());
    }

    void checkSaveRefusals_data()
    {
        QTest::addColumn<QString>("contents");
        QTest::addColumn<quint32>("version");
        QTest::addColumn<QString>("refusal");
        const QString empty = QStringLiteral("Save SFF: You can't save an empty SFF because M.U.G.E.N. will not open it.");
        const QString noPalette = QStringLiteral("Save SFF: You can't save this SFF without palettes.");
        QTest::newRow("no sprites") << QStringLiteral("palette") << quint32(QSprites::Version_201) << empty;
        QTest::newRow("true colour 2.01 without palettes") << QStringLiteral("rgb") << quint32(QSprites::Version_201)
                                                           << QStringLiteral("0");
        QTest::newRow("true colour 2.00 without palettes") << QStringLiteral("rgb") << quint32(QSprites::Version_200)
                                                           << noPalette;
        QTest::newRow("indexed 2.01 without palettes") << QStringLiteral("indexed") << quint32(QSprites::Version_201)
                                                       << noPalette;
        QTest::newRow("indexed with palettes") << QStringLiteral("indexed palette") << quint32(QSprites::Version_101)
                                               << QStringLiteral("0");
    }

    void checkSaveRefusals()
    {
        QFETCH(QString, contents);
        QFETCH(quint32, version);
        QFETCH(QString, refusal);
        QSprites set(nullptr, 0, false, -1);
        // Undo off: the indexed image brings no palette of its own.
        set.setUndoEnabled(false);
        if (contents.contains(QLatin1String("rgb")))
            set.add()->setImage(rgbImage(2, 2, 1), Share);
        if (contents.contains(QLatin1String("indexed")))
            set.add()->setImage(indexedImage(2, 2, 1), Share, false, SwapPalette, {9, 9});
        set.clearPalettes();
        if (contents.contains(QLatin1String("palette")))
            set.addPalette(colors(1), false, 1, 1);
        QRecordingUserPrompt prompt;
        QCOMPARE(set.checkSave(version), refusal == QLatin1String("0"));
        QCOMPARE(onlyCall(prompt), refusal);
    }

    void clearKeepsThePalettes()
    {
        QSprites set(nullptr, 1, true, -1);
        fill(set);
        set.at(0)->setItemGroup(3);
        set.clear();
        QCOMPARE(QList<int>({set.count(), set.paletteCount(), set.cache()->count(), set.undoStack()->count()}),
                 QList<int>({0, 3, 0, 0}));
        QVERIFY(!set.isModified());
        QVERIFY(set.fileName().isEmpty());
    }
};

QTEST_MAIN(tst_QSprites)
#include "tst_qsprites.moc"
