// The syntax processor at work in documents: what an edit re-reads, that
// the result of edits equals a reading from scratch, versions and checking,
// the messages of a document, the project's version, the engine's own files,
// and text no engine file would hold. What single lines give is in the
// reference samples (tst_syntaxreferences).

#include "core/app/qproject.h"
#include "core/base/qcodepages.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"
#include "core/text/qelementtexteditor.h"
#include "core/text/qmugensyntaxprocessor.h"
#include "core/text/qmugensyntaxproperties.h"
#include "core/text/qsyntaxhierarchy.h"
#include "core/text/qsyntaxtexteditor.h"
#include "testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

namespace {

QString vocabularyFile()
{
    return QDir::cleanPath(QStringLiteral(TEST_DATA_DIR "/../../data/syntax_mugen.xml"));
}

/** Counts the lines it reads. */
class CountingProcessor : public QMugenSyntaxProcessor
{
public:
    using QMugenSyntaxProcessor::QMugenSyntaxProcessor;
    QList<int> lines;

protected:
    void highlightBlock(const QString &text) override
    {
        lines.append(currentBlock().blockNumber());
        QMugenSyntaxProcessor::highlightBlock(text);
    }
};

/** What the processor left on every line, one text per line. */
QStringList snapshot(const QTextDocument *document)
{
    QStringList lines;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        const QTextEditorBlockData *data = QTextEditorBlockData::of(block, false);
        QString line = QStringLiteral("%1: state %2").arg(block.blockNumber()).arg(block.userState());
        if (data) {
            line += QStringLiteral(" fold %1 %2%3").arg(data->foldLevel).arg(data->isHeader).arg(data->beforeHeader);
            for (const QSyntaxIssue &issue : data->issues)
                line += QStringLiteral(" [%1 %2-%3 %4]").arg(issue.severity).arg(issue.start).arg(issue.end).arg(issue.text);
            line += QStringLiteral(" (%1 brackets)").arg(data->parens.size());
        }
        lines.append(line);
    }
    return lines;
}

/** The issues of one line. */
QVector<QSyntaxIssue> issuesOf(const QTextDocument *document, int line)
{
    const QTextEditorBlockData *data = QTextEditorBlockData::of(document->findBlockByNumber(line), false);
    return data ? data->issues : QVector<QSyntaxIssue>();
}

const char *const stateText =
    "; a state file\n"
    "[Data]\n"
    "life = 1000\n"
    "\n"
    "[Statedef 0]\n"
    "type = S\n"
    "anim = 0\n"
    "\n"
    "; first\n"
    "[State 0, 1]\n"
    "type = ChangeState\n"
    "trigger1 = time > 5 && (var(1) = 2)\n"
    "value = 10\n"
    "\n"
    "[State 0, 2]\n"
    "type = VarSet\n"
    "trigger1 = 1\n"
    "v = 1\n"
    "[Statedef 10]\n"
    "type = C\n"
    "[State 10, 1]\n"
    "type = Null\n"
    "trigger1 = 1\n";

} // namespace

