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

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

using TestSupport::readFile;
using TestSupport::writeFile;

namespace {

/** "a b c" as a list of its words. */
QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/** The files of a character copied as `copy` from the project `name`. */
QStringList character(const char *copy, const char *name)
{
    const QString folder = u"chars/%1/"_s.arg(QLatin1String(copy));
    QStringList files{folder + QLatin1String(copy) + u".def"_s};
    for (const char *suffix : {".cmd", ".sff", ".snd"})
        files.append(folder + QLatin1String(name) + QLatin1String(suffix));
    return files;
}

} // namespace

class tst_QMugenRun : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_engine;

    QString path(const QString &relative) const { return m_dir.filePath(relative); }
    QString log() const { return path(u"engine.log"_s); }
    QString snapshot() const { return path(u"snapshot"_s); }

    /** What the fake engine wrote down after `prefix`: "cwd ", "arg " or "file ", one a line. */
    QStringList seen(const char *prefix) const
    {
        QStringList values;
        for (const QByteArray &line : readFile(log()).split('\n')) {
            if (line.startsWith(prefix))
                values.append(QString::fromUtf8(line.mid(qstrlen(prefix))));
        }
        return values;
    }

    /**
     * A project on disk: a character of that name with a sound file of one
     * sound, "stage" or "storyboard"; none for "blank".
     */
    QString makeProject(const QString &kind)
    {
        if (kind == QLatin1String("stage")) {
            writeFile(path(u"stage/mine.sff"_s), "SFF");
            writeFile(path(u"stage/mine.def"_s), "[Info]\r\nname = \"Mine\"\r\n[BGdef]\r\nspr = mine.sff\r\n");
            return path(u"stage/mine.def"_s);
        }
        if (kind == QLatin1String("storyboard")) {
            writeFile(path(u"story/intro.def"_s), "[SceneDef]\r\nspr = intro.sff\r\n");
            return path(u"story/intro.def"_s);
        }
        if (kind == QLatin1String("blank"))
            return QString();
        const QString base = path(kind + QLatin1Char('/') + kind);
        const QByteArray name = kind.toUtf8();
        writeFile(base + QLatin1String(".def"), "[Info]\r\nname = \"" + name + "\"\r\n[Files]\r\nsprite = " + name
                      + ".sff\r\nsound = " + name + ".snd\r\ncmd = " + name + ".cmd\r\n");
        writeFile(base + QLatin1String(".sff"), "SFF of " + name);
        writeFile(base + QLatin1String(".cmd"), "; commands\r\n");
        writeFile(base + QLatin1String(".snd"), SndBuilder::snd({{1, 0, SndBuilder::wav(1, 11025, 8, 40)}}));
        return base + QLatin1String(".def");
    }

    bool run(const QString &params, QProject *project)
    {
        QFile::remove(log());
        QMugenRun test;
        return test.run(m_engine, params, {project}, project);
    }

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        registerProjectElements();
        // The engine stands in a folder of its own, with its chars and
        // stages, and something in each that isn't ours.
        m_engine = path(u"mugen/engine"_s);
        QVERIFY(QDir().mkpath(path(u"mugen"_s)));
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + u"/fakeengine"_s, m_engine));
        QVERIFY(QFile::setPermissions(m_engine, QFile::permissions(m_engine) | QFile::ExeOwner));
        QVERIFY(writeFile(path(u"mugen/chars/kfm/kfm.def"_s), "[Files]\r\n"));
        QVERIFY(writeFile(path(u"mugen/stages/kfm.def"_s), "[BGdef]\r\n"));
        qputenv("FAKE_ENGINE_LOG", log().toLocal8Bit());
    }

    void cleanupTestCase() { releaseProjectElements(); }

    void cleanup()
    {
        // Whatever a run wrote is gone afterwards.
        QStringList files;
        for (QDirIterator it(path(u"mugen"_s), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); it.hasNext();)
            files.append(QDir(path(u"mugen"_s)).relativeFilePath(it.next()));
        files.sort();
        QCOMPARE(files, words("chars/kfm/kfm.def engine stages/kfm.def"));
        qunsetenv("FAKE_ENGINE_SNAPSHOT");
        qunsetenv("FAKE_ENGINE_SLEEP_MS");
        qunsetenv("FAKE_ENGINE_EXIT");
    }

    void projectNumbers_data()
    {
        QTest::addColumn<QString>("params");
        QTest::addColumn<QList<int>>("numbers");
        // (Order and repeats show in the runs below.)
        QTest::newRow("two digits at most") << u"%123"_s << QList<int>{12};
        QTest::newRow("none") << u"kfm kfm"_s << QList<int>{};
        QTest::newRow("a bare percent") << u"% %x"_s << QList<int>{};
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
        QTest::newRow("windows engine through wine") << u"/m/mugen.exe"_s << u"/usr/bin/wine"_s
                                                     << words("/usr/bin/wine /m/mugen.exe ks3_0 kfm");
        QTest::newRow("any case of .exe") << u"/m/MUGEN.EXE"_s << u"/usr/bin/wine"_s
                                          << words("/usr/bin/wine /m/MUGEN.EXE ks3_0 kfm");
        QTest::newRow("no wine installed") << u"/m/mugen.exe"_s << QString() << words("/m/mugen.exe ks3_0 kfm");
        QTest::newRow("a native engine") << u"/i/Ikemen_GO_Linux"_s << u"/usr/bin/wine"_s
                                         << words("/i/Ikemen_GO_Linux ks3_0 kfm");
    }

    void commandLine()
    {
        QFETCH(QString, exe);
        QFETCH(QString, wine);
        QFETCH(QStringList, command);
        QCOMPARE(QMugenRun::commandLine(exe, QMugenRun::splitParameters(u"  ks3_0   kfm "_s), wine), command);
    }

    void removeFolderTakesEverythingButFollowsNoLink()
    {
        QVERIFY(writeFile(path(u"outside/keep.txt"_s), "keep"));
        QVERIFY(writeFile(path(u"gone/a/b/.hidden"_s), "x"));
        QVERIFY(writeFile(path(u"gone/file"_s), "x"));
        QVERIFY(QFile::link(path(u"outside"_s), path(u"gone/a/link"_s)));
        QVERIFY(QMugenRun::removeFolder(path(u"gone/"_s)));
        QVERIFY(!QFileInfo::exists(path(u"gone"_s)));
        QCOMPARE(readFile(path(u"outside/keep.txt"_s)), QByteArray("keep"));
        QVERIFY(QMugenRun::removeFolder(path(u"never-there/"_s)));
    }

    void runsCopyTheNumberedProjects_data()
    {
        QTest::addColumn<QString>("exe");
        QTest::addColumn<QStringList>("tabs");
        QTest::addColumn<QString>("params");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("copies");
        const QString engine = u"mugen/engine"_s;
        // One copy, named in both places.
        QTest::newRow("a character fights itself") << engine << words("solo") << u"%0 %0"_s
                                                   << words("ks3_0 ks3_0") << character("ks3_0", "solo");
        // Copies are numbered in the order of the template, not of the tabs.
        QTest::newRow("%1 %2") << engine << words("left right") << u"%1 %2"_s << words("ks3_0 ks3_1")
                               << character("ks3_0", "left") + character("ks3_1", "right");
        QTest::newRow("%2 %1") << engine << words("left right") << u"%2 %1"_s << words("ks3_0 ks3_1")
                               << character("ks3_0", "right") + character("ks3_1", "left");
        // %5 comes first and takes number 0, though there is no such project.
        QTest::newRow("%5 %0") << engine << words("left") << u"%5 %0"_s << words("%5 ks3_1") << character("ks3_1", "left");
        QTest::newRow("a stage is fought on") << engine << words("stage") << u"kfm kfm -s %0"_s
                                              << words("kfm kfm -s ks3_0") << words("stages/ks3_0.def stages/ks3_0.sff");
        // The DEF is written whatever it holds; the engine decides.
        QTest::newRow("a blank project") << engine << words("blank") << u"%0"_s << words("ks3_0")
                                         << words("chars/ks3_0/ks3_0.def");
        QTest::newRow("a storyboard goes nowhere") << engine << words("storyboard") << u"%0"_s << words("ks3_0")
                                                   << QStringList();
        // An engine folder with no chars/ or stages/ yet: the run makes them and takes them away again.
        QTest::newRow("folders made go too") << u"bare/engine"_s << words("bareone stage") << u"%1 %2"_s
                                             << words("ks3_0 ks3_1")
                                             << character("ks3_0", "bareone") + words("stages/ks3_1.def stages/ks3_1.sff");
        // Without wine, a Windows name starts as it is.
        QTest::newRow("a .exe without wine") << u"mugen/mugen.exe"_s << words("blank") << u"%0 kfm"_s
                                             << words("ks3_0 kfm") << words("chars/ks3_0/ks3_0.def");
    }

    void runsCopyTheNumberedProjects()
    {
        QFETCH(QString, exe);
        QFETCH(QStringList, tabs);
        QFETCH(QString, params);
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, copies);
        if (exe.endsWith(QLatin1String(".exe")) && !QMugenRun::wineProgram().isEmpty())
            QSKIP("wine is installed: a .exe would go through it");
        const QString folder = QFileInfo(exe).path();
        if (exe != QLatin1String("mugen/engine")) {
            QVERIFY(QDir().mkpath(path(folder)));
            QVERIFY(QFile::copy(m_engine, path(exe)));
            QVERIFY(QFile::setPermissions(path(exe), QFile::permissions(m_engine)));
        }
        std::vector<std::unique_ptr<QProject>> projects;
        QList<QProject *> list;
        for (const QString &kind : tabs) {
            projects.push_back(std::make_unique<QProject>(0, true));
            const QString def = makeProject(kind);
            QVERIFY(def.isEmpty() || projects.back()->fromFile(def, 0, false, false));
            list.append(projects.back().get());
        }
        QFile::remove(log());
        QMugenRun test;
        QVERIFY(test.run(path(exe), params, list, list.first()));
        QCOMPARE(seen("arg "), arguments);
        QCOMPARE(test.lastCommand().first(), QFileInfo(path(exe)).absoluteFilePath());
        QCOMPARE(QDir(seen("cwd ").value(0)).canonicalPath(), QDir(path(folder)).canonicalPath());
        // What the engine found beside its own files.
        if (folder == QLatin1String("mugen"))
            copies += words("chars/kfm/kfm.def stages/kfm.def");
        copies.sort();
        QCOMPARE(seen("file "), copies);
        if (exe != QLatin1String("mugen/engine"))
            QVERIFY(QFile::remove(path(exe)));
        // cleanup() looks at the engine's own folder; folders a run made go too.
        if (folder != QLatin1String("mugen"))
            QCOMPARE(QDir(path(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }

    void unsavedChangesReachTheEngine()
    {
        const QString def = makeProject(u"edited"_s);
        const QByteArray soundFile = readFile(path(u"edited/edited.snd"_s));
        QProject project(0, true);
        QVERIFY(project.fromFile(def, 0, false, false));
        project.sounds()->setSubItem(0, 42, 7);
        qputenv("FAKE_ENGINE_SNAPSHOT", snapshot().toLocal8Bit());
        QVERIFY(run(u"%0 kfm"_s, &project));
        QSounds copy(nullptr, 0, false, -1);
        QVERIFY(copy.load(snapshot() + u"/chars/ks3_0/edited.snd"_s, false));
        QCOMPARE(copy.subItem(0), (QSubItem{42, 7}));
        // The project is as it was: modified, under its own names, its files untouched.
        QVERIFY(project.sounds()->isModified());
        QCOMPARE(project.sounds()->fileName(), path(u"edited/edited.snd"_s));
        QCOMPARE(readFile(path(u"edited/edited.snd"_s)), soundFile);
    }

    void runsThatCantGoSaySo()
    {
        QRecordingUserPrompt prompt;
        QMugenModel model;
        QVERIFY(!QMugenRun::checkInstallations(model));
        QCOMPARE(prompt.calls.at(0).text, u"Oops, you need to configure a M.U.G.E.N. first. Do it in the Tools / Options."_s);
        model.add(u"m"_s, m_engine, u"%0"_s, QString());
        QVERIFY(QMugenRun::checkInstallations(model));
        // No project number: nothing starts.
        QProject project(0, true);
        QVERIFY(!run(u"kfm kfm"_s, &project));
        QVERIFY(!QFileInfo::exists(log()));
        QCOMPARE(prompt.calls.size(), 2);
        QCOMPARE(prompt.calls.at(1).title, u"Warning!"_s);
        QCOMPARE(prompt.calls.at(1).text, u"Oops, wrong parameters on the M.U.G.E.N. configuration. Check it in the Tools / Options."_s);
        // An engine that can't start ends the run, and says why.
        const QString broken = path(u"mugen/broken"_s);
        QVERIFY(writeFile(broken, "not a program"));
        QMugenRun test;
        QVERIFY(!test.run(broken, u"%0"_s, {&project}, &project));
        QVERIFY(!test.errorString().isEmpty());
        QVERIFY(!test.isRunning());
        QVERIFY(QFile::remove(broken));
    }

    void theProgramStaysResponsive()
    {
        QProject project(0, true);
        QVERIFY(project.fromFile(makeProject(u"busy"_s), 0, false, false));
        qputenv("FAKE_ENGINE_SLEEP_MS", "400");
        qputenv("FAKE_ENGINE_EXIT", "3");
        QMugenRun test;
        bool fired = false, secondRun = true;
        // Events are handled while the engine runs: a timer fires, and a
        // second run asked for meanwhile is refused.
        QTimer::singleShot(50, this, [&] {
            fired = true;
            secondRun = test.run(m_engine, u"%0"_s, {&project}, &project);
            QVERIFY(test.isRunning());
        });
        // The engine's exit code means nothing to a test run.
        QVERIFY(test.run(m_engine, u"%0"_s, {&project}, &project));
        QVERIFY(fired);
        QVERIFY(!secondRun);
        QVERIFY(!test.isRunning());
    }
};

QTEST_MAIN(tst_QMugenRun)
#include "tst_qmugenrun.moc"
