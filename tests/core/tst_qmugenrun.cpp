#include "core/app/qmugenrun.h"
#include "core/app/qproject.h"
#include "core/base/qcodepages.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"
#include "sndbuilder.h"
#include "testsupport.h"

#include <QDirIterator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

using TestSupport::readFile;
using TestSupport::writeFile;

class tst_QMugenRun : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_engine;

    QString path(const QString &relative) const { return m_dir.filePath(relative); }
    QString log() const { return path(QStringLiteral("engine.log")); }
    QString snapshot() const { return path(QStringLiteral("snapshot")); }

    /** Every file under the engine's folder, relative to it, sorted. */
    QStringList engineFiles() const
    {
        QStringList files;
        const QDir base(path(QStringLiteral("mugen")));
        QDirIterator it(base.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext())
            files.append(base.relativeFilePath(it.next()));
        files.sort();
        return files;
    }

    /** What the fake engine wrote down: its arguments and the files it found. */
    struct Seen
    {
        QStringList arguments;
        QStringList files;
        QString cwd;
    };

    Seen seen() const
    {
        Seen result;
        const QList<QByteArray> lines = readFile(log()).split('\n');
        for (const QByteArray &line : lines) {
            const QString text = QString::fromUtf8(line);
            if (text.startsWith(QLatin1String("arg ")))
                result.arguments.append(text.mid(4));
            else if (text.startsWith(QLatin1String("file ")))
                result.files.append(text.mid(5).section(QLatin1Char(' '), 0, 0));
            else if (text.startsWith(QLatin1String("cwd ")))
                result.cwd = text.mid(4);
        }
        return result;
    }

    /** A character project on disk, named `name`, with a sound file of one sound. */
    QString makeCharacter(const QString &name)
    {
        const QString folder = name + QLatin1Char('/');
        writeFile(path(folder + name + QLatin1String(".def")),
                  "[Info]\r\nname = \"" + name.toUtf8() + "\"\r\n[Files]\r\nsprite = " + name.toUtf8()
                      + ".sff\r\nsound = " + name.toUtf8() + ".snd\r\ncmd = " + name.toUtf8() + ".cmd\r\n");
        writeFile(path(folder + name + QLatin1String(".sff")), "SFF of " + name.toUtf8());
        writeFile(path(folder + name + QLatin1String(".cmd")), "; commands\r\n");
        writeFile(path(folder + name + QLatin1String(".snd")),
                  SndBuilder::snd({{1, 0, SndBuilder::wav(1, 11025, 8, 40)}}));
        return path(folder + name + QLatin1String(".def"));
    }

    /** Runs the fake engine on `projects`, the current one being `current`. */
    bool run(const QString &params, const QList<QProject *> &projects, QProject *current)
    {
        QFile::remove(log());
        QMugenRun test;
        return test.run(m_engine, params, projects, current);
    }

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        registerProjectElements();
        // The engine stands in a folder of its own, with its chars and
        // stages, and something in each that isn't ours.
        m_engine = path(QStringLiteral("mugen/engine"));
        QVERIFY(QDir().mkpath(path(QStringLiteral("mugen"))));
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + QStringLiteral("/fakeengine"), m_engine));
        QVERIFY(QFile::setPermissions(m_engine, QFile::permissions(m_engine) | QFile::ExeOwner));
        QVERIFY(writeFile(path(QStringLiteral("mugen/chars/kfm/kfm.def")), "[Files]\r\n"));
        QVERIFY(writeFile(path(QStringLiteral("mugen/stages/kfm.def")), "[BGdef]\r\n"));
        qputenv("FAKE_ENGINE_LOG", log().toLocal8Bit());
    }

    void cleanupTestCase()
    {
        releaseProjectElements();
    }

    void cleanup()
    {
        // Whatever a run wrote is gone afterwards.
        QCOMPARE(engineFiles(), QStringList({QStringLiteral("chars/kfm/kfm.def"), QStringLiteral("engine"),
                                             QStringLiteral("stages/kfm.def")}));
        qunsetenv("FAKE_ENGINE_SNAPSHOT");
        qunsetenv("FAKE_ENGINE_SLEEP_MS");
        qunsetenv("FAKE_ENGINE_EXIT");
    }

    void projectNumbers_data()
    {
        QTest::addColumn<QString>("params");
        QTest::addColumn<QList<int>>("numbers");
        QTest::newRow("twice the same") << QStringLiteral("%0 %0") << QList<int>{0};
        QTest::newRow("in order of appearance") << QStringLiteral("%2 -p2.ai 1 %1") << QList<int>{2, 1};
        QTest::newRow("beyond the projects first") << QStringLiteral("%5 %0") << QList<int>{5, 0};
        QTest::newRow("a stage") << QStringLiteral("kfm kfm -s %0") << QList<int>{0};
        QTest::newRow("two digits at most") << QStringLiteral("%123") << QList<int>{12};
        QTest::newRow("none") << QStringLiteral("kfm kfm") << QList<int>{};
        QTest::newRow("a bare percent") << QStringLiteral("% %x") << QList<int>{};
    }

    void projectNumbers()
    {
        QFETCH(QString, params);
        QFETCH(QList<int>, numbers);
        QCOMPARE(QMugenRun::projectNumbers(params), numbers);
    }

    void commandLine_data()
    {
        QTest::addColumn<QString>("exe");
        QTest::addColumn<QString>("wine");
        QTest::addColumn<QStringList>("command");
        const QStringList args{QStringLiteral("ks3_0"), QStringLiteral("kfm")};
        QTest::newRow("windows engine through wine")
            << QStringLiteral("/m/mugen.exe") << QStringLiteral("/usr/bin/wine")
            << QStringList{QStringLiteral("/usr/bin/wine"), QStringLiteral("/m/mugen.exe")} + args;
        QTest::newRow("any case of .exe") << QStringLiteral("/m/MUGEN.EXE") << QStringLiteral("/usr/bin/wine")
                                          << QStringList{QStringLiteral("/usr/bin/wine"), QStringLiteral("/m/MUGEN.EXE")} + args;
        QTest::newRow("no wine installed") << QStringLiteral("/m/mugen.exe") << QString()
                                           << QStringList{QStringLiteral("/m/mugen.exe")} + args;
        QTest::newRow("a native engine") << QStringLiteral("/i/Ikemen_GO_Linux") << QStringLiteral("/usr/bin/wine")
                                         << QStringList{QStringLiteral("/i/Ikemen_GO_Linux")} + args;
    }

    void commandLine()
    {
        QFETCH(QString, exe);
        QFETCH(QString, wine);
        QFETCH(QStringList, command);
        QCOMPARE(QMugenRun::commandLine(exe, {QStringLiteral("ks3_0"), QStringLiteral("kfm")}, wine), command);
        QCOMPARE(QMugenRun::splitParameters(QStringLiteral("  ks3_0   kfm -s  ")),
                 QStringList({QStringLiteral("ks3_0"), QStringLiteral("kfm"), QStringLiteral("-s")}));
    }

    void removeFolderTakesEverythingButFollowsNoLink()
    {
        QVERIFY(writeFile(path(QStringLiteral("outside/keep.txt")), "keep"));
        QVERIFY(writeFile(path(QStringLiteral("gone/a/b/.hidden")), "x"));
        QVERIFY(writeFile(path(QStringLiteral("gone/file")), "x"));
        QVERIFY(QFile::link(path(QStringLiteral("outside")), path(QStringLiteral("gone/a/link"))));
        QVERIFY(QMugenRun::removeFolder(path(QStringLiteral("gone/"))));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("gone"))));
        QCOMPARE(readFile(path(QStringLiteral("outside/keep.txt"))), QByteArray("keep"));
        QVERIFY(QMugenRun::removeFolder(path(QStringLiteral("never-there/"))));
    }

    void aCharacterFightsItself()
    {
        QProject project(0, true);
        QVERIFY(project.fromFile(makeCharacter(QStringLiteral("solo")), 0, false, false));
        QMugenRun test;
        QSignalSpy started(&test, &QMugenRun::saveStarted);
        QSignalSpy finished(&test, &QMugenRun::saveFinished);
        QFile::remove(log());
        QVERIFY(test.run(m_engine, QStringLiteral("%0 %0"), {&project}, &project));
        // One copy, named in both places.
        const Seen engine = seen();
        QCOMPARE(engine.arguments, QStringList({QStringLiteral("ks3_0"), QStringLiteral("ks3_0")}));
        QCOMPARE(engine.files, QStringList({QStringLiteral("chars/kfm/kfm.def"), QStringLiteral("chars/ks3_0/ks3_0.def"),
                                            QStringLiteral("chars/ks3_0/solo.cmd"), QStringLiteral("chars/ks3_0/solo.sff"),
                                            QStringLiteral("chars/ks3_0/solo.snd"), QStringLiteral("stages/kfm.def")}));
        QCOMPARE(QDir(engine.cwd).canonicalPath(), QDir(path(QStringLiteral("mugen"))).canonicalPath());
        QCOMPARE(started.count(), 1);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(test.lastCommand().first(), QFileInfo(m_engine).absoluteFilePath());
    }

    void aStageIsFoughtOn()
    {
        QVERIFY(writeFile(path(QStringLiteral("stage/mine.def")), "[Info]\r\nname = \"Mine\"\r\n[BGdef]\r\nspr = mine.sff\r\n"));
        QVERIFY(writeFile(path(QStringLiteral("stage/mine.sff")), "SFF"));
        QProject project(0, true);
        QVERIFY(project.fromFile(path(QStringLiteral("stage/mine.def")), 0, false, false));
        QCOMPARE(project.type(), int(Stage));
        QVERIFY(run(QStringLiteral("kfm kfm -s %0"), {&project}, &project));
        const Seen engine = seen();
        QCOMPARE(engine.arguments, QStringList({QStringLiteral("kfm"), QStringLiteral("kfm"), QStringLiteral("-s"),
                                                QStringLiteral("ks3_0")}));
        QVERIFY(engine.files.contains(QStringLiteral("stages/ks3_0.def")));
        QVERIFY(engine.files.contains(QStringLiteral("stages/ks3_0.sff")));
        // The stages folder itself stays (checked by cleanup()).
    }

    void projectsAreNumberedInTheOrderOfTheTemplate_data()
    {
        QTest::addColumn<QString>("params");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("firstCopy");
        QTest::newRow("%1 %2") << QStringLiteral("%1 %2") << QStringList{QStringLiteral("ks3_0"), QStringLiteral("ks3_1")}
                               << QStringLiteral("left");
        QTest::newRow("%2 %1") << QStringLiteral("%2 %1") << QStringList{QStringLiteral("ks3_0"), QStringLiteral("ks3_1")}
                               << QStringLiteral("right");
        // %5 comes first and takes number 0, though there is no such project.
        QTest::newRow("%5 %0") << QStringLiteral("%5 %0") << QStringList{QStringLiteral("%5"), QStringLiteral("ks3_1")}
                               << QString();
    }

    void projectsAreNumberedInTheOrderOfTheTemplate()
    {
        QFETCH(QString, params);
        QFETCH(QStringList, arguments);
        QFETCH(QString, firstCopy);
        QProject left(0, true);
        QProject right(0, true);
        QVERIFY(left.fromFile(makeCharacter(QStringLiteral("left")), 0, false, false));
        QVERIFY(right.fromFile(makeCharacter(QStringLiteral("right")), 0, false, false));
        // With %5 there is one project: the tabs hold the left one only.
        const QList<QProject *> tabs = firstCopy.isEmpty() ? QList<QProject *>{&left} : QList<QProject *>{&left, &right};
        qputenv("FAKE_ENGINE_SNAPSHOT", snapshot().toLocal8Bit());
        QMugenRun::removeFolder(snapshot() + QLatin1Char('/'));
        QVERIFY(run(params, tabs, &left));
        QCOMPARE(seen().arguments, arguments);
        if (firstCopy.isEmpty()) {
            QVERIFY(!QFileInfo::exists(snapshot() + QStringLiteral("/chars/ks3_0")));
            QVERIFY(readFile(snapshot() + QStringLiteral("/chars/ks3_1/ks3_1.def")).contains("\"left\""));
        } else {
            QVERIFY(readFile(snapshot() + QStringLiteral("/chars/ks3_0/ks3_0.def")).contains(firstCopy.toUtf8()));
            QVERIFY(QFileInfo::exists(snapshot() + QStringLiteral("/chars/ks3_1/ks3_1.def")));
        }
    }

    void unsavedChangesReachTheEngine()
    {
        const QString def = makeCharacter(QStringLiteral("edited"));
        const QByteArray soundFile = readFile(path(QStringLiteral("edited/edited.snd")));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        project.sounds()->setSubItem(0, 42, 7);
        qputenv("FAKE_ENGINE_SNAPSHOT", snapshot().toLocal8Bit());
        QVERIFY(run(QStringLiteral("%0 kfm"), {&project}, &project));

        QSounds copy(nullptr, 0, false, -1);
        QVERIFY(copy.load(snapshot() + QStringLiteral("/chars/ks3_0/edited.snd"), false));
        QCOMPARE(copy.subItem(0).group, 42);
        QCOMPARE(copy.subItem(0).index, 7);
        // The project is as it was: modified, under its own names, its files untouched.
        QVERIFY(project.sounds()->isModified());
        QCOMPARE(project.sounds()->fileName(), path(QStringLiteral("edited/edited.snd")));
        QCOMPARE(readFile(path(QStringLiteral("edited/edited.snd"))), soundFile);
    }

    void aBlankProjectStillGoes()
    {
        QProject blank(0, true);
        QVERIFY(blank.isBlank());
        QVERIFY(run(QStringLiteral("%0"), {&blank}, &blank));
        // The DEF is written whatever it holds; the engine decides.
        QCOMPARE(seen().files, QStringList({QStringLiteral("chars/kfm/kfm.def"), QStringLiteral("chars/ks3_0/ks3_0.def"),
                                            QStringLiteral("stages/kfm.def")}));
    }

    void foldersMadeForTheCopiesGoToo()
    {
        // An engine folder with no chars/ or stages/ yet: the run makes them
        // and takes them away again.
        const QString bare = path(QStringLiteral("bare"));
        QVERIFY(QDir().mkpath(bare));
        QVERIFY(QFile::copy(m_engine, bare + QStringLiteral("/engine")));
        QVERIFY(QFile::setPermissions(bare + QStringLiteral("/engine"), QFile::permissions(m_engine)));
        QVERIFY(writeFile(path(QStringLiteral("plainstage/plain.def")), "[BGdef]\r\nspr = plain.sff\r\n"));
        QProject character(0, true);
        QVERIFY(character.fromFile(makeCharacter(QStringLiteral("bareone")), 0, false, false));
        QProject stage(0, true);
        QVERIFY(stage.fromFile(path(QStringLiteral("plainstage/plain.def")), 0, false, false));
        QFile::remove(log());
        QMugenRun test;
        QVERIFY(test.run(bare + QStringLiteral("/engine"), QStringLiteral("%1 %2"), {&character, &stage}, &character));
        QCOMPARE(seen().files, QStringList({QStringLiteral("chars/ks3_0/bareone.cmd"), QStringLiteral("chars/ks3_0/bareone.sff"),
                                            QStringLiteral("chars/ks3_0/bareone.snd"), QStringLiteral("chars/ks3_0/ks3_0.def"),
                                            QStringLiteral("stages/ks3_1.def")}));
        QCOMPARE(QDir(bare).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList({QStringLiteral("engine")}));
    }

    void aStoryboardIsNotCopiedAnywhere()
    {
        QVERIFY(writeFile(path(QStringLiteral("story/intro.def")), "[SceneDef]\r\nspr = intro.sff\r\n"));
        QProject project(0, true);
        QVERIFY(project.fromFile(path(QStringLiteral("story/intro.def")), 0, false, false));
        QCOMPARE(project.type(), int(Storyboard));
        QVERIFY(run(QStringLiteral("%0"), {&project}, &project));
        QCOMPARE(seen().arguments, QStringList({QStringLiteral("ks3_0")}));
        QVERIFY(!QFileInfo::exists(QStringLiteral("ks3_0.def")));
    }

    void noProjectNumberIsWarnedOf()
    {
        QRecordingUserPrompt prompt;
        QProject project(0, true);
        QFile::remove(log());
        QVERIFY(!run(QStringLiteral("kfm kfm"), {&project}, &project));
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls.at(0).title, QStringLiteral("Warning!"));
        QCOMPARE(prompt.calls.at(0).text, QStringLiteral("Oops, wrong parameters on the M.U.G.E.N. configuration. "
                                                         "Check it in the Tools / Options."));
        // Nothing started.
        QVERIFY(!QFileInfo::exists(log()));
    }

    void noInstallationIsWarnedOf()
    {
        QRecordingUserPrompt prompt;
        QMugenModel model;
        QVERIFY(!QMugenRun::checkInstallations(model));
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls.at(0).title, QStringLiteral("Warning!"));
        QCOMPARE(prompt.calls.at(0).text,
                 QStringLiteral("Oops, you need to configure a M.U.G.E.N. first. Do it in the Tools / Options."));
        model.add(QStringLiteral("m"), m_engine, QStringLiteral("%0"), QString());
        QVERIFY(QMugenRun::checkInstallations(model));
        QCOMPARE(prompt.calls.size(), 1);
    }

    void anEngineThatCantStartEndsTheRun()
    {
        const QString broken = path(QStringLiteral("mugen/broken"));
        QVERIFY(writeFile(broken, "not a program"));
        QProject project(0, true);
        QVERIFY(project.fromFile(makeCharacter(QStringLiteral("nostart")), 0, false, false));
        QMugenRun test;
        QVERIFY(!test.run(broken, QStringLiteral("%0"), {&project}, &project));
        QVERIFY(!test.errorString().isEmpty());
        QVERIFY(!test.isRunning());
        QVERIFY(QFile::remove(broken));
    }

    void theProgramStaysResponsive()
    {
        QProject project(0, true);
        QVERIFY(project.fromFile(makeCharacter(QStringLiteral("busy")), 0, false, false));
        qputenv("FAKE_ENGINE_SLEEP_MS", "400");
        qputenv("FAKE_ENGINE_EXIT", "3");
        QMugenRun test;
        bool fired = false;
        bool secondRun = true;
        // Events are handled while the engine runs: a timer fires, and a
        // second run asked for meanwhile is refused.
        QTimer::singleShot(50, this, [&] {
            fired = true;
            secondRun = test.run(m_engine, QStringLiteral("%0"), {&project}, &project);
            QVERIFY(test.isRunning());
        });
        // The engine's exit code means nothing to a test run.
        QVERIFY(test.run(m_engine, QStringLiteral("%0"), {&project}, &project));
        QVERIFY(fired);
        QVERIFY(!secondRun);
        QVERIFY(!test.isRunning());
    }

    void windowsNamesStartDirectlyWithoutWine()
    {
        if (!QMugenRun::wineProgram().isEmpty())
            QSKIP("wine is installed: a .exe would go through it");
        const QString exe = path(QStringLiteral("mugen/mugen.exe"));
        QVERIFY(QFile::copy(m_engine, exe));
        QVERIFY(QFile::setPermissions(exe, QFile::permissions(m_engine)));
        QProject project(0, true);
        QFile::remove(log());
        QMugenRun test;
        QVERIFY(test.run(exe, QStringLiteral("%0 kfm"), {&project}, &project));
        QCOMPARE(seen().arguments, QStringList({QStringLiteral("ks3_0"), QStringLiteral("kfm")}));
        QVERIFY(QFile::remove(exe));
    }
};

QTEST_MAIN(tst_QMugenRun)
#include "tst_qmugenrun.moc"
