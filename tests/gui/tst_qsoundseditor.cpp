// The sounds editor in the frame, on Kung Fu Man's sounds: what the panel
// shows while stepping, and that every command is one undo step, asks what
// it must ask, and never waits for a person or an audio device.
#include "core/app/qproject.h"
#include "core/base/apppaths.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserdialogs.h"
#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"
#include "gui/app/qinterface.h"
#include "gui/app/qorganizereditor.h"
#include "gui/common/delgrp.h"
#include "gui/common/dialogparts.h"
#include "gui/common/dialogrunner.h"
#include "gui/sounds/addsom.h"
#include "gui/sounds/expdlg.h"
#include "gui/sounds/qsoundseditor.h"
#include "gui/sounds/sndimport.h"
#include "sndbuilder.h"
#include "testsupport.h"

#include <QLabel>
#include <QListView>
#include <QMainWindow>
#include <QMenuBar>
#include <QScrollBar>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

namespace {

/** Answers the next dialog of type `Dialog` through `fill`, and accepts it. */
template <typename Dialog, typename Fill>
void acceptNext(Fill fill)
{
    dialogRunner = [fill](QDialog *dialog) {
        auto *typed = qobject_cast<Dialog *>(dialog);
        if (!typed)
            return int(QDialog::Rejected);
        fill(typed);
        return int(QDialog::Accepted);
    };
}

} // namespace

class tst_QSoundsEditor : public QObject
{
    Q_OBJECT

private:
    QMugenModel m_configuration;
    QTemporaryDir m_temp;

    /** The window with the sounds editor and the organizer, and Kung Fu Man open. */
    struct Frame
    {
        QMainWindow window;
        QRecordingUserPrompt prompt;
        QRecordingUserDialogs dialogs;
        QInterface *ui;
        QSoundsEditor *editor;

        Frame()
        {
            for (const char *menu : {"menuFile", "menuEdit", "menuView", "menuTools", "menuHelp"})
                window.menuBar()->addMenu(QLatin1String(menu))->setObjectName(QLatin1String(menu));
            ui = new QInterface(&window);
            mainInterface = ui;
            editor = new QSoundsEditor(ui);
            ui->addEditor(editor);
            ui->addExtraEditor(new QOrganizerEditor(ui));
            ui->start(false);
            ui->openProject(TestSupport::corpusDir() + QStringLiteral("/elecbyte-mugen10/chars/kfm/kfm.def"));
        }
        ~Frame()
        {
            delete ui;
            mainInterface = nullptr;
        }
        QSounds *sounds() const { return editor->sounds(); }
        QString text(const char *control) const
        {
            return static_cast<QLabel *>(ui->control(QLatin1String(control)))->text();
        }
        int undoSteps() const { return sounds()->undoStack()->count(); }
    };

    QString wav(const QString &name, int rate)
    {
        const QString path = m_temp.filePath(name);
        if (!TestSupport::writeFile(path, SndBuilder::wav(1, rate, 16, 100)))
            qFatal("can't write %s", qPrintable(path));
        return path;
    }

private Q_SLOTS:
    void initTestCase()
    {
        configuration = &m_configuration;
        if (TestSupport::corpusDir().isEmpty())
            QSKIP("the corpus isn't there");
    }

    void cleanup()
    {
        dialogRunner = nullptr;
        QFile::remove(settingsFileForWrite(QStringLiteral("shortcuts.xml")));
    }

    void cleanupTestCase() { configuration = nullptr; }

