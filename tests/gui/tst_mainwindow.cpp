// The main window as a user meets it: the menus, the project's line in the
// status bar, open, save as with every question in its order, close, the
// history of recent projects, and the window's place between runs.
#include "core/app/qproject.h"
#include "core/base/apppaths.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserdialogs.h"
#include "core/base/quserprompt.h"
#include "core/sprites/qrgbpalette.h"
#include "core/sprites/qspritepalette.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"
#include "gui/app/mainwindow.h"
#include "gui/app/qhistorymanager.h"
#include "gui/app/qinterface.h"
#include "gui/app/qprogress.h"
#include "logeditor.h"
#include "sffbuilder.h"
#include "testsupport.h"

#include <QCloseEvent>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTabBar>
#include <QTemporaryDir>
#include <QtTest>

namespace {

/** Answers questions and dialogs from a script, and logs both in the order they came. */
class Script : public QRecordingUserPrompt, public QRecordingUserDialogs
{
public:
    QStringList log;

    bool question(const QString &title, const QString &text, bool defaultYes) override
    {
        log.append(QStringLiteral("? ") + title);
        return QRecordingUserPrompt::question(title, text, defaultYes);
    }
    int choose(const QString &title, const QString &text, const QStringList &buttons, int defaultIndex) override
    {
        log.append(QStringLiteral("choose ") + title);
        return QRecordingUserPrompt::choose(title, text, buttons, defaultIndex);
    }
    void critical(const QString &title, const QString &text) override
    {
        log.append(QStringLiteral("! ") + text);
        QRecordingUserPrompt::critical(title, text);
    }
    QString saveFileName(const QString &title, const QString &folder, const QString &filter,
                         QString *selected) override
    {
        log.append(title + QStringLiteral(" | ") + filter.section(QLatin1Char(' '), 0, 0));
        return QRecordingUserDialogs::saveFileName(title, folder, filter, selected);
    }
};

/** The names of a menu's entries: the commands' names, "-" for a separator, a submenu's object name. */
QStringList entries(QInterface *ui, QMenu *menu)
{
    QStringList names;
    for (QAction *action : menu->actions()) {
        if (action->isSeparator())
            names.append(QStringLiteral("-"));
        else if (action->menu())
            names.append(action->menu()->objectName());
        else
            names.append(ui->actions().info(action)->name);
    }
    return names;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

QString corpus(const QString &path)
{
    return TestSupport::corpusDir() + QLatin1Char('/') + path;
}

/** Editors of commands, states and sounds, for characters only, beside one for every kind. */
void characterEditors(QInterface *ui)
{
    static QStringList log;
    ui->addWorkspace(new LogWorkspace(0, &log));
    ui->addWorkspace(new LogWorkspace(1, &log));
    for (int id : {1, 3, 4, 5})
        ui->addEditor(new LogEditor(ui, id, id == 1 ? 1 : 0, id == 1 ? 15 : Character, &log,
                                    {{QStringLiteral("test_add_%1").arg(id), 74}}));
}

} // namespace

class tst_MainWindow : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_temp;
    QMugenModel m_configuration;
    int m_copies = 0;

    /** A copy of the folder of a corpus DEF; the path of the DEF in it. */
    QString copyOf(const QString &def)
    {
        const QFileInfo source(corpus(def));
        const QString folder = m_temp.filePath(source.dir().dirName() + QString::number(++m_copies));
        QDir().mkpath(folder);
        for (const QFileInfo &file : source.dir().entryInfoList(QDir::Files)) {
            QFile::copy(file.filePath(), folder + QLatin1Char('/') + file.fileName());
            QFile(folder + QLatin1Char('/') + file.fileName()).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        }
        return folder + QLatin1Char('/') + source.fileName();
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TMPDIR", m_temp.path().toLocal8Bit());
        configuration = &m_configuration;
        m_configuration.config[QStringLiteral("confirm_close")] = false;
    }

    void cleanupTestCase()
    {
        QFile::remove(settingsFileForWrite(QStringLiteral("history.xml")));
        configuration = nullptr;
    }

