#include "core/app/qproject.h"
#include "core/base/apppaths.h"
#include "core/base/qmessages.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"
#include "gui/app/errordlg.h"
#include "gui/app/qinterface.h"
#include "logeditor.h"
#include "testsupport.h"

#include <QDirIterator>
#include <QListView>
#include <QSignalSpy>
#include <QTabBar>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/** A window with editors of definitions, states and sounds; the last is for stages only, so it hides. */
struct Window
{
    QMainWindow window;
    QStringList log;
    QInterface *ui = new QInterface(&window);

    Window()
    {
        mainInterface = ui;
        ui->addWorkspace(new LogWorkspace(0, &log));
        ui->addEditor(new LogEditor(ui, FileDefinitions, 0, 15, &log, {}));
        ui->addEditor(new LogEditor(ui, FileStates, 0, 15, &log, {}));
        ui->addEditor(new LogEditor(ui, FileSounds, 0, Stage, &log, {}));
        ui->start(false);
        window.show();
        log.clear();
    }
    ~Window()
    {
        delete ui;
        mainInterface = nullptr;
    }
    QString tip() const { return ui->statusLabel(4)->toolTip(); }
};

} // namespace

class tst_ErrorDlg : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QMugenModel m_configuration;

    QString path(const QString &relative) const { return m_dir.filePath(relative); }

    /** What the fake engine wrote down after `prefix` ("arg ", "file "), one entry a line. */
    QStringList seen(const char *prefix) const
    {
        QStringList values;
        for (const QByteArray &line : TestSupport::readFile(path(u"engine.log"_s)).split('\n')) {
            if (line.startsWith(prefix))
                values.append(QString::fromUtf8(line.mid(qstrlen(prefix))));
        }
        return values;
    }

