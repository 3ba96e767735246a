#include "core/animation/qanimations.h"
#include "core/base/qcodepages.h"
#include "core/base/quserprompt.h"
#include "core/text/qsyntaxtexteditor.h"
#include "testsupport.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTextCodec>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

#include <functional>

namespace {

/** An AIR document and its model, standing alone. */
struct Air
{
    Air()
        : text(nullptr, FileAnimations, true, 0x1010000, true)
        , animations(nullptr, &text)
    {
    }

    /** Loads `content` as a file is loaded: nothing is rewritten. */
    void load(const QString &content)
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("t.air"));
        TestSupport::writeFile(path, content.toUtf8());
        animations.fromFile(path, codepageOfCodec(QTextCodec::codecForName("UTF-8")), false);
    }

    QString plain() const { return text.text(); }

    QSyntaxTextEditor text;
    QAnimations animations;
};

QString freshDump(const QString &content)
{
    Air fresh;
    fresh.load(content);
    return dumpAnimations(fresh.animations);
}

/** The action numbers in row order, as "10 20 30". */
QString numbers(const QAnimations &animations)
{
    QStringList list;
    for (int i = 0; i < animations.count(); ++i)
        list.append(QString::number(animations.at(i)->number()));
    return list.join(QLatin1Char(' '));
}

QString line(const QTextDocument *document, int number)
{
    return document->findBlockByNumber(number).text();
}

/** Types `text` at the start of line `line`, as a user of the text view would. */
std::function<void(Air &)> typeAt(int line, const QString &text)
{
    return [=](Air &air) {
        QTextCursor cursor(air.text.document());
        cursor.setPosition(air.text.document()->findBlockByNumber(line).position());
        cursor.insertText(text);
    };
}

} // namespace

using AirEdit = std::function<void(Air &)>;
Q_DECLARE_METATYPE(AirEdit)