    void menusFollowTheTable()
    {
        MainWindow window(false);
        QInterface *ui = mainInterface;
        QCOMPARE(entries(ui, window.menuFile),
                 words("file_new file_open menuRecent file_close file_close_all file_close_others file_save "
                         "file_saveas - file_backup file_load_backup - file_check_errors file_run_mugen - file_exit"));
        QCOMPARE(entries(ui, window.menuEdit),
                 words("edit_undo edit_redo - edit_cut edit_copy edit_paste - edit_find_replace "
                         "edit_find_replace_multi"));
        QCOMPARE(entries(ui, window.menuView),
                 words("view_left_panel view_right_panel view_organizer view_actions view_calculator view_clipboard"));
        QCOMPARE(entries(ui, window.menuTools),
                 words("tools_options tools_export_html tools_script_editor"));
        QCOMPARE(entries(ui, window.menuHelp), words("ref_docs help_about"));
        // Only the tool windows that exist can be called up.
        QVERIFY(ui->actions().action(QStringLiteral("view_calculator"))->isEnabled());
        QVERIFY(!ui->actions().action(QStringLiteral("view_clipboard"))->isEnabled());
    }

    void toolWindowsKeepTheirPlace()
    {
        QWidget calculator;
        {
            MainWindow window(false);
            mainInterface->setToolWindow(QStringLiteral("calculator"), &calculator);
            mainInterface->actions().action(QStringLiteral("view_calculator"))->trigger();
            QVERIFY(calculator.isVisible());
            calculator.move(70, 80);
        }
        QCOMPARE(m_configuration.config.value(QStringLiteral("show_calculator")).toBool(), true);
        QCOMPARE(m_configuration.config.value(QStringLiteral("show_clipboard")).toBool(), false);
        calculator.hide();
        calculator.move(0, 0);
        MainWindow window(false);
        mainInterface->setToolWindow(QStringLiteral("calculator"), &calculator);
        QVERIFY(calculator.isVisible());
        QCOMPARE(calculator.pos(), QPoint(70, 80));
    }

    void projectLine_data()
    {
        QTest::addColumn<QString>("def");
        QTest::addColumn<QString>("tab");
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("commandsMenu");
        QTest::newRow("mugen 1.0 character") << "elecbyte-mugen10/chars/kfm/kfm.def"
                                             << "Kung Fu Man" << "Project: Character, Version: M.U.G.E.N. 1.0" << true;
        QTest::newRow("webmugen character") << "webmugen/public/chars/kfm/kfm.def"
                                            << "Kung Fu Man" << "Project: Character, Version: M.U.G.E.N. Beta" << true;
        QTest::newRow("stage") << "elecbyte-mugen10/stages/kfm.def"
                               << "Mountainside Temple" << "Project: Stage, Version: M.U.G.E.N. 1.0" << false;
    }

    void projectLine()
    {
        QFETCH(QString, def);
        QFETCH(QString, tab);
        QFETCH(QString, line);
        QFETCH(bool, commandsMenu);
        if (!QFileInfo::exists(corpus(def)))
            QSKIP("no corpus");
        MainWindow window(false, characterEditors);
        QInterface *ui = mainInterface;
        QCOMPARE(ui->statusLabel(3)->text(), QStringLiteral("Project: Character, Version: M.U.G.E.N. 1.1"));
        ui->openProject(corpus(def));
        QCOMPARE(ui->tabBar()->count(), 1);
        QCOMPARE(ui->tabBar()->tabText(0), tab);
        QCOMPARE(window.windowTitle(), tab + QStringLiteral(" - Kestrada"));
        QCOMPARE(ui->statusLabel(3)->text(), line);
        // The editors a stage has no documents for hide, with their menus.
        for (int id : {3, 4, 5}) {
            QCOMPARE(ui->editor(id)->menu()->menuAction()->isVisible(), commandsMenu);
            QCOMPARE(ui->actions().action(QLatin1String(ui->editor(id)->nameKey()))->isVisible(), commandsMenu);
        }
        QVERIFY(ui->editor(1)->menu()->menuAction()->isVisible());
        // Content for Ikemen GO says so.
        ui->currentProject()->definitions()->chooseTarget(TargetIkemen);
        QVERIFY(ui->statusLabel(3)->text().contains(QStringLiteral("Ikemen GO")));
    }