class tst_QMugenSyntaxProcessor : public QObject
{
    Q_OBJECT

private:
    QMugenSyntaxProperties m_vocabulary;

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        QVERIFY(m_vocabulary.load(vocabularyFile()));
        mugenSyntax = &m_vocabulary;
    }

    void cleanupTestCase()
    {
        mugenSyntax = nullptr;
    }

    void anEditReadsOnlyUntilTheStateSettles()
    {
        // QSyntaxHighlighter alone would wait for the event loop, and ignore
        // edits until then: the processor reads a document at once, and
        // every edit as it comes, without one.
        QElementTextEditor editor(false);
        QString text = QString::fromLatin1(stateText);
        for (int i = 0; i < 200; ++i)
            text += QStringLiteral("trigger%1 = time\n").arg(i + 2);
        editor.document()->setPlainText(text);
        CountingProcessor processor(editor.document());
        const QStringList before = snapshot(editor.document());

        // A value changes: its line is read again, nothing further.
        QTextCursor cursor(editor.document()->findBlockByNumber(12));
        cursor.movePosition(QTextCursor::EndOfBlock);
        cursor.insertText(QStringLiteral("0"));
        QVERIFY2(processor.lines.size() <= 2, qPrintable(QString::number(processor.lines.size())));
        QCOMPARE(processor.lines.first(), 12);

        // The last [State] becomes a [Statedef]: every line after it changes
        // section, and its trigger lines are no keys of a [Statedef].
        processor.lines.clear();
        QTextCursor header(editor.document()->findBlockByNumber(20));
        header.movePosition(QTextCursor::StartOfBlock);
        header.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        header.insertText(QStringLiteral("[Statedef 11]"));
        QCOMPARE(processor.lines.last(), editor.document()->blockCount() - 1);
        QCOMPARE(editor.document()->lastBlock().previous().userState(), int(QMugenSyntaxProcessor::StateDefSection));
        QCOMPARE(issuesOf(editor.document(), 30).size(), 1);
        QCOMPARE(issuesOf(editor.document(), 30).at(0).text, QStringLiteral("Unknown 'StateDef' parameter 'trigger9'"));

        // And back: the lines are as they were before.
        header.movePosition(QTextCursor::StartOfBlock);
        header.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        header.insertText(QStringLiteral("[State 10, 1]"));
        cursor.deletePreviousChar();
        QCOMPARE(snapshot(editor.document()), before);
    }

    void editsEndWhereAReadingFromScratchWould()
    {
        // Random edits: after each, every line (state, fold level, header
        // flags, diagnostics) is what a fresh document with the same text
        // gives. Fold levels and header flags depend on the lines around
        // the edit, which is what this watches most.
        static const char *const pieces[] = {
            "[Statedef 5]\n", "[State 5, 1]\n", "type = Null\n", "type = ChangeState\n", "trigger1 = 1\n",
            "\n", "; comment\n", "[Data]\n", "life = 5\n", "value = (1\n", "[", "]", "x", "\n\n", "[Begin Action 1]\n",
            "0,0, 0,0, 5\n", "type = S\n",
        };
        QElementTextEditor editor(false);
        editor.document()->setPlainText(QString::fromLatin1(stateText));
        QMugenSyntaxProcessor processor(editor.document());
        QRandomGenerator random(20240611);
        for (int step = 0; step < 300; ++step) {
            QTextCursor cursor(editor.document());
            const int size = editor.document()->characterCount() - 1;
            cursor.setPosition(int(random.bounded(size + 1)));
            if (random.bounded(3) == 0 && size > 0) {
                const int length = int(random.bounded(qMin(20, size - cursor.position()) + 1));
                cursor.setPosition(qMin(size, cursor.position() + length), QTextCursor::KeepAnchor);
                cursor.removeSelectedText();
            } else {
                cursor.insertText(QLatin1String(pieces[random.bounded(int(std::size(pieces)))]));
            }

            QElementTextEditor fresh(false);
            fresh.document()->setPlainText(editor.document()->toPlainText());
            QMugenSyntaxProcessor reference(fresh.document());
            const QStringList expected = snapshot(fresh.document());
            const QStringList actual = snapshot(editor.document());
            if (actual != expected)
                qWarning().noquote() << TestSupport::unifiedDiff(expected, actual, QStringLiteral("from scratch"),
                                                                 QStringLiteral("after edits"));
            QVERIFY2(actual == expected, qPrintable(QStringLiteral("step %1").arg(step)));
        }
    }

    void theVersionDecidesWhatIsValid()
    {
        QElementTextEditor editor(false);
        editor.document()->setPlainText(QStringLiteral("[Statedef 0]\n[State 0, 1]\ntype = VictoryQuote\n"
                                                       "trigger1 = AILevel\nvalue = 1\n"));
        CountingProcessor processor(editor.document(), 0x1010000);
        QVERIFY(issuesOf(editor.document(), 2).isEmpty());

        // At the oldest version the controller and the trigger came later.
        processor.setVersion(0);
        QCOMPARE(processor.version(), 0u);
        QCOMPARE(issuesOf(editor.document(), 2).size(), 1);
        QCOMPARE(issuesOf(editor.document(), 2).at(0).text,
                 QStringLiteral("Controller invalid for the M.U.G.E.N. version of the current project"));
        QCOMPARE(issuesOf(editor.document(), 3).value(0).text,
                 QStringLiteral("Trigger invalid for the M.U.G.E.N. version of the current project"));

        // The same version again reads nothing.
        processor.lines.clear();
        processor.setVersion(0);
        QVERIFY(processor.lines.isEmpty());
        processor.setVersion(0x1000000);
        QCOMPARE(processor.lines.size(), editor.document()->blockCount());
        QVERIFY(issuesOf(editor.document(), 2).isEmpty());

        // Checking off drops the errors only: a deprecation is a warning, and stays.
        editor.document()->setPlainText(QStringLiteral("[Statedef 0]\nnonsense = 1\n[State 0, 1]\ntype = HitVelSet\n"));
        processor.setChecking(false);
        QVERIFY(issuesOf(editor.document(), 1).isEmpty());
        QCOMPARE(issuesOf(editor.document(), 3).value(0).severity, 1);
        processor.setChecking(true);
        QCOMPARE(issuesOf(editor.document(), 1).size(), 1);
    }

    void aVocabularyReadAgainIsFollowed()
    {
        // Cached lookups point into the vocabulary: a second read must not
        // leave them pointing at what it threw away.
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("v.xml"));
        QVERIFY(TestSupport::writeFile(path, "<!DOCTYPE ZNLSyntaxML><syntax><state_controller name=\"Spin\">"
                                             "<param name=\"speed\" type=\"int\"/></state_controller>"
                                             "<trigger name=\"Time\" type=\"nilexp\"/></syntax>"));
        QMugenSyntaxProperties vocabulary;
        QVERIFY(vocabulary.load(path));
        QElementTextEditor editor(false);
        editor.document()->setPlainText(QStringLiteral("[Statedef 0]\n[State 0, 1]\ntype = Spin\ntrigger1 = Time\n"
                                                       "speed = 5\n"));
        QMugenSyntaxProcessor processor(editor.document(), 0x1010000, true, &vocabulary);
        QVERIFY(issuesOf(editor.document(), 4).isEmpty());

        QVERIFY(TestSupport::writeFile(path, "<!DOCTYPE ZNLSyntaxML><syntax><state_controller name=\"Spin\">"
                                             "<param name=\"rate\" type=\"int\"/></state_controller></syntax>"));
        QVERIFY(vocabulary.load(path));
        processor.rehighlightAll();
        // The controllers are read anew; triggers are overwritten key by key,
        // so Time stays known.
        QVERIFY(issuesOf(editor.document(), 3).isEmpty());
        QCOMPARE(issuesOf(editor.document(), 4).size(), 1);
        QCOMPARE(issuesOf(editor.document(), 4).at(0).text,
                 QStringLiteral("Unknown parameter 'speed' for the 'Spin' controller"));
    }

    void documentCheckTurnsIssuesIntoMessages()
    {
        QSyntaxTextEditor document(nullptr, FileStates, false, 0x1010000, true);
        document.document()->setPlainText(QStringLiteral("[Statedef 0]\ncolour = 1\n[State 0, 1]\n"
                                                         "type = HitVelSet\ntrigger1 = 1\n[State 0, 2]\n"
                                                         "type = Explod\ntrigger1 = 1\npos = 1\n[Explod]\n"));
        document.check();
        const QMessages &messages = document.messages();
        // An error for each of "colour" and [Explod]; the deprecation and the
        // notice of "pos = 1" as warnings, in the order of the lines.
        QStringList seen;
        for (int i = 0; i < messages.count(QMessages::AnySeverity); ++i)
            seen << QStringLiteral("%1 %2:%3 %4").arg(messages.at(i).severity).arg(messages.at(i).line)
                        .arg(messages.at(i).index).arg(messages.at(i).text);
        QCOMPARE(seen, (QStringList{QStringLiteral("0 1:0 Unknown 'StateDef' parameter 'colour'"),
                                    QStringLiteral("1 3:7 State controller deprecated in the M.U.G.E.N 2002.04.14"),
                                    QStringLiteral("1 8:6 This parameter requires 2 value(s)"),
                                    QStringLiteral("0 9:0 Invalid group")}));

        // Checked again, the list is replaced, not added to.
        document.check();
        QCOMPARE(messages.count(QMessages::AnySeverity), 4);
    }

    void aLoadCheckesAndKeepsEditsChecked()
    {
        QTemporaryDir dir;
        const QString lua = dir.filePath(QStringLiteral("tool.txt"));
        const QString cns = dir.filePath(QStringLiteral("a.cns"));
        QVERIFY(TestSupport::writeFile(lua, "-- a tool\nfunction main()\nend\n"));
        QVERIFY(TestSupport::writeFile(cns, "[Statedef 0]\r\nnonsense = 1\r\n"));
        QSyntaxTextEditor document(nullptr, FileStates, false, 0x1000000, true);

        QVERIFY(document.load(lua, 0, false));
        QCOMPARE(document.processor()->syntaxKind(), int(QSyntaxProcessor::NullKind));
        QVERIFY(document.hierarchy());
        QCOMPARE(document.messages().count(QMessages::AnySeverity), 0);

        // Another language, another processor: it reads the text at once,
        // keeps the version, and the messages follow the load.
        QVERIFY(document.load(cns, 0, false));
        QCOMPARE(document.processor()->syntaxKind(), int(QSyntaxProcessor::MugenKind));
        QCOMPARE(document.version(), 0x1000000u);
        QCOMPARE(document.messages().count(QMessages::Error), 1);
        QVERIFY(document.hierarchy()->sectionExists(QStringLiteral("statedef 0")));

        QTextCursor(document.document()->findBlockByNumber(1)).insertText(QStringLiteral("; "));
        QVERIFY(issuesOf(document.document(), 1).isEmpty());
        // The messages follow with the hierarchy, a second after the edit.
        QCOMPARE(document.messages().count(QMessages::Error), 1);
        document.updateHierarchy();
        QCOMPARE(document.messages().count(QMessages::Error), 0);
    }

    void theDefinitionsVersionReachesTheProject()
    {
        QTemporaryDir dir;
        const QString def = dir.filePath(QStringLiteral("old.def"));
        QVERIFY(TestSupport::writeFile(def, "[Info]\r\nname = \"Old\"\r\nmugenversion = 1.0\r\n[Files]\r\n"));
        QProject project(0, false);
        QSyntaxTextEditor *state = project.addState(QStringLiteral("a.cns"));
        QCOMPARE(state->version(), 0x1010000u);
        QVERIFY(project.fromFile(def, 0, false, false));
        QCOMPARE(project.definitions()->version(), 0x1000000u);
        QCOMPARE(project.commands()->version(), 0x1000000u);
        QCOMPARE(state->version(), 0x1000000u);
        // A state document made later starts at the project's version.
        QCOMPARE(project.addState(QStringLiteral("b.cns"))->version(), 0x1000000u);
    }

    void theDefinitionsTargetReachesTheProject()
    {
        QTemporaryDir dir;
        const QString def = dir.filePath(QStringLiteral("new.def"));
        const QByteArray info = "[Info]\r\nname = \"New\"\r\nmugenversion = 1.0\r\n";
        QVERIFY(TestSupport::writeFile(def, info + "ikemenversion = 1.0 ; Ikemen GO\r\n[Files]\r\nst = a.cns\r\n"));
        QVERIFY(TestSupport::writeFile(dir.filePath(QStringLiteral("a.cns")),
                                       "[Statedef 0]\r\n[State 0, 1]\r\ntype = RedLifeSet\r\ntrigger1 = 1\r\n"));
        QProject project(0, false);
        QVERIFY(project.fromFile(def, 0, false, false));
        QDefinitions *definitions = project.definitions();
        QSyntaxTextEditor *state = project.states(0);
        QVERIFY(state);
        // The DEF names an ikemenversion: every text of the project is checked for Ikemen GO.
        QCOMPARE(definitions->definedTarget(), int(TargetIkemen));
        QCOMPARE(project.engineTarget(), int(TargetIkemen));
        QCOMPARE(project.commands()->target(), int(TargetIkemen));
        QCOMPARE(state->target(), int(TargetIkemen));
        QVERIFY(issuesOf(state->document(), 2).isEmpty());

        // The user's choice holds for the session; the DEF stays as it was.
        const QString text = definitions->text();
        definitions->chooseTarget(TargetMugen);
        QCOMPARE(project.engineTarget(), int(TargetMugen));
        QCOMPARE(definitions->definedTarget(), int(TargetIkemen));
        QCOMPARE(definitions->text(), text);
        QCOMPARE(issuesOf(state->document(), 2).value(0).text, QStringLiteral("RedLifeSet is only valid in Ikemen GO"));
        QCOMPARE(project.addState(QStringLiteral("b.cns"))->target(), int(TargetMugen));
        definitions->document()->setPlainText(text + QStringLiteral("[Arcade]\n"));
        definitions->updateHierarchy();
        QCOMPARE(project.engineTarget(), int(TargetMugen));

        // Kept in the DEF, the choice removes the line, in one step that undo takes back.
        definitions->document()->setPlainText(text);
        definitions->chooseTarget(TargetMugen, true);
        QCOMPARE(definitions->text(), QString::fromLatin1(info + "[Files]\r\nst = a.cns\r\n").remove(QLatin1Char('\r')));
        QCOMPARE(definitions->definedTarget(), int(TargetMugen));
        definitions->document()->undo();
        QCOMPARE(definitions->text(), text);
        definitions->chooseTarget(TargetIkemen, true);
        QCOMPARE(definitions->text(), text);
        QCOMPARE(state->target(), int(TargetIkemen));
    }

    void aTargetKeptInTheDefinitionsIsWrittenToItsInfo_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("ikemen");
        QTest::addColumn<QString>("mugen");
        // Beside mugenversion, else under [Info], else in an [Info] of its own
        // at the top; back for M.U.G.E.N., the line goes with the line end it brought.
        QTest::newRow("after mugenversion") << "[Info]\nname = \"A\"\nmugenversion = 1.1\nauthor = \"B\"\n"
                                            << "[Info]\nname = \"A\"\nmugenversion = 1.1\nikemenversion = 1.0\nauthor = \"B\"\n"
                                            << "[Info]\nname = \"A\"\nmugenversion = 1.1\nauthor = \"B\"\n";
        QTest::newRow("under [Info]") << "; a stage\n[Info]\nname = \"A\"\n[BGDef]\n"
                                      << "; a stage\n[Info]\nikemenversion = 1.0\nname = \"A\"\n[BGDef]\n"
                                      << "; a stage\n[Info]\nname = \"A\"\n[BGDef]\n";
        QTest::newRow("no [Info]") << "[Files]\nst = a.cns" << "[Info]\nikemenversion = 1.0\n[Files]\nst = a.cns"
                                   << "[Info]\n[Files]\nst = a.cns";
        QTest::newRow("a localised [Info] is another") << "[ja.Info]\nname = \"A\"\n"
                                                       << "[Info]\nikemenversion = 1.0\n[ja.Info]\nname = \"A\"\n"
                                                       << "[Info]\n[ja.Info]\nname = \"A\"\n";
        QTest::newRow("[Info] named last") << "[Files]\n[Info]\nmugenversion = 1.0"
                                           << "[Files]\n[Info]\nmugenversion = 1.0\nikemenversion = 1.0"
                                           << "[Files]\n[Info]\nmugenversion = 1.0";
        QTest::newRow("a line without a version") << "[Info]\nikemenversion = ; later\nname = \"A\"\n"
                                                  << "[Info]\nikemenversion = 1.0\nname = \"A\"\n"
                                                  << "[Info]\nname = \"A\"\n";
    }

    void aTargetKeptInTheDefinitionsIsWrittenToItsInfo()
    {
        QFETCH(QString, before);
        QFETCH(QString, ikemen);
        QFETCH(QString, mugen);
        QDefinitions definitions(nullptr);
        definitions.document()->setPlainText(before);
        definitions.updateHierarchy();
        QCOMPARE(definitions.target(), int(TargetMugen));
        definitions.chooseTarget(TargetIkemen, true);
        QCOMPARE(definitions.text(), ikemen);
        QCOMPARE(definitions.target(), int(TargetIkemen));
        definitions.chooseTarget(TargetMugen, true);
        QCOMPARE(definitions.text(), mugen);
        QCOMPARE(definitions.target(), int(TargetMugen));
    }

    void theEnginesOwnFilesHaveNoErrors_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<quint32>("version");
        const QString root = TestSupport::corpusDir();
        if (root.isEmpty())
            return;
        // All of Elecbyte's text at its own version, screenpacks and fonts
        // included; Ikemen's copies of Kung Fu Man at 1.1.
        const std::pair<const char *, quint32> folders[] = {{"elecbyte-mugen10", 0x1000000u},
                                                            {"ikemen-screenpack/chars", 0x1010000u}};
        for (const auto &[folder, version] : folders) {
            QDirIterator it(root + QLatin1Char('/') + QLatin1String(folder),
                            {QStringLiteral("*.cns"), QStringLiteral("*.cmd"), QStringLiteral("*.air"), QStringLiteral("*.def")},
                            QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QString file = it.next();
                QTest::newRow(qPrintable(QDir(root).relativeFilePath(file))) << file << version;
            }
        }
    }

    void theEnginesOwnFilesHaveNoErrors()
    {
        if (TestSupport::corpusDir().isEmpty())
            QSKIP("the corpus isn't there");
        QFETCH(QString, path);
        QFETCH(quint32, version);
        QSyntaxTextEditor document(nullptr, FileStates, false, version, true);
        QVERIFY(document.load(path, 0, true));
        QCOMPARE(document.language(), 1);
        QStringList errors;
        for (QTextBlock block = document.document()->begin(); block.isValid(); block = block.next()) {
            for (const QSyntaxIssue &issue : issuesOf(document.document(), block.blockNumber())) {
                if (issue.severity == 0)
                    errors.append(QStringLiteral("%1:%2: %3").arg(block.blockNumber() + 1).arg(issue.start + 1).arg(issue.text));
            }
        }
        QVERIFY2(errors.isEmpty(), qPrintable(errors.join(QLatin1Char('\n'))));
    }

    void ikemenAdditionsAreToldOnceForMugenOnly()
    {
        const QString root = TestSupport::corpusDir();
        if (root.isEmpty())
            QSKIP("the corpus isn't there");
        // Ikemen GO's characters, stages and screenpack, checked for M.U.G.E.N.
        // 1.1 and for Ikemen GO: a line that uses what only Ikemen GO reads is
        // warned of once for the one, and holds no error for the other.
        QStringList problems;
        int told = 0;
        for (const char *folder : {"ikemen-go-test-text", "ikemen-screenpack"}) {
            QDirIterator it(root + QLatin1Char('/') + QLatin1String(folder),
                            {QStringLiteral("*.cns"), QStringLiteral("*.st"), QStringLiteral("*.cmd"),
                             QStringLiteral("*.air"), QStringLiteral("*.def")},
                            QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QString path = it.next();
                QSyntaxTextEditor mugen(nullptr, FileStates, false, 0x1010000, true);
                QSyntaxTextEditor ikemen(nullptr, FileStates, false, 0x1010000, true);
                ikemen.setTarget(TargetIkemen);
                QVERIFY(mugen.load(path, 0, true) && ikemen.load(path, 0, true));
                for (QTextBlock block = mugen.document()->begin(); block.isValid(); block = block.next()) {
                    const QString where = QStringLiteral("%1:%2").arg(QDir(root).relativeFilePath(path)).arg(block.blockNumber() + 1);
                    int ikemenOnly = 0;
                    for (const QSyntaxIssue &issue : issuesOf(mugen.document(), block.blockNumber()))
                        ikemenOnly += issue.text.endsWith(QLatin1String(" is only valid in Ikemen GO")) ? 1 : 0;
                    if (ikemenOnly == 0)
                        continue;
                    ++told;
                    if (ikemenOnly > 1)
                        problems << where + QStringLiteral(": told more than once");
                    for (const QSyntaxIssue &issue : issuesOf(ikemen.document(), block.blockNumber())) {
                        if (issue.severity == 0 || issue.text.contains(QLatin1String("Ikemen GO")))
                            problems << where + QStringLiteral(" for Ikemen GO: ") + issue.text;
                    }
                }
            }
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(QLatin1Char('\n'))));
        // The stages and screenpack use Ikemen GO's additions on dozens of lines.
        QVERIFY2(told >= 40, qPrintable(QString::number(told)));
    }

    void malformedTextIsReadSafely_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("long line") << QStringLiteral("[Statedef 0]\nanim = ") + QString(100000, QLatin1Char('1'));
        QTest::newRow("long string") << QStringLiteral("[Info]\nname = \"") + QString(70000, QLatin1Char('a'))
                + QStringLiteral("\" x");
        QTest::newRow("deep brackets") << QStringLiteral("[Statedef 0]\n[State 0]\ntype = Null\ntrigger1 = ")
                + QString(50000, QLatin1Char('(')) + QString(50000, QLatin1Char('['));
        QTest::newRow("unary chain") << QStringLiteral("[Statedef 0]\nanim = ") + QString(50000, QLatin1Char('!'));
        QTest::newRow("brackets only") << QString(20000, QLatin1Char('[')) + QStringLiteral("\n]]]]\n[[[");
        QTest::newRow("comments") << QString(20000, QLatin1Char(';')) + QLatin1Char('\n') + QString(5000, QLatin1Char('\n'))
                + QStringLiteral("[Data]");
        QString noise;
        QRandomGenerator random(7);
        for (int i = 0; i < 20000; ++i)
            noise += QChar(ushort(random.bounded(1, 0x3000)));
        QTest::newRow("noise") << noise;
    }

    void malformedTextIsReadSafely()
    {
        QFETCH(QString, text);
        QElementTextEditor editor(false);
        editor.document()->setPlainText(text);
        QMugenSyntaxProcessor processor(editor.document());
        for (QTextBlock block = editor.document()->begin(); block.isValid(); block = block.next()) {
            const QTextEditorBlockData *data = QTextEditorBlockData::of(block, false);
            QVERIFY(data);
            QVERIFY(data->issues.size() <= block.length());
            for (const QSyntaxIssue &issue : data->issues) {
                QVERIFY(issue.start >= 0);
                QVERIFY(issue.start <= issue.end);
                QVERIFY(issue.end <= block.length());
            }
        }
    }
};

QTEST_MAIN(tst_QMugenSyntaxProcessor)
#include "tst_qmugensyntaxprocessor.moc"
