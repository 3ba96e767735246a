#include "core/app/qproject.h"
#include "core/sounds/qsounds.h"
#include "core/base/apppaths.h"
#include "core/base/qmugenmodel.h"
#include "core/base/qprojecttypes.h"
#include "gui/app/qguiuserprompt.h"
#include "gui/app/qinterface.h"
#include "logeditor.h"
#include "gui/app/qorganizereditor.h"
#include "gui/app/qpresetmanager.h"
#include "testsupport.h"

#include <QListView>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QMenuBar>
#include <QSpinBox>
#include <QStackedLayout>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

namespace {

const char presetText[] = R"(<!DOCTYPE ZNLPresetML>
<preset panel-metric="200,4,26">
    <toolbar name="main" iconsize="16">
        <button name="editor_sff"/>
        <button name="editor_cmd"/>
        <button name="editor_snd"/>
        <separator/>
        <button name="edit_undo"/>
    </toolbar>
    <toolbar name="sounds"><button name="test_add_5"/></toolbar>
    <panel name="sounds">
        <control name="test_add_5" position="0,40" size="24,24" flat="true"/>
        <control name="test_add_5" position="30,40"/>
        <control name="test_spin_5" position="0,80"/>
        <control name="no_such_control" position="0,0"/>
    </panel>
    <panel name="nowhere"><control name="test_spin_1"/></panel>
</preset>
)";

} // namespace

class tst_Frame : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QMugenModel m_configuration;
    QPresetManager *m_presets = nullptr;

    /**
     * A window with the menus of the program, two workspaces, editors 1, 3
     * and 5, and the organizer. Editor 3 serves characters, the others the
     * kinds of `mask`.
     */
    struct Frame
    {
        QMainWindow window;
        QStringList log;
        QInterface *ui;
        LogEditor *editors[6] = {};

        explicit Frame(int mask = 15)
        {
            for (const char *menu : {"menuFile", "menuEdit", "menuView", "menuTools", "menuHelp"})
                window.menuBar()->addMenu(QLatin1String(menu))->setObjectName(QLatin1String(menu));
            ui = new QInterface(&window);
            mainInterface = ui;
            ui->addWorkspace(new LogWorkspace(0, &log));
            ui->addWorkspace(new LogWorkspace(1, &log));
            for (int id : {1, 3, 5}) {
                const QString add = QStringLiteral("test_add_%1").arg(id);
                editors[id] = new LogEditor(ui, id, id == 3 ? 0 : 1, id == 3 ? Character : mask, &log, {{add, 74}});
                ui->addEditor(editors[id]);
            }
            ui->addExtraEditor(new QOrganizerEditor(ui));
            ui->start(false);
            window.show();
            log.clear();
        }
        ~Frame()
        {
            delete ui;
            mainInterface = nullptr;
        }
    };