    void saveAsAsksEverythingInOrder()
    {
        const QString def = corpus(QStringLiteral("webmugen/public/chars/kfm/kfm.def"));
        if (!QFileInfo::exists(def))
            QSKIP("no corpus");
        MainWindow window(false);
        QInterface *ui = mainInterface;
        ui->openProject(copyOf(QStringLiteral("webmugen/public/chars/kfm/kfm.def")));
        const QString out = m_temp.filePath(QStringLiteral("saved"));
        QDir().mkpath(out);
        Script script;
        const QStringList names = words("kfm.def kfm.sff kfm.air kfm.cmd kfm.cns kfm.snd a1.act a2.act a3.act a4.act "
                                        "a5.act a6.act");
        for (const QString &name : names)
            script.QRecordingUserDialogs::answer({out + QLatin1Char('/') + name});
        script.QRecordingUserPrompt::answer({false, true}); // not UTF-8; the palettes, yes
        script.answerChoices({0});                          // SFF 1.01
        ui->actions().action(QStringLiteral("file_saveas"))->trigger();
        QStringList expected = QString::fromLatin1("Save project | Definitions;? Save as UTF-8;choose Format;"
                                                   "Save | Sprites;Save | Animations;Save | Commands;"
                                                   "Save | Constants;Save | Sounds;? Palettes")
                                   .split(QLatin1Char(';'));
        for (int n = 1; n <= 6; ++n)
            expected.append(QStringLiteral("Save as... 1, %1 | Adobe").arg(n));
        QCOMPARE(script.log, expected);
        for (const QString &name : names)
            QVERIFY2(QFileInfo(out + QLatin1Char('/') + name).size() > 0, qPrintable(name));
        // Palette n of the DEF comes back as it was read: pal1 is kfm6.act.
        const QStringList pals = words("kfm6.act kfm4.act kfm2.act kfm5.act kfm3.act kfm.act");
        for (int n = 1; n <= 6; ++n)
            QCOMPARE(TestSupport::readFile(out + QStringLiteral("/a%1.act").arg(n)),
                     TestSupport::readFile(corpus(QStringLiteral("webmugen/public/chars/kfm/") + pals.at(n - 1))));
        QVERIFY(!ui->currentProject()->sprites()->isModified());
    }

    void commandsOfTheProjectMenu()
    {
        const QString def = corpus(QStringLiteral("webmugen/public/chars/kfm/kfm.def"));
        if (!QFileInfo::exists(def))
            QSKIP("no corpus");
        MainWindow window(false);
        QInterface *ui = mainInterface;
        QActionManager &actions = ui->actions();
        Script script;
        const QString copy = copyOf(QStringLiteral("webmugen/public/chars/kfm/kfm.def"));
        script.QRecordingUserDialogs::answer({copy});
        actions.action(QStringLiteral("file_open"))->trigger();
        QCOMPARE(script.QRecordingUserDialogs::calls.last().title, QStringLiteral("Open project"));
        QCOMPARE(script.QRecordingUserDialogs::calls.last().filter, QStringLiteral("Definitions (*.def)"));
        QCOMPARE(ui->history()->entries().first(), copy);
        QCOMPARE(m_configuration.config.value(QStringLiteral("proj_path")).toString(), QFileInfo(copy).absolutePath());
        // Save: only the palette question of a SFF 1.01 character, under "Save as...".
        QProject *kfm = ui->currentProject();
        QSpritePalette *second = kfm->sprites()->paletteAt(kfm->sprites()->findPalette(0, 1, 2));
        QList<QRgb> changed = second->colors();
        changed[5] ^= 0xff;
        second->setColors(changed, NoShare);
        script.log.clear();
        script.QRecordingUserPrompt::answer({true});
        actions.action(QStringLiteral("file_save"))->trigger();
        QCOMPARE(script.log, QStringList{QStringLiteral("? Save as...")});
        // Palette 2 of the DEF is kfm4.act: written from memory.
        QVERIFY(TestSupport::readFile(QFileInfo(copy).dir().filePath(QStringLiteral("kfm4.act")))
                != TestSupport::readFile(corpus(QStringLiteral("webmugen/public/chars/kfm/kfm4.act"))));
        m_configuration.config[QStringLiteral("ask_save_palettes")] = false;
        script.log.clear();
        actions.action(QStringLiteral("file_save"))->trigger();
        QVERIFY(script.log.isEmpty());
        m_configuration.config[QStringLiteral("ask_save_palettes")] = true;

        actions.action(QStringLiteral("tools_export_html"))->trigger();
        QVERIFY(!script.QRecordingUserPrompt::calls.last().text.contains(QStringLiteral("only characters")));
        ui->openProject(corpus(QStringLiteral("elecbyte-mugen10/stages/kfm.def")));
        actions.action(QStringLiteral("tools_export_html"))->trigger();
        QCOMPARE(script.QRecordingUserPrompt::calls.last().text, QStringLiteral("You can export only characters as HTML!"));
        actions.action(QStringLiteral("file_new"))->trigger();
        QCOMPARE(ui->tabBar()->tabText(2), QStringLiteral("Project 2"));
        QVERIFY(!actions.action(QStringLiteral("tools_script_editor"))->isVisible());
        actions.action(QStringLiteral("file_close_others"))->trigger();
        QCOMPARE(ui->projects().size(), 1);
        QVERIFY(ui->currentProject()->isBlank());
        actions.action(QStringLiteral("file_close"))->trigger();
        QCOMPARE(ui->tabBar()->tabText(0), QStringLiteral("Project 3"));

        // A character's sprite file without a palette: warned, then a palette file is asked for.
        const QString act = corpus(QStringLiteral("webmugen/public/chars/kfm/kfm.act"));
        script.QRecordingUserDialogs::answer({act});
        QRGBPal colors;
        ui->charPalette(&colors);
        QCOMPARE(script.QRecordingUserPrompt::calls.last().title, QStringLiteral("Palette warning!"));
        QCOMPARE(script.QRecordingUserDialogs::calls.last().title, QStringLiteral("Open palette"));
        QRGBPal expected;
        QVERIFY(QRGBPalette(&expected).fromFile(act));
        const QByteArray read(reinterpret_cast<const char *>(colors.bytes()), 1024);
        QCOMPARE(read, QByteArray(reinterpret_cast<const char *>(expected.bytes()), 1024));
        QVERIFY(read.count('\0') < 1000);
    }