private Q_SLOTS:
    void initTestCase()
    {
        configuration = &m_configuration;
        // The engine's folder: a character of its own, the fake engine and a file that can't be started.
        const QString engine = path(u"mugen/engine"_s);
        QVERIFY(TestSupport::writeFile(path(u"mugen/chars/kfm/kfm.def"_s), "[Files]\r\n"));
        QVERIFY(TestSupport::writeFile(path(u"mugen/broken"_s), "not a program"));
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + u"/fakeengine"_s, engine));
        QVERIFY(QFile::setPermissions(engine, QFile::permissions(engine) | QFile::ExeOwner));
        qputenv("FAKE_ENGINE_LOG", path(u"engine.log"_s).toLocal8Bit());
    }

    void init() { QFile::remove(settingsFileForWrite(u"shortcuts.xml"_s)); }

    void cleanupTestCase()
    {
        QFile::remove(settingsFileForWrite(u"shortcuts.xml"_s));
        configuration = nullptr;
    }

    void statusIcon_data()
    {
        QTest::addColumn<QList<int>>("severities");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QString>("tip");
        QTest::newRow("errors before warnings") << QList<int>{1, 0, 2, 0} << u"error"_s << u"2 error(s) found!"_s;
        QTest::newRow("warnings") << QList<int>{1, 2, 1} << u"warn"_s << u"2 warnings found!"_s;
        // Information is listed, but counts in no total.
        QTest::newRow("only information") << QList<int>{2} << u"ok"_s << u"No issues found!"_s;
    }

    void statusIcon()
    {
        QFETCH(QList<int>, severities);
        QFETCH(QString, icon);
        QFETCH(QString, tip);
        Window w;
        QMessages messages(&w.ui->currentProject()->messages(), FileCommands);
        for (int severity : severities)
            messages.add(severity, u"x"_s, -1, 0);
        QCOMPARE(w.tip(), tip);
        QCOMPARE(w.ui->statusLabel(4)->pixmap().toImage(), QPixmap(u":/imgs/Imgs/%1.png"_s.arg(icon)).toImage());
    }

    void theStatusAndTheIssuesFollowTheCurrentProject()
    {
        Window w;
        QProject *first = w.ui->currentProject();
        QTest::mouseClick(w.ui->statusLabel(4), Qt::LeftButton);
        ErrorDlg *issues = w.ui->errorDialog();
        QVERIFY(issues && issues->isVisible());
        QMessages firstMessages(&first->messages(), FileCommands);
        firstMessages.add(QMessages::Error, u"x"_s, -1, 0);

        w.ui->newProject(false);
        QMessages secondMessages(&w.ui->currentProject()->messages(), FileCommands);
        secondMessages.add(QMessages::Warning, u"y"_s, -1, 0);
        QCOMPARE(issues->model(), &w.ui->currentProject()->messages());
        // The project in the background no longer speaks for the label.
        firstMessages.add(QMessages::Error, u"x"_s, -1, 0);
        QCOMPARE(w.tip(), u"1 warnings found!"_s);

        w.ui->tabBar()->setCurrentIndex(0);
        QCOMPARE(w.tip(), u"2 error(s) found!"_s);
        QCOMPARE(issues->model(), &first->messages());
        // Made once.
        w.ui->fileCheck();
        QCOMPARE(w.ui->errorDialog(), issues);
    }

    void aDoubleClickSendsTheMessage()
    {
        QMessageList list;
        QMessages sprites(&list, FileSprites);
        QMessages state(&list, FileStates);
        state.setFileIndex(1);
        sprites.add(QMessages::Warning, u"palette"_s, 2, 1);
        state.add(QMessages::Error, u"syntax"_s, 4, 9);
        ErrorDlg issues;
        issues.setModel(&list);
        issues.show();
        QVERIFY(QTest::qWaitForWindowExposed(&issues));
        QSignalSpy spy(&issues, &ErrorDlg::navigateTo);
        QListView *view = issues.findChild<QListView *>(u"listView"_s);
        // Qt Test's double click lacks the press that the view waits for.
        const QPoint row = view->visualRect(list.index(1)).center();
        QTest::mousePress(view->viewport(), Qt::LeftButton, {}, row);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, row);
        QCOMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0), (QVariantList{QVariant::fromValue(FileStates), 1, 4, 9}));
    }

    void navigationFindsTheVisibleEditor()
    {
        Window w;
        w.ui->navigateTo(FileStates, 2, 5, 9);
        QCOMPARE(w.ui->currentEditorId(), int(FileStates));
        QCOMPARE(w.log.last(), u"E4.navigate(2,5,9)"_s);
        w.log.clear();
        // The sounds editor is hidden for a character; there is no sprites editor at all.
        w.ui->navigateTo(FileSounds, 0, 3, 0);
        w.ui->navigateTo(FileSprites, 0, 3, 1);
        QCOMPARE(w.ui->currentEditorId(), int(FileStates));
        QCOMPARE(w.log, QStringList());
    }

    void testRun_data()
    {
        // Installations as "executable|template"; the chosen one when asked, -1 for none.
        QTest::addColumn<QStringList>("installations");
        QTest::addColumn<int>("choice");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("no installation") << QStringList() << -1 << QStringList()
                                         << u"Oops, you need to configure a M.U.G.E.N. first. Do it in the Tools / Options."_s;
        QTest::newRow("one, no question") << QStringList{u"engine|%0 kfm"_s} << -1 << words("ks3_0 kfm") << QString();
        QTest::newRow("two, the second chosen") << QStringList{u"engine|%0 %0"_s, u"engine|%0 two"_s} << 1
                                                << words("ks3_0 two") << QString();
        QTest::newRow("two, none chosen") << QStringList{u"engine|%0"_s, u"engine|%0"_s} << -1 << QStringList() << QString();
        QTest::newRow("no project number") << QStringList{u"engine|kfm kfm"_s} << -1 << QStringList()
                                           << u"Oops, wrong parameters on the M.U.G.E.N. configuration. Check it in the Tools / Options."_s;
        QTest::newRow("an engine that can't start") << QStringList{u"broken|%0"_s} << -1 << QStringList()
                                                    << u"M.U.G.E.N. could not be started: "_s + path(u"mugen/broken"_s);
    }

    void testRun()
    {
        QFETCH(QStringList, installations);
        QFETCH(int, choice);
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        QRecordingUserPrompt prompt;
        m_configuration.clear();
        for (const QString &entry : installations)
            m_configuration.add(u"m"_s, path(u"mugen/"_s + entry.section(u'|', 0, 0)), entry.section(u'|', 1), {});
        QFile::remove(path(u"engine.log"_s));
        Window w;
        bool asked = false;
        w.ui->setMugenChooser([&](QString &exe, QString &params) {
            asked = true;
            exe = choice < 0 ? QString() : m_configuration.installation(choice).exe;
            params = choice < 0 ? QString() : m_configuration.installation(choice).params;
            return choice >= 0;
        });
        w.ui->fileRunMugen();

        QCOMPARE(asked, installations.size() > 1);
        QCOMPARE(seen("arg "), arguments);
        QCOMPARE(w.ui->mugenDone(), !arguments.isEmpty());
        if (!arguments.isEmpty()) {
            // The engine found the copy; the editor shows the project again afterwards.
            QCOMPARE(seen("file "), words("chars/kfm/kfm.def chars/ks3_0/ks3_0.def"));
            QCOMPARE(w.log.mid(w.log.size() - 2), words("E0.deactivate E0.activate(1)"));
        }
        QCOMPARE(prompt.calls.size(), message.isEmpty() ? 0 : 1);
        if (!message.isEmpty())
            QVERIFY2(prompt.calls.first().text.startsWith(message), qPrintable(prompt.calls.first().text));
        // Whatever a run wrote is gone again.
        QStringList files;
        for (QDirIterator it(path(u"mugen"_s), QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                             QDirIterator::Subdirectories);
             it.hasNext();)
            files.append(QDir(path(u"mugen"_s)).relativeFilePath(it.next()));
        files.sort();
        QCOMPARE(files, words("broken chars chars/kfm chars/kfm/kfm.def engine"));
    }
};

QTEST_MAIN(tst_ErrorDlg)
#include "tst_errordlg.moc"
