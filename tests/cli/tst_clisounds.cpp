#include "sndbuilder.h"
#include "testsupport.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using SndBuilder::Sound;
using TestSupport::readFile;
using TestSupport::writeFile;

/** The verbs of sound files and of test runs, through the real program. */
class tst_CliSounds : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }

    using Output = TestSupport::CliResult;
    static Output cli(const QStringList &arguments) { return TestSupport::runCli(arguments); }

    /** Two sounds and an empty one: 1,2 then -3,4 then an empty 1,2. */
    QString soundFile()
    {
        const QString file = path(QStringLiteral("set.snd"));
        writeFile(file, SndBuilder::snd({Sound{1, 2, SndBuilder::wav(1, 11025, 8, 11025)},
                                         Sound{-3, 4, SndBuilder::wav(2, 22050, 16, 10)}, Sound{1, 2, QByteArray()}}));
        return file;
    }

private Q_SLOTS:
    void info()
    {
        const QString file = soundFile();
        Output result = cli({QStringLiteral("info"), file});
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.contains("sounds 3\n"));
        QVERIFY(result.out.contains("0: 1,2 bytes 11069 channels 1 rate 11025 bits 8 duration 1.000\n"));
        QVERIFY(result.out.contains("2: 1,2 bytes 0 channels 0 rate 0 bits 0 duration 0.000\n"));

        result = cli({QStringLiteral("info"), file, QStringLiteral("--json")});
        QCOMPARE(result.code, 0);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(object.value(QStringLiteral("kind")).toString(), QStringLiteral("sounds"));
        QCOMPARE(object.value(QStringLiteral("count")).toInt(), 3);
        const QJsonObject second = object.value(QStringLiteral("sounds")).toArray().at(1).toObject();
        QCOMPARE(second.value(QStringLiteral("group")).toInt(), -3);
        QCOMPARE(second.value(QStringLiteral("number")).toInt(), 4);
        QCOMPARE(second.value(QStringLiteral("channels")).toInt(), 2);
        QCOMPARE(second.value(QStringLiteral("sampleRate")).toInt(), 22050);

        // A damaged file is a failure with its reason, not a crash.
        const QString bad = path(QStringLiteral("bad.snd"));
        QVERIFY(writeFile(bad, readFile(file).left(600)));
        result = cli({QStringLiteral("info"), bad});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.contains("can't be read as a sound file: "), result.err.constData());
    }

    void checkAndSave()
    {
        const QString file = soundFile();
        Output result = cli({QStringLiteral("check"), file});
        // The empty sound is an error, the second 1,2 a warning; the line is the sound's place from 1.
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out, (file + QStringLiteral(":3:1: error: Empty sound!\n") + file
                              + QStringLiteral(":3:1: warning: The group 1, index 2 is already in use by sound #1!\n"))
                                 .toUtf8());

        const QString out = path(QStringLiteral("out.snd"));
        result = cli({QStringLiteral("save"), file, out});
        QCOMPARE(result.code, 0);
        // The same sounds, and the file is what the program writes: saving it again changes nothing.
        const QByteArray listed = cli({QStringLiteral("info"), out}).out;
        const QByteArray original = cli({QStringLiteral("info"), file}).out;
        QCOMPARE(listed.mid(listed.indexOf('\n')), original.mid(original.indexOf('\n')));
        const QString again = path(QStringLiteral("again.snd"));
        QCOMPARE(cli({QStringLiteral("save"), out, again}).code, 0);
        QCOMPARE(readFile(again), readFile(out));
    }

    void extract()
    {
        const QString file = soundFile();
        const QString folder = path(QStringLiteral("wavs/deep"));
        Output result = cli({QStringLiteral("snd"), QStringLiteral("extract"), file, folder, QStringLiteral("--json")});
        QCOMPARE(result.code, 0);
        QCOMPARE(QJsonDocument::fromJson(result.out).array().size(), 2);
        // The empty sound has nothing to write.
        QCOMPARE(QDir(folder).entryList(QDir::Files),
                 QStringList({QStringLiteral("0000_1-2.wav"), QStringLiteral("0001_-3-4.wav")}));
        QCOMPARE(readFile(folder + QStringLiteral("/0001_-3-4.wav")), SndBuilder::wav(2, 22050, 16, 10));

        result = cli({QStringLiteral("snd"), QStringLiteral("extract"), path(QStringLiteral("absent.snd")), folder});
        QCOMPARE(result.code, 1);
    }

    void runsAProjectInAnEngine()
    {
        const QString engine = path(QStringLiteral("mugen/engine"));
        QVERIFY(QDir().mkpath(path(QStringLiteral("mugen/chars"))));
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + QStringLiteral("/fakeengine"), engine));
        QVERIFY(QFile::setPermissions(engine, QFile::permissions(engine) | QFile::ExeOwner));
        const QString def = path(QStringLiteral("char/char.def"));
        QVERIFY(writeFile(def, "[Files]\r\nsound = char.snd\r\n"));
        QVERIFY(QFile::copy(soundFile(), path(QStringLiteral("char/char.snd"))));
        const QString log = path(QStringLiteral("engine.log"));
        qputenv("FAKE_ENGINE_LOG", log.toLocal8Bit());

        // Without a template the project fights itself.
        Output result = cli({QStringLiteral("run"), def, QStringLiteral("--engine"), engine});
        QCOMPARE(result.code, 0);
        QByteArray seen = readFile(log);
        QVERIFY2(seen.contains("arg ks3_0\narg ks3_0\n"), seen.constData());
        QVERIFY(seen.contains("file chars/ks3_0/char.snd "));
        // The copy is gone again.
        QCOMPARE(QDir(path(QStringLiteral("mugen/chars"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList());

        result = cli({QStringLiteral("run"), def, QStringLiteral("--engine"), engine, QStringLiteral("--params"),
                      QStringLiteral("%0 kfm -p2.ai 1")});
        QCOMPARE(result.code, 0);
        QVERIFY(readFile(log).contains("arg ks3_0\narg kfm\narg -p2.ai\narg 1\n"));

        // Parameters without a project are refused, as the program refuses them.
        result = cli({QStringLiteral("run"), def, QStringLiteral("--engine"), engine, QStringLiteral("--params"),
                      QStringLiteral("kfm kfm")});
        QCOMPARE(result.code, 1);
        QVERIFY(result.err.contains("Warning!: Oops, wrong parameters"));

        QCOMPARE(cli({QStringLiteral("run"), def}).code, 2);
        QCOMPARE(cli({QStringLiteral("run"), def, QStringLiteral("--engine"), path(QStringLiteral("nothing"))}).code, 1);
        QCOMPARE(cli({QStringLiteral("run"), path(QStringLiteral("none.def")), QStringLiteral("--engine"), engine}).code, 1);
        qunsetenv("FAKE_ENGINE_LOG");
    }
};

QTEST_GUILESS_MAIN(tst_CliSounds)
#include "tst_clisounds.moc"
