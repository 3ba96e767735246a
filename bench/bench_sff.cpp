// Sprite files open with their project, are written at every save and every
// test run, and change version on "Save as". Each benchmark takes the
// largest file of the corpus of one version (the argument: 0 for 1.01, 1
// for 2.00, 2 for 2.01). Throughput counts bytes of that file.
//
// Open includes the pass that links equal images, which decodes every
// image once; a save of unchanged sprites copies their bytes and is
// measured against a plain copy of the file; Memory reports what a loaded
// set holds against the file's size.
//
//   build/bench/bench_sff --benchmark_filter=Open

#include "benchsupport.h"
#include "core/base/quserprompt.h"
#include "core/sprites/qsprites.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <QtEndian>

#include <malloc.h>

#include <array>
#include <memory>

namespace {

constexpr std::array<quint32, 3> Versions{QSprites::Version_101, QSprites::Version_200, QSprites::Version_201};

/** The largest sprite file of the corpus with the version of `which`, or empty. */
QString largestFile(int which)
{
    static const std::array<QString, 3> files = [] {
        std::array<QString, 3> best;
        QDirIterator it(QStringLiteral(KESTRADA_CORPUS_DIR), {QStringLiteral("*.sff")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString next = it.next();
            QFile file(next);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QByteArray head = file.read(16);
            for (size_t v = 0; v < Versions.size(); ++v) {
                if (head.size() == 16 && qFromLittleEndian<quint32>(head.constData() + 12) == Versions[v]
                    && (best[v].isEmpty() || QFileInfo(next).size() > QFileInfo(best[v]).size()))
                    best[v] = next;
            }
        }
        return best;
    }();
    return files[size_t(which)];
}

/** The file of the benchmark's first argument, loaded; null (and the benchmark skipped) without one. */
std::unique_ptr<QSprites> loaded(benchmark::State &state, QString *file)
{
    *file = largestFile(int(state.range(0)));
    if (file->isEmpty()) {
        state.SkipWithError("the corpus has no file of this version");
        return nullptr;
    }
    auto sprites = std::make_unique<QSprites>(nullptr, QStreamCache::Memory, false, -1);
    if (!sprites->fromFile(*file, false)) {
        state.SkipWithError("the file doesn't load");
        return nullptr;
    }
    state.SetLabel(QFileInfo(*file).fileName().toStdString());
    return sprites;
}

void BM_Open(benchmark::State &state)
{
    QString file;
    const std::unique_ptr<QSprites> sprites = loaded(state, &file);
    if (!sprites)
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(sprites->fromFile(file, false));
    state.SetBytesProcessed(state.iterations() * QFileInfo(file).size());
}
BENCHMARK(BM_Open)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void BM_Memory(benchmark::State &state)
{
    const QString file = largestFile(int(state.range(0)));
    if (file.isEmpty()) {
        state.SkipWithError("the corpus has no file of this version");
        return;
    }
    const double size = double(QFileInfo(file).size());
    for (auto _ : state) {
        // Large blocks are mapped apart from the heap: both count.
        const auto heap = [] {
            const struct mallinfo2 info = mallinfo2();
            return double(info.uordblks) + double(info.hblkhd);
        };
        const double before = heap();
        QSprites sprites(nullptr, QStreamCache::Memory, false, -1);
        sprites.fromFile(file, false);
        // All the heap the set holds, and of it the image bytes in the store.
        state.counters["heldPerFileByte"] = (heap() - before) / size;
        QSet<const QSpriteData *> images;
        double stored = 0;
        for (int i = 0; i < sprites.count(); ++i) {
            const QSpriteData *data = sprites.at(i)->data();
            if (data && !images.contains(data)) {
                images.insert(data);
                stored += double(data->entry()->storedSize());
            }
        }
        state.counters["storedPerFileByte"] = stored / size;
        state.counters["sprites"] = sprites.count();
    }
    state.SetLabel(QFileInfo(file).fileName().toStdString());
}
BENCHMARK(BM_Memory)->DenseRange(0, 2)->Iterations(1)->Unit(benchmark::kMillisecond);

/** Decoding every image once: what the link pass of Open can't do without. */
void BM_DecodeAll(benchmark::State &state)
{
    QString file;
    const std::unique_ptr<QSprites> sprites = loaded(state, &file);
    if (!sprites)
        return;
    for (auto _ : state) {
        for (int i = 0; i < sprites->count(); ++i) {
            if (const QSpriteData *data = sprites->at(i)->data())
                benchmark::DoNotOptimize(data->pixels());
        }
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(file).size());
}
BENCHMARK(BM_DecodeAll)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void BM_CopyFile(benchmark::State &state)
{
    const QString file = largestFile(int(state.range(0)));
    QTemporaryDir dir;
    if (file.isEmpty()) {
        state.SkipWithError("the corpus has no file of this version");
        return;
    }
    const QString target = dir.filePath(QStringLiteral("copy.sff"));
    for (auto _ : state) {
        QFile::remove(target);
        benchmark::DoNotOptimize(QFile::copy(file, target));
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(file).size());
}
BENCHMARK(BM_CopyFile)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void BM_SaveUnchanged(benchmark::State &state)
{
    QString file;
    const std::unique_ptr<QSprites> sprites = loaded(state, &file);
    if (!sprites)
        return;
    QTemporaryDir dir;
    const QString target = dir.filePath(QStringLiteral("saved.sff"));
    // A first save leaves every image in the form the version writes (a
    // file of other tools may hold other forms); the next ones copy them.
    if (!sprites->checkSave(sprites->version()) || !sprites->toFile(target, 0, false)) {
        state.SkipWithError("the set can't be saved");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(sprites->toFile(target, 0, false));
    state.SetBytesProcessed(state.iterations() * QFileInfo(file).size());
}
BENCHMARK(BM_SaveUnchanged)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

/** From the version of the first argument to that of the second, as a copy, so that every run encodes. */
void BM_Convert(benchmark::State &state)
{
    QString file;
    const std::unique_ptr<QSprites> sprites = loaded(state, &file);
    if (!sprites)
        return;
    const quint32 target = Versions[size_t(state.range(1))];
    QTemporaryDir dir;
    const QString out = dir.filePath(QStringLiteral("converted.sff"));
    if (!sprites->checkSave(target)) {
        state.SkipWithError("the set can't be saved in this version");
        return;
    }
    for (auto _ : state) {
        sprites->setVersion(Versions[size_t(state.range(0))]);
        benchmark::DoNotOptimize(sprites->toFile(out, target, true));
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(file).size());
}
BENCHMARK(BM_Convert)
    ->ArgNames({"from", "to"})
    ->Args({0, 2})
    ->Args({1, 2})
    ->Args({2, 1})
    ->Args({2, 0})
    ->Args({1, 0})
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    // Messages would only slow the runs down.
    QRecordingUserPrompt prompt;
    return BenchSupport::runBenchmarks(argc, argv);
}
