#include "core/animation/qanimations.h"
#include "core/app/qbakmanager.h"
#include "core/app/qproject.h"
#include "core/base/filelookup.h"
#include "core/base/qcodepages.h"
#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"
#include "testsupport.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

using TestSupport::readFile;
using TestSupport::writeFile;

namespace {

void prepend(QSyntaxTextEditor *document, const char *text)
{
    QTextCursor(document->document()).insertText(QLatin1String(text));
}

} // namespace

class tst_QProjectBackup : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString &relative) const { return m_dir.filePath(relative); }

    /** Copies the folder of `def` to `name` in the test folder; returns the DEF of the copy. */
    QString copyOf(const QString &def, const QString &name)
    {
        for (QDirIterator it(QFileInfo(def).absolutePath(), QDir::Files); it.hasNext();) {
            const QFileInfo file(it.next());
            writeFile(path(name + QLatin1Char('/') + file.fileName()), readFile(file.filePath()));
        }
        return path(name + QLatin1Char('/') + QFileInfo(def).fileName());
    }

    /** A character with a palette, a file that is no palette, commands, and states of which one is above it. */
    QString smallCharacter(const QString &name)
    {
        const QList<std::pair<const char *, QByteArray>> files = {
            {"a/a.def", "[Files]\r\npal1 = a.act\r\npal2 = broken.png\r\ncmd = a.cmd\r\nst = a.cns\r\nst2 = ../common.cns\r\n"},
            {"a/a.act", QByteArray(768, '\x10')}, {"a/broken.png", "not a palette"},
            {"a/a.cmd", "[Command]\r\nname = \"x\"\r\n"}, {"a/a.cns", "[Statedef 0]\r\n"}, {"common.cns", "; common\r\n"}};
        for (const auto &[file, bytes] : files)
            writeFile(path(name + QLatin1Char('/') + QLatin1String(file)), bytes);
        return path(name + QStringLiteral("/a/a.def"));
    }

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        registerProjectElements();
    }

    void cleanupTestCase()
    {
        releaseProjectElements();
    }

    void aBackupHoldsEveryFile_data()
    {
        QTest::addColumn<bool>("edited");
        QTest::newRow("as on disk") << false;
        QTest::newRow("with unsaved edits") << true;
    }

    void aBackupHoldsEveryFile()
    {
        QFETCH(bool, edited);
        const QString corpusDef = TestSupport::corpusDir() + QStringLiteral("/webmugen/public/chars/kfm/kfm.def");
        if (!QFileInfo::exists(corpusDef))
            QSKIP("no corpus");
        const QString def = copyOf(corpusDef, QString::fromLatin1(QTest::currentDataTag()));
        QRecordingUserPrompt prompt;
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        if (edited) {
            prepend(project.commands(), "; edited\n");
            prepend(project.states(0), "; edited\n");
        }
        // The progress goes from 0 to the total it announced.
        QList<uint> positions;
        connect(&project, &QProject::progress, this,
                [&](uint pos, uint total, bool &) { positions.append(pos == 0 ? total : pos); });
        QString folder;
        QVERIFY(project.backup(&folder));
        QVERIFY(folder.startsWith(QFileInfo(def).canonicalPath() + QStringLiteral("/backup/")));
        QCOMPARE(positions.last(), positions.first());

        // Every file the DEF names is there: an edited document as it
        // stands in memory, every other one byte for byte.
        const QDefinitionsFiles files = project.definitions()->files();
        const QStringList names = QStringList{QFileInfo(def).fileName(), files.sprites, files.animations,
                                              files.sounds, files.commands}
            + files.palettes + files.states;
        int compared = 0;
        for (const QString &name : names) {
            const QString source = findFile(files.directory, name);
            if (!QFileInfo(source).isFile())
                continue;
            QByteArray expected = readFile(source);
            for (QSyntaxTextEditor *text : {static_cast<QSyntaxTextEditor *>(project.commands()), project.states(0)}) {
                if (edited && source == text->fileName())
                    expected = text->encode(text->text().replace(QLatin1Char('\n'), QLatin1String("\r\n")));
            }
            QVERIFY2(readFile(folder + name) == expected, qPrintable(name));
            ++compared;
        }
        // DEF, SFF, AIR, SND, CMD, six palettes and kfm.cns; common1.cns is named but absent.
        QCOMPARE(compared, 12);

        // The DEF of the backup opens as the project itself.
        QProject copy(0, true);
        QVERIFY(copy.fromFile(folder + QFileInfo(def).fileName(), 0, false, false));
        const auto counts = [](QProject &p) {
            return QList<int>{p.statesCount(), p.sprites()->count(), p.sprites()->paletteCount(),
                              p.animations()->count(), p.sounds()->count()};
        };
        QCOMPARE(counts(copy), counts(project));
        QCOMPARE(copy.commands()->text(), project.commands()->text());
        QVERIFY(prompt.calls.isEmpty());
    }

    void theListShowsBackupFoldersByName()
    {
        const QString def = path(QStringLiteral("listed/a.def"));
        for (const char *entry : {"02-01-2020 1-2-3 pm", "01-05-2021 10-0-0 am", ".trash"})
            QVERIFY(QDir().mkpath(path(QStringLiteral("listed/backup/")) + QLatin1String(entry)));
        QVERIFY(writeFile(path(QStringLiteral("listed/backup/notes.txt")), "x"));
        const QBakManager backups(def);
        QCOMPARE(backups.folders(), QStringList({QStringLiteral("01-05-2021 10-0-0 am"), QStringLiteral("02-01-2020 1-2-3 pm")}));
        QCOMPARE(backups.data(backups.index(1)).toString(), QStringLiteral("02-01-2020 1-2-3 pm"));
        QCOMPARE(backups.path(backups.index(0)), QFileInfo(path(QStringLiteral("listed"))).canonicalFilePath()
                                                     + QStringLiteral("/backup/01-05-2021 10-0-0 am/a.def"));
        QVERIFY(backups.path(QModelIndex()).isEmpty());
        // A project without a DEF file gets no backup.
        QVERIFY(!QProject(0, true).backup());
    }

    void aBackupLoadsUnderTheProjectsNames()
    {
        const QString def = smallCharacter(QStringLiteral("restored"));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        const QStringList names = {project.definitions()->fileName(), project.commands()->fileName(),
                                   project.states(0)->fileName(), project.states(1)->fileName()};
        QString folder;
        QVERIFY(project.backup(&folder));
        // A palette the sprites don't have as group 1 is left out; a state
        // from above the project's folder stays inside the backup.
        QVERIFY(QFileInfo::exists(folder + QStringLiteral("a.act")));
        QVERIFY(!QFileInfo::exists(folder + QStringLiteral("broken.png")));
        QCOMPARE(readFile(folder + QStringLiteral("(parent)/common.cns")), QByteArray("; common\r\n"));
        // Later work, saved and outside, that the backup undoes.
        prepend(project.commands(), "; later\n");
        QVERIFY(project.save());
        QVERIFY(writeFile(path(QStringLiteral("restored/common.cns")), "; changed\r\n"));

        QVERIFY(project.fromFile(folder + QStringLiteral("a.def"), 0, false, true));
        QCOMPARE(QStringList({project.definitions()->fileName(), project.commands()->fileName(),
                              project.states(0)->fileName(), project.states(1)->fileName()}),
                 names);
        QCOMPARE(project.statesCount(), 2);
        QCOMPARE(project.sprites()->paletteCount(), 1);
        QCOMPARE(project.commands()->text(), QStringLiteral("[Command]\nname = \"x\"\n"));
        QCOMPARE(project.states(1)->text(), QStringLiteral("; common\n"));
        // Until saved, what the backup brought is unsaved work; the project stays where it was.
        QVERIFY(project.commands()->isModified());
        QCOMPARE(project.definitions()->directory(), QFileInfo(def).absolutePath());
        QVERIFY(project.save());
        QCOMPARE(readFile(path(QStringLiteral("restored/a/a.cmd"))), QByteArray("[Command]\r\nname = \"x\"\r\n"));
    }
};

QTEST_MAIN(tst_QProjectBackup)
#include "tst_qprojectbackup.moc"
