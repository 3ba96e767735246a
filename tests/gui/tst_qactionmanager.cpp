#include "core/base/quserprompt.h"
#include "gui/app/qactionmanager.h"
#include "testsupport.h"

#include <QMainWindow>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using Scopes = QList<int>;

class tst_QActionManager : public QObject
{
    Q_OBJECT

private:
    /** A shown, active window with its manager, so that keys reach the shortcuts. */
    struct Window
    {
        QMainWindow window;
        QActionManager manager{&window};

        Window()
        {
            window.resize(200, 100);
            window.show();
            window.activateWindow();
            (void)QTest::qWaitForWindowActive(&window);
        }

        QAction *add(const QString &name, const Scopes &scopes)
        {
            QAction *action = manager.addAction({}, name, 74);
            // Scopes given at run time: the list form the editors use is fixed at compile time.
            auto *info = const_cast<QActionInfo *>(manager.info(action));
            for (int scope : scopes)
                info->scopes[size_t(scope)] = true;
            return action;
        }
    };

private Q_SLOTS:
    void conflicts_data()
    {
        QTest::addColumn<Scopes>("bound");
        QTest::addColumn<Scopes>("added");
        QTest::addColumn<bool>("conflict");
        QTest::newRow("two editors") << Scopes{1} << Scopes{5} << false;
        QTest::newRow("same editor") << Scopes{1} << Scopes{1} << true;
        QTest::newRow("a shared editor") << Scopes{1, 2} << Scopes{2, 3} << true;
        QTest::newRow("a global key given to an editor") << Scopes{7} << Scopes{1} << true;
        QTest::newRow("an editor's key given to a global command") << Scopes{1} << Scopes{7} << true;
        QTest::newRow("definitions share with all") << Scopes{0} << Scopes{0} << false;
        QTest::newRow("definitions and sprites") << Scopes{0} << Scopes{1} << false;
    }

    void conflicts()
    {
        QFETCH(Scopes, bound);
        QFETCH(Scopes, added);
        QFETCH(bool, conflict);
        QRecordingUserPrompt prompt;
        Window w;
        QAction *first = w.add(QStringLiteral("first"), bound);
        QAction *second = w.add(QStringLiteral("second"), added);
        QVERIFY(w.manager.setShortcut(first, QKeySequence(QStringLiteral("Ins"))));
        QCOMPARE(w.manager.setShortcut(second, QKeySequence(QStringLiteral("Ins"))), !conflict);
        QCOMPARE(w.manager.keys(second).isEmpty(), conflict);
        QCOMPARE(prompt.calls.size(), conflict ? 1 : 0);
        if (conflict) {
            QCOMPARE(prompt.calls.first().kind, QRecordingUserPrompt::Warning);
            QCOMPARE(prompt.calls.first().title, QStringLiteral("Conflict!"));
            QCOMPARE(prompt.calls.first().text,
                     QStringLiteral("This shortcut conflict with another that resides in the same scope."));
        }
    }

    void oneKeyRunsWhatSuitsTheCurrentEditor()
    {
        Window w;
        QAction *sprite = w.add(QStringLiteral("spr_add"), {1});
        QAction *sound = w.add(QStringLiteral("snd_add"), {5});
        QAction *global = w.add(QStringLiteral("edit_undo"), {7});
        QAction *definitionsA = w.add(QStringLiteral("def_a"), {0});
        QAction *definitionsB = w.add(QStringLiteral("def_b"), {0});
        for (QAction *action : {sprite, sound})
            QVERIFY(w.manager.setShortcut(action, QKeySequence(Qt::Key_Insert)));
        QVERIFY(w.manager.setShortcut(global, QKeySequence(Qt::CTRL | Qt::Key_Z)));
        for (QAction *action : {definitionsA, definitionsB})
            QVERIFY(w.manager.setShortcut(action, QKeySequence(Qt::Key_F5)));
        // One hidden action per key, on the window.
        QCOMPARE(w.window.actions().size(), 3);

        QSignalSpy sprites(sprite, &QAction::triggered);
        QSignalSpy sounds(sound, &QAction::triggered);
        QSignalSpy globals(global, &QAction::triggered);
        QSignalSpy firsts(definitionsA, &QAction::triggered);
        QSignalSpy seconds(definitionsB, &QAction::triggered);
        auto press = [&w](int scope, QKeyCombination key) {
            w.manager.setScope(scope);
            QTest::keyClick(&w.window, key.key(), key.keyboardModifiers());
        };
        press(QActionInfo::NoScope, Qt::Key_Insert);
        press(QActionInfo::NoScope, Qt::CTRL | Qt::Key_Z);
        press(1, Qt::Key_Insert);
        press(5, Qt::Key_Insert);
        press(5, Qt::Key_Insert);
        press(3, Qt::CTRL | Qt::Key_Z);
        press(0, Qt::Key_F5);
        // Without an editor only the window's own commands run (a stage with no
        // editor of its own still saves); then each press runs its own editor's.
        QCOMPARE(sprites.size(), 1);
        QCOMPARE(sounds.size(), 2);
        QCOMPARE(globals.size(), 2);
        // Two commands of the definitions on one key: both run.
        QCOMPARE(firsts.size(), 1);
        QCOMPARE(seconds.size(), 1);
        // A disabled command doesn't run.
        sprite->setEnabled(false);
        press(1, Qt::Key_Insert);
        QCOMPARE(sprites.size(), 1);
    }

