#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"
#include "core/sounds/sndfile.h"
#include "sndbuilder.h"
#include "testsupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

using SndBuilder::Sound;
using TestSupport::readFile;
using TestSupport::writeFile;

using SoundsChange = std::function<void(QSounds &)>;
Q_DECLARE_METATYPE(SoundsChange)

namespace {

/** Everything a list holds, bytes included, to compare two states of it. */
QString state(const QSounds &sounds)
{
    QString text = sounds.dump();
    for (int i = 0; i < sounds.count(); ++i)
        text += QString::number(QStreamCache::hash(sounds.sample(i)), 16) + QLatin1Char('\n');
    return text;
}

/** Group and number of every sound, as "g,n g,n ...". */
QString pairs(const QSounds &sounds)
{
    QStringList list;
    for (int i = 0; i < sounds.count(); ++i)
        list.append(QStringLiteral("%1,%2").arg(sounds.subItem(i).group).arg(sounds.subItem(i).index));
    return list.join(QLatin1Char(' '));
}

/** The 32-bit little-endian number at `offset`. */
quint32 at32(const QByteArray &bytes, qsizetype offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

} // namespace

class tst_QSounds : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }

    /** A list of sounds with the given pairs, each with a WAV of its own, in disk mode. */
    void fill(QSounds &sounds, const QList<QPair<int, int>> &items)
    {
        QList<Sound> list;
        for (int i = 0; i < items.size(); ++i)
            list.append(Sound{items.at(i).first, items.at(i).second, SndBuilder::wav(1, 8000 + i, 8, 10 + i)});
        const QString file = path(QStringLiteral("fill.snd"));
        QVERIFY(writeFile(file, SndBuilder::snd(list)));
        QVERIFY(sounds.load(file, false));
    }

