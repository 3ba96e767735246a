#include "sndbuilder.h"
#include "testsupport.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;
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
        const QString file = path(u"set.snd"_s);
        writeFile(file, SndBuilder::snd({Sound{1, 2, SndBuilder::wav(1, 11025, 8, 11025)},
                                         Sound{-3, 4, SndBuilder::wav(2, 22050, 16, 10)}, Sound{1, 2, QByteArray()}}));
        return file;
    }

private Q_SLOTS:
    void info()
    {
        const QString file = soundFile();
        Output result = cli({u"info"_s, file});
        QCOMPARE(result.code, 0);
        QVERIFY(result.out.contains("sounds 3\n0: 1,2 bytes 11069 channels 1 rate 11025 bits 8 duration 1.000\n"));
        QVERIFY(result.out.contains("2: 1,2 bytes 0 channels 0 rate 0 bits 0 duration 0.000\n"));
        result = cli({u"info"_s, file, u"--json"_s});
        QCOMPARE(result.code, 0);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(object.value(u"kind"_s).toString(), u"sounds"_s);
        QCOMPARE(object.value(u"count"_s).toInt(), 3);
        const QJsonObject second = object.value(u"sounds"_s).toArray().at(1).toObject();
        QCOMPARE(QList<int>({second.value(u"group"_s).toInt(), second.value(u"number"_s).toInt(), second.value(u"channels"_s).toInt(),
                             second.value(u"sampleRate"_s).toInt()}), QList<int>({-3, 4, 2, 22050}));
        // A damaged file is a failure with its reason, not a crash.
        const QString bad = path(u"bad.snd"_s);
        QVERIFY(writeFile(bad, readFile(file).left(600)));
        result = cli({u"info"_s, bad});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.contains("can't be read as a sound file: "), result.err.constData());
    }

    void checkAndSave()
    {
        const QString file = soundFile();
        Output result = cli({u"check"_s, file});
        // The empty sound is an error, the second 1,2 a warning; the line is the sound's place from 1.
        QCOMPARE(result.code, 1);
        QCOMPARE(result.out, (file + u":3:1: error: Empty sound!\n"_s + file
                              + u":3:1: warning: The group 1, index 2 is already in use by sound #1!\n"_s).toUtf8());
        // Saved, the same sounds.
        const QString out = path(u"out.snd"_s);
        QCOMPARE(cli({u"save"_s, file, out}).code, 0);
        const QByteArray listed = cli({u"info"_s, out}).out;
        const QByteArray original = cli({u"info"_s, file}).out;
        QCOMPARE(listed.mid(listed.indexOf('\n')), original.mid(original.indexOf('\n')));
    }

    void extract()
    {
        const QString file = soundFile();
        const QString folder = path(u"wavs/deep"_s);
        const Output result = cli({u"snd"_s, u"extract"_s, file, folder, u"--json"_s});
        QCOMPARE(result.code, 0);
        QCOMPARE(QJsonDocument::fromJson(result.out).array().size(), 2);
        // The empty sound has nothing to write.
        QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList({u"0000_1-2.wav"_s, u"0001_-3-4.wav"_s}));
        QCOMPARE(readFile(folder + u"/0001_-3-4.wav"_s), SndBuilder::wav(2, 22050, 16, 10));
        QCOMPARE(cli({u"snd"_s, u"extract"_s, path(u"absent.snd"_s), folder}).code, 1);
    }

    void runsAProjectInAnEngine()
    {
        const QString engine = path(u"mugen/engine"_s);
        QVERIFY(QDir().mkpath(path(u"mugen/chars"_s)));
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + u"/fakeengine"_s, engine));
        QVERIFY(QFile::setPermissions(engine, QFile::permissions(engine) | QFile::ExeOwner));
        const QString def = path(u"char/char.def"_s);
        QVERIFY(writeFile(def, "[Files]\r\nsound = char.snd\r\n"));
        QVERIFY(QFile::copy(soundFile(), path(u"char/char.snd"_s)));
        const QString log = path(u"engine.log"_s);
        qputenv("FAKE_ENGINE_LOG", log.toLocal8Bit());
        // Without a template the project fights itself; the copy is gone again.
        const QStringList base{u"run"_s, def, u"--engine"_s, engine};
        QCOMPARE(cli(base).code, 0);
        QVERIFY2(readFile(log).contains("arg ks3_0\narg ks3_0\nfile chars/ks3_0/char.snd\n"), readFile(log).constData());
        QCOMPARE(QDir(path(u"mugen/chars"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
        QCOMPARE(cli(base + QStringList{u"--params"_s, u"%0 kfm -p2.ai 1"_s}).code, 0);
        QVERIFY(readFile(log).contains("arg ks3_0\narg kfm\narg -p2.ai\narg 1\n"));
        // Parameters without a project are refused, as the program refuses them.
        const Output refused = cli(base + QStringList{u"--params"_s, u"kfm kfm"_s});
        QCOMPARE(refused.code, 1);
        QVERIFY(refused.err.contains("Warning!: Oops, wrong parameters"));
        QCOMPARE(cli({u"run"_s, def}).code, 2);
        QCOMPARE(cli({u"run"_s, def, u"--engine"_s, path(u"nothing"_s)}).code, 1);
        QCOMPARE(cli({u"run"_s, path(u"none.def"_s), u"--engine"_s, engine}).code, 1);
        qunsetenv("FAKE_ENGINE_LOG");
    }
};

QTEST_GUILESS_MAIN(tst_CliSounds)
#include "tst_clisounds.moc"