    void bindingAgainAndUnbinding()
    {
        Window w;
        QAction *action = w.add(QStringLiteral("spr_add"), {1});
        QVERIFY(w.manager.setShortcut(action, QKeySequence(Qt::Key_Insert)));
        // The same key again to the only command that has it: nothing changes, nothing is freed.
        QVERIFY(w.manager.setShortcut(action, QKeySequence(Qt::Key_Insert)));
        QCOMPARE(w.window.actions().size(), 1);
        QCOMPARE(w.window.actions().first()->data().toInt(), 1);
        QVERIFY(action->text().endsWith(QStringLiteral("\t (Ins)")));
        // Another key moves the command; the key nobody has any more goes.
        QVERIFY(w.manager.setShortcut(action, QKeySequence(Qt::Key_Delete)));
        QCOMPARE(w.window.actions().size(), 1);
        QCOMPARE(w.window.actions().first()->shortcut(), QKeySequence(Qt::Key_Delete));
        QVERIFY(w.manager.setShortcut(action, QKeySequence()));
        QVERIFY(w.window.actions().isEmpty());
        QVERIFY(w.manager.keys(action).isEmpty());
    }

    void shortcutsFileRoundTrip()
    {
        QTemporaryDir dir;
        const QString written = dir.filePath(QStringLiteral("written.xml"));
        {
            Window w;
            QAction *save = w.add(QStringLiteral("file_save"), {7});
            w.add(QStringLiteral("unbound"), {7});
            QAction *sprite = w.add(QStringLiteral("spr_add"), {1});
            QVERIFY(w.manager.setShortcut(save, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)));
            QVERIFY(w.manager.setShortcut(sprite, QKeySequence(Qt::Key_Insert)));
            QVERIFY(w.manager.save(written));
        }
        // Portable text, one line per bound command in the order of the commands.
        QCOMPARE(TestSupport::readFile(written),
                 QByteArray("<!DOCTYPE ZNLShortcutML>\n<shortcuts>\n"
                            "    <shortcut action=\"file_save\" keys=\"Ctrl+Shift+S\"/>\n"
                            "    <shortcut action=\"spr_add\" keys=\"Ins\"/>\n</shortcuts>\n"));
        // A file with a name no command has any more, read and written again.
        QByteArray older = TestSupport::readFile(written);
        older.replace("<shortcuts>\n", "<shortcuts>\n    <shortcut action=\"gone\" keys=\"F4\"/>\n");
        const QString olderFile = dir.filePath(QStringLiteral("older.xml"));
        QVERIFY(TestSupport::writeFile(olderFile, older));
        Window w;
        w.add(QStringLiteral("file_save"), {7});
        w.add(QStringLiteral("unbound"), {7});
        w.add(QStringLiteral("spr_add"), {1});
        QVERIFY(w.manager.load(olderFile));
        const QString again = dir.filePath(QStringLiteral("again.xml"));
        QVERIFY(w.manager.save(again));
        QCOMPARE(TestSupport::readFile(again), TestSupport::readFile(written));
        QVERIFY(!w.manager.load(dir.filePath(QStringLiteral("none.xml"))));
    }

    void theShortcutTable()
    {
        QRecordingUserPrompt prompt;
        Window w;
        QAction *global = w.add(QStringLiteral("file_save"), {7});
        QAction *sprite = w.add(QStringLiteral("spr_add"), {1});
        QVERIFY(w.manager.setShortcut(global, QKeySequence(Qt::CTRL | Qt::Key_S)));
        const QModelIndex keys = w.manager.index(1, 1);
        QVERIFY(w.manager.flags(keys) & Qt::ItemIsEditable);
        QVERIFY(!(w.manager.flags(w.manager.index(1, 0)) & Qt::ItemIsEditable));
        QVERIFY(w.manager.setData(keys, QKeySequence(Qt::Key_Insert)));
        QCOMPARE(w.manager.data(keys).toString(), QKeySequence(Qt::Key_Insert).toString(QKeySequence::NativeText));
        // A conflict is refused with the warning, and the edit still counts as taken.
        QVERIFY(w.manager.setData(keys, QKeySequence(Qt::CTRL | Qt::Key_S).toString(QKeySequence::NativeText)));
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(w.manager.keys(sprite), QKeySequence(Qt::Key_Insert));
    }

    void theActionListFollowsTheScope()
    {
        Window w;
        QAction *sprite = w.add(QStringLiteral("spr_add"), {1});
        w.add(QStringLiteral("snd_add"), {5});
        w.add(QStringLiteral("file_save"), {7});
        QActionList &list = w.manager.list();
        w.manager.setScope(1);
        QCOMPARE(list.rowCount(), 1);
        QCOMPARE(list.action(0), sprite);
        QCOMPARE(list.data(list.index(0), Qt::DisplayRole).toString(), sprite->toolTip());
        QCOMPARE(list.action(1), nullptr);
        w.manager.setScope(QActionInfo::NoScope);
        QCOMPARE(list.rowCount(), 0);
    }
};

QTEST_MAIN(tst_QActionManager)
#include "tst_qactionmanager.moc"
