// Sound files open with their project and are written at every save and
// every test run, in both store modes. Throughput is counted in bytes of
// file. The organizer sorts by insertion with moves, one undo command
// each: a sorted list costs the most comparisons (n² / 2) and no move, a
// reversed one a move for every sound.
//
//   build/bench/bench_sounds --benchmark_filter=Load

#include "core/sounds/qsounds.h"

#include "../tests/support/sndbuilder.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QTemporaryDir>

#include "benchsupport.h"

#include <memory>

namespace {

/** The biggest SND file of the corpus, or empty without a corpus. */
QString biggestSoundFile()
{
    static const QString file = [] {
        QString best;
        QDirIterator it(QStringLiteral(KESTRADA_CORPUS_DIR), {QStringLiteral("*.snd")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString next = it.next();
            if (best.isEmpty() || QFileInfo(next).size() > QFileInfo(best).size())
                best = next;
        }
        return best;
    }();
    return file;
}

/** The store mode of the benchmark's argument; disk mode compresses, as configured by default. */
QSounds *soundsFor(benchmark::State &state)
{
    if (biggestSoundFile().isEmpty()) {
        state.SkipWithError("the corpus isn't there");
        return nullptr;
    }
    return new QSounds(nullptr, int(state.range(0)), state.range(0) == QStreamCache::Disk, -1);
}

void BM_Load(benchmark::State &state)
{
    const std::unique_ptr<QSounds> sounds(soundsFor(state));
    if (!sounds)
        return;
    const QString file = biggestSoundFile();
    for (auto _ : state)
        benchmark::DoNotOptimize(sounds->load(file, false));
    state.SetBytesProcessed(state.iterations() * QFileInfo(file).size());
}
BENCHMARK(BM_Load)->Arg(QStreamCache::Memory)->Arg(QStreamCache::Disk)->Unit(benchmark::kMillisecond);

void BM_Save(benchmark::State &state)
{
    const std::unique_ptr<QSounds> sounds(soundsFor(state));
    if (!sounds)
        return;
    const QString file = biggestSoundFile();
    sounds->load(file, false);
    QTemporaryDir folder;
    const QString target = folder.filePath(QStringLiteral("copy.snd"));
    for (auto _ : state)
        benchmark::DoNotOptimize(sounds->save(target, true));
    state.SetBytesProcessed(state.iterations() * QFileInfo(file).size());
}
BENCHMARK(BM_Save)->Arg(QStreamCache::Memory)->Arg(QStreamCache::Disk)->Unit(benchmark::kMillisecond);

void BM_Organize(benchmark::State &state)
{
    const int count = int(state.range(0));
    QList<SndBuilder::Sound> list;
    const QByteArray wav = SndBuilder::wav(1, 11025, 8, 100);
    for (int i = 0; i < count; ++i)
        list.append(SndBuilder::Sound{state.range(1) ? count - i : i, 0, wav});
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("list.snd"));
    QFile out(file);
    out.open(QIODevice::WriteOnly);
    out.write(SndBuilder::snd(list));
    out.close();
    QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
    for (auto _ : state) {
        state.PauseTiming();
        if (!sounds.load(file, false) || sounds.count() != count) {
            state.SkipWithError("the list didn't load");
            return;
        }
        state.ResumeTiming();
        sounds.organize();
    }
}
BENCHMARK(BM_Organize)
    ->ArgNames({"sounds", "reversed"})
    ->Args({1000, 0})
    ->Args({1000, 1})
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return BenchSupport::runBenchmarks(argc, argv);
}
