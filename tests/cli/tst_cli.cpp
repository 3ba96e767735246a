#include "core/base/qmugenmodel.h"
#include "testsupport.h"

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

    void checkNeedsACheckableFile()
    {
        const QString path = m_dir.filePath(QStringLiteral("c.ksc3"));
        QVERIFY(QMugenModel().save(path));
        const Result result = run({QStringLiteral("check"), path});
        QCOMPARE(result.code, 2);
        QVERIFY(result.err.contains("can't be checked"));
    }
};

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
