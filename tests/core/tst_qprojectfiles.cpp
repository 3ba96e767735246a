#include "core/animation/qanimations.h"
#include "core/app/qproject.h"
#include "core/base/filelookup.h"
#include "core/base/qcodepages.h"
#include "core/base/quserprompt.h"
#include "core/sprites/qrgbpalette.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommand.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"
#include "testsupport.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

using TestSupport::readFile;

namespace {

/** An ACT file whose colour i is (n, n, n) for i below 255 and white at 255. */
QByteArray actOf(int n)
{
    QByteArray bytes(768, char(n));
    bytes[0] = bytes[1] = bytes[2] = char(255);
    return bytes;
}

} // namespace

using TestSupport::writeFile;

class tst_QProjectFiles : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString &relative) const { return m_dir.filePath(relative); }
    QString path(const char *relative) const { return m_dir.filePath(QLatin1String(relative)); }
    /** What a folder holds, sorted and joined by ",". */
    QString entries(const char *relative) const
    {
        return QDir(path(relative)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).join(QLatin1Char(','));
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

    void corpusDefinitionsOpen_data()
    {
        QTest::addColumn<QString>("def");
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.def")});
        if (files.isEmpty())
            QSKIP("the corpus isn't there");
        for (const QString &file : files)
            QTest::newRow(qPrintable(file.mid(TestSupport::corpusDir().size() + 1))) << file;
    }

    void corpusDefinitionsOpen()
    {
        QFETCH(QString, def);
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        QCOMPARE(project.definitions()->directory(), QFileInfo(def).absolutePath());
        const QDefinitionsFiles files = project.definitions()->files();
        const QString text = project.definitions()->text().toLower();
        // The kind comes from the first of these sections the text has.
        const int expected = text.contains(QLatin1String("[files]")) ? Character
            : text.contains(QLatin1String("[bgdef]")) ? Stage
            : text.contains(QLatin1String("[scenedef]")) ? Storyboard
            : text.contains(QLatin1String("[def]")) ? Font : Character;
        QCOMPARE(project.type(), expected);
        if (project.type() == Character) {
            // Every state file that exists, whatever its case (GORO.DEF names
            // sp.st for Sp.st), became a document under the name on disk, so
            // a save writes back to the file found.
            int found = 0;
            for (const QString &state : files.states)
                found += QFileInfo(findFile(files.directory, state)).isFile();
            QCOMPARE(project.statesCount(), found);
            for (int i = 0; i < found; ++i)
                QVERIFY2(QFileInfo::exists(project.states(i)->fileName()), qPrintable(project.states(i)->fileName()));
            if (QFileInfo(findFile(files.directory, files.commands)).isFile() && !files.commands.isEmpty())
                QVERIFY(!project.commands()->isEmpty());
            if (QFileInfo(findFile(files.directory, files.animations)).isFile() && !files.animations.isEmpty())
                QVERIFY(project.animations()->count() > 0);
        } else if (project.type() != Font) {
            // Stages and storyboards keep their animations in the DEF.
            QCOMPARE(static_cast<QSyntaxTextEditor *>(project.animations()->editor()),
                     static_cast<QSyntaxTextEditor *>(project.definitions()));
        }
        QVERIFY(!project.definitions()->isModified());
    }

    void anEmptyFilesSectionOpensBlank()
    {
        const QString def = path("empty/empty.def");
        QVERIFY(writeFile(def, "[Info]\r\nname = \"Nobody\"\r\n[Files]\r\n"));
        QProject project(0, true);
        // Only a DEF that can't be read fails.
        QVERIFY(!project.fromFile(path("empty/none.def"), 0, false, false));
        QVERIFY(project.definitions()->isEmpty());
        QVERIFY(project.fromFile(def, 0, false, false));
        QCOMPARE(project.definitions()->name(), QStringLiteral("Nobody"));
        QVERIFY(project.sprites()->isEmpty() && project.animations()->isEmpty() && project.commands()->isEmpty());
        QCOMPARE(project.statesCount(), 0);
    }

    void aStopKeepsWhatWasLoaded()
    {
        const QString def = path("stop/a.def");
        QVERIFY(writeFile(def, "[Files]\r\ncmd = a.cmd\r\nst = a.cns\r\n"));
        QVERIFY(writeFile(path("stop/a.cmd"), "[Command]\r\n"));
        QVERIFY(writeFile(path("stop/a.cns"), "[Statedef 0]\r\n"));
        QProject project(0, true);
        QList<uint> positions;
        connect(&project, &QProject::progress, this, [&positions](uint pos, uint max, bool &allow) {
            positions.append(pos);
            if (pos == 0)
                QCOMPARE(max, 5u);
            // Stop after the commands.
            allow = pos < 4;
        });
        QVERIFY(project.fromFile(def, 0, false, false));
        QCOMPARE(positions, QList<uint>({0, 1, 2, 3, 4}));
        QVERIFY(!project.commands()->isEmpty());
        QCOMPARE(project.statesCount(), 0);
    }

    void backupsCopyEveryFileRead()
    {
        const QString def = path("backed/chars/kfm/kfm.def");
        QVERIFY(writeFile(def, "[Files]\r\ncmd = sub\\kfm.cmd\r\nst = kfm.cns\r\nanim = missing.air\r\n"
                               "st2 = ../common.cns\r\nst3 = ..\\..\\shared.cns\r\n"));
        QVERIFY(writeFile(path("backed/chars/kfm/Sub/KFM.cmd"), "; cmd\r\n"));
        QVERIFY(writeFile(path("backed/chars/kfm/kfm.cns"), "; cns\r\n"));
        QVERIFY(writeFile(path("backed/chars/common.cns"), "; common\r\n"));
        QVERIFY(writeFile(path("backed/shared.cns"), "; shared\r\n"));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, true, false));
        const QDir backups(path("backed/chars/kfm/backup"));
        const QStringList stamps = backups.entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        QCOMPARE(stamps.size(), 1);
        QVERIFY(QRegularExpression(QStringLiteral("^\\d\\d-\\d\\d-\\d{4} \\d{1,2}-\\d{1,2}-\\d{1,2} (am|pm|AM|PM)$"))
                    .match(stamps.first()).hasMatch());
        const QString folder = backups.filePath(stamps.first()) + QLatin1Char('/');
        QCOMPARE(readFile(folder + QStringLiteral("kfm.def")), readFile(def));
        QCOMPARE(readFile(folder + QStringLiteral("Sub/KFM.cmd")), QByteArray("; cmd\r\n"));
        QCOMPARE(readFile(folder + QStringLiteral("kfm.cns")), QByteArray("; cns\r\n"));
        // Files above the project's folder stay inside the backup, never beside it or in the project.
        QCOMPARE(readFile(folder + QStringLiteral("(parent)/common.cns")), QByteArray("; common\r\n"));
        QCOMPARE(readFile(folder + QStringLiteral("(parent)/(parent)/shared.cns")), QByteArray("; shared\r\n"));
        QCOMPARE(entries("backed/chars/kfm"), QStringLiteral("backup,kfm.cns,kfm.def,Sub"));
        QCOMPARE(entries("backed/chars"), QStringLiteral("common.cns,kfm"));
    }

    void saveOfANewProjectAsksButWritesNoDef()
    {
        QProject project(0, true);
        project.setSetting(QStringLiteral("proj_path"), m_dir.path());
        QTextCursor(project.commands()->document()).insertText(QStringLiteral("[Command]\nname = \"x\"\n"));
        QList<int> asked;
        connect(&project, &QProject::saveFileName, this, [&asked, this](QProjectFileType file, const QString &folder) {
            asked.append(int(file));
            return folder + QStringLiteral("/new.") + QString::number(int(file));
        });
        QVERIFY(project.save());
        // Sprites and animations had nothing; only the commands asked for a name.
        QCOMPARE(asked, QList<int>({int(FileCommands)}));
        QCOMPARE(readFile(path("new.3")), QByteArray("[Command]\r\nname = \"x\"\r\n"));
        QVERIFY(project.definitions()->fileName().isEmpty());
        QVERIFY(!project.commands()->isModified());
        // A second save writes to the name it has, without asking.
        QTextCursor(project.commands()->document()).insertText(QStringLiteral("; top\n"));
        QVERIFY(project.save());
        QCOMPARE(asked.size(), 1);
        QVERIFY(readFile(path("new.3")).startsWith("; top\r\n"));
    }

    void saveAsAsksForEveryDocument()
    {
        QProject project(0, true);
        QTextCursor(project.definitions()->document()).insertText(QStringLiteral("[Files]\n"));
        QTextCursor(project.commands()->document()).insertText(QStringLiteral("; cmd\n"));
        QTextCursor(project.addState(QStringLiteral("a.cns"))->document()).insertText(QStringLiteral("; a\n"));
        project.addState(QStringLiteral("empty.cns"));
        QTextCursor(project.animationText()->document()).insertText(QStringLiteral("[Begin Action 0]\n0,0, 0,0, 5\n"));
        QStringList asked;
        connect(&project, &QProject::saveFileName, this, [&asked, this](QProjectFileType file, const QString &) {
            asked.append(QString::number(int(file)));
            return path(QStringLiteral("as/doc%1.%2").arg(asked.size()).arg(int(file)));
        });
        QDir().mkpath(path("as"));
        project.toFile(path("as/p.def"), true);
        // The empty state document and the empty sprites and sounds ask nothing.
        QCOMPARE(asked, QStringList({QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4")}));
        QCOMPARE(readFile(path("as/p.def")), QByteArray("[Files]\r\n"));
        QCOMPARE(readFile(path("as/doc1.2")), QByteArray("[Begin Action 0]\r\n0,0, 0,0, 5\r\n"));
        QCOMPARE(readFile(path("as/doc3.4")), QByteArray("; a\r\n"));
    }

    void testCopiesOfACharacter()
    {
        const QString def = path("char/kfm.def");
        QVERIFY(writeFile(def, "[Files]\r\nsprite = kfm.sff\r\nanim = kfm.air\r\ncmd = kfm.cmd\r\n"
                               "st = states\\kfm.cns\r\nst2 = other\\KFM.cns\r\nstcommon = common1.cns\r\npal1 = kfm.act\r\n"));
        QVERIFY(writeFile(path("char/kfm.sff"), "SFF"));
        QVERIFY(writeFile(path("char/kfm.act"), QByteArray(768, 'p')));
        QVERIFY(writeFile(path("char/kfm.air"), "[Begin Action 0]\r\n0,0, 0,0, 5\r\n"));
        QVERIFY(writeFile(path("char/kfm.cmd"), "; cmd\r\n"));
        QVERIFY(writeFile(path("char/states/kfm.cns"), "; first\r\n"));
        QVERIFY(writeFile(path("char/other/kfm.cns"), "; second\r\n"));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        QCOMPARE(project.statesCount(), 2);
        // An edit that isn't saved goes into the copy, not into the project's files.
        QTextCursor(project.states(0)->document()).insertText(QStringLiteral("; edited\n"));
        // A file of the same name opened later, as a hand-over does: the first document of a name is copied.
        QVERIFY(writeFile(path("elsewhere/states/kfm.cns"), "; other\r\n"));
        QVERIFY(project.addState(QString())->load(path("elsewhere/states/kfm.cns"), 0, false));

        QStringList created;
        const QString target = path("mugen/chars/_test/");
        QVERIFY(project.saveForTest(target, QStringLiteral("_test"), created));
        QVERIFY(created.isEmpty());
        QCOMPARE(readFile(target + QStringLiteral("_test.def")), readFile(def));
        // Files with nothing in memory are copied from the project's folder.
        QCOMPARE(readFile(target + QStringLiteral("kfm.sff")), QByteArray("SFF"));
        QCOMPARE(readFile(target + QStringLiteral("kfm.act")), QByteArray(768, 'p'));
        QCOMPARE(readFile(target + QStringLiteral("kfm.air")), QByteArray("[Begin Action 0]\r\n0,0, 0,0, 5\r\n"));
        QCOMPARE(readFile(target + QStringLiteral("states/kfm.cns")), QByteArray("; edited\r\n; first\r\n"));
        // "other/KFM.cns" finds its document without regard to case.
        QCOMPARE(readFile(target + QStringLiteral("other/KFM.cns")), QByteArray("; second\r\n"));
        QVERIFY(!QFileInfo::exists(target + QStringLiteral("common1.cns")));
        // The project itself didn't change.
        QVERIFY(project.states(0)->isModified());
        QCOMPARE(readFile(path("char/states/kfm.cns")), QByteArray("; first\r\n"));
    }

    void palettesAreNumberedByTheFilesFound()
    {
        const QString def = path("pals/p.def");
        QVERIFY(writeFile(def, "[Files]\r\npal1 = missing.act\r\npal3 = three.act\r\npal4 = rgb.png\r\npal5 = five.act\r\n"));
        QVERIFY(writeFile(path("pals/three.act"), actOf(3)));
        QVERIFY(writeFile(path("pals/five.act"), actOf(5)));
        // A file that can't be read as a palette keeps its number all the same.
        QVERIFY(QImage(2, 2, QImage::Format_RGB32).save(path("pals/rgb.png")));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        QSprites *sprites = project.sprites();
        QCOMPARE(sprites->paletteCount(), 2);
        // Group and index of each, and the grey of its colour 1.
        const QSpritePalette *first = sprites->paletteAt(0), *second = sprites->paletteAt(1);
        QCOMPARE(QList<int>({first->itemGroup(), first->itemIndex(), qRed(first->colors().at(1)), second->itemGroup(),
                             second->itemIndex(), qRed(second->colors().at(1))}),
                 QList<int>({1, 1, 3, 1, 3, 5}));
        // The entry the engine shows transparent.
        QCOMPARE(qAlpha(sprites->paletteAt(0)->colors().at(0)), 0);
        // Opening isn't a change: nothing to save, nothing to undo.
        QVERIFY(!sprites->isModified());
        QCOMPARE(sprites->undoStack()->count(), 0);
        QVERIFY(sprites->undoEnabled());
    }

    void testCopiesWriteThePalettesInMemory()
    {
        const QString def = path("palcopy/p.def");
        QVERIFY(writeFile(def, "[Files]\r\npal1 = one.act\r\npal2 = sub\\rgb.png\r\npal3 = gone.act\r\n"));
        QVERIFY(writeFile(path("palcopy/one.act"), actOf(1)));
        QVERIFY(QDir().mkpath(path("palcopy/sub")));
        QVERIFY(QImage(2, 2, QImage::Format_RGB32).save(path("palcopy/sub/rgb.png")));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        QRGBPal changed = QRGBPal::fromByteArray(QByteArray(1024, char(9)));
        project.sprites()->palette(1, 1)->setColors(changed, Share);

        QStringList created;
        const QString target = path("palcopy-out/");
        QVERIFY(project.saveForTest(target, QStringLiteral("t"), created));
        // Palette 1,1 as it is now; the file that gave no palette is copied as it is.
        QCOMPARE(readFile(target + QStringLiteral("one.act")), QByteArray(768, char(9)));
        QCOMPARE(readFile(target + QStringLiteral("sub/rgb.png")), readFile(path("palcopy/sub/rgb.png")));
        QVERIFY(!QFileInfo::exists(target + QStringLiteral("gone.act")));
        // The project's own file didn't change.
        QCOMPARE(readFile(path("palcopy/one.act")), actOf(1));
    }

    void testCopiesNeverWriteOutsideTheirFolder()
    {
        // A DEF may name files of a neighbour; its copy must not overwrite them.
        const QString def = path("climb/mine.def");
        QVERIFY(writeFile(def, "[Files]\r\nanim = ../kfm/kfm.air\r\nst = ..\\kfm\\kfm.cns\r\n"
                               "cmd = own/../mine.cmd\r\nsound = ../../escape.snd\r\n"));
        QVERIFY(writeFile(path("climb/mine.cmd"), "[Command]\r\n"));
        QVERIFY(writeFile(path("kfm/kfm.air"), "[Begin Action 0]\r\n0,0, 0,0, 5\r\n"));
        QVERIFY(writeFile(path("kfm/kfm.cns"), "[Statedef 0]\r\n"));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        // What the engine would find beside the copy, which the copy must leave alone.
        const QString engine = path("engine/chars/");
        QVERIFY(writeFile(engine + QStringLiteral("kfm/kfm.air"), "theirs"));
        QVERIFY(writeFile(engine + QStringLiteral("kfm/kfm.cns"), "theirs"));

        QStringList created;
        QVERIFY(project.saveForTest(engine + QStringLiteral("ks3_0/"), QStringLiteral("ks3_0"), created));
        QCOMPARE(readFile(engine + QStringLiteral("kfm/kfm.air")), QByteArray("theirs"));
        QCOMPARE(readFile(engine + QStringLiteral("kfm/kfm.cns")), QByteArray("theirs"));
        QVERIFY(!QFileInfo::exists(path("engine/escape.snd")));
        // A name that climbs and comes back in stays within, and is written.
        QCOMPARE(readFile(engine + QStringLiteral("ks3_0/mine.cmd")), QByteArray("[Command]\r\n"));
        QCOMPARE(entries("engine/chars"), QStringLiteral("kfm,ks3_0"));
    }

    void testCopiesOfAStageRewriteEverySprLine()
    {
        const QString def = path("stage/mine.def");
        QVERIFY(writeFile(def, "[Info]\r\nname = \"Mine\"\r\n[BGdef]\r\nspr = stages/mine.sff\r\n"
                               "[BG 1]\r\nSPR  =  other.sff\r\n"));
        QVERIFY(writeFile(path("stage/mine.sff"), "SFF"));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        QCOMPARE(project.type(), int(Stage));
        QStringList created;
        const QString target = path("mugen/stages/");
        QVERIFY(project.saveForTest(target, QStringLiteral("_test"), created));
        QCOMPARE(readFile(target + QStringLiteral("_test.def")),
                 QByteArray("[Info]\r\nname = \"Mine\"\r\n[BGdef]\r\nspr = _test.sff\r\n[BG 1]\r\nspr = _test.sff\r\n"));
        QCOMPARE(readFile(target + QStringLiteral("_test.sff")), QByteArray("SFF"));
        QCOMPARE(created, QStringList({target + QStringLiteral("_test.def"), target + QStringLiteral("_test.sff")}));
    }

    void savingWithoutEditsChangesNoFile_data()
    {
        QTest::addColumn<QString>("def");
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.def")});
        if (files.isEmpty())
            QSKIP("the corpus isn't there");
        static const QRegularExpression character(QStringLiteral("^\\s*sprite\\s*="),
                                                  QRegularExpression::MultilineOption
                                                      | QRegularExpression::CaseInsensitiveOption);
        for (const QString &file : files) {
            if (QString::fromLatin1(readFile(file)).contains(character))
                QTest::newRow(qPrintable(file.mid(TestSupport::corpusDir().size() + 1))) << file;
        }
    }

    void savingWithoutEditsChangesNoFile()
    {
        QFETCH(QString, def);
        // A copy of the character's folder: a save must never reach the corpus.
        QTemporaryDir copy;
        const QDir source = QFileInfo(def).absoluteDir();
        QHash<QString, QByteArray> before;
        for (QDirIterator it(source.path(), QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
            const QString relative = source.relativeFilePath(it.next());
            before.insert(relative, readFile(it.filePath()));
            QVERIFY(writeFile(copy.filePath(relative), before.value(relative)));
        }
        // The one file a save writes all the same is the DEF, as it is, but
        // with the line ends every saved text has.
        const QString name = QFileInfo(def).fileName();
        QByteArray &text = before[name];
        text.replace("\r\n", "\n").replace("\n", "\r\n");
        QRecordingUserPrompt prompt;
        QProject project(0, true);
        QVERIFY(project.fromFile(copy.filePath(name), 0, false, false));
        QVERIFY(project.save());
        QStringList changed;
        int compared = 0;
        for (QDirIterator it(copy.path(), QDir::Files, QDirIterator::Subdirectories); it.hasNext(); ++compared) {
            const QString relative = QDir(copy.path()).relativeFilePath(it.next());
            if (readFile(it.filePath()) != before.value(relative))
                changed.append(relative);
        }
        QCOMPARE(changed.join(QLatin1String(", ")), QString());
        QCOMPARE(compared, before.size());
    }
};

QTEST_MAIN(tst_QProjectFiles)
#include "tst_qprojectfiles.moc"
