#include "core/app/qbakmanager.h"
#include "core/app/qproject.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"
#include "gui/app/bakdlg.h"
#include "gui/app/qinterface.h"
#include "testsupport.h"

#include <QLabel>
#include <QListView>
#include <QMainWindow>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

using TestSupport::readFile;
using TestSupport::writeFile;

class tst_BakDlg : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_temp;
    QMugenModel m_configuration;

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TMPDIR", m_temp.path().toLocal8Bit());
        configuration = &m_configuration;
        registerProjectElements();
    }

    void cleanupTestCase()
    {
        BakDlg::runner = nullptr;
        releaseProjectElements();
        configuration = nullptr;
    }

    void aBackupMadeAndLoadedThroughTheInterface()
    {
        const QString def = m_temp.filePath(QStringLiteral("kfm/kfm.def"));
        const QString cmd = m_temp.filePath(QStringLiteral("kfm/kfm.cmd"));
        QVERIFY(writeFile(def, "[Files]\r\ncmd = kfm.cmd\r\n"));
        QVERIFY(writeFile(cmd, "[Command]\r\n"));
        QRecordingUserPrompt prompt;
        QMainWindow window;
        QInterface interface(&window);
        interface.start(false);

        // A project without files can't be backed up, nor one without backups loaded; both say so.
        interface.fileBackup();
        interface.openProject(def);
        QProject *project = interface.currentProject();
        BakDlg::runner = [](BakDlg &) {
            qFatal("no dialog without backups");
            return false;
        };
        interface.fileLoadBackup();
        QCOMPARE(prompt.calls.size(), 2);
        QCOMPARE(prompt.calls.at(0).kind, QRecordingUserPrompt::Information);
        QCOMPARE(prompt.calls.at(1).text, QStringLiteral("This project has no backups yet."));

        interface.fileBackup();
        QCOMPARE(prompt.calls.size(), 2);
        const QBakManager backups(def);
        QCOMPARE(backups.rowCount(), 1);
        QVERIFY(window.statusBar()->currentMessage().contains(backups.folders().first()));

        QTextCursor(project->commands()->document()).insertText(QStringLiteral("; later\n"));
        QVERIFY(project->save());
        // Cancelled, nothing happens; chosen, the backup comes back under the project's own names.
        BakDlg::runner = [](BakDlg &) { return false; };
        interface.fileLoadBackup();
        QCOMPARE(project->commands()->text(), QStringLiteral("; later\n[Command]\n"));
        QStringList seen;
        BakDlg::runner = [&seen](BakDlg &dialog) {
            // Nothing is chosen until the user picks a row.
            seen = QStringList{dialog.windowTitle(), dialog.findChild<QLabel *>()->text(), dialog.selected()};
            dialog.list()->setCurrentIndex(dialog.backups()->index(0));
            seen.append(dialog.selected());
            return true;
        };
        interface.fileLoadBackup();
        QCOMPARE(seen, QStringList({QStringLiteral("Load backup"), QStringLiteral("Choose a backup to be loaded:"),
                                    QString(), backups.path(backups.index(0))}));
        QCOMPARE(interface.currentProject(), project);
        QCOMPARE(project->commands()->text(), QStringLiteral("[Command]\n"));
        QCOMPARE(project->commands()->fileName(), QFileInfo(cmd).absoluteFilePath());
        QCOMPARE(project->definitions()->fileName(), QFileInfo(def).absoluteFilePath());
        QCOMPARE(prompt.calls.size(), 2);

        // A file where the backup folder should be: the user learns that nothing was made.
        QVERIFY(QDir(m_temp.filePath(QStringLiteral("kfm/backup"))).removeRecursively());
        QVERIFY(writeFile(m_temp.filePath(QStringLiteral("kfm/backup")), "a file, not a folder"));
        interface.fileBackup();
        QCOMPARE(prompt.calls.size(), 3);
        QCOMPARE(prompt.calls.last().kind, QRecordingUserPrompt::Critical);
        QVERIFY(prompt.calls.last().text.contains(QDir::toNativeSeparators(QFileInfo(def).absoluteFilePath())));
    }
};

QTEST_MAIN(tst_BakDlg)
#include "tst_bakdlg.moc"