    void steppingShowsThePositionAndTheFacts()
    {
        Frame f;
        QCOMPARE(f.ui->currentEditorId(), int(QInterfaceIds::Sounds));
        QCOMPARE(f.text("snd_sel_lb"), QStringLiteral("1 / 12"));
        QVERIFY2(f.text("snd_info_lb").startsWith(QStringLiteral(
                     "Channels: 1 (Mono)\nSample rate: 8000 Hz\nBits per sample: 8 bits\nDuration: ")),
                 qPrintable(f.text("snd_info_lb")));
        auto *bar = static_cast<QScrollBar *>(f.ui->control(QStringLiteral("snd_sel")));
        QCOMPARE(bar->maximum(), 11);
        // Group 0 holds five sounds; the next group starts with (1, 1).
        f.editor->nextGrp();
        QCOMPARE(f.text("snd_sel_lb"), QStringLiteral("6 / 12"));
        QCOMPARE(static_cast<QSpinBox *>(f.ui->control(QStringLiteral("snd_grp")))->value(), 1);
        QCOMPARE(static_cast<QSpinBox *>(f.ui->control(QStringLiteral("snd_num")))->value(), 1);
        f.editor->prevSnd();
        QCOMPARE(f.text("snd_sel_lb"), QStringLiteral("5 / 12"));
        bar->setValue(11);
        QCOMPARE(f.text("snd_sel_lb"), QStringLiteral("12 / 12"));
        // The last group has no next one: the position stays.
        f.editor->nextGrp();
        QCOMPARE(f.text("snd_sel_lb"), QStringLiteral("12 / 12"));

        // Typing a group is one undo step.
        static_cast<QSpinBox *>(f.ui->control(QStringLiteral("snd_grp")))->setValue(42);
        QCOMPARE(f.sounds()->subItem(11).group, 42);
        QCOMPARE(f.undoSteps(), 1);

        // Empty: nothing to show, and the bar keeps a sane range.
        f.sounds()->clear();
        QCOMPARE(f.text("snd_sel_lb"), QStringLiteral("0 / 0"));
        QCOMPARE(f.text("snd_info_lb"),
                 QStringLiteral("Channels: ---\nSample rate: ---\nBits per sample: ---\nDuration: ---"));
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->maximum(), 0);
        QVERIFY(!bar->isEnabled());
    }

    void addingIsOneStep()
    {
        Frame f;
        // Sorted by name: a, b, c, whatever order the dialog gave.
        const QStringList files = {wav(QStringLiteral("b.wav"), 11025), wav(QStringLiteral("a.wav"), 22050),
                                   wav(QStringLiteral("c.wav"), 44100)};
        f.dialogs.answer({files});
        acceptNext<AddSom>([](AddSom *dialog) { dialog->setValues(7, 5, 10); });
        const QString before = f.sounds()->dump();
        f.editor->add();
        QCOMPARE(f.dialogs.calls.first().filter, QStringLiteral("WAVEform Audio Format (*.wav)"));
        QCOMPARE(f.sounds()->count(), 15);
        const QList<QPair<int, quint32>> expected = {{5, 22050}, {15, 11025}, {25, 44100}};
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(f.sounds()->subItem(1 + i), (QSubItem{7, expected.at(i).first}));
            QCOMPARE(f.sounds()->soundInfo(1 + i).sampleRate, expected.at(i).second);
        }
        QCOMPARE(f.text("snd_sel_lb"), QStringLiteral("4 / 15"));
        QCOMPARE(f.undoSteps(), 1);
        f.sounds()->undo();
        QCOMPARE(f.sounds()->dump(), before);

        // Cancelling the numbering adds nothing.
        f.dialogs.answer({files});
        dialogRunner = [](QDialog *) { return int(QDialog::Rejected); };
        f.editor->add();
        QCOMPARE(f.sounds()->count(), 12);
    }

    void deleteAsks()
    {
        Frame f;
        f.prompt.answer({false, true});
        f.editor->del();
        QCOMPARE(f.prompt.calls.last().text, QStringLiteral("Do you really want to delete the sound?"));
        QCOMPARE(f.sounds()->count(), 12);
        f.editor->del();
        QCOMPARE(f.sounds()->count(), 11);
        QCOMPARE(f.prompt.calls.size(), 2);
    }

    void groupDialogs()
    {
        Frame f;
        // A reversed interval is put in order: numbers 1 to 3 of group 0 go.
        acceptNext<DelGrp>([](DelGrp *dialog) {
            dialog->setGroup(0);
            dialog->interval()->setInterval(true, 3, 1);
        });
        f.editor->delGroup();
        QCOMPARE(f.sounds()->count(), 9);
        QCOMPARE(f.undoSteps(), 1);
        QCOMPARE(f.sounds()->subItem(1), (QSubItem{0, 4}));
    }

    void find_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("backward");
        QTest::addColumn<int>("found");
        // Kung Fu Man: 0,0 0,1 0,2 0,3 0,4 1,1 5,0 6,0 11,0 40,0 100,0 800,0; from the first.
        QTest::newRow("group") << QStringLiteral("5") << false << 6;
        QTest::newRow("number") << QStringLiteral(",3") << false << 3;
        QTest::newRow("both") << QStringLiteral("5, 0") << false << 6;
        QTest::newRow("no such pair") << QStringLiteral("5,3") << false << -1;
        QTest::newRow("backward wraps") << QStringLiteral(",0") << true << 11;
        QTest::newRow("empty") << QString() << false << -1;
        QTest::newRow("not a pattern") << QStringLiteral("a") << false << -1;
    }

    void find()
    {
        QFETCH(QString, text);
        QFETCH(bool, backward);
        QFETCH(int, found);
        Frame f;
        f.editor->find(text, {{QQuickFindOption::Backward, backward}, {QQuickFindOption::Circular, true}});
        QCOMPARE(f.sounds()->currentIndex(), qMax(found, 0));
        QCOMPARE(f.prompt.calls.isEmpty(), found >= 0);
        if (found < 0)
            QCOMPARE(f.prompt.calls.last().text, QStringLiteral("No sound found!"));
    }

    void replaceAllIsOneStep()
    {
        Frame f;
        f.editor->replace(QStringLiteral("0"), QStringLiteral("9"), {}, true);
        QCOMPARE(f.undoSteps(), 1);
        // The numbers stay: only the group was given.
        QCOMPARE(f.sounds()->subItem(4), (QSubItem{9, 4}));
        QCOMPARE(f.sounds()->find(0, 0, 0), -1);
    }

    void exportAndImportRoundTrip()
    {
        Frame f;
        const QString before = f.sounds()->dump();
        const QString script = m_temp.filePath(QStringLiteral("export/kfm.kse"));
        QDir().mkpath(QFileInfo(script).absolutePath());
        acceptNext<ExpDlg>([](ExpDlg *dialog) { dialog->setChoice(true, 0); });
        f.dialogs.answer({script});
        f.editor->fileExport();
        QCOMPARE(f.dialogs.calls.last().filter,
                 QStringLiteral("Kestrada Export (*.kse);;Elecbyte SndMaker (*.def)"));
        f.editor->clear();
        QCOMPARE(f.sounds()->count(), 0);
        f.dialogs.answer({script});
        f.editor->fileImport();
        QCOMPARE(f.sounds()->dump(), before);
        QCOMPARE(f.undoSteps(), 1);
        QVERIFY(f.prompt.calls.isEmpty());
    }

    void importFromAnotherProject()
    {
        Frame f;
        acceptNext<sndimport>([](sndimport *dialog) { dialog->setProject(0); });
        f.editor->projImport();
        QCOMPARE(f.prompt.calls.last().text, QStringLiteral("You can't import from the destination project!"));
        f.ui->newProject(false);
        acceptNext<sndimport>([](sndimport *dialog) {
            dialog->setProject(0);
            dialog->groups()->setInterval(true, 0, 1);
        });
        f.editor->projImport();
        QCOMPARE(f.prompt.calls.last().text, QStringLiteral("6 sound(s) were imported!"));
        QCOMPARE(f.sounds()->count(), 6);
        QCOMPARE(f.sounds()->sample(5), f.ui->projects().first()->sounds()->sample(5));
        QCOMPARE(f.undoSteps(), 1);
    }

    void theOrganizerMovesTwoSoundsInOneStep()
    {
        Frame f;
        auto *organizer = static_cast<QOrganizerEditor *>(f.ui->extraEditor(QInterfaceIds::Organizer));
        f.ui->makeExtraCurrent(QInterfaceIds::Organizer);
        QCOMPARE(organizer->model(), static_cast<QOrganizableObject *>(f.sounds()));
        const QString before = f.sounds()->dump();
        auto *list = static_cast<QListView *>(f.ui->control(QStringLiteral("org_list")));
        for (int row : {3, 5})
            list->selectionModel()->select(f.sounds()->index(row), QItemSelectionModel::Select);
        organizer->moveUp();
        QCOMPARE(f.sounds()->subItem(2), (QSubItem{0, 3}));
        QCOMPARE(f.sounds()->subItem(4), (QSubItem{1, 1}));
        QCOMPARE(f.undoSteps(), 1);
        f.sounds()->undo();
        QCOMPARE(f.sounds()->dump(), before);
    }

    void playingEndsByItself()
    {
        Frame f;
        QAction *play = f.ui->actions().action(QStringLiteral("snd_play"));
        QAction *loop = f.ui->actions().action(QStringLiteral("snd_play_loop"));
        // A second click stops at once.
        play->trigger();
        QVERIFY(play->isChecked());
        play->trigger();
        QVERIFY(!play->isChecked());
        // Playing once unchecks the looping button, and comes back about a
        // second after the sound's end, with or without a device.
        loop->trigger();
        play->trigger();
        QVERIFY(!loop->isChecked());
        QVERIFY(play->isChecked());
        const int wait = qRound(f.sounds()->soundInfo(0).duration * 1000) + 1000;
        QTest::qWait(wait - 300);
        QVERIFY(play->isChecked());
        QTRY_VERIFY_WITH_TIMEOUT(!play->isChecked(), 2000);
    }
};

QTEST_MAIN(tst_QSoundsEditor)
#include "tst_qsoundseditor.moc"
