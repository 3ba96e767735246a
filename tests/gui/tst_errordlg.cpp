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

#include <memory>

using namespace Qt::StringLiterals;

namespace {

/** "a b c" as a list of its words. */
QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/** The image of an icon file, to compare what a label shows. */
QImage icon(const char *name)
{
    return QPixmap(u":/imgs/Imgs/"_s + QLatin1String(name)).toImage();
}

/**
 * A window with editors of definitions, states and sounds, the last only
 * for stages, so that it hides for the blank character of the start.
 */
struct Window
{
    QMainWindow window;
    QStringList log;
    QInterface *ui;

    Window()
    {
        ui = new QInterface(&window);
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
    QClickableLabel *status() const { return ui->statusLabel(4); }
};

} // namespace

class tst_ErrorDlg : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QMugenModel m_configuration;

    QString path(const QString &relative) const { return m_dir.filePath(relative); }
    QString engineLog() const { return path(u"engine.log"_s); }

    /** What the fake engine wrote down after `prefix`, one entry a line. */
    QStringList seen(const char *prefix) const
    {
        QStringList values;
        for (const QByteArray &line : TestSupport::readFile(engineLog()).split('\n')) {
            if (line.startsWith(prefix))
                values.append(QString::fromUtf8(line.mid(qstrlen(prefix))));
        }
        return values;
    }

private Q_SLOTS:
    void initTestCase()
    {
        configuration = &m_configuration;
        // An engine folder with something of its own, the fake engine and a
        // file that can't be started.
        const QString engine = path(u"mugen/engine"_s);
        QVERIFY(QDir().mkpath(path(u"mugen"_s)));
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + u"/fakeengine"_s, engine));
        QVERIFY(QFile::setPermissions(engine, QFile::permissions(engine) | QFile::ExeOwner));
        QVERIFY(TestSupport::writeFile(path(u"mugen/broken"_s), "not a program"));
        QVERIFY(TestSupport::writeFile(path(u"mugen/chars/kfm/kfm.def"_s), "[Files]\r\n"));
        qputenv("FAKE_ENGINE_LOG", engineLog().toLocal8Bit());
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
        QTest::addColumn<QString>("iconName");
        QTest::addColumn<QString>("tip");
        QTest::newRow("errors before warnings") << QList<int>{1, 0, 2, 0} << u"error.png"_s << u"2 error(s) found!"_s;
        QTest::newRow("warnings") << QList<int>{1, 2, 1} << u"warn.png"_s << u"2 warnings found!"_s;
        // Information is listed but counts in no total.
        QTest::newRow("only information") << QList<int>{2} << u"ok.png"_s << u"No issues found!"_s;
    }

    void statusIcon()
    {
        QFETCH(QList<int>, severities);
        QFETCH(QString, iconName);
        QFETCH(QString, tip);
        Window w;
        QMessages messages(&w.ui->currentProject()->messages(), FileCommands);
        for (int severity : severities)
            messages.add(severity, u"x"_s, -1, 0);
        QCOMPARE(w.status()->toolTip(), tip);
        QCOMPARE(w.status()->pixmap().toImage(), icon(iconName.toLatin1().constData()));
    }

    void theStatusAndTheIssuesFollowTheCurrentProject()
    {
        Window w;
        QProject *first = w.ui->currentProject();
        // A click on the check label shows the Issues window, made once.
        QTest::mouseClick(w.status(), Qt::LeftButton);
        ErrorDlg *issues = w.ui->errorDialog();
        QVERIFY(issues && issues->isVisible());
        QCOMPARE(issues->windowTitle(), u"Issues"_s);
        QVERIFY(!issues->isModal());
        QCOMPARE(issues->model(), &first->messages());
        QMessages firstMessages(&first->messages(), FileCommands);
        firstMessages.add(QMessages::Error, u"x"_s, -1, 0);
        QCOMPARE(w.status()->toolTip(), u"1 error(s) found!"_s);

        w.ui->newProject(false);
        QProject *second = w.ui->currentProject();
        QMessages secondMessages(&second->messages(), FileCommands);
        secondMessages.add(QMessages::Warning, u"y"_s, -1, 0);
        QCOMPARE(w.status()->toolTip(), u"1 warnings found!"_s);
        QCOMPARE(issues->model(), &second->messages());
        // The project in the background no longer speaks for the label.
        firstMessages.add(QMessages::Error, u"x"_s, -1, 0);
        QCOMPARE(w.status()->toolTip(), u"1 warnings found!"_s);

        // Back on the first tab, its totals show at once.
        w.ui->tabBar()->setCurrentIndex(0);
        QCOMPARE(w.status()->toolTip(), u"2 error(s) found!"_s);
        QCOMPARE(issues->model(), &first->messages());
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
        QVERIFY(view);
        // Qt Test's double click lacks the press that the view waits for.
        const QPoint row = view->visualRect(list.index(1)).center();
        QTest::mousePress(view->viewport(), Qt::LeftButton, {}, row);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, row);
        QCOMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0), (QVariantList{QVariant::fromValue(FileStates), 1, 4, 9}));
        issues.dblClick(list.index(0));
        QCOMPARE(spy.at(1), (QVariantList{QVariant::fromValue(FileSprites), 0, 2, 1}));
    }

    void navigationFindsTheVisibleEditor()
    {
        Window w;
        QCOMPARE(w.ui->currentEditorId(), int(FileDefinitions));
        w.ui->navigateTo(FileStates, 2, 5, 9);
        QCOMPARE(w.ui->currentEditorId(), int(FileStates));
        QCOMPARE(w.log.last(), u"E4.navigate(2,5,9)"_s);
        // The sounds editor is hidden for a character: nothing happens.
        w.log.clear();
        w.ui->navigateTo(FileSounds, 0, 3, 0);
        QCOMPARE(w.ui->currentEditorId(), int(FileStates));
        QCOMPARE(w.log, QStringList());
        // No editor of that kind at all.
        w.ui->navigateTo(FileSprites, 0, 3, 1);
        QCOMPARE(w.log, QStringList());
    }

    void testRun_data()
    {
        QTest::addColumn<QStringList>("installations");
        QTest::addColumn<int>("choice");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const QString warning = u"Oops, wrong parameters on the M.U.G.E.N. configuration. Check it in the Tools / Options."_s;
        QTest::newRow("no installation") << QStringList() << -1 << QStringList()
                                         << u"Oops, you need to configure a M.U.G.E.N. first. Do it in the Tools / Options."_s;
        QTest::newRow("one installation, no question") << QStringList{u"engine|%0 kfm"_s} << -1 << words("ks3_0 kfm")
                                                       << QString();
        QTest::newRow("two, the second chosen") << QStringList{u"engine|%0 %0"_s, u"engine|%0 second"_s} << 1
                                                << words("ks3_0 second") << QString();
        QTest::newRow("two, none chosen") << QStringList{u"engine|%0 %0"_s, u"engine|%0"_s} << -1 << QStringList()
                                          << QString();
        QTest::newRow("no project in the template") << QStringList{u"engine|kfm kfm"_s} << -1 << QStringList()
                                                    << warning;
        QTest::newRow("an engine that can't start") << QStringList{u"broken|%0"_s} << -1 << QStringList()
                                                    << u"M.U.G.E.N. could not be started: "_s;
    }

    void testRun()
    {
        QFETCH(QStringList, installations);
        QFETCH(int, choice);
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        QRecordingUserPrompt prompt;
        m_configuration.clear();
        for (const QString &entry : installations) {
            const QStringList fields = entry.split(QLatin1Char('|'));
            m_configuration.add(fields.at(0), path(u"mugen/"_s + fields.at(0)), fields.at(1), QString());
        }
        QFile::remove(engineLog());
        Window w;
        bool asked = false;
        w.ui->setMugenChooser([&](QString &exe, QString &params) {
            asked = true;
            if (choice < 0)
                return false;
            exe = m_configuration.installation(choice).exe;
            params = m_configuration.installation(choice).params;
            return true;
        });
        w.ui->fileRunMugen();

        // Only a choice among several asks which.
        QCOMPARE(asked, installations.size() > 1);
        QCOMPARE(seen("arg "), arguments);
        QCOMPARE(w.ui->mugenDone(), !arguments.isEmpty());
        if (!arguments.isEmpty()) {
            // The engine found the copy; the editor shows the project again.
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
