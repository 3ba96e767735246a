#include "core/base/qcodepages.h"
#include "core/text/qcommand.h"
#include "core/text/qsyntaxtexteditor.h"
#include "core/text/qtexttokenizer.h"
#include "testsupport.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTextCodec>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

#include "testelementkinds.h"

using namespace TestKinds;

namespace {

QString lineOf(const QTextElement *element)
{
    return element ? QStringLiteral("L%1").arg(element->lineNumber()) : QStringLiteral("-");
}

/** A stable text of the whole chain: kinds, lines, fields and bonds. */
QString dump(const QElementTextEditor &editor, QString *fault = nullptr)
{
    QStringList lines;
    const QTextElement *previous = nullptr;
    int lastLine = -1;
    for (const QTextElement *e = editor.firstElement(); e; e = e->next) {
        // The chain itself must hold together.
        const char *problem = e->previous != previous              ? "broken back link"
            : !e->alive || e->editor != &editor                     ? "dead or foreign element"
            : e->lineNumber() <= lastLine                           ? "chain out of order"
            : QTextEditorBlockData::elementOf(e->block) != e        ? "block data lost its element"
                                                                    : nullptr;
        if (fault && fault->isEmpty() && problem)
            *fault = QLatin1String(problem) + QLatin1String(" at ") + lineOf(e);
        previous = e;
        lastLine = e->lineNumber();

        QString line = QStringLiteral("%1 %2/%3").arg(lineOf(e)).arg(e->elementType()).arg(e->elementSubType());
        const int type = e->elementType();
        if (type == 1) {
            const auto *c = static_cast<const QNameComment *>(e);
            line += QStringLiteral(" \"%1\" names %2").arg(c->text, lineOf(c->header));
        } else if (type & 2) {
            const auto *h = static_cast<const QGroupHeader *>(e);
            line += QStringLiteral(" named by %1").arg(lineOf(h->nameComment));
            if (h->isParamGroup()) {
                QStringList params;
                for (const QGroupParam *p : static_cast<const QParamGroup *>(h)->params)
                    params.append(lineOf(p));
                line += QStringLiteral(" params [%1]").arg(params.join(QLatin1Char(' ')));
            }
            if (type == 18)
                line += QStringLiteral(" action %1").arg(static_cast<const TestAction *>(e)->number);
        } else if (type & 4) {
            const auto *p = static_cast<const QGroupParam *>(e);
            line += QStringLiteral(" %1 in %2").arg(p->key, lineOf(p->group));
            if (p->subType == QGroupParam::QuotedText)
                line += QStringLiteral(" = \"%1\"").arg(static_cast<const QStringParam *>(p)->value);
            else
                line += QStringLiteral(" = %1").arg(commandStepsText(static_cast<const QCommandParam *>(p)->steps));
        } else {
            line += QLatin1Char(' ') + static_cast<const TestLine *>(e)->words.join(QLatin1Char('|'));
        }
        lines.append(line);
    }
    return lines.join(QLatin1Char('\n'));
}

QString freshDump(const QString &text)
{
    QSyntaxTextEditor fresh(nullptr, FileAnimations, true, 0x1010000, true);
    acceptAll(fresh);
    fresh.document()->setPlainText(text);
    return dump(fresh);
}

} // namespace

class tst_QElementTextEditor : public QObject
{
    Q_OBJECT

private:
    QList<QTextElementReg *> m_registries;

    static void setText(QSyntaxTextEditor &editor, const char *text)
    {
        editor.document()->setPlainText(QString::fromUtf8(text));
    }

