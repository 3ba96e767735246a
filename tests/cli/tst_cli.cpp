#include "core/base/qmugenmodel.h"
#include "testsupport.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "kestrada_version.h"

class tst_Cli : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    using Result = TestSupport::CliResult;
    Result run(const QStringList &arguments) { return TestSupport::runCli(arguments); }

private Q_SLOTS:
    void helpAndVersion()
    {
        const Result help = run({QStringLiteral("--help")});
        QCOMPARE(help.code, 0);
        QVERIFY(help.out.startsWith("Usage: kestrada-cli"));
        for (const char *verb : {"info FILE", "check FILE...", "save IN OUT"})
            QVERIFY2(help.out.contains(verb), verb);

        const Result version = run({QStringLiteral("--version")});
        QCOMPARE(version.code, 0);
        QCOMPARE(version.out, QByteArray("kestrada-cli " KESTRADA_VERSION "\n"));

        // No verb at all is a usage error, with the help on the way.
        const Result nothing = run({});
        QCOMPARE(nothing.code, 2);
        QVERIFY(nothing.out.startsWith("Usage:"));
    }

    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("unknown verb") << QStringList{QStringLiteral("frobnicate")} << QByteArray("unknown verb");
        QTest::newRow("missing file") << QStringList{QStringLiteral("info")} << QByteArray("usage: kestrada-cli info");
        QTest::newRow("too many files") << QStringList{QStringLiteral("info"), QStringLiteral("a"), QStringLiteral("b")}
                                        << QByteArray("usage: kestrada-cli info");
        QTest::newRow("unknown option") << QStringList{QStringLiteral("info"), QStringLiteral("x.ksc3"), QStringLiteral("--fast")}
                                        << QByteArray("unknown option --fast");
        QTest::newRow("value missing") << QStringList{QStringLiteral("check"), QStringLiteral("x"), QStringLiteral("--mugen-version")}
                                       << QByteArray("--mugen-version needs a value");
    }

    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, message);
        const Result result = run(arguments);
        QCOMPARE(result.code, 2);
        QVERIFY2(result.err.contains(message), result.err.constData());
    }

    void unsupportedAndMissingFiles()
    {
        const QString text = m_dir.filePath(QStringLiteral("notes.xyz"));
        QVERIFY(TestSupport::writeFile(text, "x"));
        Result result = run({QStringLiteral("info"), text});
        QCOMPARE(result.code, 2);
        QVERIFY(result.err.contains("isn't supported"));

        result = run({QStringLiteral("info"), m_dir.filePath(QStringLiteral("absent.ksc3"))});
        QCOMPARE(result.code, 1);
        QVERIFY(result.err.contains("no such file"));
    }

    void configurationInfo()
    {
        QMugenModel model;
        model.add(QStringLiteral("Mugen 1.1"), QStringLiteral("/opt/mugen/mugen.exe"), QStringLiteral("%0 kfm"), QString());
        model.config[QStringLiteral("undo_limit")] = 12;
        const QString path = m_dir.filePath(QStringLiteral("mine.ksc3"));
        QVERIFY(model.save(path));

        Result result = run({QStringLiteral("info"), path});
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.contains("Installations: 1"));
        QVERIFY(result.out.contains("  Mugen 1.1: /opt/mugen/mugen.exe %0 kfm"));
        QVERIFY(result.out.contains("  undo_limit = 12"));

        result = run({QStringLiteral("info"), path, QStringLiteral("--json")});
        QCOMPARE(result.code, 0);
        QJsonParseError error;
        const QJsonObject object = QJsonDocument::fromJson(result.out, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(object.value(QStringLiteral("kind")).toString(), QStringLiteral("configuration"));
        QCOMPARE(object.value(QStringLiteral("settings")).toObject().value(QStringLiteral("undo_limit")).toString(),
                 QStringLiteral("12"));
        const QJsonArray installations = object.value(QStringLiteral("installations")).toArray();
        QCOMPARE(installations.size(), 1);
        QCOMPARE(installations.at(0).toObject().value(QStringLiteral("exe")).toString(),
                 QStringLiteral("/opt/mugen/mugen.exe"));

        // Not a configuration inside: a failure, not a crash.
        const QString bad = m_dir.filePath(QStringLiteral("bad.ksc3"));
        QVERIFY(TestSupport::writeFile(bad, "<other/>"));
        result = run({QStringLiteral("info"), bad});
        QCOMPARE(result.code, 1);
        QVERIFY(result.err.contains("not a configuration file"));
    }

    void configurationSave()
    {
        const QString in = m_dir.filePath(QStringLiteral("in.ksc3"));
        QVERIFY(TestSupport::writeFile(in, "<!DOCTYPE ZNLConfigML><configuration>"
                                           "<config name=\"unknown\" value=\"kept\"/></configuration>"));
        const QString out = m_dir.filePath(QStringLiteral("out.ksc3"));
        Result result = run({QStringLiteral("save"), in, out});
        QCOMPARE(result.code, 0);
        QMugenModel model;
        QVERIFY(model.load(out));
        QCOMPARE(model.config.value(QStringLiteral("unknown")).toString(), QStringLiteral("kept"));

        // Options of other kinds of file are refused.
        result = run({QStringLiteral("save"), in, out, QStringLiteral("--json"), QStringLiteral("--nonsense")});
        QCOMPARE(result.code, 2);
        result = run({QStringLiteral("save"), in, m_dir.filePath(QStringLiteral("out.txt"))});
        QCOMPARE(result.code, 2);
        QVERIFY(result.err.contains("the output must be a configuration file too"));
    }

    void animationInfo()
    {
        const QString air = TestSupport::corpusDir() + QStringLiteral("/elecbyte-mugen10/chars/kfm/kfm.air");
        if (!QFileInfo::exists(air))
            QSKIP("the corpus isn't there");
        Result result = run({QStringLiteral("info"), air, QStringLiteral("--json")});
        QCOMPARE(result.code, 0);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        const QJsonArray actions = object.value(QStringLiteral("actions")).toArray();
        QCOMPARE(actions.size(), 117);
        const QJsonObject stand = actions.at(0).toObject();
        QCOMPARE(stand.value(QStringLiteral("number")).toInt(), 0);
        QCOMPARE(stand.value(QStringLiteral("name")).toString(), QStringLiteral("Standing Animation"));
        QCOMPARE(stand.value(QStringLiteral("frames")).toInt(), 11);
        const QJsonObject box = stand.value(QStringLiteral("boxes")).toArray().at(0).toObject();
        QCOMPARE(box.value(QStringLiteral("type")).toString(), QStringLiteral("Clsn2Default"));
        QCOMPARE(box.value(QStringLiteral("rect")).toObject().value(QStringLiteral("top")).toInt(), -79);

        result = run({QStringLiteral("info"), air});
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.startsWith("Animations: 117\n  0 \"Standing Animation\": 11 frames\n"));
        // No display, and no warning of a missing runtime folder either.
        QVERIFY2(result.err.isEmpty(), result.err.constData());
    }

    void projectInfo()
    {
        const QString def = TestSupport::corpusDir() + QStringLiteral("/goro/data/chars/GORO/GORO.DEF");
        if (!QFileInfo::exists(def))
            QSKIP("the corpus isn't there");
        const Result result = run({QStringLiteral("info"), def, QStringLiteral("--json")});
        QCOMPARE(result.code, 0);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(object.value(QStringLiteral("kind")).toString(), QStringLiteral("character"));
        QVERIFY(!object.value(QStringLiteral("name")).toString().isEmpty());
        // "sp.st" is found as "Sp.st".
        bool foundSp = false;
        for (const QJsonValue &value : object.value(QStringLiteral("files")).toArray()) {
            const QJsonObject file = value.toObject();
            if (file.value(QStringLiteral("name")).toString() == QLatin1String("sp.st")) {
                foundSp = file.value(QStringLiteral("found")).toBool()
                    && file.value(QStringLiteral("path")).toString().endsWith(QLatin1String("/Sp.st"));
            }
        }
        QVERIFY(foundSp);
        QCOMPARE(object.value(QStringLiteral("counts")).toObject().value(QStringLiteral("states")).toInt(), 4);
    }

    void savingText()
    {
        const QString in = m_dir.filePath(QStringLiteral("latin.cns"));
        QByteArray text;
        for (int i = 0; i < 10; ++i)
            text += "; se\xf1or \xe9l\xe8ve caf\xe9\n[Statedef 0]\n";
        QVERIFY(TestSupport::writeFile(in, text));
        const QString out = m_dir.filePath(QStringLiteral("out.cns"));
        Result result = run({QStringLiteral("save"), in, out});
        QCOMPARE(result.code, 0);
        QByteArray crlf = text;
        crlf.replace("\n", "\r\n");
        QCOMPARE(TestSupport::readFile(out), crlf);
        result = run({QStringLiteral("save"), in, out, QStringLiteral("--utf8")});
        QCOMPARE(result.code, 0);
        QVERIFY(TestSupport::readFile(out).startsWith("; se\xc3\xb1or \xc3\xa9l\xc3\xa8ve"));
    }

    void checkPrintsDiagnosticsInFileOrder()
    {
        const QString cns = m_dir.filePath(QStringLiteral("a.cns"));
        QVERIFY(TestSupport::writeFile(cns, "[Statedef 0]\r\nnonsense = 1\r\n[State 0, 1]\r\ntype = HitVelSet\r\n"
                                            "trigger1 = 1\r\n[State 0, 2]\r\ntype = Explod\r\ntrigger1 = 1\r\n"
                                            "pos = 1\r\n"));
        const QString air = m_dir.filePath(QStringLiteral("a.AIR"));
        QVERIFY(TestSupport::writeFile(air, "[Begin Action 0]\n0,0, 0,0, 5, Z\n"));
        Result result = run({QStringLiteral("check"), cns, air});
        QCOMPARE(result.code, 1);
        const QList<QByteArray> lines = result.out.trimmed().split('\n');
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines.at(0), cns.toUtf8() + ":2:1: error: Unknown 'StateDef' parameter 'nonsense'");
        QCOMPARE(lines.at(1), cns.toUtf8() + ":4:8: warning: State controller deprecated in the M.U.G.E.N 2002.04.14");
        QCOMPARE(lines.at(2), cns.toUtf8() + ":9:7: note: This parameter requires 2 value(s)");
        QCOMPARE(lines.at(3), air.toUtf8() + ":2:14: error: Unknown flip type");

        result = run({QStringLiteral("check"), cns, QStringLiteral("--json")});
        QCOMPARE(result.code, 1);
        const QJsonArray array = QJsonDocument::fromJson(result.out).array();
        QCOMPARE(array.size(), 3);
        const QJsonObject first = array.at(0).toObject();
        QCOMPARE(first.value(QStringLiteral("line")).toInt(), 2);
        QCOMPARE(first.value(QStringLiteral("column")).toInt(), 1);
        QCOMPARE(first.value(QStringLiteral("severity")).toString(), QStringLiteral("error"));
        QCOMPARE(array.at(2).toObject().value(QStringLiteral("severity")).toString(), QStringLiteral("note"));
    }

    void checkFollowsTheEngineVersion_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("output");
        // VictoryQuote came with 1.0; without the option a file is checked at 1.1.
        QTest::newRow("default") << QStringList() << 0 << QByteArray();
        QTest::newRow("1.0") << QStringList{QStringLiteral("--mugen-version"), QStringLiteral("1.0")} << 0 << QByteArray();
        QTest::newRow("oldest") << QStringList{QStringLiteral("--mugen-version=2002.04.14")} << 1
                                << QByteArray(":3:8: error: Controller invalid for the M.U.G.E.N. version of the current project");
        QTest::newRow("not a version") << QStringList{QStringLiteral("--mugen-version"), QStringLiteral("new")} << 2
                                       << QByteArray();
    }

    void checkFollowsTheEngineVersion()
    {
        QFETCH(QStringList, options);
        QFETCH(int, code);
        QFETCH(QByteArray, output);
        const QString cns = m_dir.filePath(QStringLiteral("quote.cns"));
        QVERIFY(TestSupport::writeFile(cns, "[Statedef 0]\n[State 0, 1]\ntype = VictoryQuote\ntrigger1 = 1\nvalue = 1\n"));
        const Result result = run(QStringList{QStringLiteral("check"), cns} + options);
        QCOMPARE(result.code, code);
        QCOMPARE(result.out.trimmed(), output.isEmpty() ? QByteArray() : cns.toUtf8() + output);
        if (code == 2)
            QVERIFY(result.err.contains("--mugen-version wants a version"));
    }

    void checkReadsEveryKindOfDefinitions()
    {
        // Storyboards and fonts name no engine version; they are checked at
        // 1.1 all the same, like any file without the option.
        // Its sprites and sounds are there (if empty), so nothing is missing.
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("intro.sff")), QByteArray()));
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("intro.snd")), QByteArray()));
        const QString storyboard = m_dir.filePath(QStringLiteral("intro.def"));
        QVERIFY(TestSupport::writeFile(storyboard, "[SceneDef]\nspr = intro.sff\nsnd = intro.snd\n[Scene 0]\n"
                                                   "layer0.anim = 1\n[BG0Def]\nspr = intro.sff\n[BG0 Sky]\n"
                                                   "type = normal\nspriteno = 0, 0\n"));
        Result result = run({QStringLiteral("check"), storyboard});
        QCOMPARE(result.code, 0);
        QVERIFY2(result.out.isEmpty(), result.out.constData());

        const QString character = m_dir.filePath(QStringLiteral("char.def"));
        QVERIFY(TestSupport::writeFile(character, "[Info]\nname = \"Mine\"\nmugenversion = 1.0\n[Files]\nsprite = mine.sff\n"
                                                  "spirte = mine.sff\n"));
        result = run({QStringLiteral("check"), character});
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out.trimmed(), character.toUtf8() + ":6:1: error: Unknown parameter 'spirte' for the 'Files' controller\n"
                                       + character.toUtf8() + ": error: the file \"mine.sff\" isn't found");
    }

    void checkOfADefinitionsFileChecksTheWholeProject()
    {
        // A project of the oldest engine: VictoryQuote came later, in 1.0.
        const QString def = m_dir.filePath(QStringLiteral("old.def"));
        QVERIFY(TestSupport::writeFile(def, "[Info]\nname = \"Old\"\nmugenversion = 04,14,2002\n[Files]\n"
                                            "sprite = old.sff\nanim = old.air\nsound = old.snd\ncmd = OLD.cmd\n"
                                            "st = old.cns\nst2 = gone.cns\nstcommon = common1.cns\npal1 = gone.act\n"));
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("old.sff")), QByteArray()));
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("old.snd")), QByteArray()));
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("old.air")), "[Begin Action 0]\n0,0, 0,0, 5, Z\n"));
        // Found without regard to case.
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("old.cmd")), "[Statedef -1]\n"));
        const QString cns = m_dir.filePath(QStringLiteral("old.cns"));
        QVERIFY(TestSupport::writeFile(cns, "[Statedef 0]\n[State 0, 1]\ntype = VictoryQuote\ntrigger1 = 1\nvalue = 1\n"));

        // Named again, the state file is checked once, and at the project's version.
        Result result = run({QStringLiteral("check"), def, cns});
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
        result = run({QStringLiteral("check"), def, QStringLiteral("--mugen-version"), QStringLiteral("1.1"),
                      QStringLiteral("--json")});
        QCOMPARE(result.code, 1);
        const QJsonArray array = QJsonDocument::fromJson(result.out).array();
        QCOMPARE(array.size(), 4);
        QCOMPARE(array.at(0).toObject().value(QStringLiteral("line")).toInt(), 0);
        QCOMPARE(array.at(3).toObject().value(QStringLiteral("path")).toString(), m_dir.filePath(QStringLiteral("old.air")));
    }

    void checkFindsTrueTypeFontsWhereTheEngineDoes_data()
    {
        QTest::addColumn<QByteArray>("def");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("output");
        // Beside the DEF, in the engine's font folder, or among the system's fonts.
        QTest::newRow("beside") << QByteArray("font/beside.def") << 0 << QByteArray();
        QTest::newRow("font folder") << QByteArray("data/motif/shared.def") << 0 << QByteArray();
        QTest::newRow("system font not there")
            << QByteArray("font/system.def") << 0
            << QByteArray(": warning: the font file \"kestrada-no-such-font.ttf\" isn't found in the font folder or "
                          "among the system's fonts");
        QTest::newRow("bitmap font missing")
            << QByteArray("font/bitmap.def") << 1 << QByteArray(": error: the file \"gone.sff\" isn't found");
    }

    void checkFindsTrueTypeFontsWhereTheEngineDoes()
    {
        QFETCH(QByteArray, def);
        QFETCH(int, code);
        QFETCH(QByteArray, output);
        QTemporaryDir root;
        QVERIFY(TestSupport::writeFile(root.filePath(QStringLiteral("font/Beside.TTF")), "not read"));
        QVERIFY(TestSupport::writeFile(root.filePath(QStringLiteral("font/shared.ttf")), "not read"));
        const auto font = [&root](const char *name, const char *type, const char *file) {
            return TestSupport::writeFile(root.filePath(QLatin1String(name)),
                                          QByteArray("[FNT v2]\r\nfntversion = 2,00\r\n[Def]\r\nType = ") + type
                                              + " ; kind\r\nSize = 7,13\r\nFile = " + file + "\r\n");
        };
        QVERIFY(font("font/beside.def", "truetype", "beside.ttf"));
        QVERIFY(font("data/motif/shared.def", "TrueType", "shared.ttf"));
        QVERIFY(font("font/system.def", "truetype", "kestrada-no-such-font.ttf"));
        QVERIFY(font("font/bitmap.def", "bitmap", "gone.sff"));
        const QString path = root.filePath(QString::fromLatin1(def));
        const Result result = run({QStringLiteral("check"), path});
        QCOMPARE(result.code, code);
        QCOMPARE(result.out.trimmed(), output.isEmpty() ? QByteArray() : path.toUtf8() + output);
    }

    void checkReadsScreenpacks()
    {
        // system.def names its other files: select.def is a screenpack file
        // for that, though nothing else in it says so.
        const QString system = m_dir.filePath(QStringLiteral("motif/system.def"));
        QVERIFY(TestSupport::writeFile(system, "[Info]\nname = \"Mine\"\n[Files]\nspr = system.sff\n"
                                               "select = select.def\nfight = fight.def\nlogo.storyboard =\n"
                                               "font1 = f-4x6.def\n[Title Info]\nmenu.pos = 159,158\n"
                                               "[TitleBGdef]\nbgclearcolor = 0,0,0\n"));
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("motif/system.sff")), QByteArray()));
        // Fonts are found in the engine's font folder.
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("font/f-4x6.def")), "[FNT v2]\n"));
        const QString select = m_dir.filePath(QStringLiteral("motif/select.def"));
        QVERIFY(TestSupport::writeFile(select, "[Options]\narcade.maxmatches = 6,1\nteam.maxmatches = 4 1\n"));
        const QByteArray selectError = select.toUtf8() + ":3:21: error: Unexpected token '1'";

        Result result = run({QStringLiteral("check"), system});
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out.trimmed().split('\n'),
                 (QList<QByteArray>{selectError, system.toUtf8() + ": error: the file \"fight.def\" isn't found"}));

        // Alone, it is known by the DEF beside it that names it.
        result = run({QStringLiteral("check"), select});
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out.trimmed(), selectError);
    }

    void checkPassesTheEnginesOwnFiles()
    {
        const QString root = TestSupport::corpusDir();
        if (root.isEmpty())
            QSKIP("the corpus isn't there");
        // Every text file of the engine: characters, screenpacks, fonts, stages.
        QStringList arguments{QStringLiteral("check"), QStringLiteral("--mugen-version"), QStringLiteral("1.0")};
        QDirIterator it(root + QStringLiteral("/elecbyte-mugen10"),
                        {QStringLiteral("*.def"), QStringLiteral("*.cns"), QStringLiteral("*.cmd"), QStringLiteral("*.air")},
                        QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            arguments.append(it.next());
        QVERIFY(arguments.size() > 40);
        const Result result = run(arguments);
        QVERIFY2(!result.out.contains("error:"), result.out.constData());
        // Deprecations and system fonts are warnings: the status stays 0.
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.contains("warning:"));
    }

    void checkNeedsACheckableFile()
    {
        const QString path = m_dir.filePath(QStringLiteral("c.ksc3"));
        QVERIFY(QMugenModel().save(path));
        const Result result = run({QStringLiteral("check"), path});
        QCOMPARE(result.code, 2);
        QVERIFY(result.err.contains("a configuration file can't be checked"));
    }
};

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
