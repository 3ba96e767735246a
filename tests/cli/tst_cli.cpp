#include "core/base/qmugenmodel.h"
#include "sndbuilder.h"
#include "testsupport.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include "kestrada_version.h"

using namespace Qt::StringLiterals;
using TestSupport::readFile;

class tst_Cli : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    using Result = TestSupport::CliResult;
    Result run(const QStringList &arguments) { return TestSupport::runCli(arguments); }

    /** The values of `keys` (blank-separated) of a JSON object, blank-separated. */
    static QString fields(const QJsonValue &object, const char *keys)
    {
        QStringList values;
        for (const QString &key : QString::fromLatin1(keys).split(QLatin1Char(' ')))
            values.append(object.toObject().value(key).toVariant().toString());
        return values.join(QLatin1Char(' '));
    }

    /** Writes `bytes` to the file `name` of the test folder; returns its path. */
    QString file(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_dir.filePath(name);
        return TestSupport::writeFile(path, bytes) ? path : QString();
    }

private Q_SLOTS:
    void commandLines_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("message");
        const QString text = file(u"notes.xyz"_s, "x");
        const QString configuration = m_dir.filePath(u"c.ksc3"_s);
        QVERIFY(QMugenModel().save(configuration));
        QTest::newRow("help") << QStringList{u"--help"_s} << 0 << QByteArray("Verbs:\n  info FILE");
        QTest::newRow("version") << QStringList{u"--version"_s} << 0 << QByteArray("kestrada-cli " KESTRADA_VERSION "\n");
        // No verb at all is a usage error, with the help on the way.
        QTest::newRow("no verb") << QStringList() << 2 << QByteArray("Usage: kestrada-cli");
        QTest::newRow("unknown verb") << QStringList{u"frobnicate"_s} << 2 << QByteArray("unknown verb");
        QTest::newRow("missing file") << QStringList{u"info"_s} << 2 << QByteArray("usage: kestrada-cli info");
        QTest::newRow("too many files") << QStringList{u"info"_s, u"a"_s, u"b"_s} << 2 << QByteArray("usage: kestrada-cli info");
        QTest::newRow("unknown option") << QStringList{u"info"_s, configuration, u"--fast"_s} << 2
                                        << QByteArray("unknown option --fast");
        QTest::newRow("value missing") << QStringList{u"check"_s, u"x"_s, u"--mugen-version"_s} << 2
                                       << QByteArray("--mugen-version needs a value");
        QTest::newRow("not a version") << QStringList{u"check"_s, text, u"--mugen-version"_s, u"new"_s} << 2
                                       << QByteArray("--mugen-version wants a version");
        QTest::newRow("unknown target") << QStringList{u"check"_s, u"x"_s, u"--target=ikemen-go"_s} << 2
                                        << QByteArray("--target wants mugen, mugen-X.Y or ikemen, not \"ikemen-go\"");
        QTest::newRow("target without version") << QStringList{u"check"_s, u"x"_s, u"--target"_s, u"mugen-"_s} << 2
                                                << QByteArray("--target wants mugen, mugen-X.Y or ikemen");
        QTest::newRow("unsupported file") << QStringList{u"info"_s, text} << 2 << QByteArray("isn't supported");
        QTest::newRow("nothing to check") << QStringList{u"check"_s, configuration} << 2
                                          << QByteArray("a configuration file can't be checked");
        QTest::newRow("absent file") << QStringList{u"info"_s, m_dir.filePath(u"absent.ksc3"_s)} << 1
                                     << QByteArray("no such file");
        QTest::newRow("backup without a project") << QStringList{u"backup"_s} << 2
                                                  << QByteArray("usage: kestrada-cli backup");
        QTest::newRow("backup of an absent project") << QStringList{u"backup"_s, m_dir.filePath(u"absent.def"_s)}
                                                     << 1 << QByteArray("no such file");
    }

    void commandLines()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, code);
        QFETCH(QByteArray, message);
        const Result result = run(arguments);
        QCOMPARE(result.code, code);
        QVERIFY2((result.err + result.out).contains(message), result.err.constData());
    }

    void backupMakesAndListsFolders()
    {
        const QString def = file(u"backedup/a.def"_s, "[Files]\r\ncmd = a.cmd\r\n");
        file(u"backedup/a.cmd"_s, "[Command]\r\n");
        Result result = run({u"backup"_s, def});
        QCOMPARE(result.code, 0);
        const QString folder = QString::fromUtf8(result.out.trimmed());
        QCOMPARE(readFile(folder + u"/a.cmd"_s), QByteArray("[Command]\r\n"));
        QCOMPARE(readFile(folder + u"/a.def"_s), readFile(def));
        result = run({u"backup"_s, def, u"--list"_s});
        QCOMPARE(result.out, QFileInfo(folder).fileName().toUtf8() + '\n');
        result = run({u"backup"_s, def, u"--list"_s, u"--json"_s});
        const QJsonArray list = QJsonDocument::fromJson(result.out).array();
        QCOMPARE(list.size(), 1);
        QCOMPARE(QFileInfo(list.first()[u"def"_s].toString()).canonicalFilePath(),
                 QFileInfo(folder + u"/a.def"_s).canonicalFilePath());
    }

    void configurationInfoAndSave()
    {
        QMugenModel model;
        model.add(u"Mugen 1.1"_s, u"/opt/mugen/mugen.exe"_s, u"%0 kfm"_s, QString());
        model.config[u"undo_limit"_s] = 12;
        const QString path = m_dir.filePath(u"mine.ksc3"_s);
        QVERIFY(model.save(path));
        Result result = run({u"info"_s, path});
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.contains("Installations: 1\n  Mugen 1.1: /opt/mugen/mugen.exe %0 kfm\n"));
        QVERIFY(result.out.contains("  undo_limit = 12"));
        result = run({u"info"_s, path, u"--json"_s});
        QCOMPARE(result.code, 0);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(fields(object, "kind") + QLatin1Char(' ') + fields(object.value(u"settings"_s), "undo_limit"), u"configuration 12"_s);
        const QJsonArray installations = object.value(u"installations"_s).toArray();
        QCOMPARE(installations.size(), 1);
        QCOMPARE(fields(installations.at(0), "exe"), u"/opt/mugen/mugen.exe"_s);
        // Not a configuration inside: a failure, not a crash.
        result = run({u"info"_s, file(u"bad.ksc3"_s, "<other/>")});
        QCOMPARE(result.code, 1);
        QVERIFY(result.err.contains("not a configuration file"));

        // Saved, what the program doesn't know stays.
        const QString in = file(u"in.ksc3"_s, "<!DOCTYPE ZNLConfigML><configuration><config name=\"unknown\" value=\"kept\"/>"
                                              "</configuration>");
        const QString out = m_dir.filePath(u"out.ksc3"_s);
        QCOMPARE(run({u"save"_s, in, out}).code, 0);
        QVERIFY(model.load(out));
        QCOMPARE(model.config.value(u"unknown"_s).toString(), u"kept"_s);
        // Options of other kinds of file are refused.
        QCOMPARE(run({u"save"_s, in, out, u"--json"_s, u"--nonsense"_s}).code, 2);
        result = run({u"save"_s, in, m_dir.filePath(u"out.txt"_s)});
        QCOMPARE(result.code, 2);
        QVERIFY(result.err.contains("the output must be a configuration file too"));
    }

    void infoOfCorpusFiles()
    {
        const QString air = TestSupport::corpusDir() + u"/elecbyte-mugen10/chars/kfm/kfm.air"_s;
        const QString def = TestSupport::corpusDir() + u"/goro/data/chars/GORO/GORO.DEF"_s;
        if (!QFileInfo::exists(air) || !QFileInfo::exists(def))
            QSKIP("the corpus isn't there");
        Result result = run({u"info"_s, air, u"--json"_s});
        QCOMPARE(result.code, 0);
        const QJsonArray actions = QJsonDocument::fromJson(result.out).object().value(u"actions"_s).toArray();
        QCOMPARE(actions.size(), 117);
        QCOMPARE(fields(actions.at(0), "number name frames"), u"0 Standing Animation 11"_s);
        const QJsonValue box = actions.at(0).toObject().value(u"boxes"_s).toArray().at(0);
        QCOMPARE(fields(box, "frame type") + QLatin1Char(' ') + fields(box.toObject().value(u"rect"_s), "left top right bottom"),
                 u"0 Clsn2Default -13 -79 16 0"_s);
        result = run({u"info"_s, air});
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.startsWith("Animations: 117\n  0 \"Standing Animation\": 11 frames\n"));
        // No display, and no warning of a missing runtime folder either.
        QVERIFY2(result.err.isEmpty(), result.err.constData());

        result = run({u"info"_s, def, u"--json"_s});
        QCOMPARE(result.code, 0);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(fields(object, "kind name") + QLatin1Char(' ') + fields(object.value(u"counts"_s), "states"), u"character goro 4"_s);
        // "sp.st" is found as "Sp.st".
        const QJsonArray files = object.value(u"files"_s).toArray();
        const auto sp = std::find_if(files.begin(), files.end(),
                                     [](const QJsonValue &f) { return f.toObject().value(u"name"_s) == u"sp.st"_s; });
        QVERIFY(sp != files.end());
        QVERIFY(sp->toObject().value(u"found"_s).toBool());
        QVERIFY(sp->toObject().value(u"path"_s).toString().endsWith(u"/Sp.st"_s));
    }

    void savingText()
    {
        QByteArray text = QByteArray("; se\xf1or \xe9l\xe8ve caf\xe9\n[Statedef 0]\n").repeated(10);
        const QString in = file(u"latin.cns"_s, text);
        const QString out = m_dir.filePath(u"out.cns"_s);
        QCOMPARE(run({u"save"_s, in, out}).code, 0);
        QCOMPARE(readFile(out), text.replace("\n", "\r\n"));
        QCOMPARE(run({u"save"_s, in, out, u"--utf8"_s}).code, 0);
        QVERIFY(readFile(out).startsWith("; se\xc3\xb1or \xc3\xa9l\xc3\xa8ve"));
    }

    void emptyDocumentsAreNotSaved_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("SND") << u"empty.snd"_s << SndBuilder::snd({})
                             << QByteArray("Save SND: You can't save an empty SND because M.U.G.E.N. will not open it.");
        // A header the engine can't read is no action either.
        QTest::newRow("AIR") << u"empty.air"_s << QByteArray("; none yet\r\n[Begin Action x]\r\n0,0, 0,0, 5\r\n")
                             << QByteArray("Save AIR: You can't save an empty AIR because M.U.G.E.N. will not open it.");
    }

    void emptyDocumentsAreNotSaved()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, message);
        const QString out = m_dir.filePath(u"never."_s + QFileInfo(name).suffix());
        const Result result = run({u"save"_s, file(name, content), out});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.contains(message), result.err.constData());
        QVERIFY(!QFileInfo::exists(out));
    }

    void checkPrintsDiagnosticsInFileOrder()
    {
        const QString cns = file(u"a.cns"_s, "[Statedef 0]\r\nnonsense = 1\r\n[State 0, 1]\r\ntype = HitVelSet\r\ntrigger1 = 1\r\n"
                                             "[State 0, 2]\r\ntype = Explod\r\ntrigger1 = 1\r\npos = 1\r\n");
        const QString air = file(u"a.AIR"_s, "[Begin Action 0]\n0,0, 0,0, 5, Z\n");
        Result result = run({u"check"_s, cns, air});
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out.trimmed().split('\n'),
                 (QList<QByteArray>{cns.toUtf8() + ":2:1: error: Unknown 'StateDef' parameter 'nonsense'",
                                    cns.toUtf8() + ":4:8: warning: State controller deprecated in the M.U.G.E.N 2002.04.14",
                                    cns.toUtf8() + ":9:7: note: This parameter requires 2 value(s)",
                                    air.toUtf8() + ":2:14: error: Unknown flip type"}));
        result = run({u"check"_s, cns, u"--json"_s});
        QCOMPARE(result.code, 1);
        QStringList json;
        for (const QJsonValue &diagnostic : QJsonDocument::fromJson(result.out).array())
            json.append(fields(diagnostic, "line column severity"));
        QCOMPARE(json, QStringList({u"2 1 error"_s, u"4 8 warning"_s, u"9 7 note"_s}));
    }

    void checkOfADefinitionsFileChecksTheWholeProject()
    {
        // A project of the oldest engine: VictoryQuote came later, in 1.0.
        const QString def = file(u"old.def"_s, "[Info]\nname = \"Old\"\nmugenversion = 04,14,2002\n[Files]\n"
                                               "sprite = old.sff\nanim = old.air\nsound = old.snd\ncmd = OLD.cmd\n"
                                               "st = old.cns\nst2 = gone.cns\nstcommon = common1.cns\npal1 = gone.act\n");
        file(u"old.sff"_s, QByteArray());
        file(u"old.snd"_s, QByteArray());
        file(u"old.air"_s, "[Begin Action 0]\n0,0, 0,0, 5, Z\n");
        // Found without regard to case.
        file(u"old.cmd"_s, "[Statedef -1]\n");
        const QString cns = file(u"old.cns"_s, "[Statedef 0]\n[State 0, 1]\ntype = VictoryQuote\ntrigger1 = 1\nvalue = 1\n");
        // Named again, the state file is checked once, and at the project's version.
        Result result = run({u"check"_s, def, cns});
        QCOMPARE(result.code, 1);
        const QByteArray path = def.toUtf8();
        const QByteArray dir = m_dir.path().toUtf8();
        QCOMPARE(result.out.trimmed().split('\n'),
                 (QList<QByteArray>{path + ": error: the file \"gone.cns\" isn't found",
                                    path + ": warning: the file \"common1.cns\" isn't found",
                                    path + ": warning: the file \"gone.act\" isn't found",
                                    dir + "/old.air:2:14: error: Unknown flip type",
                                    dir + "/old.cns:3:8: error: Controller invalid for the M.U.G.E.N. version of the "
                                          "current project"}));
        // The option overrides the version the DEF names.
        result = run({u"check"_s, def, u"--mugen-version=1.0"_s, u"--json"_s});
        QCOMPARE(result.code, 1);
        const QJsonArray array = QJsonDocument::fromJson(result.out).array();
        QCOMPARE(array.size(), 4);
        QCOMPARE(fields(array.at(0), "line") + fields(array.at(3), "path"), u"0"_s + m_dir.filePath(u"old.air"_s));
        // A state file alone is checked at 1.1, or at the version given.
        QCOMPARE(run({u"check"_s, cns}).code, 0);
        const QByteArray tooNew =
            cns.toUtf8() + ":3:8: error: Controller invalid for the M.U.G.E.N. version of the current project";
        QCOMPARE(run({u"check"_s, cns, u"--mugen-version"_s, u"2002.04.14"_s}).out.trimmed(), tooNew);
        // --target mugen-X.Y names the version too; Ikemen GO reads all of 1.1; --mugen-version wins.
        QCOMPARE(run({u"check"_s, cns, u"--target"_s, u"mugen-2002.04.14"_s}).out.trimmed(), tooNew);
        QCOMPARE(run({u"check"_s, cns, u"--target=ikemen"_s, u"--mugen-version=2002.04.14"_s}).code, 0);
        QCOMPARE(run({u"check"_s, cns, u"--target=mugen-2002.04.14"_s, u"--mugen-version=1.0"_s}).code, 0);
    }

    void checkAndInfoFollowTheTarget()
    {
        // A character for Ikemen GO: its DEF names an ikemenversion, and a
        // state file in Ikemen GO's own language, which isn't checked.
        QTemporaryDir dir;
        const QString def = dir.filePath(u"ike.def"_s);
        QVERIFY(TestSupport::writeFile(def, "[Info]\nname = \"Ike\"\nmugenversion = 1.0\nikemenversion = 1.0\n[Files]\n"
                                            "st = ike.cns\nst1 = ike.zss\nst2 = gone.zss\n"));
        const QString cns = dir.filePath(u"ike.cns"_s);
        QVERIFY(TestSupport::writeFile(cns, "[Statedef 0]\n[State 0, 1]\ntype = RedLifeSet\ntrigger1 = 1\nvalue = 1\n"));
        QVERIFY(TestSupport::writeFile(dir.filePath(u"ike.zss"_s), "[StateDef 0; type: S;]\nif time = 0 {}\n"));
        const QByteArray missing = def.toUtf8() + ": error: the file \"gone.zss\" isn't found";
        const QByteArray ikemenOnly = cns.toUtf8() + ":3:8: warning: RedLifeSet is only valid in Ikemen GO";

        Result result = run({u"check"_s, def});
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out.trimmed(), missing);
        // For M.U.G.E.N., the controller of Ikemen GO is a warning, and ikemenversion too.
        result = run({u"check"_s, def, u"--target"_s, u"mugen"_s});
        QCOMPARE(result.out.trimmed().split('\n'),
                 (QList<QByteArray>{def.toUtf8() + ":4:1: warning: ikemenversion is only valid in Ikemen GO", missing,
                                    ikemenOnly}));
        // Alone, a file is checked for M.U.G.E.N. unless the option says otherwise.
        QCOMPARE(run({u"check"_s, cns}).out.trimmed(), ikemenOnly);
        result = run({u"check"_s, cns, u"--target=ikemen"_s});
        QCOMPARE(result.code, 0);
        QVERIFY2(result.out.isEmpty(), result.out.constData());

        result = run({u"info"_s, def});
        QVERIFY2(result.out.contains("Engine version: 1.0\nTarget: Ikemen GO\n"), result.out.constData());
        QVERIFY(result.out.contains("  zss: ike.zss\n  zss: gone.zss (missing)\n"));
        result = run({u"info"_s, def, u"--json"_s});
        QCOMPARE(fields(QJsonDocument::fromJson(result.out).object(), "target"), u"ikemen"_s);
    }

    void checkFindsWhatFontsAndStoryboardsName_data()
    {
        QTest::addColumn<QString>("def");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("output");
        // They name no engine version: they are checked at 1.1, like any file without the option.
        QTest::newRow("storyboard") << u"story/intro.def"_s << 0 << QByteArray();
        // Beside the DEF, in the engine's font folder, or among the system's fonts.
        QTest::newRow("beside") << u"font/beside.def"_s << 0 << QByteArray();
        QTest::newRow("font folder") << u"data/motif/shared.def"_s << 0 << QByteArray();
        QTest::newRow("system font not there") << u"font/system.def"_s << 0
                                               << QByteArray(": warning: the font file \"kestrada-no-such-font.ttf\" isn't found in the "
                                                             "font folder or among the system's fonts");
        QTest::newRow("bitmap font missing") << u"font/bitmap.def"_s << 1 << QByteArray(": error: the file \"gone.sff\" isn't found");
    }

    void checkFindsWhatFontsAndStoryboardsName()
    {
        QFETCH(QString, def);
        QFETCH(int, code);
        QFETCH(QByteArray, output);
        QTemporaryDir root;
        const auto write = [&root](const char *name, const QByteArray &bytes) {
            return TestSupport::writeFile(root.filePath(QLatin1String(name)), bytes);
        };
        const auto font = [](const char *type, const char *file) {
            return QByteArray("[FNT v2]\r\nfntversion = 2,00\r\n[Def]\r\nType = ") + type + " ; kind\r\nSize = 7,13\r\nFile = " + file
                + "\r\n";
        };
        QVERIFY(write("font/Beside.TTF", "not read") && write("font/shared.ttf", "not read"));
        QVERIFY(write("font/beside.def", font("truetype", "beside.ttf")));
        QVERIFY(write("data/motif/shared.def", font("TrueType", "shared.ttf")));
        QVERIFY(write("font/system.def", font("truetype", "kestrada-no-such-font.ttf")));
        QVERIFY(write("font/bitmap.def", font("bitmap", "gone.sff")));
        QVERIFY(write("story/intro.sff", {}) && write("story/intro.snd", {}));
        QVERIFY(write("story/intro.def", "[SceneDef]\nspr = intro.sff\nsnd = intro.snd\n[Scene 0]\nlayer0.anim = 1\n[BG0Def]\n"
                                         "spr = intro.sff\n[BG0 Sky]\ntype = normal\nspriteno = 0, 0\n"));
        const QString path = root.filePath(def);
        const Result result = run({u"check"_s, path});
        QCOMPARE(result.code, code);
        QCOMPARE(result.out.trimmed(), output.isEmpty() ? QByteArray() : path.toUtf8() + output);
    }

    void checkReadsScreenpacks()
    {
        // system.def names its other files: select.def is a screenpack file
        // for that, though nothing else in it says so.
        const QString system = file(u"motif/system.def"_s, "[Info]\nname = \"Mine\"\n[Files]\nspr = system.sff\nselect = select.def\n"
                                                           "fight = fight.def\nlogo.storyboard =\nfont1 = f-4x6.def\n"
                                                           "[Title Info]\nmenu.pos = 159,158\n[TitleBGdef]\nbgclearcolor = 0,0,0\n");
        file(u"motif/system.sff"_s, QByteArray());
        // Fonts are found in the engine's font folder.
        file(u"font/f-4x6.def"_s, "[FNT v2]\n");
        const QString select = file(u"motif/select.def"_s, "[Options]\narcade.maxmatches = 6,1\nteam.maxmatches = 4 1\n");
        const QByteArray selectError = select.toUtf8() + ":3:21: error: Unexpected token '1'";
        Result result = run({u"check"_s, system});
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out.trimmed().split('\n'),
                 (QList<QByteArray>{selectError, system.toUtf8() + ": error: the file \"fight.def\" isn't found"}));
        // Alone, it is known by the DEF beside it that names it.
        result = run({u"check"_s, select});
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out.trimmed(), selectError);
    }

    void checkPassesTheEnginesOwnFiles()
    {
        const QString root = TestSupport::corpusDir();
        if (root.isEmpty())
            QSKIP("the corpus isn't there");
        // Every text file of the engine: characters, screenpacks, fonts, stages.
        QStringList arguments{u"check"_s, u"--mugen-version"_s, u"1.0"_s};
        QDirIterator it(root + u"/elecbyte-mugen10"_s, {u"*.def"_s, u"*.cns"_s, u"*.cmd"_s, u"*.air"_s}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            arguments.append(it.next());
        QVERIFY(arguments.size() > 40);
        const Result result = run(arguments);
        QVERIFY2(!result.out.contains("error:"), result.out.constData());
        // Deprecations and system fonts are warnings: the status stays 0.
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.contains("warning:"));
    }
};

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