class tst_QAnimations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        registerAnimationElements();
        registerNameCommentElements();
    }

    void cleanupTestCase()
    {
        releaseAnimationElements();
        releaseNameCommentElements();
    }

    void framesAreReadByPosition_data()
    {
        QTest::addColumn<QString>("frame");
        QTest::addColumn<QString>("read");
        QTest::newRow("plain") << QStringLiteral("0,0, 0,0, -1") << QStringLiteral("0,0 0,0 t-1 f0 b0");
        QTest::newRow("no blanks") << QStringLiteral("0,0,0,0,5") << QStringLiteral("0,0 0,0 t5 f0 b0");
        QTest::newRow("flip words") << QStringLiteral("1,2, 3,4, 5, VH") << QStringLiteral("1,2 3,4 t5 f3 b0");
        QTest::newRow("hv lower") << QStringLiteral("1,2, 3,4, 5, hv") << QStringLiteral("1,2 3,4 t5 f3 b0");
        QTest::newRow("no flip word") << QStringLiteral("1,2, 3,4, 5, X") << QStringLiteral("1,2 3,4 t5 f0 b0");
        QTest::newRow("A") << QStringLiteral("10,0, 0,0, 4, , A") << QStringLiteral("10,0 0,0 t4 f0 b1 256/256");
        QTest::newRow("A1") << QStringLiteral("10,0, 0,0, 4, , A1") << QStringLiteral("10,0 0,0 t4 f0 b1 256/128");
        QTest::newRow("AS256D128 reads as A1") << QStringLiteral("10,0, 0,0, 4, , AS256D128") << QStringLiteral("10,0 0,0 t4 f0 b1 256/128");
        QTest::newRow("AS300D300") << QStringLiteral("10,0, 0,0, 4, , as300d300") << QStringLiteral("10,0 0,0 t4 f0 b1 300/300");
        QTest::newRow("S") << QStringLiteral("10,0, 0,0, 4, H, S") << QStringLiteral("10,0 0,0 t4 f2 b2");
        QTest::newRow("an integer flip shifts the blend away")
            << QStringLiteral("0,0, 0,0, 5, 0, A") << QStringLiteral("0,0 0,0 t5 f0 b0");
        QTest::newRow("all of it") << QStringLiteral("0,1, 10,-5, 8, H, AS128D128, 1.5,1.5, 45")
                                   << QStringLiteral("0,1 10,-5 t8 f2 b1 128/128 s1.5,1.5 a45");
        QTest::newRow("scale x") << QStringLiteral("1,0, 0,0, 5,,,2") << QStringLiteral("1,0 0,0 t5 f0 b0 s2,0 a0");
        QTest::newRow("scale y") << QStringLiteral("1,0, 0,0, 5,,,,2") << QStringLiteral("1,0 0,0 t5 f0 b0 s0,2 a0");
        // Sprite numbers are 16-bit: beyond that they read as 0, not wrapped.
        QTest::newRow("16-bit sprite numbers") << QStringLiteral("70000,-32768, 0,0, 5") << QStringLiteral("0,-32768 0,0 t5 f0 b0");
        QTest::newRow("below 16 bits") << QStringLiteral("32767,-32769, 0,0, 5") << QStringLiteral("32767,0 0,0 t5 f0 b0");
    }

    void framesAreReadByPosition()
    {
        QFETCH(QString, frame);
        QFETCH(QString, read);
        Air air;
        air.load(QStringLiteral("[Begin Action 0]\n") + frame + QLatin1Char('\n'));
        QCOMPARE(air.animations.count(), 1);
        QCOMPARE(air.animations.at(0)->frameCount(), 1);
        QCOMPARE(dumpAnimations(air.animations).section(QLatin1Char('\n'), 1, 1).trimmed(), read);
    }

    void linesThatAreNoElements()
    {
        Air air;
        air.load(QStringLiteral("[begin action 10]\n"
                                "Loop Start\n"                      // not an inter-frame line
                                "LOOPSTART\n"
                                "interpolate  OFFSET\n"
                                "Clsn1: 1\n"
                                " Clsn1[0] = 1.5, 0, 2, 2\n"        // a float: no box
                                "0,0, 0,0\n"                        // too few columns
                                "0,0, 0,0, 1.5\n"                   // a float time
                                "1,1, 0,0, 4\n"));
        const QAnimation *animation = air.animations.at(0);
        QCOMPARE(animation->number(), 10);
        QCOMPARE(animation->frameCount(), 1);
        const QAnimationFrame *frame = animation->frameAt(0);
        QVERIFY(frame->checkInterFrame(LoopStart));
        QVERIFY(frame->checkInterFrame(InterpolateOffset));
        QCOMPARE(frame->hitBoxes(Attack)->count(), 0);
        QCOMPARE(animation->loopStart(), 0);
    }

    void framesAreWrittenInTheirExactSpelling_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("field");
        QTest::addColumn<double>("value");
        // field: 0 group, 1 time, 2 flip, 3 scaleX, 4 scaleY, 5 angle, 6 blend A, 7 blend A1, 8 blend S
        QTest::newRow("no blanks become the written form") << QStringLiteral("0,0,0,0,5") << QStringLiteral("7,0, 0,0, 5") << 0 << 7.0;
        QTest::newRow("flip") << QStringLiteral("0,0, 0,0, 5") << QStringLiteral("0,0, 0,0, 5, HV") << 2 << 3.0;
        QTest::newRow("blend without flip") << QStringLiteral("10,0, 0,0, 4") << QStringLiteral("10,0, 0,0, 4, , A") << 6 << 0.0;
        QTest::newRow("A1") << QStringLiteral("10,0, 0,0, 4") << QStringLiteral("10,0, 0,0, 4, , A1") << 7 << 0.0;
        QTest::newRow("S with flip") << QStringLiteral("10,0, 0,0, 4, V") << QStringLiteral("10,0, 0,0, 4, V, S") << 8 << 0.0;
        QTest::newRow("scale x alone") << QStringLiteral("1,0, 0,0, 5") << QStringLiteral("1,0, 0,0, 5, , , 2") << 3 << 2.0;
        QTest::newRow("scale y alone") << QStringLiteral("1,0, 0,0, 5") << QStringLiteral("1,0, 0,0, 5, , ,,2") << 4 << 2.0;
        QTest::newRow("angle alone") << QStringLiteral("1,0, 0,0, 5") << QStringLiteral("1,0, 0,0, 5, , ,, , 90") << 5 << 90.0;
        QTest::newRow("all") << QStringLiteral("0,1, 10,-5, 8, H, AS128D128, 1.5,1.5")
                             << QStringLiteral("0,1, 10,-5, 8, H, AS128D128, 1.5,1.5, 45") << 5 << 45.0;
        QTest::newRow("a trailing comment goes") << QStringLiteral("0,0, 0,0, 5 ; slow") << QStringLiteral("0,0, 0,0, 6") << 1 << 6.0;
    }

    void framesAreWrittenInTheirExactSpelling()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        QFETCH(int, field);
        QFETCH(double, value);
        Air air;
        air.load(QStringLiteral("; Stand\n[Begin Action 0]\n; keep me\n") + before + QStringLiteral("\n; and me\n"));
        QAnimationFrame *frame = air.animations.at(0)->frameAt(0);
        switch (field) {
        case 0: frame->setSpriteGroup(int(value)); break;
        case 1: frame->setTime(int(value)); break;
        case 2: frame->setFlip(uint(value)); break;
        case 3: frame->setScaleX(value); break;
        case 4: frame->setScaleY(value); break;
        case 5: frame->setAngle(value); break;
        case 6: frame->setBlend(QAnimationFrameBlend::Addition, QBlendTarget()); break;
        case 7: frame->setBlend(QAnimationFrameBlend::Addition, QBlendTarget{256, 128}); break;
        case 8: frame->setBlend(QAnimationFrameBlend::Subtraction, QBlendTarget()); break;
        }
        QCOMPARE(air.plain(), QStringLiteral("; Stand\n[Begin Action 0]\n; keep me\n") + after + QStringLiteral("\n; and me\n"));
        // The model holds what a fresh read of the line gives.
        QCOMPARE(dumpAnimations(air.animations), freshDump(air.plain()));
        // One undo takes the old line back.
        air.text.document()->undo();
        QCOMPARE(line(air.text.document(), 3), before);
    }

    void settingAValueToItselfChangesNothing()
    {
        Air air;
        air.load(QStringLiteral("[Begin Action 0]\n0,0,0,0,5\n"));
        QAnimationFrame *frame = air.animations.at(0)->frameAt(0);
        frame->setTime(5);
        frame->setScaleX(1e-13);
        QCOMPARE(air.plain(), QStringLiteral("[Begin Action 0]\n0,0,0,0,5\n"));
        QVERIFY(!air.animations.isModified());
    }

    void animationsComeAndGoWithTheirText()
    {
        Air air;
        air.load(QStringLiteral("; top\n[Begin Action 5]\n0,0, 0,0, 5\n\n; Walk\n[Begin Action 20]\n1,0, 0,0, 5\n"));
        QAnimations &model = air.animations;
        QCOMPARE(model.data(model.index(0)).toString(), QStringLiteral("5 - top"));
        QCOMPARE(model.data(model.index(1)).toString(), QStringLiteral("20 - Walk"));
        QVERIFY(!model.data(model.index(1), Qt::ToolTipRole).isValid());
        QVERIFY(!model.at(2));

        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QAnimation *added = model.add(30);
        QCOMPARE(added->number(), 30);
        QCOMPARE(inserted.count(), 1);
        QVERIFY(air.plain().endsWith(QStringLiteral("1,0, 0,0, 5\n\n[Begin Action 30]\n")));
        QCOMPARE(added->frameAdd()->time(), 10);
        QVERIFY(air.plain().endsWith(QStringLiteral("[Begin Action 30]\n-1,0, 0,0, 10\n")));

        QAnimation *inserted0 = model.insert(0, 1);
        QCOMPARE(inserted0->number(), 1);
        // Before the very first line the new header stands on line two.
        QVERIFY(air.plain().startsWith(QStringLiteral("\n[Begin Action 1]\n; top\n")));
        QCOMPARE(model.count(), 4);
        QCOMPARE(model.find(0, QStringLiteral("Walk")), 2);
        QCOMPARE(model.find(0, QStringLiteral("20")), 2);
        QCOMPARE(model.find(3, QStringLiteral("20")), -1);

        model.at(2)->setNumber(21);
        QCOMPARE(model.data(model.index(2)).toString(), QStringLiteral("21 - Walk"));
        model.at(2)->setName(QStringLiteral("Walking"));
        QCOMPARE(model.data(model.index(2)).toString(), QStringLiteral("21 - Walking"));

        // Removing takes the comment above with it, and the frames.
        model.remove(2);
        QVERIFY(!air.plain().contains(QStringLiteral("Walking")));
        QVERIFY(!air.plain().contains(QStringLiteral("1,0, 0,0, 5")));
        QCOMPARE(model.count(), 3);
        QCOMPARE(dumpAnimations(model), freshDump(air.plain()));
    }

    void duplicateMoveAndSort()
    {
        Air air;
        // A zero-padded header, and an indented one that still ends the action above.
        air.load(QStringLiteral("[Begin Action 030]\n; mentions [begin action 30] too\n3,0, 0,0, 5\n"
                                "  [Begin Action 10]\n1,0, 0,0, 5\n"
                                "[Begin Action 20]\n2,0, 0,0, 5\n"));
        QAnimations &model = air.animations;
        QAnimation *copy = model.duplicate(0, 31);
        QCOMPARE(copy->number(), 31);
        QCOMPARE(model.count(), 4);
        QVERIFY(air.plain().contains(QStringLiteral("; mentions [Begin Action 31] too")));
        QCOMPARE(model.at(0)->number(), 30);

        model.sort();
        QCOMPARE(numbers(model), QStringLiteral("10 20 30 31"));
        QCOMPARE(dumpAnimations(model), freshDump(air.plain()));
        // One undo puts the order back.
        air.text.document()->undo();
        QCOMPARE(model.at(0)->number(), 30);

        model.move(0, 3);
        QCOMPARE(model.at(3)->number(), 30);
        QCOMPARE(model.at(3)->frameAt(0)->spriteGroup(), 3);
        model.move(3, 1);
        QCOMPARE(model.at(1)->number(), 30);
        model.move(0, 9); // out of range: nothing
        QCOMPARE(numbers(model), QStringLiteral("31 30 10 20"));
        model.remove(1);
        QCOMPARE(numbers(model), QStringLiteral("31 10 20"));
        QCOMPARE(dumpAnimations(model), freshDump(air.plain()));
    }

    void boxesAreInsertedWithTheirDeclarations()
    {
        Air air;
        air.load(QStringLiteral("[Begin Action 0]\n0,0, 0,0, 5\n"));
        QAnimationFrame *frame = air.animations.at(0)->frameAt(0);
        frame->insertBox(Collision, QRect(QPoint(-10, -60), QPoint(10, 0)));
        QCOMPARE(air.plain(), QStringLiteral("[Begin Action 0]\nClsn2: 1\n  Clsn2[0] = -10, -60, 10, 0\n0,0, 0,0, 5\n"));
        frame->insertBox(Collision, QRect(QPoint(1, 2), QPoint(3, 4)));
        frame->insertBox(Attack, QRect(QPoint(5, 6), QPoint(7, 8)));
        frame->insertBox(CollisionDefault, QRect(QPoint(0, 0), QPoint(1, 1)));
        frame->insertBox(AttackDefault, QRect(QPoint(0, 0), QPoint(2, 2)));
        QCOMPARE(air.plain(), QStringLiteral("[Begin Action 0]\n"
                                             "Clsn1Default: 1\n  Clsn1[0] = 0, 0, 2, 2\n"
                                             "Clsn2Default: 1\n  Clsn2[0] = 0, 0, 1, 1\n"
                                             "Clsn1: 1\n  Clsn1[0] = 5, 6, 7, 8\n"
                                             "Clsn2: 2\n  Clsn2[0] = -10, -60, 10, 0\n  Clsn2[1] = 1, 2, 3, 4\n"
                                             "0,0, 0,0, 5\n"));
        QCOMPARE(frame->hitBoxes(Collision)->count(), 2);
        QCOMPARE(dumpAnimations(air.animations), freshDump(air.plain()));
        // Each insertion was one undo step.
        air.text.document()->undo();
        QVERIFY(!frame->hitBoxes(AttackDefault));
        QCOMPARE(frame->firstLine(), 1);
    }

    void removingABoxRenumbersInOneStep()
    {
        Air air;
        air.load(QStringLiteral("[Begin Action 0]\nClsn2: 3\n Clsn2[0] = 0,0,1,1\n Clsn2[1] = 0,0,2,2\n"
                                " Clsn2[2] = 0,0,3,3\n0,0, 0,0, 5\n"));
        const QString loaded = air.plain();
        QCollisionBoxes *declaration = air.animations.at(0)->frameAt(0)->hitBoxes(Collision);
        declaration->at(1)->remove(true);
        QCOMPARE(air.plain(), QStringLiteral("[Begin Action 0]\nClsn2: 2\n Clsn2[0] = 0,0,1,1\n  Clsn2[1] = 0, 0, 3, 3\n0,0, 0,0, 5\n"));
        air.text.document()->undo();
        QCOMPARE(air.plain(), loaded);

        // The last box takes its declaration with it.
        Air one;
        one.load(QStringLiteral("[Begin Action 0]\nClsn2: 1\n Clsn2[0] = 0,0,1,1\n0,0, 0,0, 5\n"));
        one.animations.at(0)->frameAt(0)->hitBoxes(Collision)->at(0)->remove(true);
        QCOMPARE(one.plain(), QStringLiteral("[Begin Action 0]\n0,0, 0,0, 5\n"));
        QVERIFY(!one.animations.at(0)->frameAt(0)->hitBoxes(Collision));
    }

    void countFixesTouchOnlyTheEditedDeclaration_data()
    {
        QTest::addColumn<AirEdit>("edit");
        QTest::addColumn<QString>("after");
        const QString frame0 = QStringLiteral("[Begin Action 0]\nClsn1: 5\n Clsn1[0] = 4,4,0,0\n Clsn1[7] = 0,0,2,2\n0,0, 0,0, 5\n");
        const QString frame1 = QStringLiteral("Clsn2: 3\n Clsn2[0] = 0,0,1,1\n1,0, 0,0, 5\n");
        QTest::newRow("a frame inserted elsewhere") << AirEdit([](Air &air) { air.animations.at(0)->frameInsert(1); })
                                                    << frame0 + QStringLiteral("-1,0, 0,0, 10\n") + frame1;
        QTest::newRow("a frame typed elsewhere") << typeAt(8, QStringLiteral("2,0, 0,0, 5\n"))
                                                 << frame0 + frame1 + QStringLiteral("2,0, 0,0, 5\n");
        QTest::newRow("a box typed under Clsn2")
            << typeAt(7, QStringLiteral(" Clsn2[0] = 5,5,6,6\n"))
            << frame0 + QStringLiteral("Clsn2: 2\n Clsn2[0] = 0,0,1,1\n  Clsn2[1] = 5, 5, 6, 6\n1,0, 0,0, 5\n");
        // Box corners are read normalised; the line stays as it is.
        QTest::newRow("a box inserted under Clsn1")
            << AirEdit([](Air &air) { air.animations.at(0)->frameAt(0)->insertBox(Attack, QRect(QPoint(9, 9), QPoint(10, 10))); })
            << QStringLiteral("[Begin Action 0]\nClsn1: 3\n Clsn1[0] = 4,4,0,0\n  Clsn1[1] = 0, 0, 2, 2\n"
                              "  Clsn1[2] = 9, 9, 10, 10\n0,0, 0,0, 5\n") + frame1;
        QTest::newRow("a box of Clsn1 removed")
            << AirEdit([](Air &air) { air.animations.at(0)->frameAt(0)->hitBoxes(Attack)->at(0)->remove(true); })
            << QStringLiteral("[Begin Action 0]\nClsn1: 1\n  Clsn1[0] = 0, 0, 2, 2\n0,0, 0,0, 5\n") + frame1;
        // A copy is the text as it stands.
        QTest::newRow("the action duplicated") << AirEdit([](Air &air) { air.animations.duplicate(0, -1); })
                                               << frame0 + frame1 + QLatin1Char('\n') + frame0 + frame1;
    }

    void countFixesTouchOnlyTheEditedDeclaration()
    {
        QFETCH(AirEdit, edit);
        QFETCH(QString, after);
        Air air;
        const QString loaded = QStringLiteral("[Begin Action 0]\nClsn1: 5\n Clsn1[0] = 4,4,0,0\n Clsn1[7] = 0,0,2,2\n0,0, 0,0, 5\n"
                                              "Clsn2: 3\n Clsn2[0] = 0,0,1,1\n1,0, 0,0, 5\n");
        air.load(loaded);
        // Opening a file never changes it, wrong counts and all.
        QCOMPARE(air.plain(), loaded);
        QVERIFY(!air.animations.isModified());
        QCOMPARE(air.animations.at(0)->frameAt(0)->hitBoxes(Attack)->count(), 2);
        edit(air);
        // A typed line is fixed once the document has reported it.
        QCoreApplication::processEvents();
        QCOMPARE(air.plain(), after);
        QCOMPARE(dumpAnimations(air.animations), freshDump(air.plain()));
        // The fix is part of the edit's undo step, and an undo is no edit to fix.
        air.text.document()->undo();
        QCoreApplication::processEvents();
        QCOMPARE(air.plain(), loaded);
        QVERIFY(air.text.document()->isRedoAvailable());
        QCOMPARE(dumpAnimations(air.animations), freshDump(air.plain()));
    }

    void typingOverAWordRereadsTheLine()
    {
        Air air;
        air.load(QStringLiteral("[Begin Action 0]\nClsn1: 1\n Clsn1[0] = 0,0,1,1\nClsn2: 1\n Clsn2[0] = 0,0,2,2\n0,0, 0,0, 5\n"
                                "Interpolate Blend\nInterpolate Angle\n1,0, 0,0, 5\n"));
        // The line stays an element of its kind all along, but now of another type.
        for (const auto &[line, column, typed] : {std::tuple(1, 4, "2"), std::tuple(7, 12, "Blend")}) {
            QTextCursor cursor(air.text.document());
            cursor.setPosition(air.text.document()->findBlockByNumber(line).position() + column);
            cursor.movePosition(QTextCursor::EndOfWord, QTextCursor::KeepAnchor);
            cursor.insertText(QLatin1String(typed));
            QCOMPARE(dumpAnimations(air.animations), freshDump(air.plain()));
        }
    }

    void boxesResolveThroughDefaults()
    {
        Air air;
        air.load(QStringLiteral("[Begin Action 0]\n"
                                "0,0, 0,0, 5\n"                               // no Clsn2 at all
                                "Clsn2Default: 1\n Clsn2[0] = 0,0,1,1\n"
                                "1,0, 0,0, 5\n"                               // the default
                                "Clsn2: 1\n Clsn2[0] = 0,0,9,9\n"
                                "2,0, 0,0, 5\n"                               // its own
                                "3,0, 0,0, 5\n"                               // the default again
                                "Clsn2: 0\n"
                                "4,0, 0,0, 5\n"));                            // an empty own: the default
        const QAnimation *animation = air.animations.at(0);
        QVERIFY(animation->frameAt(0)->resolvedBoxes(true).isEmpty());
        QCOMPARE(animation->frameAt(1)->resolvedBoxes(true).first()->rect().right(), 1);
        QCOMPARE(animation->frameAt(2)->resolvedBoxes(true).first()->rect().right(), 9);
        QCOMPARE(animation->frameAt(3)->resolvedBoxes(true).first()->rect().right(), 1);
        QCOMPARE(animation->frameAt(4)->resolvedBoxes(true).first()->rect().right(), 1);
        QVERIFY(animation->frameAt(3)->resolvedBoxes(false).isEmpty());
    }

    void interFrameLines()
    {
        Air air;
        air.load(QStringLiteral("[Begin Action 0]\nClsn2: 1\n Clsn2[0] = 0,0,1,1\n0,0, 0,0, 5\n1,0, 0,0, 5\n"));
        QAnimationFrame *first = air.animations.at(0)->frameAt(0);
        first->setInterFrame(LoopStart, true);
        QCOMPARE(air.plain(), QStringLiteral("[Begin Action 0]\nLoopStart\nClsn2: 1\n Clsn2[0] = 0,0,1,1\n0,0, 0,0, 5\n1,0, 0,0, 5\n"));
        first->setInterFrame(LoopStart, true);
        first->setInterFrame(InterpolateScale, true);
        QCOMPARE(air.plain(), QStringLiteral("[Begin Action 0]\nInterpolate Scale\nLoopStart\nClsn2: 1\n Clsn2[0] = 0,0,1,1\n"
                                             "0,0, 0,0, 5\n1,0, 0,0, 5\n"));
        QVERIFY(first->checkInterFrame(InterpolateScale));
        first->setInterFrame(LoopStart, false);
        QVERIFY(!first->checkInterFrame(LoopStart));
        QCOMPARE(air.animations.at(0)->loopStart(), -1);
        QCOMPARE(dumpAnimations(air.animations), freshDump(air.plain()));
        // Inserting a frame before the first goes above its qualifiers and boxes.
        QAnimationFrame *inserted = air.animations.at(0)->frameInsert(0);
        QCOMPARE(inserted->index(), 0);
        QVERIFY(air.plain().startsWith(QStringLiteral("[Begin Action 0]\n-1,0, 0,0, 10\nInterpolate Scale\n")));
    }

    void duplicatesAndOrphans()
    {
        Air air;
        air.load(QStringLiteral("0,0, 0,0, 1\n"                  // before any action: an orphan
                                "[Begin Action 0]\n[Begin Action 0]\n"
                                "Clsn2: 1\n Clsn2[0] = 0,0,1,1\nClsn2: 1\n Clsn2[0] = 0,0,2,2\n"
                                "0,0, 0,0, 5\n"));
        QCOMPARE(air.animations.count(), 2);
        QCOMPARE(air.animations.find(0, QStringLiteral("0")), 0);
        QCOMPARE(air.animations.at(0)->frameCount(), 0);
        // The first declaration of a kind owns the slot; the second is an orphan.
        QCOMPARE(air.animations.at(1)->frameAt(0)->hitBoxes(Collision)->at(0)->rect().right(), 1);
    }

    void emptyDocuments()
    {
        Air air;
        QRecordingUserPrompt prompt;
        QVERIFY(air.animations.isEmpty());
        QVERIFY(!air.animations.at(0));
        QVERIFY(!air.animations.checkSave(0));
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls.first().text, QStringLiteral("You can't save an empty AIR because M.U.G.E.N. will not open it."));
        QCOMPARE(prompt.calls.first().title, QStringLiteral("Save AIR"));
    }

    void corpusFilesOpenAndSaveUnchanged_data()
    {
        QTest::addColumn<QString>("path");
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.air")});
        if (files.isEmpty())
            QSKIP("the corpus isn't there");
        for (const QString &file : files)
            QTest::newRow(qPrintable(file.mid(TestSupport::corpusDir().size() + 1))) << file;
    }

    void corpusFilesOpenAndSaveUnchanged()
    {
        QFETCH(QString, path);
        Air air;
        QVERIFY(air.animations.fromFile(path, 0, false));
        QVERIFY(!air.animations.isModified());
        static const QRegularExpression header(QStringLiteral("(^|\\n)[ \\t]*\\[\\s*begin\\s+action\\s+-?\\d+\\s*\\][ \\t\\r]*(?=\\n|;|$)"),
                                               QRegularExpression::CaseInsensitiveOption);
        int headers = 0;
        for (auto it = header.globalMatch(air.plain()); it.hasNext(); it.next())
            ++headers;
        QCOMPARE(air.animations.count(), headers);
        QTemporaryDir dir;
        QVERIFY(air.animations.toFile(dir.filePath(QStringLiteral("out.air")), false, true));
        QByteArray expected = TestSupport::readFile(path);
        if (expected.startsWith("\xef\xbb\xbf"))
            expected.remove(0, 3);
        expected.replace("\r\n", "\n").replace('\r', '\n').replace("\n", "\r\n");
        QCOMPARE(TestSupport::readFile(dir.filePath(QStringLiteral("out.air"))), expected);
    }

    void randomEditsKeepTheModelRight_data()
    {
        QTest::addColumn<QString>("path");
        const QString corpus = TestSupport::corpusDir();
        if (corpus.isEmpty())
            QSKIP("the corpus isn't there");
        QTest::newRow("kfm.air") << corpus + QStringLiteral("/elecbyte-mugen10/chars/kfm/kfm.air");
        QTest::newRow("fightfx.air") << corpus + QStringLiteral("/elecbyte-mugen10/data/fightfx.air");
    }

    void randomEditsKeepTheModelRight()
    {
        QFETCH(QString, path);
        const int edits = qEnvironmentVariableIntValue("KESTRADA_RANDOM_EDITS") > 0
            ? qEnvironmentVariableIntValue("KESTRADA_RANDOM_EDITS") : 400;
        QStringList lines = QString::fromLatin1(TestSupport::readFile(path)).remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
        if (lines.size() > 500)
            lines = lines.mid(0, 500);
        Air air;
        air.load(lines.join(QLatin1Char('\n')));
        QTextDocument *document = air.text.document();
        QAnimations &model = air.animations;
        static const QStringList vocabulary = {
            QStringLiteral("[Begin Action 77]"), QStringLiteral("0,0, 0,0, 5"), QStringLiteral("Clsn2: 1"),
            QStringLiteral("Clsn1Default: 2"), QStringLiteral("  Clsn2[0] = -10,0, 10,-60"), QStringLiteral("LoopStart"),
            QStringLiteral("Interpolate Angle"), QStringLiteral("; a name"), QStringLiteral(""),
            QStringLiteral("1,2, 3,4, 5, H, A"), QStringLiteral("Clsn1: 0")};
        QRandomGenerator random(quint32(qHash(path)) ^ quint32(qEnvironmentVariableIntValue("KESTRADA_RANDOM_SEED")));
        for (int step = 0; step < edits; ++step) {
            const int blocks = document->blockCount();
            QTextCursor cursor(document);
            QString what;
            const int operation = random.bounded(10);
            QAnimation *animation = model.at(random.bounded(qMax(1, model.count())));
            QAnimationFrame *frame = animation && animation->frameCount() > 0
                ? animation->frameAt(random.bounded(animation->frameCount())) : nullptr;
            switch (operation) {
            case 0: {
                const int at = random.bounded(document->characterCount());
                cursor.setPosition(at);
                cursor.insertText(QString(QStringLiteral("0,C[]\n -").at(random.bounded(8))));
                what = QStringLiteral("type at %1").arg(at);
                break;
            }
            case 1: {
                const QTextBlock block = document->findBlockByNumber(random.bounded(blocks));
                cursor.setPosition(block.position());
                cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor);
                cursor.removeSelectedText();
                what = QStringLiteral("remove line %1").arg(block.blockNumber());
                break;
            }
            case 2: {
                const QTextBlock block = document->findBlockByNumber(random.bounded(blocks));
                cursor.setPosition(block.position());
                cursor.insertText(vocabulary.at(random.bounded(int(vocabulary.size()))) + QLatin1Char('\n'));
                what = QStringLiteral("insert line at %1").arg(block.blockNumber());
                break;
            }
            case 3:
                if (frame) {
                    frame->setValues(random.bounded(50), random.bounded(5), random.bounded(-9, 9), 0, random.bounded(1, 9),
                                     uint(random.bounded(4)), QAnimationFrameBlend(random.bounded(3)), QBlendTarget(),
                                     random.bounded(2) ? 1.5 : 0, 0, random.bounded(2) ? 30 : 0);
                    what = QStringLiteral("set a frame");
                }
                break;
            case 4:
                if (frame) {
                    frame->insertBox(QCollisionBoxType(random.bounded(4)), QRect(0, 0, 5, 5));
                    what = QStringLiteral("insert a box");
                }
                break;
            case 5:
                if (frame) {
                    const QList<QCollisionBox *> boxes = frame->resolvedBoxes(random.bounded(2));
                    if (!boxes.isEmpty() && boxes.first()->parent && boxes.first()->parent->parent == frame) {
                        boxes.first()->remove(true);
                        what = QStringLiteral("remove a box");
                    }
                }
                break;
            case 6:
                if (frame) {
                    frame->setInterFrame(QInterFrameElementType(random.bounded(5)), random.bounded(2));
                    what = QStringLiteral("inter-frame line");
                }
                break;
            case 7:
                if (animation) {
                    const int kind = random.bounded(4);
                    if (kind == 0)
                        animation->frameAdd();
                    else if (kind == 1)
                        model.duplicate(model.count() - 1, random.bounded(2) ? -1 : 99);
                    else if (kind == 2)
                        model.move(random.bounded(model.count()), random.bounded(model.count()));
                    else
                        model.remove(random.bounded(model.count()));
                    what = QStringLiteral("animation operation %1").arg(kind);
                }
                break;
            case 8:
                document->undo();
                what = QStringLiteral("undo");
                break;
            default:
                document->redo();
                what = QStringLiteral("redo");
                break;
            }
            // Fixes of counts wait for the event loop.
            QCoreApplication::processEvents();
            const QString live = dumpAnimations(model);
            const QString fresh = freshDump(air.plain());
            if (live != fresh) {
                const QStringList a = live.split(QLatin1Char('\n'));
                const QStringList b = fresh.split(QLatin1Char('\n'));
                int i = 0;
                while (i < a.size() && i < b.size() && a.at(i) == b.at(i))
                    ++i;
                QFAIL(qPrintable(QStringLiteral("step %1 (%2):\nlive:  %3\nfresh: %4").arg(step).arg(what)
                                     .arg(a.value(i), b.value(i))));
            }
        }
    }
};

QTEST_MAIN(tst_QAnimations)
#include "tst_qanimations.moc"
