#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"
#include "sndbuilder.h"
#include "testsupport.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

using namespace Qt::StringLiterals;

using SndBuilder::Sound;
using SndBuilder::wav;
using TestSupport::readFile;
using TestSupport::writeFile;

using SoundsChange = std::function<void(QSounds &)>;
Q_DECLARE_METATYPE(SoundsChange)
Q_DECLARE_METATYPE(Sound)

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
        list.append(u"%1,%2"_s.arg(sounds.subItem(i).group).arg(sounds.subItem(i).index));
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

    /** A list of sounds with the given pairs, each with a WAV of its own, loaded from "fill.snd". */
    void fill(QSounds &sounds, const QList<QPair<int, int>> &items)
    {
        QList<Sound> list;
        for (int i = 0; i < items.size(); ++i)
            list.append(Sound{items.at(i).first, items.at(i).second, wav(1, 8000 + i, 8, 10 + i)});
        const QString file = path(u"fill.snd"_s);
        QVERIFY(writeFile(file, SndBuilder::snd(list)));
        QVERIFY(sounds.load(file, false));
    }

private Q_SLOTS:
    void corpusRoundTrip_data()
    {
        QTest::addColumn<QString>("file");
        const QStringList files = TestSupport::corpusFiles({u"*.snd"_s});
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

        const QString copy = path(u"copy.snd"_s);
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
        const QString second = path(u"second.snd"_s);
        QVERIFY(again.save(second, false));
        QCOMPARE(readFile(second), written);
    }

    void ourFilesHaveTheStampAndEmptySounds()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}, {2, 2}});
        sounds.insert(1);
        sounds.setSubItem(1, 7, 8);
        const QString file = path(u"empty.snd"_s);
        QVERIFY(sounds.save(file, false));
        const QByteArray bytes = readFile(file);
        QCOMPARE(bytes.left(24), QByteArray("ElecbyteSnd\0\x01\0\x01\0\x03\0\0\0\0\x02\0\0", 24));
        // The stamp's third line ends with a zero byte, and zeros fill the rest.
        static const QRegularExpression stamp(u"^Made in Zanarel\nPowered by Kestrada 3\nhttps://[^\n\\x00]+\n\\x00+$"_s);
        QVERIFY(stamp.match(QString::fromLatin1(bytes.mid(24, 488))).hasMatch());
        // The empty sound: length 0, next right behind its own sub-header;
        // our last sound points at the end of the file.
        const quint32 second = at32(bytes, 512);
        QCOMPARE(at32(bytes, second + 4), 0u);
        QCOMPARE(at32(bytes, second), second + 16);
        QCOMPARE(at32(bytes, second + 16), quint32(bytes.size()));
    }

    void readsWhatToolsWrite_data()
    {
        QTest::addColumn<QList<Sound>>("file");
        const QByteArray a = wav(1, 11025, 8, 20);
        const QByteArray b = wav(2, 22050, 16, 30);
        // The engine's tools leave the last next at 0: the length counts.
        QTest::newRow("last next 0") << QList<Sound>{{1, 2, a}, {3, 4, b, 0}};
        // Where next and length disagree, next gives the size.
        QTest::newRow("next corrects the length") << QList<Sound>{{1, 1, a, -1, 5}, {2, 2, b, -1, 0x7FFFFFFF}};
        // Group and number are stored as given, negative ones too.
        QTest::newRow("negative pairs") << QList<Sound>{{-1, -200, a}, {-70000, 5, b}};
        // A length of 0 means no data, whatever next says.
        QTest::newRow("length 0") << QList<Sound>{{1, 1, QByteArray(), 9999, 0}, {2, 2, a}};
        // A broken next on the last sound is harmless to the engine: the length stands.
        QTest::newRow("last next past the end") << QList<Sound>{{1, 1, a}, {2, 2, b, 0x7FFFFFF0}};
        QTest::newRow("next behind its header") << QList<Sound>{{1, 1, a, 100}};
        QTest::newRow("no sounds") << QList<Sound>{};
    }

    void readsWhatToolsWrite()
    {
        QFETCH(QList<Sound>, file);
        const QString name = path(u"tools.snd"_s);
        QVERIFY(writeFile(name, SndBuilder::snd(file)));
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY2(sounds.load(name, false), qPrintable(sounds.errorString()));
        QCOMPARE(sounds.count(), file.size());
        // Each sound holds exactly its own WAV, under its own group and number.
        for (int i = 0; i < file.size(); ++i) {
            QCOMPARE(sounds.subItem(i), (QSubItem{file.at(i).group, file.at(i).number}));
            QCOMPARE(sounds.sample(i), file.at(i).bytes);
        }
    }

    void failedLoadsKeepNothingHalfRead()
    {
        // Every cut of a good file, and fields no tool writes: the load fails
        // with its reason, nothing half-read stays, and the damaged file
        // isn't the document's name.
        const QByteArray a = wav(1, 11025, 8, 20);
        const QByteArray good = SndBuilder::snd({{1, 1, a}, {2, 2, a}});
        QList<QByteArray> files{QByteArray("ElecbyteSpr\0", 12) + good.mid(12), SndBuilder::snd({{1, 1, a}}, 0xFFFFFFFF),
                                SndBuilder::snd({{1, 1, a}}, 2), SndBuilder::snd({{1, 1, a, 0, 0x7FFFFFFF}}),
                                // A next before its own data would wrap the size; the length doesn't fit either.
                                SndBuilder::snd({{1, 1, a, 10, 0xFFFFFF00}})};
        for (qsizetype cut = 0; cut < good.size(); ++cut)
            files.append(good.left(cut));
        static const QRegularExpression reasons(u"^(not an SND file|the header is cut short|it announces \\d+ sounds"
                                                 "|the file ends inside the header|a sound of \\d+ bytes .* runs past)"_s);
        const QString name = path(u"bad.snd"_s);
        QSounds sounds(nullptr, QStreamCache::Disk, true, -1);
        for (const QByteArray &file : std::as_const(files)) {
            fill(sounds, {{9, 9}});
            sounds.setSubItem(0, 8, 8);
            QVERIFY(writeFile(name, file));
            QVERIFY(!sounds.load(name, false));
            QVERIFY2(reasons.match(sounds.errorString()).hasMatch(), qPrintable(sounds.errorString()));
            QCOMPARE(sounds.count(), 0);
            QVERIFY(sounds.fileName().isEmpty());
            QVERIFY(!sounds.isModified());
        }

        // A file that can't be opened leaves the list as it was.
        fill(sounds, {{1, 1}});
        const QString before = state(sounds);
        QVERIFY(!sounds.load(path(u"absent.snd"_s), false));
        QCOMPARE(sounds.errorString(), u"no such file"_s);
        QVERIFY(!sounds.load(m_dir.path(), false));
        QCOMPARE(state(sounds), before);
        QCOMPARE(sounds.fileName(), path(u"fill.snd"_s));

        // A cancelled load leaves nothing.
        fill(sounds, {{1, 1}, {2, 2}, {3, 3}});
        connect(&sounds, &QSounds::progress, this, [](uint pos, uint, bool &allow) { allow = pos < 2; });
        QVERIFY(!sounds.load(path(u"fill.snd"_s), false));
        QCOMPARE(sounds.count(), 0);
    }

    void loadsAndSavesKeepTheNameAndTheModifiedState()
    {
        QRecordingUserPrompt prompt;
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        QSignalSpy changed(&sounds, &QSounds::changed);
        QSignalSpy reset(&sounds, &QAbstractItemModel::modelReset);
        fill(sounds, {{1, 1}});
        // A load is one notice at the end, no undo history, not modified.
        QCOMPARE(changed.count(), 1);
        QCOMPARE(reset.count(), 1);
        QCOMPARE(sounds.undoStack()->count(), 0);
        QVERIFY(!sounds.isModified());
        QVERIFY(sounds.undoEnabled());

        const QString original = sounds.fileName();
        QVERIFY(sounds.checkDiscard());
        sounds.setSubItem(0, 5, 5);
        // Modified: discarding asks, No by default.
        QVERIFY(!sounds.checkDiscard());
        QCOMPARE(prompt.calls.last().text, u"Do you really want to discard the changes made in the sounds?"_s);
        QVERIFY(sounds.save(path(u"test-copy.snd"_s), true));
        QVERIFY(sounds.isModified());
        QCOMPARE(sounds.fileName(), original);
        QVERIFY(sounds.load(path(u"test-copy.snd"_s), true));
        QCOMPARE(sounds.fileName(), original);
        QCOMPARE(pairs(sounds), u"5,5"_s);

        // A save under a new name takes it, and the list is saved.
        QVERIFY(sounds.save(path(u"new.snd"_s), false));
        QCOMPARE(sounds.fileName(), path(u"new.snd"_s));
        QVERIFY(!sounds.isModified());
        // A save that can't be written fails and changes nothing.
        QVERIFY(!sounds.save(path(u"no/such/folder/x.snd"_s), false));
        QCOMPARE(sounds.fileName(), path(u"new.snd"_s));
        // Cleared, nothing is left to discard or undo.
        sounds.setSubItem(0, 6, 6);
        sounds.clear();
        QVERIFY(sounds.checkDiscard());
        QCOMPARE(sounds.undoStack()->count(), 0);
    }

    void undoRestoresEveryChange_data()
    {
        QTest::addColumn<SoundsChange>("change");
        QTest::addColumn<QString>("after");
        using C = SoundsChange;
        QTest::newRow("insert") << C([](QSounds &s) { s.insert(1); }) << u"1,1 0,0 2,2 2,3"_s;
        QTest::newRow("insert beyond the end") << C([](QSounds &s) { s.insert(99); }) << u"1,1 2,2 2,3 0,0"_s;
        QTest::newRow("remove") << C([](QSounds &s) { s.remove(1); }) << u"1,1 2,3"_s;
        QTest::newRow("move down") << C([](QSounds &s) { s.move(0, 2); }) << u"2,2 2,3 1,1"_s;
        QTest::newRow("move up") << C([](QSounds &s) { s.move(2, 0); }) << u"2,3 1,1 2,2"_s;
        QTest::newRow("set group and number") << C([](QSounds &s) { s.setSubItem(2, -4, 40); }) << u"1,1 2,2 -4,40"_s;
        QTest::newRow("set sample") << C([](QSounds &s) { s.setSample(0, wav(2, 44100, 16, 3)); }) << u"1,1 2,2 2,3"_s;
        QTest::newRow("empty the sample") << C([](QSounds &s) { s.setSample(1, QByteArray()); }) << u"1,1 2,2 2,3"_s;
        QTest::newRow("duplicate") << C([](QSounds &s) { s.duplicate(0); }) << u"1,1 1,1 2,2 2,3"_s;
        QTest::newRow("remove a whole group") << C([](QSounds &s) { s.removeGroup(2, true, 0, 0); }) << u"1,1"_s;
        QTest::newRow("remove part of a group") << C([](QSounds &s) { s.removeGroup(2, false, 3, 9); }) << u"1,1 2,2"_s;
        QTest::newRow("rename a group") << C([](QSounds &s) { s.renameGroup(2, 5, false, 2, 2); }) << u"1,1 5,2 2,3"_s;
        QTest::newRow("organize") << C([](QSounds &s) { s.setSubItem(0, 3, 0); s.organize(); }) << u"2,2 2,3 3,0"_s;
    }

    void undoRestoresEveryChange()
    {
        QFETCH(SoundsChange, change);
        QFETCH(QString, after);
        // Disk mode with compression: the bytes go in and out of the file.
        QSounds sounds(nullptr, QStreamCache::Disk, true, -1);
        fill(sounds, {{1, 1}, {2, 2}, {2, 3}});
        const QString before = state(sounds);
        QSignalSpy changed(&sounds, &QSounds::changed);
        sounds.undoStack()->beginMacro(u"test"_s);
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

        // Without undo the change is the same, and nothing is pushed.
        QSounds quiet(nullptr, QStreamCache::Memory, false, -1);
        fill(quiet, {{1, 1}, {2, 2}, {2, 3}});
        quiet.setUndoEnabled(false);
        change(quiet);
        QCOMPARE(state(quiet), done);
        QCOMPARE(quiet.undoStack()->count(), 0);
    }

    void compoundOperationsAreOneStep()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{2, 1}, {1, 1}, {1, 5}, {1, 1}});
        const QString before = state(sounds);
        const QByteArray second = sounds.sample(1);
        const QByteArray fourth = sounds.sample(3);
        QSignalSpy moves(&sounds, &QAbstractItemModel::rowsMoved);
        sounds.organize();
        // Equal pairs keep their order.
        QCOMPARE(pairs(sounds), u"1,1 1,1 1,5 2,1"_s);
        QCOMPARE(sounds.sample(0), second);
        QCOMPARE(sounds.sample(1), fourth);
        QVERIFY(moves.count() <= 3);
        sounds.removeGroup(1, true, 0, 0);
        sounds.renameGroup(2, 3, true, 0, 0);
        QCOMPARE(sounds.undoStack()->count(), 3);
        QCOMPARE(sounds.undoStack()->text(0) + sounds.undoStack()->text(1) + sounds.undoStack()->text(2),
                 u"autoOrganizeremoveGrouprenameGroup"_s);
        sounds.undoStack()->setIndex(0);
        QCOMPARE(state(sounds), before);

        // Fewer than two sounds: an empty step, nothing moves.
        QSounds one(nullptr, QStreamCache::Memory, false, -1);
        one.insert(0);
        one.undoStack()->clear();
        one.organize();
        QCOMPARE(one.undoStack()->count(), 1);
    }

    void groupsAndSearch()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 0}, {1, 1}, {2, 0}, {1, 0}, {3, 0}, {3, 1}});
        // Runs 1 1 | 2 | 1 | 3 3: previous and next group of each place, 0 where there is none.
        QString found;
        for (int i : {0, 1, 2, 3, 4, 5, 9})
            found += u"%1:%2,%3 "_s.arg(i).arg(sounds.previousGroup(i)).arg(sounds.nextGroup(i));
        QCOMPARE(found, u"0:0,2 1:0,2 2:0,3 3:2,4 4:3,0 5:3,0 9:0,0 "_s);
        QCOMPARE(QList<int>({sounds.find(-5, 1, 0), sounds.find(1, 1, 0), sounds.find(4, 1, 0), sounds.find(0, 3, 1)}),
                 QList<int>({0, 3, -1, 5}));
    }

    void checkTellsEmptyAndDuplicateSounds()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}, {5, 5}, {1, 1}, {1, 1}});
        sounds.insert(1);
        sounds.check();
        // Place, severity and text; a triple gives three messages, each naming an earlier sound from 1.
        QStringList told;
        for (int i = 0; i < sounds.messages().rowCount(); ++i) {
            const QMessage &message = sounds.messages().at(i);
            told.append(u"%1 %2 %3"_s.arg(message.index).arg(message.severity).arg(message.text));
        }
        const QString used = u"1 is already in use by sound #"_s;
        QCOMPARE(told, QStringList({u"1 0 Empty sound!"_s, u"3 1 The group 1, index "_s + used + u"1!"_s,
                                    u"4 1 The group 1, index "_s + used + u"4!"_s, u"4 1 The group 1, index "_s + used + u"1!"_s}));
    }

    void wavFiles()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 1}});
        const QByteArray bytes = wav(1, 16000, 16, 50);
        const QString in = path(u"in.wav"_s);
        QVERIFY(writeFile(in, bytes));
        QVERIFY(sounds.loadWav(0, in));
        QCOMPARE(sounds.sample(0), bytes);
        QCOMPARE(sounds.soundInfo(0).sampleRate, 16000u);

        // Files that can't be read leave the sound as it was, and say why.
        QVERIFY(!sounds.loadWav(0, path(u"absent.wav"_s)));
        QCOMPARE(sounds.errorString(), u"no such file"_s);
        const QString empty = path(u"empty.wav"_s);
        QVERIFY(writeFile(empty, QByteArray()));
        QVERIFY(!sounds.loadWav(0, empty));
        QCOMPARE(sounds.errorString(), u"the file is empty"_s);
        QVERIFY(!sounds.loadWav(5, in));
        QCOMPARE(sounds.sample(0), bytes);
        // A sound that isn't RIFF/WAVE is kept as it is, unmeasured.
        const QByteArray ogg = "OggS" + bytes.mid(4);
        const QString other = path(u"other.ogg"_s);
        QVERIFY(writeFile(other, ogg));
        QVERIFY(sounds.loadWav(0, other));
        QCOMPARE(sounds.sample(0), ogg);
        QCOMPARE(sounds.soundInfo(0), QSoundInfo());
        // (Written out, the bytes are read back by the export and import.)
        sounds.insert(1);
        QVERIFY(!sounds.saveWav(1, path(u"nothing.wav"_s)));
        QVERIFY(!QFileInfo::exists(path(u"nothing.wav"_s)));
    }

    void exportsAndImportsSoundSets()
    {
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        fill(sounds, {{1, 2}, {-3, 4}, {1, 2}});
        sounds.insert(1);
        QTemporaryDir folder;
        const QString kse = folder.filePath(u"set.kse"_s);
        QVERIFY(sounds.exportSounds(kse));
        // The empty sound is left out; the second 1,2 gets a name of its own.
        QCOMPARE(readFile(kse), QByteArray("\n[SoundDef]\ngroup = 1\nsample = 2\nfile = 1-2.wav\n"
                                           "\n[SoundDef]\ngroup = -3\nsample = 4\nfile = -3-4.wav\n"
                                           "\n[SoundDef]\ngroup = 1\nsample = 2\nfile = 1-2 (2).wav\n"));
        const QString def = folder.filePath(u"maker.def"_s);
        QVERIFY(sounds.exportGroup(-3, def));
        QCOMPARE(readFile(def), QByteArray("maker\n-3-4.wav\n-3\n4\n"));

        // Imported in one undo step, at the place given.
        QSounds target(nullptr, QStreamCache::Disk, true, -1);
        fill(target, {{9, 9}, {9, 10}});
        const QString before = state(target);
        QVERIFY(target.importSounds(kse, 1));
        QCOMPARE(pairs(target), u"9,9 1,2 -3,4 1,2 9,10"_s);
        for (const auto &[to, from] : {std::pair(1, 0), std::pair(2, 2), std::pair(3, 3)})
            QCOMPARE(target.sample(to), sounds.sample(from));
        QCOMPARE(target.undoStack()->count(), 1);
        QCOMPARE(target.undoStack()->text(0), u"import"_s);
        target.undo();
        QCOMPARE(state(target), before);
        target.redo();
        QCOMPARE(pairs(target), u"9,9 1,2 -3,4 1,2 9,10"_s);
        // A negative position appends.
        QVERIFY(target.importSounds(kse, -1));
        QCOMPARE(pairs(target), u"9,9 1,2 -3,4 1,2 9,10 1,2 -3,4 1,2"_s);
        QVERIFY(!target.importSounds(folder.filePath(u"absent.kse"_s), 0));
    }

    void importReadsTheScriptLoosely()
    {
        QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"Sub/A.wav"_s), wav(1, 8000, 8, 4)));
        QVERIFY(writeFile(folder.filePath(u"beep.ogg"_s), "OggS, kept as it is"));
        QVERIFY(writeFile(folder.filePath(u"set.kse"_s),
                          "; made by hand\r\n[Other]\r\ngroup = 99\r\nfile = sub/a.wav\r\n"
                          "[SoundDef]\r\nGROUP = 7 ; a comment\r\nNumber = -2\r\nunknown = 5\r\nFILE = sub\\a.wav\r\n\r\n"
                          "[SoundDef]\r\ngroup = 8\r\nsample = 1\r\nfile = missing.wav\r\n"
                          "[SoundDef]\r\nsample = 3\r\nfile =   Sub/A.wav  \r\n[sounddef]\r\ngroup = 6\r\nfile = Sub/A.wav\r\n"
                          "[SoundDef]\r\ngroup = 5\r\nfile = beep.ogg\r\n[SoundDef]\r\ngroup = 9\r\n"));
        QRecordingUserPrompt prompt;
        QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
        QVERIFY(sounds.importSounds(folder.filePath(u"set.kse"_s), 0));
        // Keys ignore case, files are found as Windows would find them, a
        // sound that isn't WAV is kept, and only "SoundDef" counts.
        QCOMPARE(pairs(sounds), u"7,-2 0,3 5,0"_s);
        QCOMPARE(sounds.sample(1), wav(1, 8000, 8, 4));
        QCOMPARE(sounds.sample(2), QByteArray("OggS, kept as it is"));
        // A section without a sound leaves nothing, and says so.
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls.at(0).title, u"Import sounds"_s);
        QCOMPARE(prompt.calls.at(0).text, u"These sounds couldn't be imported and were left out:\n"
                                          "8,1: missing.wav: no such file\n9,0: no file is named"_s);
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

    void wavFilesAreMeasuredAndDecoded_data()
    {
        // What the header parse reads, and what the player would play: its
        // sample format and bytes, or nothing.
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("measured");
        QTest::addColumn<QString>("played");
        QTest::newRow("8-bit mono") << wav(1, 11025, 8, 11025) << u"1ch 11025Hz 8bit 1s"_s << u"UInt8 11025"_s;
        QTest::newRow("16-bit stereo") << wav(2, 22050, 16, 11025) << u"2ch 22050Hz 16bit 0.5s"_s << u"Int16 44100"_s;
        // 24-bit samples widen to 32 bits.
        QTest::newRow("24-bit") << wav(1, 8000, 24, 10) << u"1ch 8000Hz 24bit 0.00125s"_s << u"Int32 40"_s;
        // Compressed formats, float and other kinds of sound aren't measured.
        QTest::newRow("float") << wav(1, 8000, 32, 10, 3) << u"0ch 0Hz 0bit 0s"_s << u"Float 40"_s;
        QTest::newRow("ADPCM") << wav(1, 8000, 4, 10, 2) << u"0ch 0Hz 0bit 0s"_s << QString();
        QTest::newRow("not RIFF/WAVE") << "OggS" + wav(1, 8000, 8, 10).mid(4) << u"0ch 0Hz 0bit 0s"_s << QString();
        QTest::newRow("RIFX") << "RIFX" + wav(1, 8000, 8, 10).mid(4) << u"0ch 0Hz 0bit 0s"_s << QString();
        // An extensible format names PCM in its sub-format.
        using SndBuilder::le16;
        using SndBuilder::le32;
        const QByteArray extensible = QByteArray("RIFF") + le32(0) + "WAVEfmt " + le32(40) + le16(0xFFFE) + le16(1)
            + le32(8000) + le32(16000) + le16(2) + le16(16) + le16(22) + le16(16) + le32(4) + le16(1) + QByteArray(14, '\x11')
            + "data" + le32(20) + QByteArray(20, '\x01');
        QTest::newRow("extensible PCM") << extensible << u"0ch 0Hz 0bit 0s"_s << u"Int16 20"_s;
        QTest::newRow("no data chunk") << wav(1, 8000, 8, 10).replace("data", "atad") << u"0ch 0Hz 0bit 0s"_s << QString();
        QTest::newRow("byte rate 0") << wav(1, 8000, 8, 10).replace(28, 4, le32(0)) << u"1ch 8000Hz 8bit 0s"_s << u"UInt8 10"_s;
        // More channels than any output takes (and than QAudioFormat keeps); 8 bits of the count are kept.
        QTest::newRow("32769 channels") << wav(0x8001, 8000, 8, 1) << u"1ch 8000Hz 8bit 0.000125s"_s << QString();
        // A data chunk claiming more than there is: whole frames of what is there.
        QTest::newRow("cut data") << wav(2, 8000, 16, 10).chopped(3) << u"2ch 8000Hz 16bit 0.00125s"_s << u"Int16 36"_s;
        // An odd chunk before the data is padded to an even size.
        QTest::newRow("odd chunk before the data") << wav(1, 8000, 8, 10).insert(36, QByteArray("LIST\x03\x00\x00\x00xyz\x00", 12))
                                                   << u"1ch 8000Hz 8bit 0.00125s"_s << u"UInt8 10"_s;
    }

    void wavFilesAreMeasuredAndDecoded()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, measured);
        QFETCH(QString, played);
        const QSoundInfo info = QSoundInfo::fromWav(bytes);
        QCOMPARE(u"%1ch %2Hz %3bit %4s"_s.arg(info.channels).arg(info.sampleRate).arg(info.bitsPerSample).arg(info.duration),
                 measured);
        static const char *const formats[] = {"Unknown", "UInt8", "Int16", "Int32", "Float"};
        QAudioFormat audio;
        QByteArray data;
        const bool plays = QSoundPlayer::decode(bytes, &audio, &data);
        QCOMPARE(plays ? u"%1 %2"_s.arg(QLatin1String(formats[audio.sampleFormat()])).arg(data.size()) : QString(), played);
        if (QTest::currentDataTag() == QByteArray("24-bit"))
            QCOMPARE(data.left(4), QByteArray(1, '\0') + bytes.mid(44, 3));
    }
};

QTEST_GUILESS_MAIN(tst_QSounds)
#include "tst_qsounds.moc"