private Q_SLOTS:
    void initTestCase()
    {
        configuration = &m_configuration;
        m_configuration.config[QStringLiteral("preset")] = QStringLiteral("Test");
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("presets/Test.xml")), presetText));
        m_presets = new QPresetManager(QDataFolder(m_dir.filePath(QStringLiteral("presets"))));
        presets = m_presets;
    }

    void init()
    {
        // Each frame starts without the bindings an earlier one saved.
        QFile::remove(settingsFileForWrite(QStringLiteral("shortcuts.xml")));
    }

    void cleanupTestCase()
    {
        QFile::remove(settingsFileForWrite(QStringLiteral("shortcuts.xml")));
        presets = nullptr;
        delete m_presets;
        configuration = nullptr;
    }

    void callOrder()
    {
        Frame f;
        // A new project: every workspace, editor and extra editor follows it,
        // in that order, then the current editor comes back up.
        f.ui->newProject(false);
        QCOMPARE(f.log, QStringList({
            QStringLiteral("W0.deactivate"), QStringLiteral("W0.setProject"),
            QStringLiteral("W1.deactivate"), QStringLiteral("W1.setProject"),
            QStringLiteral("E1.deactivate"), QStringLiteral("E1.setProject"), QStringLiteral("E1.activate(0)"),
            QStringLiteral("E3.deactivate"), QStringLiteral("E3.setProject"), QStringLiteral("E3.activate(0)"),
            QStringLiteral("E5.deactivate"), QStringLiteral("E5.setProject"), QStringLiteral("E5.activate(0)"),
            QStringLiteral("W1.activate"), QStringLiteral("E1.activate(1)")}));
        QCOMPARE(f.ui->currentEditorId(), 1);

        // To an editor of the other workspace, and to one of the same.
        f.log.clear();
        f.ui->makeCurrent(3);
        f.ui->makeCurrent(5);
        QCOMPARE(f.log, QStringList({QStringLiteral("E1.deactivate"), QStringLiteral("W1.deactivate"),
                                     QStringLiteral("W0.activate"), QStringLiteral("E3.activate(1)"),
                                     QStringLiteral("E3.deactivate"), QStringLiteral("W0.deactivate"),
                                     QStringLiteral("W1.activate"), QStringLiteral("E5.activate(1)")}));
        QCOMPARE(f.ui->actions().list().action(0), f.editors[5]->add);

        // Undo reaches the current editor alone; so does a key two editors share.
        f.log.clear();
        f.ui->actions().action(QStringLiteral("edit_undo"))->trigger();
        for (int id : {1, 5})
            QVERIFY(f.ui->actions().setShortcut(f.editors[id]->add, QKeySequence(Qt::Key_Insert)));
        f.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&f.window));
        QTest::keyClick(&f.window, Qt::Key_Insert);
        QCOMPARE(f.log, QStringList({QStringLiteral("E5.undo"), QStringLiteral("E5.test_add_5")}));

        // A file command of an editor that isn't current makes it current.
        f.editors[1]->clear();
        QCOMPARE(f.ui->currentEditorId(), 1);
    }

    void aStageHidesWhatItHasNoDocumentFor()
    {
        Frame f;
        f.ui->makeCurrent(3);
        QVERIFY(f.editors[3]->menu()->menuAction()->isVisible());
        f.ui->currentProject()->setType(Stage);
        f.ui->projTypeChanged(f.ui->currentProject());
        QVERIFY(!f.editors[3]->menu()->menuAction()->isVisible());
        QVERIFY(!f.ui->actions().action(QStringLiteral("editor_cmd"))->isVisible());
        // The commands editor was current: the first editor left takes over.
        QCOMPARE(f.ui->currentEditorId(), 1);
        // The menus of editors stand before Tools and Help.
        const QList<QAction *> menus = f.window.menuBar()->actions();
        QCOMPARE(menus.at(menus.size() - 3), f.editors[5]->menu()->menuAction());
    }

    void aKindNoEditorServes()
    {
        Frame f(Character);
        f.ui->newProject(false);
        f.ui->currentProject()->setType(Stage);
        f.ui->projTypeChanged(f.ui->currentProject());
        f.ui->tabBar()->setCurrentIndex(0);
        QCOMPARE(f.ui->currentEditorId(), 1);
        // Back to the stage through a refresh: no editor, none of its commands listed.
        f.ui->tabBar()->setCurrentIndex(1);
        QCOMPARE(f.ui->currentEditorId(), int(QInterfaceIds::NoEditor));
        QCOMPARE(f.ui->actions().list().rowCount(), 0);
        // The window's own keys still work.
        QVERIFY(f.ui->actions().setShortcut(f.ui->actions().action(QStringLiteral("file_new")),
                                            QKeySequence(Qt::CTRL | Qt::Key_N)));
        f.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&f.window));
        QTest::keyClick(&f.window, Qt::Key_N, Qt::ControlModifier);
        QCOMPARE(f.ui->projects().size(), 3);
    }

    void presetsPlaceControls()
    {
        Frame f;
        f.ui->makeCurrent(5);
        QWidget *page = f.ui->panelPage(true, QStringLiteral("sounds"));
        QVERIFY(page);
        // One action placed twice: two buttons, enabled and disabled with it.
        const QList<QToolButton *> buttons = page->findChildren<QToolButton *>();
        QCOMPARE(buttons.size(), 2);
        QVERIFY(buttons.first()->autoRaise());
        QCOMPARE(buttons.first()->size(), QSize(24, 24));
        f.editors[5]->add->setEnabled(false);
        QVERIFY(!buttons.first()->isEnabled() && !buttons.last()->isEnabled());
        // The panel's metric, and a spin box without a size at its own size.
        QCOMPARE(f.ui->leftPanel()->minimumWidth(), 200);
        auto *spin = qobject_cast<QSpinBox *>(f.ui->control(QStringLiteral("test_spin_5")));
        QVERIFY(spin && spin->parentWidget() == page);
        QCOMPARE(spin->size(), spin->sizeHint());
        QVERIFY(f.ui->editorToolbar()->isVisible());
        QVERIFY(f.ui->leftPanel()->isVisible());

        // Applying the preset again rebuilds the panels; the spin box keeps its value.
        spin->setValue(42);
        f.ui->applyConfig();
        QCOMPARE(page->findChildren<QToolButton *>().size(), 2);
        QCOMPARE(spin->parentWidget(), page);
        QCOMPARE(spin->value(), 42);

        // A preset that isn't there leaves every control out of the panels.
        m_configuration.config[QStringLiteral("preset")] = QStringLiteral("Missing");
        f.ui->applyConfig();
        m_configuration.config[QStringLiteral("preset")] = QStringLiteral("Test");
        QVERIFY(page->findChildren<QToolButton *>().isEmpty());
        QCOMPARE(spin->parentWidget(), nullptr);
        QVERIFY(!spin->isVisible());
        QVERIFY(!f.ui->editorToolbar()->isVisible());
    }

    void theOrganizerMovesAndDeletesAsOneStep()
    {
        Frame f;
        QSounds sounds(nullptr, 0, false, -1);
        for (int i = 0; i < 6; ++i) {
            sounds.insert(i);
            sounds.setSubItem(i, 0, i);
        }
        sounds.undoStack()->clear();
        auto *organizer = static_cast<QOrganizerEditor *>(f.ui->extraEditor(QInterfaceIds::Organizer));
        // The current editor answers with its list.
        connect(organizer, &QOrganizerEditor::object, organizer, [&sounds](bool) { return &sounds; });
        organizer->activate(true);
        auto order = [&sounds] {
            QStringList rows;
            for (int i = 0; i < sounds.count(); ++i)
                rows.append(sounds.data(sounds.index(i)).toString().section(QLatin1Char(' '), 1));
            return rows.join(QLatin1Char(' '));
        };
        auto select = [organizer, &sounds](const QList<int> &rows) {
            auto *list = qobject_cast<QListView *>(mainInterface->control(QStringLiteral("org_list")));
            list->selectionModel()->clearSelection();
            for (int row : rows)
                list->selectionModel()->select(sounds.index(row), QItemSelectionModel::Select);
            return organizer->selectedRows();
        };
        QCOMPARE(select({3, 5}), QList<int>({3, 5}));
        // Rows 3 and 5 one up: they keep their order and their gap, and stay selected.
        organizer->moveUp();
        QCOMPARE(order(), QStringLiteral("0 1 3 2 5 4"));
        QCOMPARE(organizer->selectedRows(), QList<int>({2, 4}));
        organizer->moveBottom();
        QCOMPARE(order(), QStringLiteral("0 1 2 4 3 5"));
        organizer->moveUp10();
        QCOMPARE(order(), QStringLiteral("3 5 0 1 2 4"));
        QCOMPARE(organizer->selectedRows(), QList<int>({0, 1}));
        QCOMPARE(sounds.undoStack()->count(), 3);
        sounds.undo();
        sounds.undo();
        sounds.undo();
        QCOMPARE(order(), QStringLiteral("0 1 2 3 4 5"));

        // Delete asks first, then takes the rows away in one step.
        QRecordingUserPrompt prompt;
        prompt.answer({true});
        select({1, 4});
        QTest::keyClick(mainInterface->control(QStringLiteral("org_list")), Qt::Key_Delete);
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls.first().title, QStringLiteral("Delete"));
        QCOMPARE(prompt.calls.first().text, QStringLiteral("Do you really want to delete the selected item(s)?"));
        QVERIFY(!prompt.calls.first().defaultYes);
        QCOMPARE(order(), QStringLiteral("0 2 3 5"));
        sounds.undo();
        QCOMPARE(order(), QStringLiteral("0 1 2 3 4 5"));
    }

    void questionsWithMoreThanTwoAnswers()
    {
        // The window's prompt: the chosen button's place, or the default when dismissed.
        QGuiUserPrompt prompt;
        const QStringList buttons = {QStringLiteral("Yes"), QStringLiteral("Yes to all"), QStringLiteral("No")};
        // Clicks the button `text` of the question once it is up; an empty text presses Escape.
        auto answerWith = [](const QString &text) {
            QTimer::singleShot(0, [text] {
                auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
                QVERIFY(box);
                if (text.isEmpty()) {
                    QTest::keyClick(box, Qt::Key_Escape);
                    return;
                }
                for (QAbstractButton *button : box->buttons()) {
                    if (button->text() == text)
                        button->click();
                }
            });
        };
        answerWith(QStringLiteral("Yes to all"));
        QCOMPARE(prompt.choose(QStringLiteral("Save"), QStringLiteral("Overwrite?"), buttons, 2), 1);
        answerWith(QString());
        QCOMPARE(prompt.choose(QStringLiteral("Save"), QStringLiteral("Overwrite?"), buttons, 2), 2);
    }

    void panelsFollowTheViewActions()
    {
        Frame f;
        f.ui->makeCurrent(5);
        QAction *left = f.ui->actions().action(QStringLiteral("view_left_panel"));
        QAction *organizer = f.ui->actions().action(QStringLiteral("view_organizer"));
        left->setChecked(false);
        QVERIFY(!f.ui->leftPanel()->isVisible());
        left->setChecked(true);
        QVERIFY(f.ui->leftPanel()->isVisible());
        organizer->setChecked(true);
        QCOMPARE(f.ui->currentExtraId(), int(QInterfaceIds::Organizer));
        QVERIFY(f.ui->rightPanel()->isVisible());
        organizer->setChecked(false);
        QCOMPARE(f.ui->currentExtraId(), int(QInterfaceIds::NoExtra));
        QVERIFY(!f.ui->rightPanel()->isVisible());
        QCOMPARE(m_configuration.config.value(QStringLiteral("show_organizer")).toBool(), false);
    }
};

QTEST_MAIN(tst_Frame)
#include "tst_frame.moc"