private Q_SLOTS:
    void corpusRoundTrip_data()
    {
        QTest::addColumn<QString>("file");
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.snd")});
        if (files.isEmpty())
            QSKIP("the corpus isn't there");
        for (const QString &file : files)
            QTest::newRow(qPrintable(file.mid(TestSupport::corpusDir().size() + 1))) << file;
    }

    void corpusRoundTrip()
    {
        QFETCH(QString, file);
        const QByteArray original = readFile(file);
        QSounds sounds(nullptr, QStreamCache::Disk, true, -1);
        QVERIFY(sounds.load(file, false));
        QVERIFY(sounds.count() > 0);
        QCOMPARE(sounds.fileName(), file);
        QVERIFY(!sounds.isModified());

        const QString copy = path(QStringLiteral("copy.snd"));
        QVERIFY(sounds.save(copy, true));
        const QByteArray written = readFile(copy);
        // The sounds are the same bytes; only the header's version and
        // comment, and a last "next" of 0, may differ.
        QCOMPARE(written.size(), original.size());
        QCOMPARE(written.left(12), original.left(12));
        QCOMPARE(at32(written, 16), at32(original, 16));
        qsizetype last = 512;
        for (int i = 0; i + 1 < sounds.count(); ++i)
            last = at32(written, last);
        QCOMPARE(at32(written, last), quint32(written.size()));
        QVERIFY(at32(original, last) == 0 || at32(original, last) == quint32(original.size()));
        QCOMPARE(written.mid(512, last - 512), original.mid(512, last - 512));
        QCOMPARE(written.mid(last + 4), original.mid(last + 4));

        // Read back, the list is the same, and our own file is canonical.
        QSounds again(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(again.load(copy, false));
        QCOMPARE(state(again), state(sounds));
        const QString second = path(QStringLiteral("second.snd"));
        QVERIFY(again.save(second, false));
        QCOMPARE(readFile(second), written);
    }

    void writesTheHeaderAndStamp()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        sounds.insert(0);
        const QString file = path(QStringLiteral("stamp.snd"));
        QVERIFY(sounds.save(file, false));
        const QByteArray bytes = readFile(file);
        QCOMPARE(bytes.left(24), QByteArray("ElecbyteSnd\0\x01\0\x01\0\x01\0\0\0\0\x02\0\0", 24));
        QVERIFY(bytes.mid(24).startsWith("Made in Zanarel\nPowered by Kestrada 3\nhttps://"));
        QCOMPARE(bytes.mid(24, 488), Snd::stamp());
        // The third line ends with a zero byte, and zeros fill the rest.
        const qsizetype end = bytes.indexOf('\0', 24);
        QCOMPARE(bytes.at(end - 1), '\n');
        QCOMPARE(bytes.mid(end, 512 - end), QByteArray(512 - end, '\0'));
    }

    void emptySoundsSurviveAndPointAtTheNextHeader()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}, {2, 2}});
        sounds.insert(1);
        sounds.setSubItem(1, 7, 8);
        const QString file = path(QStringLiteral("empty.snd"));
        QVERIFY(sounds.save(file, false));
        const QByteArray bytes = readFile(file);
        const quint32 second = at32(bytes, 512);
        // The empty sound: length 0, next right behind its own sub-header.
        QCOMPARE(at32(bytes, second + 4), 0u);
        QCOMPARE(at32(bytes, second), second + 16);
        // Our last sound points at the end of the file.
        const quint32 third = at32(bytes, second);
        QCOMPARE(at32(bytes, third), quint32(bytes.size()));

        QSounds again(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(again.load(file, false));
        QCOMPARE(state(again), state(sounds));
        QVERIFY(again.sample(1).isEmpty());
    }

    void readsWhatToolsWrite_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QList<QByteArray>>("samples");
        const QByteArray a = SndBuilder::wav(1, 11025, 8, 20);
        const QByteArray b = SndBuilder::wav(2, 22050, 16, 30);
        // The engine's tools leave the last next at 0: the length counts.
        QTest::newRow("last next 0") << SndBuilder::snd({{1, 2, a}, {3, 4, b, 0}}) << QStringLiteral("1,2 3,4")
                                     << QList<QByteArray>{a, b};
        // Where next and length disagree, next gives the size.
        QTest::newRow("next corrects the length") << SndBuilder::snd({{1, 1, a, -1, 5}, {2, 2, b, -1, 0x7FFFFFFF}})
                                                  << QStringLiteral("1,1 2,2") << QList<QByteArray>{a, b};
        // Group and number are stored as given, negative ones too.
        QTest::newRow("negative pairs") << SndBuilder::snd({{-1, -200, a}, {-70000, 5, b}})
                                        << QStringLiteral("-1,-200 -70000,5") << QList<QByteArray>{a, b};
        // A length of 0 means no data, whatever next says.
        QTest::newRow("length 0") << SndBuilder::snd({{1, 1, QByteArray(), 9999, 0}, {2, 2, a}})
                                  << QStringLiteral("1,1 2,2") << QList<QByteArray>{QByteArray(), a};
        // A broken next on the last sound is harmless to the engine: the length stands.
        QTest::newRow("last next past the end") << SndBuilder::snd({{1, 1, a}, {2, 2, b, 0x7FFFFFF0}})
                                                << QStringLiteral("1,1 2,2") << QList<QByteArray>{a, b};
        QTest::newRow("next behind its header") << SndBuilder::snd({{1, 1, a, 100}}) << QStringLiteral("1,1")
                                                << QList<QByteArray>{a};
        QTest::newRow("no sounds") << SndBuilder::snd({}) << QString() << QList<QByteArray>{};
    }

    void readsWhatToolsWrite()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, expected);
        QFETCH(QList<QByteArray>, samples);
        const QString name = path(QStringLiteral("tools.snd"));
        QVERIFY(writeFile(name, file));
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY2(sounds.load(name, false), qPrintable(sounds.errorString()));
        QCOMPARE(pairs(sounds), expected);
        // Each sound holds exactly its own WAV.
        for (int i = 0; i < samples.size(); ++i)
            QCOMPARE(sounds.sample(i), samples.at(i));
    }

    void malformedFilesFail_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("error");
        const QByteArray a = SndBuilder::wav(1, 11025, 8, 20);
        const QByteArray good = SndBuilder::snd({{1, 1, a}, {2, 2, a}});
        QTest::newRow("empty file") << QByteArray() << QStringLiteral("not an SND file");
        QTest::newRow("wrong signature") << QByteArray("ElecbyteSpr\0", 12) + good.mid(12)
                                         << QStringLiteral("not an SND file");
        QTest::newRow("header cut short") << good.left(300) << QStringLiteral("header is cut short");
        QTest::newRow("count beyond the file") << SndBuilder::snd({{1, 1, a}}, 0xFFFFFFFF)
                                               << QStringLiteral("announces 4294967295 sounds");
        QTest::newRow("one sound too many") << SndBuilder::snd({{1, 1, a}}, 2)
                                            << QStringLiteral("ends inside the header");
        QTest::newRow("sub-header cut") << good.left(good.size() - a.size() - 8)
                                        << QStringLiteral("ends inside the header");
        QTest::newRow("data cut") << good.left(good.size() - 5) << QStringLiteral("runs past the end");
        QTest::newRow("length past the end") << SndBuilder::snd({{1, 1, a, 0, 0x7FFFFFFF}})
                                             << QStringLiteral("runs past the end");
        // A next before its own data would wrap the size; the length is
        // used, and it doesn't fit either.
        QTest::newRow("next before the position") << SndBuilder::snd({{1, 1, a, 10, 0xFFFFFF00}})
                                                  << QStringLiteral("runs past the end");
    }

    void malformedFilesFail()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, error);
        const QString name = path(QStringLiteral("bad.snd"));
        QVERIFY(writeFile(name, file));
        QSounds sounds(nullptr, QStreamCache::Disk, true, -1);
        fill(sounds, {{9, 9}});
        sounds.setSubItem(0, 8, 8);
        QVERIFY(!sounds.load(name, false));
        QVERIFY2(sounds.errorString().contains(error), qPrintable(sounds.errorString()));
        // Nothing half-read stays, and the damaged file isn't the document's name.
        QCOMPARE(sounds.count(), 0);
        QVERIFY(sounds.fileName().isEmpty());
        QVERIFY(!sounds.isModified());
    }

    void anUnreadableFileKeepsTheList()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}});
        const QString before = state(sounds);
        QVERIFY(!sounds.load(path(QStringLiteral("absent.snd")), false));
        QCOMPARE(sounds.errorString(), QStringLiteral("no such file"));
        QVERIFY(!sounds.load(m_dir.path(), false));
        QCOMPARE(state(sounds), before);
        QCOMPARE(sounds.fileName(), path(QStringLiteral("fill.snd")));
    }

    void aCancelledLoadLeavesNothing()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}, {2, 2}, {3, 3}});
        connect(&sounds, &QSounds::progress, this, [](uint pos, uint, bool &allow) { allow = pos < 2; });
        QVERIFY(!sounds.load(path(QStringLiteral("fill.snd")), false));
        QCOMPARE(sounds.count(), 0);
    }

    void copiesKeepTheNameAndTheModifiedState()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}});
        const QString original = sounds.fileName();
        sounds.setSubItem(0, 5, 5);
        QVERIFY(sounds.isModified());
        QVERIFY(sounds.save(path(QStringLiteral("test-copy.snd")), true));
        QVERIFY(sounds.isModified());
        QCOMPARE(sounds.fileName(), original);
        QVERIFY(sounds.load(path(QStringLiteral("test-copy.snd")), true));
        QCOMPARE(sounds.fileName(), original);
        QCOMPARE(pairs(sounds), QStringLiteral("5,5"));

        // A save under a new name takes it, and the list is saved.
        QVERIFY(sounds.save(path(QStringLiteral("new.snd")), false));
        QCOMPARE(sounds.fileName(), path(QStringLiteral("new.snd")));
        QVERIFY(!sounds.isModified());
        // A save that can't be written fails and changes nothing.
        QVERIFY(!sounds.save(path(QStringLiteral("no/such/folder/x.snd")), false));
        QCOMPARE(sounds.fileName(), path(QStringLiteral("new.snd")));
    }

    void readsTheWavHeader_data()
    {
        QTest::addColumn<QByteArray>("wav");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("bits");
        QTest::addColumn<float>("duration");
        QTest::newRow("8-bit mono") << SndBuilder::wav(1, 11025, 8, 11025) << 1 << 11025 << 8 << 1.0f;
        QTest::newRow("16-bit stereo") << SndBuilder::wav(2, 22050, 16, 11025) << 2 << 22050 << 16 << 0.5f;
        // Compressed formats aren't measured.
        QTest::newRow("ADPCM") << SndBuilder::wav(1, 11025, 4, 100, 2) << 0 << 0 << 0 << 0.0f;
        QTest::newRow("too short") << SndBuilder::wav(1, 11025, 8, 10).left(30) << 0 << 0 << 0 << 0.0f;
        QTest::newRow("not RIFF/WAVE") << "OggS" + SndBuilder::wav(1, 11025, 8, 10).mid(4) << 0 << 0 << 0 << 0.0f;
        QByteArray noData = SndBuilder::wav(1, 11025, 8, 10);
        noData.replace("data", "atad");
        QTest::newRow("no data chunk") << noData << 0 << 0 << 0 << 0.0f;
        QByteArray zeroRate = SndBuilder::wav(1, 11025, 8, 10);
        zeroRate.replace(28, 4, SndBuilder::le32(0));
        QTest::newRow("byte rate 0") << zeroRate << 1 << 11025 << 8 << 0.0f;
        // "data" at its very end: the size field would lie outside.
        QTest::newRow("data at the end") << SndBuilder::wav(1, 11025, 8, 0).left(40) + "da" << 0 << 0 << 0 << 0.0f;
    }

    void readsTheWavHeader()
    {
        QFETCH(QByteArray, wav);
        QFETCH(int, channels);
        QFETCH(int, rate);
        QFETCH(int, bits);
        QFETCH(float, duration);
        const QSoundInfo info = QSoundInfo::fromWav(wav);
        QCOMPARE(int(info.channels), channels);
        QCOMPARE(int(info.sampleRate), rate);
        QCOMPARE(int(info.bitsPerSample), bits);
        QCOMPARE(info.duration, duration);

        // The list keeps what the header says, and the bytes as they are.
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        sounds.insert(0);
        sounds.setSample(0, wav);
        QCOMPARE(sounds.soundInfo(0), info);
        QCOMPARE(sounds.sample(0), wav);
    }

    void undoRestoresEveryChange_data()
    {
        QTest::addColumn<SoundsChange>("change");
        QTest::addColumn<QString>("after");
        QTest::newRow("insert") << SoundsChange([](QSounds &s) { s.insert(1); }) << QStringLiteral("1,1 0,0 2,2 2,3");
        QTest::newRow("insert beyond the end") << SoundsChange([](QSounds &s) { s.insert(99); })
                                               << QStringLiteral("1,1 2,2 2,3 0,0");
        QTest::newRow("remove") << SoundsChange([](QSounds &s) { s.remove(1); }) << QStringLiteral("1,1 2,3");
        QTest::newRow("move down") << SoundsChange([](QSounds &s) { s.move(0, 2); }) << QStringLiteral("2,2 2,3 1,1");
        QTest::newRow("move up") << SoundsChange([](QSounds &s) { s.move(2, 0); }) << QStringLiteral("2,3 1,1 2,2");
        QTest::newRow("set group and number") << SoundsChange([](QSounds &s) { s.setSubItem(2, -4, 40); })
                                              << QStringLiteral("1,1 2,2 -4,40");
        QTest::newRow("set sample") << SoundsChange([](QSounds &s) { s.setSample(0, SndBuilder::wav(2, 44100, 16, 3)); })
                                    << QStringLiteral("1,1 2,2 2,3");
        QTest::newRow("empty the sample") << SoundsChange([](QSounds &s) { s.setSample(1, QByteArray()); })
                                          << QStringLiteral("1,1 2,2 2,3");
        QTest::newRow("duplicate") << SoundsChange([](QSounds &s) { s.duplicate(0); })
                                   << QStringLiteral("1,1 1,1 2,2 2,3");
        QTest::newRow("remove a whole group") << SoundsChange([](QSounds &s) { s.removeGroup(2, true, 0, 0); })
                                              << QStringLiteral("1,1");
        QTest::newRow("remove part of a group") << SoundsChange([](QSounds &s) { s.removeGroup(2, false, 3, 9); })
                                                << QStringLiteral("1,1 2,2");
        QTest::newRow("rename a group") << SoundsChange([](QSounds &s) { s.renameGroup(2, 5, false, 2, 2); })
                                        << QStringLiteral("1,1 5,2 2,3");
        QTest::newRow("organize") << SoundsChange([](QSounds &s) {
            s.setSubItem(0, 3, 0);
            s.organize();
        }) << QStringLiteral("2,2 2,3 3,0");
    }

    void undoRestoresEveryChange()
    {
        QFETCH(SoundsChange, change);
        QFETCH(QString, after);
        // Disk mode with compression: the bytes go in and out of the file.
        QSounds sounds(nullptr, QStreamCache::Disk, true, -1);
        fill(sounds, {{1, 1}, {2, 2}, {2, 3}});
        const QString before = state(sounds);
        QVERIFY(!sounds.isModified());
        QSignalSpy changed(&sounds, &QSounds::changed);

        sounds.undoStack()->beginMacro(QStringLiteral("test"));
        change(sounds);
        sounds.undoStack()->endMacro();
        QCOMPARE(pairs(sounds), after);
        QVERIFY(sounds.isModified());
        QVERIFY(changed.count() > 0);
        const QString done = state(sounds);

        sounds.undo();
        QCOMPARE(state(sounds), before);
        sounds.redo();
        QCOMPARE(state(sounds), done);
        sounds.undo();
        QCOMPARE(state(sounds), before);
    }

    void compoundOperationsAreOneStep()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{2, 1}, {1, 5}, {1, 2}});
        const QString before = state(sounds);
        QSignalSpy moves(&sounds, &QAbstractItemModel::rowsMoved);
        sounds.organize();
        QCOMPARE(pairs(sounds), QStringLiteral("1,2 1,5 2,1"));
        QVERIFY(moves.count() <= 3);
        QCOMPARE(sounds.undoStack()->count(), 1);
        QCOMPARE(sounds.undoStack()->text(0), QStringLiteral("autoOrganize"));
        sounds.undo();
        QCOMPARE(state(sounds), before);

        sounds.removeGroup(1, true, 0, 0);
        QCOMPARE(sounds.undoStack()->text(0), QStringLiteral("removeGroup"));
        sounds.renameGroup(2, 3, true, 0, 0);
        QCOMPARE(sounds.undoStack()->text(1), QStringLiteral("renameGroup"));
        QCOMPARE(sounds.undoStack()->count(), 2);
    }

    void organizeKeepsEqualPairsInOrder()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}, {0, 0}, {1, 1}, {0, 0}});
        const QByteArray first = sounds.sample(0);
        const QByteArray third = sounds.sample(2);
        sounds.organize();
        QCOMPARE(pairs(sounds), QStringLiteral("0,0 0,0 1,1 1,1"));
        QCOMPARE(sounds.sample(2), first);
        QCOMPARE(sounds.sample(3), third);

        // Fewer than two sounds: an empty step, nothing moves.
        QSounds one(nullptr, QStreamCache::Memory, false, -1);
        one.insert(0);
        one.undoStack()->clear();
        one.organize();
        QCOMPARE(one.undoStack()->count(), 1);
        QCOMPARE(one.count(), 1);
    }

    void loadingIsNotAChange()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}, {2, 2}});
        QSignalSpy changed(&sounds, &QSounds::changed);
        QSignalSpy reset(&sounds, &QAbstractItemModel::modelReset);
        QVERIFY(sounds.load(path(QStringLiteral("fill.snd")), false));
        // One notice at the end, no undo history, not modified.
        QCOMPARE(changed.count(), 1);
        QCOMPARE(reset.count(), 1);
        QCOMPARE(sounds.undoStack()->count(), 0);
        QVERIFY(!sounds.isModified());
        QVERIFY(sounds.undoEnabled());
    }

    void withoutUndoNothingIsPushed()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        sounds.setUndoEnabled(false);
        sounds.insert(0);
        sounds.setSubItem(0, 1, 2);
        sounds.duplicate(0);
        sounds.organize();
        sounds.remove(0);
        QCOMPARE(sounds.undoStack()->count(), 0);
        QCOMPARE(pairs(sounds), QStringLiteral("1,2"));
    }

    void groupsAndSearch_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("previous");
        QTest::addColumn<int>("next");
        // Groups as runs: 1 1 | 2 | 1 | 3 3
        QTest::newRow("first") << 0 << 0 << 2;
        QTest::newRow("inside the first run") << 1 << 0 << 2;
        QTest::newRow("a run of one") << 2 << 0 << 3;
        QTest::newRow("group 1 again") << 3 << 2 << 4;
        QTest::newRow("last run") << 5 << 3 << 0;
        QTest::newRow("out of range") << 9 << 0 << 0;
    }

    void groupsAndSearch()
    {
        QFETCH(int, index);
        QFETCH(int, previous);
        QFETCH(int, next);
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 0}, {1, 1}, {2, 0}, {1, 0}, {3, 0}, {3, 1}});
        QCOMPARE(sounds.previousGroup(index), previous);
        QCOMPARE(sounds.nextGroup(index), next);
        QCOMPARE(sounds.find(0, 1, 0), 0);
        QCOMPARE(sounds.find(1, 1, 0), 3);
        QCOMPARE(sounds.find(4, 1, 0), -1);
        QCOMPARE(sounds.find(-5, 3, 1), 5);
    }

    void checkTellsEmptyAndDuplicateSounds()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}, {5, 5}, {1, 1}, {1, 1}});
        sounds.insert(1);
        sounds.check();
        const QMessages &messages = sounds.messages();
        QCOMPARE(messages.count(QMessages::AnySeverity), 4);
        QCOMPARE(messages.at(0).text, QStringLiteral("Empty sound!"));
        QCOMPARE(messages.at(0).severity, 0);
        QCOMPARE(messages.at(0).index, 1);
        // A triple gives three messages, each naming an earlier sound from 1.
        QCOMPARE(messages.at(1).text, QStringLiteral("The group 1, index 1 is already in use by sound #1!"));
        QCOMPARE(messages.at(1).index, 3);
        QCOMPARE(messages.at(2).text, QStringLiteral("The group 1, index 1 is already in use by sound #4!"));
        QCOMPARE(messages.at(2).index, 4);
        QCOMPARE(messages.at(3).text, QStringLiteral("The group 1, index 1 is already in use by sound #1!"));
        QCOMPARE(messages.at(3).severity, 1);
    }

    void emptyListsAreNotSaved()
    {
        QRecordingUserPrompt prompt;
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(!sounds.checkSave(0));
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls.at(0).title, QStringLiteral("Save SND"));
        QCOMPARE(prompt.calls.at(0).text,
                 QStringLiteral("You can't save an empty SND because M.U.G.E.N. will not open it."));
        sounds.insert(0);
        QVERIFY(sounds.checkSave(0));

        // Modified: the discard question, No by default.
        QVERIFY(!sounds.checkDiscard());
        QCOMPARE(prompt.calls.last().text,
                 QStringLiteral("Do you really want to discard the changes made in the sounds?"));
        sounds.clear();
        QVERIFY(sounds.checkDiscard());
        QCOMPARE(sounds.undoStack()->count(), 0);
    }

    void wavFiles()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}});
        const QByteArray wav = SndBuilder::wav(1, 16000, 16, 50);
        const QString in = path(QStringLiteral("in.wav"));
        QVERIFY(writeFile(in, wav));
        QVERIFY(sounds.loadWav(0, in));
        QCOMPARE(sounds.sample(0), wav);
        QCOMPARE(sounds.soundInfo(0).sampleRate, 16000u);

        // Files that can't be read leave the sound as it was, and say why.
        QVERIFY(!sounds.loadWav(0, path(QStringLiteral("absent.wav"))));
        QCOMPARE(sounds.errorString(), QStringLiteral("no such file"));
        const QString empty = path(QStringLiteral("empty.wav"));
        QVERIFY(writeFile(empty, QByteArray()));
        QVERIFY(!sounds.loadWav(0, empty));
        QCOMPARE(sounds.errorString(), QStringLiteral("the file is empty"));
        QVERIFY(!sounds.loadWav(5, in));
        QCOMPARE(sounds.sample(0), wav);
        // A sound that isn't RIFF/WAVE is kept as it is, unmeasured.
        const QByteArray ogg = "OggS" + wav.mid(4);
        const QString other = path(QStringLiteral("other.ogg"));
        QVERIFY(writeFile(other, ogg));
        QVERIFY(sounds.loadWav(0, other));
        QCOMPARE(sounds.sample(0), ogg);
        QCOMPARE(sounds.soundInfo(0), QSoundInfo());
        QVERIFY(sounds.loadWav(0, in));

        const QString out = path(QStringLiteral("out.wav"));
        QVERIFY(sounds.saveWav(0, out));
        QCOMPARE(readFile(out), wav);
        sounds.insert(1);
        QVERIFY(!sounds.saveWav(1, path(QStringLiteral("nothing.wav"))));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("nothing.wav"))));
    }

    void exportsBothScriptForms()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 2}, {-3, 4}, {1, 2}});
        sounds.insert(1);
        QTemporaryDir folder;
        const QString kse = folder.filePath(QStringLiteral("set.kse"));
        QVERIFY(sounds.exportSounds(kse));
        // The empty sound is left out; the second 1,2 gets a name of its own.
        QCOMPARE(readFile(kse), QByteArray("\n[SoundDef]\ngroup = 1\nsample = 2\nfile = 1-2.wav\n"
                                           "\n[SoundDef]\ngroup = -3\nsample = 4\nfile = -3-4.wav\n"
                                           "\n[SoundDef]\ngroup = 1\nsample = 2\nfile = 1-2 (2).wav\n"));
        QCOMPARE(readFile(folder.filePath(QStringLiteral("1-2.wav"))), sounds.sample(0));
        QCOMPARE(readFile(folder.filePath(QStringLiteral("1-2 (2).wav"))), sounds.sample(3));

        const QString def = folder.filePath(QStringLiteral("maker.def"));
        QVERIFY(sounds.exportGroup(-3, def));
        QCOMPARE(readFile(def), QByteArray("maker\n-3-4.wav\n-3\n4\n"));
    }

    void importsWhatItExports()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 2}, {-3, 4}, {1, 2}});
        QTemporaryDir folder;
        const QString kse = folder.filePath(QStringLiteral("set.kse"));
        QVERIFY(sounds.exportSounds(kse));

        QSounds target(nullptr, QStreamCache::Disk, true, -1);
        fill(target, {{9, 9}, {9, 10}});
        const QString before = state(target);
        QVERIFY(target.importSounds(kse, 1));
        QCOMPARE(pairs(target), QStringLiteral("9,9 1,2 -3,4 1,2 9,10"));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(target.sample(i + 1), sounds.sample(i));
        QCOMPARE(target.undoStack()->count(), 1);
        QCOMPARE(target.undoStack()->text(0), QStringLiteral("import"));
        target.undo();
        QCOMPARE(state(target), before);
        target.redo();
        QCOMPARE(pairs(target), QStringLiteral("9,9 1,2 -3,4 1,2 9,10"));

        // A negative position appends.
        QVERIFY(target.importSounds(kse, -1));
        QCOMPARE(target.count(), 8);
        QCOMPARE(target.subItem(7).group, 1);
        QVERIFY(!target.importSounds(folder.filePath(QStringLiteral("absent.kse")), 0));
    }

    void importReadsTheScriptLoosely()
    {
        QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(QStringLiteral("Sub/A.wav")), SndBuilder::wav(1, 8000, 8, 4)));
        QVERIFY(writeFile(folder.filePath(QStringLiteral("set.kse")),
                          "; made by hand\r\n"
                          "[Other]\r\ngroup = 99\r\nfile = sub/a.wav\r\n"
                          "[SoundDef]\r\nGROUP = 7 ; a comment\r\nNumber = -2\r\nunknown = 5\r\n"
                          "FILE = sub\\a.wav\r\n\r\n"
                          "[SoundDef]\r\ngroup = 8\r\nsample = 1\r\nfile = missing.wav\r\n"
                          "[SoundDef]\r\nsample = 3\r\nfile =   Sub/A.wav  \r\n"
                          "[sounddef]\r\ngroup = 6\r\nfile = Sub/A.wav\r\n"
                          "[SoundDef]\r\ngroup = 5\r\nfile = beep.ogg\r\n"
                          "[SoundDef]\r\ngroup = 9\r\n"));
        QVERIFY(writeFile(folder.filePath(QStringLiteral("beep.ogg")), "OggS, kept as it is"));
        QRecordingUserPrompt prompt;
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(sounds.importSounds(folder.filePath(QStringLiteral("set.kse")), 0));
        // Keys ignore case, files are found as Windows would find them, a
        // sound that isn't WAV is kept, and only "SoundDef" counts.
        QCOMPARE(pairs(sounds), QStringLiteral("7,-2 0,3 5,0"));
        QCOMPARE(sounds.sample(1), SndBuilder::wav(1, 8000, 8, 4));
        QCOMPARE(sounds.sample(2), QByteArray("OggS, kept as it is"));
        // A section without a sound leaves nothing, and says so.
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls.at(0).title, QStringLiteral("Import sounds"));
        QCOMPARE(prompt.calls.at(0).text, QStringLiteral("These sounds couldn't be imported and were left out:\n"
                                                         "8,1: missing.wav: no such file\n9,0: no file is named"));
    }

    void playingNeverBlocks()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}});
        QSignalSpy stopped(&sounds, &QSounds::stopped);
        // With or without an audio device, once ends by itself about a
        // second after the sound.
        sounds.play(0, false);
        QVERIFY(stopped.wait(5000));
        QCOMPARE(stopped.count(), 1);

        // Looped, it goes on until stopped; stop() also cancels the timer.
        sounds.play(0, true);
        sounds.stop();
        sounds.play(0, false);
        sounds.stop();
        QVERIFY(!stopped.wait(1500));
        sounds.insert(1);
        sounds.play(1, false);
        sounds.play(7, false);
        QVERIFY(!stopped.wait(1200));
    }

    void playerDecodesWavFiles_data()
    {
        QTest::addColumn<QByteArray>("wav");
        QTest::addColumn<bool>("plays");
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("samples");
        QTest::newRow("8-bit") << SndBuilder::wav(1, 8000, 8, 10) << true << int(QAudioFormat::UInt8) << 10;
        QTest::newRow("16-bit stereo") << SndBuilder::wav(2, 8000, 16, 10) << true << int(QAudioFormat::Int16) << 40;
        // 24-bit samples widen to 32 bits.
        QTest::newRow("24-bit") << SndBuilder::wav(1, 8000, 24, 10) << true << int(QAudioFormat::Int32) << 40;
        QTest::newRow("float") << SndBuilder::wav(1, 8000, 32, 10, 3) << true << int(QAudioFormat::Float) << 40;
        // An extensible format names PCM in its sub-format.
        const QByteArray extensibleFormat = SndBuilder::le16(0xFFFE) + SndBuilder::le16(1) + SndBuilder::le32(8000)
            + SndBuilder::le32(16000) + SndBuilder::le16(2) + SndBuilder::le16(16) + SndBuilder::le16(22)
            + SndBuilder::le16(16) + SndBuilder::le32(4) + SndBuilder::le16(1) + QByteArray(14, '\x11');
        const QByteArray extensible = QByteArray("RIFF") + SndBuilder::le32(0) + "WAVEfmt " + SndBuilder::le32(40)
            + extensibleFormat + "data" + SndBuilder::le32(20) + QByteArray(20, '\x01');
        QTest::newRow("extensible PCM") << extensible << true << int(QAudioFormat::Int16) << 20;
        QTest::newRow("ADPCM") << SndBuilder::wav(1, 8000, 4, 10, 2) << false << 0 << 0;
        // More channels than any output takes (and than QAudioFormat keeps).
        QTest::newRow("32769 channels") << SndBuilder::wav(0x8001, 8000, 8, 1) << false << 0 << 0;
        // A data chunk claiming more than there is: whole frames of what is there.
        QByteArray cut = SndBuilder::wav(2, 8000, 16, 10);
        cut.chop(3);
        QTest::newRow("cut data") << cut << true << int(QAudioFormat::Int16) << 36;
        QTest::newRow("not RIFF") << QByteArray("RIFX") + SndBuilder::wav(1, 8000, 8, 10).mid(4) << false << 0 << 0;
        // An odd chunk before the data is padded to an even size.
        QByteArray padded = SndBuilder::wav(1, 8000, 8, 10);
        padded.insert(36, QByteArray("LIST\x03\x00\x00\x00xyz\x00", 12));
        QTest::newRow("odd chunk before the data") << padded << true << int(QAudioFormat::UInt8) << 10;
    }

    void playerDecodesWavFiles()
    {
        QFETCH(QByteArray, wav);
        QFETCH(bool, plays);
        QFETCH(int, format);
        QFETCH(int, samples);
        QAudioFormat audio;
        QByteArray data;
        QCOMPARE(QSoundPlayer::decode(wav, &audio, &data), plays);
        if (!plays)
            return;
        QCOMPARE(int(audio.sampleFormat()), format);
        QCOMPARE(data.size(), samples);
        if (format == QAudioFormat::Int32 && QTest::currentDataTag() == QByteArray("24-bit"))
            QCOMPARE(data.left(4), QByteArray(1, '\0') + wav.mid(44, 3));
    }
};

QTEST_GUILESS_MAIN(tst_QSounds)
#include "tst_qsounds.moc"