    /** The element on line `line`, or null. */
    static QTextElement *at(QSyntaxTextEditor &editor, int line)
    {
        return QTextEditorBlockData::elementOf(editor.document()->findBlockByNumber(line));
    }

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        registerNameCommentElements();
        registerCommandElements();
        m_registries = registerAll();
    }

    void cleanupTestCase()
    {
        unregisterAll(m_registries);
        releaseCommandElements();
        releaseNameCommentElements();
    }

    void startRules_data()
    {
        QTest::addColumn<quint32>("rule");
        QTest::addColumn<QString>("passes");
        QTest::addColumn<QString>("fails");
        QTest::newRow("any") << QTextElementReg::makeRule(1) << QStringLiteral("a[-0") << QString();
        QTest::newRow("digit or minus") << QTextElementReg::makeRule(2) << QStringLiteral("09-") << QStringLiteral("a.+");
        QTest::newRow("one character") << QTextElementReg::makeRule(3, '[') << QStringLiteral("[") << QStringLiteral("]a");
        QTest::newRow("two characters") << QTextElementReg::makeRule(4, 'a', 'b') << QStringLiteral("ab") << QStringLiteral("ABc");
        QTest::newRow("three characters") << QTextElementReg::makeRule(5, 'a', 'b', 'c') << QStringLiteral("abc") << QStringLiteral("d");
        QTest::newRow("a letter in either case") << QTextElementReg::makeRule(6, 'C') << QStringLiteral("Cc") << QStringLiteral("dD");
        QTest::newRow("two letters") << QTextElementReg::makeRule(7, 'L', 'I') << QStringLiteral("LlIi") << QStringLiteral("ab");
        QTest::newRow("three letters") << QTextElementReg::makeRule(8, 'A', 'B', 'C') << QStringLiteral("aBc") << QStringLiteral("d");
        QTest::newRow("rule 0 passes nothing") << QTextElementReg::makeRule(0) << QString() << QStringLiteral("a0[");
        QTest::newRow("rule 9 passes nothing") << QTextElementReg::makeRule(9, 'a') << QString() << QStringLiteral("a");
    }

    void startRules()
    {
        QFETCH(quint32, rule);
        QFETCH(QString, passes);
        QFETCH(QString, fails);
        for (QChar c : passes)
            QVERIFY2(QTextElementReg::rulePasses(rule, c), qPrintable(QString(c)));
        for (QChar c : fails)
            QVERIFY2(!QTextElementReg::rulePasses(rule, c), qPrintable(QString(c)));
        // No first character: only "any" passes.
        QCOMPARE(QTextElementReg::rulePasses(rule, QChar()), (rule & 0xff) == 1);
    }

    void commandFileElements()
    {
        QSyntaxTextEditor editor(nullptr, FileCommands, true, 0x1010000, true);
        acceptAll(editor);
        setText(editor,
                "command = a\n"           // 0: a parameter before any group
                ";-= Super =-\n"          // 1
                "[Command]\n"             // 2
                "name = \"super\"\n"      // 3
                "command = ~30$D, $F, x+y\n" // 4
                "time = 20\n"             // 5: no kind for it
                "name = unquoted\n"       // 6: needs a string
                "\n"
                "; far above\n"           // 8
                "\n"
                "[Command]\n"             // 10
                "name =\n"                // 11: ends too early
                "[Command\n"              // 12: no closing bracket
                "; not above a header\n"  // 13
                "x = 1\n"
                "[Statedef 0]\n");
        QCOMPARE(dump(editor),
                 QStringLiteral("L0 4/3 command in - = a\n"
                                "L1 1/0 \"-= Super =-\" names L2\n"
                                "L2 514/0 named by L1 params [L3 L4]\n"
                                "L3 4/1 name in L2 = \"super\"\n"
                                "L4 4/3 command in L2 = ~30$D, $F, x+y\n"
                                "L8 1/0 \"far above\" names L10\n"
                                "L10 514/0 named by L8 params []"));
        auto *command = static_cast<QCommand *>(at(editor, 2));
        QCOMPARE(command->name(), QStringLiteral("super"));
        QCOMPARE(command->name(true), QStringLiteral("-= Super =-"));
        QCOMPARE(command->commandText(), QStringLiteral("~30$D, $F, x+y"));
        QCOMPARE(command->length(), 3);
        // param() gives the first of a key, as written.
        QCOMPARE(command->param(QStringLiteral("name")), at(editor, 3));
        QVERIFY(!command->param(QStringLiteral("Name")));
    }

    void commandTextIsCanonical_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("length");
        QTest::newRow("spaces and order") << QStringLiteral("command=  $ ~ D ,F") << QStringLiteral("~$D, F") << 2;
        QTest::newRow("hold and release") << QStringLiteral("command = /F, ~20a") << QStringLiteral("/F, ~20a") << 2;
        QTest::newRow("nothing between") << QStringLiteral("command = >~B, >F") << QStringLiteral("~>B, >F") << 6;
        QTest::newRow("buttons and start") << QStringLiteral("command = s+a+z, F+x") << QStringLiteral("a+zs, F+x") << 2;
        QTest::newRow("unknown keys are ignored") << QStringLiteral("command = Q, DF") << QStringLiteral(", DF") << 2;
    }

    void commandTextIsCanonical()
    {
        QFETCH(QString, line);
        QFETCH(QString, text);
        QFETCH(int, length);
        QSyntaxTextEditor editor(nullptr, FileCommands, true, 0x1010000, true);
        acceptAll(editor);
        editor.document()->setPlainText(QStringLiteral("[Command]\n") + line);
        auto *command = static_cast<QCommand *>(at(editor, 0));
        QCOMPARE(command->commandText(), text);
        QCOMPARE(command->length(), length);
    }

    void nameCommentsInABlockParse()
    {
        QSyntaxTextEditor editor(nullptr, FileAnimations, true, 0x1010000, true);
        acceptAll(editor);
        // A ruler right above a header names it: the ruler rule is only for comment blocks.
        setText(editor, ";-----\n[Begin Action 10]\n;---- \n\n  \n[Begin Action 11]\n");
        QCOMPARE(static_cast<QGroupHeader *>(at(editor, 1))->name(), QStringLiteral("-----"));
        QCOMPARE(static_cast<QGroupHeader *>(at(editor, 5))->name(), QStringLiteral("----"));
        // An unterminated string ends with its line: no element, and the next line is read alone.
        setText(editor, "[Begin Action \"1\n[Begin Action 2]");
        QVERIFY(!at(editor, 0));
        QCOMPARE(static_cast<TestAction *>(at(editor, 1))->number, 2);
    }

    void editsFollowTheText()
    {
        QSyntaxTextEditor editor(nullptr, FileCommands, true, 0x1010000, true);
        acceptAll(editor);
        setText(editor, "[Command]\nname = \"a\"\ncommand = x\n\n[Command]\nname = \"b\"\n");
        QSignalSpy updated(&editor, &QElementTextEditor::updated);
        QTextCursor cursor(editor.document());

        // Typing inside a value changes the element in place.
        cursor.setPosition(editor.document()->findBlockByNumber(1).position() + 9);
        cursor.insertText(QStringLiteral("bc"));
        QCOMPARE(static_cast<QStringParam *>(at(editor, 1))->value, QStringLiteral("abc"));
        QCOMPARE(updated.count(), 1);
        QCOMPARE(updated.last().first().toBool(), false);

        // Removing the first header hands its parameters to nobody, then to the next header above.
        cursor.setPosition(0);
        cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        QCOMPARE(updated.last().first().toBool(), true);
        QCOMPARE(dump(editor), freshDump(editor.document()->toPlainText()));
        QVERIFY(!static_cast<QGroupParam *>(at(editor, 0))->group);

        // A header typed above parameters collects them.
        cursor.setPosition(0);
        cursor.insertText(QStringLiteral("[Command]\n"));
        QCOMPARE(static_cast<QParamGroup *>(at(editor, 0))->params.size(), 2);
        QCOMPARE(dump(editor), freshDump(editor.document()->toPlainText()));
    }

    void structuredEdits_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("edit");
        QTest::addColumn<QString>("expected");
        const QString named = QStringLiteral("; top\n[Begin Action 0]\n0,0, 0,0, 5\n; Walk\n[Begin Action 20]\n0,0, 0,0, 5\n");
        const QString unnamed = QStringLiteral("; top\n[Begin Action 0]\n0,0, 0,0, 5\n[Begin Action 20]\n0,0, 0,0, 5\n");
        const QString action = QStringLiteral("[Begin Action 1]\n0,0, 0,0, 5");
        // Renaming rewrites only the comment.
        QTest::newRow("rename") << named << QStringLiteral("name 4 Walk forward")
                                << QStringLiteral("; top\n[Begin Action 0]\n0,0, 0,0, 5\n; Walk forward\n[Begin Action 20]\n0,0, 0,0, 5\n");
        QTest::newRow("unname") << named << QStringLiteral("name 4") << unnamed;
        QTest::newRow("name") << unnamed << QStringLiteral("name 3 Walk") << named;
        QTest::newRow("name on the first line") << action << QStringLiteral("name 0 Stand") << QStringLiteral("; Stand\n") + action;
        // A group goes with its comments and lines, and leaves the next one's.
        QTest::newRow("remove a group")
            << QStringLiteral("x\n; name\n;abc;def\n[Begin Action 1]\n0,0, 0,0, 5\n\n; next one\n[Begin Action 2]\n0,0, 0,0, 5\n")
            << QStringLiteral("remove 3") << QStringLiteral("x\n\n; next one\n[Begin Action 2]\n0,0, 0,0, 5\n");
        // A header removed alone hands its parameters to the header above.
        QTest::newRow("remove a header") << QStringLiteral("[Command]\nname = \"a\"\n[Command]\nname = \"b\"\ncommand = x\n")
                                         << QStringLiteral("unhead 2") << QStringLiteral("[Command]\nname = \"a\"\nname = \"b\"\ncommand = x\n");
        QTest::newRow("after the line") << action << QStringLiteral("after 0 1,0, 0,0, 5")
                                        << QStringLiteral("[Begin Action 1]\n1,0, 0,0, 5\n0,0, 0,0, 5");
        QTest::newRow("after the group") << action << QStringLiteral("afterGroup 0 [Begin Action 2]")
                                         << action + QStringLiteral("\n[Begin Action 2]");
        QTest::newRow("before the line") << QStringLiteral("x\n; n\n[Begin Action 1]") << QStringLiteral("before 2 ; y")
                                         << QStringLiteral("x\n; n\n; y\n[Begin Action 1]");
        QTest::newRow("before the group") << QStringLiteral("x\n; n\n[Begin Action 1]") << QStringLiteral("beforeGroup 2 ; y")
                                          << QStringLiteral("x\n; y\n; n\n[Begin Action 1]");
        // Before the very first line: an empty line one, and the text joined to the old first line.
        QTest::newRow("before the first line") << action << QStringLiteral("before 0 ; joined")
                                               << QStringLiteral("\n; joined") + action;
        QTest::newRow("append") << action << QStringLiteral("append [Begin Action 2]")
                                << action + QStringLiteral("\n[Begin Action 2]");
    }

    void structuredEdits()
    {
        QFETCH(QString, text);
        QFETCH(QString, edit);
        QFETCH(QString, expected);
        QSyntaxTextEditor editor(nullptr, FileCommands, true, 0x1010000, true);
        acceptAll(editor);
        editor.document()->setPlainText(text);
        // "verb line words...": the element on that line, and the rest of the edit as its text.
        const QString verb = edit.section(QLatin1Char(' '), 0, 0);
        QTextElement *element = at(editor, edit.section(QLatin1Char(' '), 1, 1).toInt());
        const QString line = edit.section(QLatin1Char(' '), verb == QLatin1String("append") ? 1 : 2);
        QVERIFY(element || verb == QLatin1String("append"));
        if (verb == QLatin1String("name"))
            static_cast<QGroupHeader *>(element)->setName(line);
        else if (verb == QLatin1String("remove") || verb == QLatin1String("unhead"))
            element->remove(verb == QLatin1String("unhead"));
        else if (verb.startsWith(QLatin1String("after")))
            editor.insertLineAfter(element, line, verb == QLatin1String("after"));
        else if (verb.startsWith(QLatin1String("before")))
            editor.insertLineBefore(element, line, verb == QLatin1String("before"));
        else
            editor.appendLine(line);
        QCOMPARE(editor.document()->toPlainText(), expected);
        QCOMPARE(dump(editor), freshDump(expected));
        // One undo step takes it all back.
        editor.document()->undo();
        QCOMPARE(editor.document()->toPlainText(), text);
        QCOMPARE(dump(editor), freshDump(text));
        editor.document()->redo();
        QCOMPARE(dump(editor), freshDump(expected));
    }

    void chainQueries()
    {
        QSyntaxTextEditor editor(nullptr, FileAnimations, true, 0x1010000, true);
        acceptAll(editor);
        // Line 2 is a name comment: the test is loose, a ';' before any blank.
        setText(editor, "x\n; name\n;abc;def\n[Begin Action 1]\n0,0, 0,0, 5\n\n; next one\n[Begin Action 2]\n0,0, 0,0, 5\n");
        // The lines of each group: its comments first, and for the last one, to past the end.
        QCOMPARE(QList<int>({at(editor, 3)->firstLine(), at(editor, 3)->lastLine(), at(editor, 7)->firstLine(), at(editor, 7)->lastLine()}),
                 QList<int>({1, 4, 6, editor.document()->blockCount()}));
        // Chain searches skip what doesn't match and stop where told.
        QTextElement *frame = at(editor, 8);
        QCOMPARE(editor.findPrevious(frame, 18, 0), at(editor, 7));
        QCOMPARE(editor.findPrevious(frame, 32, 0), at(editor, 4));
        QCOMPARE(editor.findPrevious(frame, 32, 18), nullptr);
        QCOMPARE(editor.findNext(at(editor, 4), 18, 0), at(editor, 7));
        QCOMPARE(editor.findNext(at(editor, 4), 18, 1), nullptr);
    }

    void updateBracketsAreOneStep()
    {
        QSyntaxTextEditor editor(nullptr, FileAnimations, true, 0x1010000, true);
        acceptAll(editor);
        setText(editor, "[Begin Action 1]\n");
        QSignalSpy updated(&editor, &QElementTextEditor::updated);
        editor.beginUpdate();
        for (int i = 0; i < 5; ++i)
            editor.appendLine(QStringLiteral("%1,0, 0,0, 5").arg(i));
        editor.endUpdate();
        QCOMPARE(updated.count(), 1);
        QCOMPARE(updated.first().first().toBool(), true);
        // One undo takes all five lines away.
        editor.document()->undo();
        QCOMPARE(dump(editor), QStringLiteral("L0 18/0 named by - action 1"));
    }

    void elementsComeFromThePools()
    {
        QSyntaxTextEditor editor(nullptr, FileAnimations, true, 0x1010000, true);
        acceptAll(editor);
        QString text;
        for (int i = 0; i < 200; ++i)
            text += QStringLiteral("%1,0, 0,0, 5\n").arg(i);
        editor.document()->setPlainText(text);
        const int allocated = QTextElementPool<TestFrame>::allocated();
        // Parsing the same lines again reuses what the last parse gave back.
        for (int round = 0; round < 3; ++round)
            editor.document()->setPlainText(text);
        QCOMPARE(QTextElementPool<TestFrame>::allocated(), allocated);
        editor.document()->clear();
        QVERIFY(QTextElementPool<TestFrame>::resting() >= 200);
    }

    void randomEditsKeepTheChainRight_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("edits");
        const QString corpus = TestSupport::corpusDir();
        if (corpus.isEmpty())
            QSKIP("the corpus isn't there");
        const int edits = qEnvironmentVariableIntValue("KESTRADA_RANDOM_EDITS") > 0
            ? qEnvironmentVariableIntValue("KESTRADA_RANDOM_EDITS") : 700;
        QTest::newRow("kfm.cmd") << corpus + QStringLiteral("/elecbyte-mugen10/chars/kfm/kfm.cmd") << edits;
        QTest::newRow("takezo.cmd") << corpus + QStringLiteral("/takezo/takezo.cmd") << edits;
        QTest::newRow("kfm.air") << corpus + QStringLiteral("/webmugen/public/chars/kfm/kfm.air") << edits;
        QTest::newRow("fightfx.air") << corpus + QStringLiteral("/elecbyte-mugen10/data/fightfx.air") << edits;
    }

    void randomEditsKeepTheChainRight()
    {
        QFETCH(QString, path);
        QFETCH(int, edits);
        // The big files are cut so that each step's fresh parse stays quick.
        const QByteArray bytes = TestSupport::readFile(path);
        const QString text = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("Shift_JIS"))
                                 ->toUnicode(bytes).section(QLatin1Char('\n'), 0, 699);
        QVERIFY(!text.isEmpty());
        QSyntaxTextEditor editor(nullptr, FileCommands, true, 0x1010000, true);
        acceptAll(editor);
        editor.document()->setPlainText(text);
        QTextDocument *document = editor.document();

        static const QStringList vocabulary = {
            QStringLiteral("[Command]"), QStringLiteral("name = \"x\""), QStringLiteral("command = ~D, DF, F, x"),
            QStringLiteral("; a name"), QStringLiteral(";---------"), QStringLiteral(""), QStringLiteral("   "),
            QStringLiteral("[Begin Action 7]"), QStringLiteral("0,0, 0,0, 5"), QStringLiteral("Clsn2: 1"),
            QStringLiteral("  Clsn2[0] = -10,0, 10,-60"), QStringLiteral("[Statedef 200]"), QStringLiteral("time = 5"),
            QStringLiteral("name = \"open"), QStringLiteral("[Command"), QStringLiteral("5,0, 0,0, 4 ; tail")};
        static const QString characters = QStringLiteral("ab[]=,;\"\n 0123-xC");

        // KESTRADA_RANDOM_SEED explores other sequences; the default one is fixed.
        QRandomGenerator random(quint32(qHash(path)) ^ quint32(qEnvironmentVariableIntValue("KESTRADA_RANDOM_SEED")));
        const auto word = [&random] { return vocabulary.at(random.bounded(int(vocabulary.size()))); };
        for (int step = 0; step < edits; ++step) {
            QTextCursor cursor(document);
            const int length = document->characterCount() - 1;
            const int blocks = document->blockCount();
            const QTextBlock block = document->findBlockByNumber(random.bounded(blocks));
            cursor.setPosition(block.position());
            QString what = QStringLiteral("at line %1: ").arg(block.blockNumber());
            switch (random.bounded(12)) {
            case 0:
            case 1: {
                const QChar c = characters.at(random.bounded(int(characters.size())));
                cursor.setPosition(random.bounded(length + 1));
                cursor.insertText(QString(c));
                what = QStringLiteral("type '%1' at %2").arg(c == QLatin1Char('\n') ? QStringLiteral("\\n") : QString(c)).arg(cursor.position());
                break;
            }
            case 2:
            case 3: {
                if (length == 0)
                    continue;
                const int at = random.bounded(length);
                cursor.setPosition(at);
                cursor.setPosition(qMin(length, at + 1 + random.bounded(3)), QTextCursor::KeepAnchor);
                cursor.removeSelectedText();
                what = QStringLiteral("delete at %1").arg(at);
                break;
            }
            case 4:
                if (!cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor))
                    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
                cursor.removeSelectedText();
                what += QStringLiteral("remove the line");
                break;
            case 5:
            case 6:
                cursor.insertText(word() + QLatin1Char('\n'));
                what += QStringLiteral("insert a line");
                break;
            case 7: {
                // Paste a few lines taken from elsewhere in the file.
                const int from = random.bounded(blocks);
                const int to = qMin(blocks, from + 1 + random.bounded(8));
                QStringList pasted;
                for (int i = from; i < to; ++i)
                    pasted.append(document->findBlockByNumber(i).text());
                cursor.insertText(pasted.join(QLatin1Char('\n')) + QLatin1Char('\n'));
                what += QStringLiteral("paste %1 lines").arg(pasted.size());
                break;
            }
            case 8:
                document->undo();
                what = QStringLiteral("undo");
                break;
            case 9:
                document->redo();
                what = QStringLiteral("redo");
                break;
            case 10: {
                // Structured edits through the primitives.
                QList<QGroupHeader *> headers;
                for (QTextElement *e = editor.firstElement(); e; e = e->next) {
                    if (e->elementType() & 2)
                        headers.append(static_cast<QGroupHeader *>(e));
                }
                if (headers.isEmpty())
                    continue;
                QGroupHeader *header = headers.at(random.bounded(int(headers.size())));
                const int kind = random.bounded(4);
                what = QStringLiteral("structured edit %1 at line %2").arg(kind).arg(header->lineNumber());
                if (kind == 0)
                    header->setName(random.bounded(3) == 0 ? QString() : QStringLiteral("Renamed %1").arg(step));
                else if (kind == 1)
                    editor.insertLineAfter(header, word(), random.bounded(2));
                else if (kind == 2)
                    editor.insertLineBefore(header, word(), random.bounded(2));
                else
                    header->remove(random.bounded(2));
                break;
            }
            default:
                // Replace a whole line, as a user pasting over a selection.
                cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
                cursor.insertText(word());
                what += QStringLiteral("replace the line");
                break;
            }

            QString fault;
            const QString live = dump(editor, &fault);
            QVERIFY2(fault.isEmpty(), qPrintable(QStringLiteral("step %1 (%2): %3").arg(step).arg(what, fault)));
            const QString fresh = freshDump(document->toPlainText());
            if (live != fresh)
                QFAIL(qPrintable(QStringLiteral("step %1 (%2):\n%3").arg(step).arg(what, TestSupport::unifiedDiff(
                    fresh.split(QLatin1Char('\n')), live.split(QLatin1Char('\n')), QStringLiteral("fresh"), QStringLiteral("live")))));
        }
    }
};

QTEST_MAIN(tst_QElementTextEditor)
#include "tst_qelementtexteditor.moc"
