#include "core/animation/qanimations.h"
#include "core/base/qcodepages.h"
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

using namespace Qt::StringLiterals;

namespace {

/** An AIR document and its model, standing alone. */
struct Air
{
    QSyntaxTextEditor text{nullptr, FileAnimations, true, 0x1010000, true};
    QAnimations animations{nullptr, &text};

    /** Loads `content` as a file is loaded: nothing is rewritten. */
    void load(const QString &content)
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"t.air"_s);
        TestSupport::writeFile(path, content.toUtf8());
        animations.fromFile(path, codepageOfCodec(QTextCodec::codecForName("UTF-8")), false);
    }

    QString plain() const { return text.text(); }
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

using AirEdit = std::function<void(Air &)>;

/** An edit of frame `index` of the first animation through the model. */
AirEdit onFrame(int index, const std::function<void(QAnimationFrame *)> &edit)
{
    return [=](Air &air) { edit(air.animations.at(0)->frameAt(index)); };
}

/** Types `text` over `length` characters from `column` of line `line`, as a user of the text view would. */
AirEdit typeAt(int line, int column, int length, const QString &text)
{
    return [=](Air &air) {
        QTextCursor cursor(air.text.document());
        cursor.setPosition(air.text.document()->findBlockByNumber(line).position() + column);
        cursor.setPosition(cursor.position() + length, QTextCursor::KeepAnchor);
        cursor.insertText(text);
    };
}

} // namespace

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
        QTest::newRow("plain") << u"0,0, 0,0, -1"_s << u"0,0 0,0 t-1 f0 b0"_s;
        QTest::newRow("no blanks") << u"0,0,0,0,5"_s << u"0,0 0,0 t5 f0 b0"_s;
        QTest::newRow("flip words") << u"1,2, 3,4, 5, VH"_s << u"1,2 3,4 t5 f3 b0"_s;
        QTest::newRow("hv lower") << u"1,2, 3,4, 5, hv"_s << u"1,2 3,4 t5 f3 b0"_s;
        QTest::newRow("no flip word") << u"1,2, 3,4, 5, X"_s << u"1,2 3,4 t5 f0 b0"_s;
        QTest::newRow("A") << u"10,0, 0,0, 4, , A"_s << u"10,0 0,0 t4 f0 b1 256/256"_s;
        QTest::newRow("A1") << u"10,0, 0,0, 4, , A1"_s << u"10,0 0,0 t4 f0 b1 256/128"_s;
        QTest::newRow("AS256D128 reads as A1") << u"10,0, 0,0, 4, , AS256D128"_s << u"10,0 0,0 t4 f0 b1 256/128"_s;
        QTest::newRow("AS300D300") << u"10,0, 0,0, 4, , as300d300"_s << u"10,0 0,0 t4 f0 b1 300/300"_s;
        QTest::newRow("S") << u"10,0, 0,0, 4, H, S"_s << u"10,0 0,0 t4 f2 b2"_s;
        QTest::newRow("an integer flip shifts the blend away") << u"0,0, 0,0, 5, 0, A"_s << u"0,0 0,0 t5 f0 b0"_s;
        QTest::newRow("all of it") << u"0,1, 10,-5, 8, H, AS128D128, 1.5,1.5, 45"_s
                                   << u"0,1 10,-5 t8 f2 b1 128/128 s1.5,1.5 a45"_s;
        QTest::newRow("scale x") << u"1,0, 0,0, 5,,,2"_s << u"1,0 0,0 t5 f0 b0 s2,0 a0"_s;
        QTest::newRow("scale y") << u"1,0, 0,0, 5,,,,2"_s << u"1,0 0,0 t5 f0 b0 s0,2 a0"_s;
        // Sprite numbers are 16-bit: beyond that they read as 0, not wrapped.
        QTest::newRow("16-bit sprite numbers") << u"70000,-32768, 0,0, 5"_s << u"0,-32768 0,0 t5 f0 b0"_s;
        QTest::newRow("below 16 bits") << u"32767,-32769, 0,0, 5"_s << u"32767,0 0,0 t5 f0 b0"_s;
        // Lines that match no pattern are no elements; inter-frame words ignore case and blanks.
        QTest::newRow("no elements") << u"Loop Start\nLOOPSTART\ninterpolate  OFFSET\nClsn1: 1\n Clsn1[0] = 1.5, 0, 2, 2\n"
                                        "0,0, 0,0\n0,0, 0,0, 1.5\n1,1, 0,0, 4"_s
                                     << u"1,1 0,0 t4 f0 b0 LoopStart Interpolate Offset\n    Clsn1:"_s;
    }

    void framesAreReadByPosition()
    {
        QFETCH(QString, frame);
        QFETCH(QString, read);
        Air air;
        air.load(u"[begin action 10]\n"_s + frame + QLatin1Char('\n'));
        QCOMPARE(air.animations.count(), 1);
        QCOMPARE(air.animations.at(0)->number(), 10);
        QCOMPARE(air.animations.at(0)->frameCount(), 1);
        QCOMPARE(dumpAnimations(air.animations).section(QLatin1Char('\n'), 1).trimmed(), read);
    }

    void editsRewriteOnlyTheirLines_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<AirEdit>("edit");
        QTest::addColumn<QString>("after");
        // set(&F::setTime, 6): one call on the first frame through the model.
        using F = QAnimationFrame;
        const auto set = [](auto member, auto... values) { return onFrame(0, [=](F *f) { (f->*member)(values...); }); };
        // A frame line is rewritten in its exact spelling; the lines around it stay.
        const auto frame = [](const char *line) {
            return u"; Stand\n[Begin Action 0]\n; keep me\n%1\n; and me\n"_s.arg(QLatin1String(line));
        };
        QTest::newRow("no blanks become the written form") << frame("0,0,0,0,5") << set(&F::setSpriteGroup, 7) << frame("7,0, 0,0, 5");
        QTest::newRow("flip") << frame("0,0, 0,0, 5") << set(&F::setFlip, 3u) << frame("0,0, 0,0, 5, HV");
        QTest::newRow("blend without flip") << frame("10,0, 0,0, 4") << set(&F::setBlend, QAnimationFrameBlend::Addition, QBlendTarget())
                                            << frame("10,0, 0,0, 4, , A");
        QTest::newRow("A1") << frame("10,0, 0,0, 4") << set(&F::setBlend, QAnimationFrameBlend::Addition, QBlendTarget{256, 128})
                            << frame("10,0, 0,0, 4, , A1");
        QTest::newRow("S with flip") << frame("10,0, 0,0, 4, V") << set(&F::setBlend, QAnimationFrameBlend::Subtraction, QBlendTarget())
                                     << frame("10,0, 0,0, 4, V, S");
        QTest::newRow("scale x alone") << frame("1,0, 0,0, 5") << set(&F::setScaleX, 2.0) << frame("1,0, 0,0, 5, , , 2");
        QTest::newRow("scale y alone") << frame("1,0, 0,0, 5") << set(&F::setScaleY, 2.0) << frame("1,0, 0,0, 5, , ,,2");
        QTest::newRow("angle alone") << frame("1,0, 0,0, 5") << set(&F::setAngle, 90.0) << frame("1,0, 0,0, 5, , ,, , 90");
        QTest::newRow("all") << frame("0,1, 10,-5, 8, H, AS128D128, 1.5,1.5") << set(&F::setAngle, 45.0)
                             << frame("0,1, 10,-5, 8, H, AS128D128, 1.5,1.5, 45");
        QTest::newRow("a trailing comment goes") << frame("0,0, 0,0, 5 ; slow") << set(&F::setTime, 6) << frame("0,0, 0,0, 6");
        // A field set to what it is leaves the line and the document alone.
        QTest::newRow("the same time") << frame("0,0,0,0,5") << set(&F::setTime, 5) << frame("0,0,0,0,5");
        QTest::newRow("a scale within 1e-12") << frame("0,0,0,0,5") << set(&F::setScaleX, 1e-13) << frame("0,0,0,0,5");

        // A new declaration stands where the engine's own files put it: Clsn1Default,
        // Clsn2Default, Clsn1, Clsn2, then the frame.
        const auto insert = [&set](QCollisionBoxType type) { return set(&F::insertBox, type, QRect(0, 0, 2, 2)); };
        const QString clsn2 = u"Clsn2: 1\n  Clsn2[0] = -10, -60, 10, 0\n"_s;
        QTest::newRow("Clsn2 on a bare frame") << u"[Begin Action 0]\n0,0, 0,0, 5\n"_s
                                               << set(&F::insertBox, Collision, QRect(QPoint(-10, -60), QPoint(10, 0)))
                                               << u"[Begin Action 0]\n"_s + clsn2 + u"0,0, 0,0, 5\n"_s;
        QTest::newRow("a second box") << u"[Begin Action 0]\n"_s + clsn2 + u"0,0, 0,0, 5\n"_s << insert(Collision)
                                      << u"[Begin Action 0]\nClsn2: 2\n  Clsn2[0] = -10, -60, 10, 0\n  Clsn2[1] = 0, 0, 1, 1\n"
                                         "0,0, 0,0, 5\n"_s;
        QTest::newRow("Clsn1 above Clsn2") << u"[Begin Action 0]\n"_s + clsn2 + u"0,0, 0,0, 5\n"_s << insert(Attack)
                                           << u"[Begin Action 0]\nClsn1: 1\n  Clsn1[0] = 0, 0, 1, 1\n"_s + clsn2 + u"0,0, 0,0, 5\n"_s;
        const QString own = u"Clsn1: 1\n  Clsn1[0] = 5, 6, 7, 8\n"_s + clsn2 + u"0,0, 0,0, 5\n"_s;
        QTest::newRow("Clsn2Default above Clsn1") << u"[Begin Action 0]\n"_s + own << insert(CollisionDefault)
                                                  << u"[Begin Action 0]\nClsn2Default: 1\n  Clsn2[0] = 0, 0, 1, 1\n"_s + own;
        QTest::newRow("Clsn1Default above Clsn2Default")
            << u"[Begin Action 0]\nClsn2Default: 1\n  Clsn2[0] = 0, 0, 1, 1\n"_s + own << insert(AttackDefault)
            << u"[Begin Action 0]\nClsn1Default: 1\n  Clsn1[0] = 0, 0, 1, 1\nClsn2Default: 1\n  Clsn2[0] = 0, 0, 1, 1\n"_s + own;

        // Inter-frame lines go above the frame's declarations; a frame inserted before goes above them all.
        const auto qualified = [](const char *lines) {
            return u"[Begin Action 0]\n%1Clsn2: 1\n Clsn2[0] = 0,0,1,1\n0,0, 0,0, 5\n1,0, 0,0, 5\n"_s.arg(QLatin1String(lines));
        };
        QTest::newRow("LoopStart on") << qualified("") << set(&F::setInterFrame, LoopStart, true) << qualified("LoopStart\n");
        QTest::newRow("LoopStart on again") << qualified("LoopStart\n") << set(&F::setInterFrame, LoopStart, true)
                                            << qualified("LoopStart\n");
        QTest::newRow("Interpolate Scale on") << qualified("LoopStart\n") << set(&F::setInterFrame, InterpolateScale, true)
                                              << qualified("Interpolate Scale\nLoopStart\n");
        QTest::newRow("LoopStart off") << qualified("Interpolate Scale\nLoopStart\n") << set(&F::setInterFrame, LoopStart, false)
                                       << qualified("Interpolate Scale\n");
        QTest::newRow("a frame inserted first") << qualified("Interpolate Scale\n")
                                                << AirEdit([](Air &air) { air.animations.at(0)->frameInsert(0); })
                                                << qualified("-1,0, 0,0, 10\nInterpolate Scale\n");

        // Typed over, a line stays an element of its kind but becomes another type.
        const QString two = u"[Begin Action 0]\nClsn1: 1\n Clsn1[0] = 0,0,1,1\nClsn2: 1\n Clsn2[0] = 0,0,2,2\n0,0, 0,0, 5\n"
                            "Interpolate Blend\nInterpolate Angle\n1,0, 0,0, 5\n"_s;
        QTest::newRow("Clsn1 typed into Clsn2") << two << typeAt(1, 4, 1, u"2"_s) << QString(two).replace(u"Clsn1: 1"_s, u"Clsn2: 1"_s);
        QTest::newRow("Angle typed into Blend") << two << typeAt(7, 12, 5, u"Blend"_s)
                                                << QString(two).replace(u"Angle"_s, u"Blend"_s);

        // Wrong counts are kept as the file has them; a count is fixed only
        // when a box line joins or leaves its declaration.
        const QString frame0 = u"[Begin Action 0]\nClsn1: 5\n Clsn1[0] = 4,4,0,0\n Clsn1[7] = 0,0,2,2\n0,0, 0,0, 5\n"_s;
        const QString frame1 = u"Clsn2: 3\n Clsn2[0] = 0,0,1,1\n1,0, 0,0, 5\n"_s;
        const QString wrong = frame0 + frame1;
        QTest::newRow("a frame inserted elsewhere") << wrong << AirEdit([](Air &air) { air.animations.at(0)->frameInsert(1); })
                                                    << frame0 + u"-1,0, 0,0, 10\n"_s + frame1;
        QTest::newRow("a frame typed elsewhere") << wrong << typeAt(8, 0, 0, u"2,0, 0,0, 5\n"_s) << wrong + u"2,0, 0,0, 5\n"_s;
        QTest::newRow("a box typed under Clsn2") << wrong << typeAt(7, 0, 0, u" Clsn2[0] = 5,5,6,6\n"_s)
                                                 << frame0 + u"Clsn2: 2\n Clsn2[0] = 0,0,1,1\n  Clsn2[1] = 5, 5, 6, 6\n1,0, 0,0, 5\n"_s;
        // Box corners are read normalised; the line stays as it is.
        QTest::newRow("a box inserted under Clsn1")
            << wrong << set(&F::insertBox, Attack, QRect(QPoint(9, 9), QPoint(10, 10)))
            << u"[Begin Action 0]\nClsn1: 3\n Clsn1[0] = 4,4,0,0\n  Clsn1[1] = 0, 0, 2, 2\n  Clsn1[2] = 9, 9, 10, 10\n"
               "0,0, 0,0, 5\n"_s + frame1;
        // The last box takes its declaration with it.
        QTest::newRow("the box of Clsn2 removed")
            << wrong << onFrame(1, [](F *f) { f->hitBoxes(Collision)->at(0)->remove(true); })
            << frame0 + u"1,0, 0,0, 5\n"_s;
        QTest::newRow("a box of Clsn1 removed") << wrong << onFrame(0, [](F *f) { f->hitBoxes(Attack)->at(0)->remove(true); })
                                                << u"[Begin Action 0]\nClsn1: 1\n  Clsn1[0] = 0, 0, 2, 2\n0,0, 0,0, 5\n"_s + frame1;
        // A copy is the text as it stands.
        QTest::newRow("the action duplicated") << wrong << AirEdit([](Air &air) { air.animations.duplicate(0, -1); })
                                               << wrong + QLatin1Char('\n') + wrong;
    }

    void editsRewriteOnlyTheirLines()
    {
        QFETCH(QString, before);
        QFETCH(AirEdit, edit);
        QFETCH(QString, after);
        Air air;
        air.load(before);
        // Opening a file never changes it, wrong counts and all.
        QCOMPARE(air.plain(), before);
        QVERIFY(!air.animations.isModified());
        edit(air);
        // A typed line is fixed once the document has reported it.
        QCoreApplication::processEvents();
        QCOMPARE(air.plain(), after);
        QCOMPARE(air.animations.isModified(), after != before);
        QCOMPARE(dumpAnimations(air.animations), freshDump(air.plain()));
        if (after == before)
            return;
        // The edit, with any fix of a count, is one undo step, and an undo is no edit to fix.
        air.text.document()->undo();
        QCoreApplication::processEvents();
        QCOMPARE(air.plain(), before);
        QVERIFY(air.text.document()->isRedoAvailable());
        QCOMPARE(dumpAnimations(air.animations), freshDump(air.plain()));
    }

    void animationsComeAndGoWithTheirText()
    {
        Air air;
        air.load(u"; top\n[Begin Action 5]\n0,0, 0,0, 5\n\n; Walk\n[Begin Action 20]\n1,0, 0,0, 5\n"_s);
        QAnimations &model = air.animations;
        QCOMPARE(model.data(model.index(0)).toString(), u"5 - top"_s);
        QCOMPARE(model.data(model.index(1)).toString(), u"20 - Walk"_s);
        QVERIFY(!model.at(2));
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QAnimation *added = model.add(30);
        QCOMPARE(added->number(), 30);
        QCOMPARE(inserted.count(), 1);
        QVERIFY(air.plain().endsWith(u"1,0, 0,0, 5\n\n[Begin Action 30]\n"_s));
        QCOMPARE(added->frameAdd()->time(), 10);
        QVERIFY(air.plain().endsWith(u"[Begin Action 30]\n-1,0, 0,0, 10\n"_s));
        QCOMPARE(model.insert(0, 1)->number(), 1);
        // Before the very first line the new header stands on line two.
        QVERIFY(air.plain().startsWith(u"\n[Begin Action 1]\n; top\n"_s));
        QCOMPARE(numbers(model), u"1 5 20 30"_s);
        QCOMPARE(model.find(0, u"Walk"_s), 2);
        QCOMPARE(model.find(0, u"20"_s), 2);
        QCOMPARE(model.find(3, u"20"_s), -1);
        model.at(2)->setNumber(21);
        QCOMPARE(model.data(model.index(2)).toString(), u"21 - Walk"_s);
        model.at(2)->setName(u"Walking"_s);
        QCOMPARE(model.data(model.index(2)).toString(), u"21 - Walking"_s);
        // Removing takes the comment above with it, and the frames.
        model.remove(2);
        QVERIFY(!air.plain().contains(u"Walking"_s));
        QVERIFY(!air.plain().contains(u"1,0, 0,0, 5"_s));
        QCOMPARE(numbers(model), u"1 5 30"_s);
        QCOMPARE(dumpAnimations(model), freshDump(air.plain()));
    }

    void duplicateMoveAndSort()
    {
        Air air;
        // A zero-padded header, and an indented one that still ends the action above.
        air.load(u"[Begin Action 030]\n; mentions [begin action 30] too\n3,0, 0,0, 5\n"
                 "  [Begin Action 10]\n1,0, 0,0, 5\n"
                 "[Begin Action 20]\n2,0, 0,0, 5\n"_s);
        QAnimations &model = air.animations;
        QCOMPARE(model.duplicate(0, 31)->number(), 31);
        QCOMPARE(numbers(model), u"30 31 10 20"_s);
        QVERIFY(air.plain().contains(u"; mentions [Begin Action 31] too"_s));
        model.sort();
        QCOMPARE(numbers(model), u"10 20 30 31"_s);
        QCOMPARE(dumpAnimations(model), freshDump(air.plain()));
        // One undo puts the order back.
        air.text.document()->undo();
        QCOMPARE(numbers(model), u"30 31 10 20"_s);
        model.move(0, 3);
        QCOMPARE(numbers(model), u"31 10 20 30"_s);
        QCOMPARE(model.at(3)->frameAt(0)->spriteGroup(), 3);
        model.move(3, 1);
        model.move(0, 9); // out of range: nothing
        QCOMPARE(numbers(model), u"31 30 10 20"_s);
        model.remove(1);
        QCOMPARE(numbers(model), u"31 10 20"_s);
        QCOMPARE(dumpAnimations(model), freshDump(air.plain()));
    }

    void boxesResolveThroughDefaults()
    {
        Air air;
        air.load(u"[Begin Action 0]\n"
                 "0,0, 0,0, 5\n"                           // no Clsn2 at all
                 "Clsn2Default: 1\n Clsn2[0] = 0,0,1,1\n"
                 "1,0, 0,0, 5\n"                           // the default
                 "Clsn2: 1\n Clsn2[0] = 0,0,9,9\n"
                 "2,0, 0,0, 5\n"                           // its own
                 "3,0, 0,0, 5\n"                           // the default again
                 "Clsn2: 0\n"
                 "4,0, 0,0, 5\n"_s);                       // an empty own: the default
        // The right edge of the Clsn2 box that acts on each frame; no Clsn1 anywhere.
        QString resolved;
        for (const QAnimationFrame *frame : air.animations.at(0)->frames) {
            const QList<QCollisionBox *> boxes = frame->resolvedBoxes(true);
            resolved += (boxes.isEmpty() ? u"-"_s : QString::number(boxes.first()->rect().right()))
                + (frame->resolvedBoxes(false).isEmpty() ? u" "_s : u"!"_s);
        }
        QCOMPARE(resolved, u"- 1 9 1 1 "_s);
    }

    void duplicatesAndOrphans()
    {
        Air air;
        air.load(u"0,0, 0,0, 1\n"                 // before any action: an orphan
                 "[Begin Action 0]\n[Begin Action 0]\n"
                 "Clsn2: 1\n Clsn2[0] = 0,0,1,1\nClsn2: 1\n Clsn2[0] = 0,0,2,2\n"
                 "0,0, 0,0, 5\n"_s);
        QCOMPARE(air.animations.count(), 2);
        QCOMPARE(air.animations.find(0, u"0"_s), 0);
        QCOMPARE(air.animations.at(0)->frameCount(), 0);
        // The first declaration of a kind owns the slot; the second is an orphan.
        QCOMPARE(air.animations.at(1)->frameAt(0)->hitBoxes(Collision)->at(0)->rect().right(), 1);
    }

    void corpusFilesOpenAndSaveUnchanged_data()
    {
        QTest::addColumn<QString>("path");
        const QStringList files = TestSupport::corpusFiles({u"*.air"_s});
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
        static const QRegularExpression header(u"(^|\\n)[ \\t]*\\[\\s*begin\\s+action\\s+-?\\d+\\s*\\][ \\t\\r]*(?=\\n|;|$)"_s,
                                               QRegularExpression::CaseInsensitiveOption);
        int headers = 0;
        for (auto it = header.globalMatch(air.plain()); it.hasNext(); it.next())
            ++headers;
        QCOMPARE(air.animations.count(), headers);
        QTemporaryDir dir;
        QVERIFY(air.animations.toFile(dir.filePath(u"out.air"_s), false, true));
        QByteArray expected = TestSupport::readFile(path);
        if (expected.startsWith("\xef\xbb\xbf"))
            expected.remove(0, 3);
        expected.replace("\r\n", "\n").replace('\r', '\n').replace("\n", "\r\n");
        QCOMPARE(TestSupport::readFile(dir.filePath(u"out.air"_s)), expected);
    }

    void randomEditsKeepTheModelRight_data()
    {
        QTest::addColumn<QString>("path");
        const QString corpus = TestSupport::corpusDir();
        if (corpus.isEmpty())
            QSKIP("the corpus isn't there");
        QTest::newRow("kfm.air") << corpus + u"/elecbyte-mugen10/chars/kfm/kfm.air"_s;
        QTest::newRow("fightfx.air") << corpus + u"/elecbyte-mugen10/data/fightfx.air"_s;
    }

    void randomEditsKeepTheModelRight()
    {
        QFETCH(QString, path);
        const int edits = qEnvironmentVariableIntValue("KESTRADA_RANDOM_EDITS") > 0
            ? qEnvironmentVariableIntValue("KESTRADA_RANDOM_EDITS") : 400;
        const QStringList lines = QString::fromLatin1(TestSupport::readFile(path)).remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
        Air air;
        air.load(lines.mid(0, 500).join(QLatin1Char('\n')));
        QTextDocument *document = air.text.document();
        QAnimations &model = air.animations;
        static const QStringList vocabulary = {
            u"[Begin Action 77]"_s, u"  [begin action 007]"_s, u"0,0, 0,0, 5"_s, u"Clsn2: 1"_s, u"Clsn1Default: 2"_s,
            u"  Clsn2[0] = -10,0, 10,-60"_s, u"LoopStart"_s, u"Interpolate Angle"_s, u"; a name"_s, u""_s,
            u"1,2, 3,4, 5, H, A"_s, u"Clsn1: 0"_s};
        QRandomGenerator random(quint32(qHash(path)) ^ quint32(qEnvironmentVariableIntValue("KESTRADA_RANDOM_SEED")));
        for (int step = 0; step < edits; ++step) {
            QTextCursor cursor(document);
            const int operation = random.bounded(10);
            const int count = qMax(1, model.count());
            QAnimation *animation = model.at(random.bounded(count));
            QAnimationFrame *frame = animation && animation->frameCount() > 0
                ? animation->frameAt(random.bounded(animation->frameCount())) : nullptr;
            const QTextBlock block = document->findBlockByNumber(random.bounded(document->blockCount()));
            if (!frame && operation >= 3 && operation <= 6)
                continue;
            switch (operation) {
            case 0:
                cursor.setPosition(random.bounded(document->characterCount()));
                cursor.insertText(QString(u"0,C[]\n -"_s.at(random.bounded(8))));
                break;
            case 1:
                cursor.setPosition(block.position());
                cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor);
                cursor.removeSelectedText();
                break;
            case 2:
                cursor.setPosition(block.position());
                cursor.insertText(vocabulary.at(random.bounded(int(vocabulary.size()))) + QLatin1Char('\n'));
                break;
            case 3:
                frame->setValues(random.bounded(50), random.bounded(5), random.bounded(-9, 9), 0, random.bounded(1, 9),
                                 uint(random.bounded(4)), QAnimationFrameBlend(random.bounded(3)), QBlendTarget(),
                                 random.bounded(2) ? 1.5 : 0, 0, random.bounded(2) ? 30 : 0);
                break;
            case 4: frame->insertBox(QCollisionBoxType(random.bounded(4)), QRect(0, 0, 5, 5)); break;
            case 5: {
                const QList<QCollisionBox *> boxes = frame->resolvedBoxes(random.bounded(2));
                if (!boxes.isEmpty() && boxes.first()->parent && boxes.first()->parent->parent == frame)
                    boxes.first()->remove(true);
                break;
            }
            case 6: frame->setInterFrame(QInterFrameElementType(random.bounded(5)), random.bounded(2)); break;
            case 7:
                switch (random.bounded(4)) {
                case 0: if (animation) animation->frameAdd(); break;
                case 1: model.duplicate(model.count() - 1, random.bounded(2) ? -1 : 99); break;
                case 2: model.move(random.bounded(count), random.bounded(count)); break;
                default: model.remove(random.bounded(count)); break;
                }
                break;
            case 8: document->undo(); break;
            default: document->redo(); break;
            }
            // Fixes of counts wait for the event loop.
            QCoreApplication::processEvents();
            const QString live = dumpAnimations(model);
            const QString fresh = freshDump(air.plain());
            QVERIFY2(live == fresh, qPrintable(u"step %1 (operation %2):\n"_s.arg(step).arg(operation)
                                               + TestSupport::unifiedDiff(fresh.split(QLatin1Char('\n')), live.split(QLatin1Char('\n')),
                                                                          u"fresh"_s, u"live"_s)));
        }
    }
};

QTEST_MAIN(tst_QAnimations)
#include "tst_qanimations.moc"