    void failuresSayWhatAndLoseNothing()
    {
        MainWindow window(false);
        QInterface *ui = mainInterface;
        const QString def = m_temp.filePath(QStringLiteral("plain/plain.def"));
        QVERIFY(TestSupport::writeFile(def, "[Info]\r\nname = \"Plain\"\r\n[Files]\r\ncmd = plain.cmd\r\n"));
        ui->openProject(def);
        QProject *project = ui->currentProject();
        project->commands()->document()->setPlainText(QStringLiteral("[Command]\nname = \"x\"\n"));
        Script script;
        // A DEF that isn't there: said, and the open project stays.
        ui->openProject(m_temp.filePath(QStringLiteral("missing.def")));
        QCOMPARE(ui->projects(), QList<QProject *>{project});
        QCOMPARE(script.QRecordingUserPrompt::calls.size(), 1);
        QVERIFY(script.QRecordingUserPrompt::calls.first().text.contains(QStringLiteral("missing.def")));
        // A folder that can't be written (a file stands where it should be): nothing is written or asked.
        QVERIFY(TestSupport::writeFile(m_temp.filePath(QStringLiteral("afile")), "x"));
        script.log.clear();
        script.QRecordingUserDialogs::answer({m_temp.filePath(QStringLiteral("afile/new.def"))});
        ui->fileSaveAs();
        QCOMPARE(script.log.size(), 2);
        QVERIFY(script.log.last().contains(QStringLiteral("can't be written")));
        QVERIFY(project->commands()->isModified());
        QCOMPARE(ui->projects(), QList<QProject *>{project});
    }

    void closing()
    {
        auto *window = new MainWindow(false);
        QPointer<MainWindow> alive = window;
        QInterface *ui = mainInterface;
        ui->newProject(false);
        ui->newProject(false);
        // Counted from the start: the blank project of the start is 1.
        QCOMPARE(ui->tabBar()->tabText(2), QStringLiteral("Project 3"));
        ui->projects().at(1)->commands()->document()->setPlainText(QStringLiteral("x"));
        Script script;
        ui->fileCloseAllCurr(); // the current is the last; the modified one refuses
        QCOMPARE(ui->projects().size(), 2);
        m_configuration.config[QStringLiteral("confirm_close")] = true;
        script.QRecordingUserPrompt::answer({false});
        QCloseEvent refused;
        QApplication::sendEvent(window, &refused);
        QVERIFY(!refused.isAccepted());
        QCOMPARE(script.log.last(), QStringLiteral("? Close"));
        // Yes to closing, No to the discard: the unmodified one goes, the program stays.
        script.QRecordingUserPrompt::answer({true, false});
        QCloseEvent kept;
        QApplication::sendEvent(window, &kept);
        QVERIFY(!kept.isAccepted());
        QCOMPARE(ui->projects().size(), 1);
        QCOMPARE(script.log.last(), QStringLiteral("? Discard changes"));
        script.QRecordingUserPrompt::answer({true, true});
        QCloseEvent closed;
        QApplication::sendEvent(window, &closed);
        QVERIFY(closed.isAccepted());
        QVERIFY(ui->projects().first()->isBlank());
        m_configuration.config[QStringLiteral("confirm_close")] = false;
        delete window;
    }

    void history()
    {
        m_configuration.config[QStringLiteral("max_history")] = 3;
        const QString store = m_temp.filePath(QStringLiteral("history.xml"));
        QMenu menu;
        QStringList opened;
        {
            QHistoryManager history(&menu, store);
            connect(&history, &QHistoryManager::entryTriggered, this, [&opened](const QString &f) { opened << f; });
            QStringList files;
            for (int i = 0; i < 4; ++i) {
                files.append(m_temp.filePath(QStringLiteral("h%1.def").arg(i)));
                QVERIFY(TestSupport::writeFile(files.last(), "[Files]\r\n"));
                history.add(files.last());
            }
            // The oldest went; an entry added again only moves.
            history.add(files.at(2));
            QCOMPARE(history.entries(), (QStringList{files.at(2), files.at(3), files.at(1)}));
            QCOMPARE(menu.actions().first()->text(), QStringLiteral("h2"));
            QFile::remove(files.at(1));
            Script script;
            script.QRecordingUserPrompt::answer({false});
            history.allTriggered();
            QCOMPARE(opened, (QStringList{files.at(3), files.at(2)}));
            QCOMPARE(script.QRecordingUserPrompt::calls.size(), 1);
            QCOMPARE(script.QRecordingUserPrompt::calls.first().kind, QRecordingUserPrompt::WarningQuestion);
            QCOMPARE(script.QRecordingUserPrompt::calls.first().title, QStringLiteral("File not found!"));
            QVERIFY(script.QRecordingUserPrompt::calls.first().defaultYes);
            QCOMPARE(history.entries().size(), 3);
            QVERIFY(history.save());
        }
        QHistoryManager again(&menu, store);
        QVERIFY(again.load());
        QCOMPARE(again.entries().size(), 3);
        QVERIFY(TestSupport::readFile(store).startsWith("<!DOCTYPE ZNLHistoryML>\n<history>\n    <entry file="));
        again.clearTriggered();
        QVERIFY(!menu.isEnabled());
        m_configuration.config[QStringLiteral("max_history")] = 30;
    }

    void thePlaceOfTheWindowStays()
    {
        m_configuration.config[QStringLiteral("window_left")] = 40;
        m_configuration.config[QStringLiteral("window_top")] = 30;
        m_configuration.config[QStringLiteral("window_width")] = 900;
        m_configuration.config[QStringLiteral("window_height")] = 640;
        m_configuration.config[QStringLiteral("action_list_area")] = 1;
        QVariantList first;
        for (int run = 0; run < 3; ++run) {
            {
                MainWindow window(false);
                window.show();
                QVERIFY(QTest::qWaitForWindowExposed(&window));
                QCOMPARE(window.dockWidgetArea(window.actions), Qt::LeftDockWidgetArea);
            }
            QVariantList now;
            for (const char *key : {"window_left", "window_top", "window_width", "window_height", "action_list_width"})
                now.append(m_configuration.config.value(QLatin1String(key)).toInt());
            if (run == 0)
                first = now;
            QCOMPARE(now, first);
        }
        QCOMPARE(first.at(2).toInt(), 900);
    }

    void aBigSpriteFileKeepsTheWindowAlive()
    {
        QList<SffBuilder::Sprite> sprites;
        for (int i = 0; i < 2000; ++i)
            sprites.append(SffBuilder::Sprite{i / 100, i % 100, 2, 2, 0, 0, 0, 0, 8, QByteArray(4, '\1')});
        const QByteArray sff = SffBuilder::v2(QSprites::Version_201, {SffBuilder::Palette{0, 0, 256, 0, SffBuilder::colors(1)}},
                                              sprites);
        QVERIFY(TestSupport::writeFile(m_temp.filePath(QStringLiteral("big/big.sff")), sff));
        const QString def = m_temp.filePath(QStringLiteral("big/big.def"));
        QVERIFY(TestSupport::writeFile(def, "[Files]\r\nsprite = big.sff\r\n"));
        MainWindow window(false);
        QInterface *ui = mainInterface;
        int ticks = 0;
        bool dialogShown = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (!ui->loadingProject())
                return;
            ++ticks;
            for (QWidget *widget : QApplication::topLevelWidgets())
                dialogShown = dialogShown || (qobject_cast<QProgress *>(widget) && widget->isVisible());
        });
        timer.start(0);
        ui->openProject(def);
        QCOMPARE(ui->currentProject()->sprites()->count(), 2000);
        QVERIFY(dialogShown);
        // Events ran while the sprites were read, not only between documents.
        QVERIFY2(ticks > 10, qPrintable(QString::number(ticks)));
    }
};

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
