// Work on a sprite set that runs while the user waits: the search for an
// equal image that every setImage makes across the whole set, taking a
// change back, and the quantiser that a save to an 8-bit version runs on
// every true colour sprite.
//
//   build/bench/bench_sprites

#include "core/sprites/qrgbpalette.h"
#include "core/sprites/qsprites.h"

#include "spritesets.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

namespace {

QCoreApplication *application()
{
    static int argc = 1;
    static char name[] = "bench_sprites";
    static char *argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return &app;
}

/** A set of `count` sprites of 64x64 distinct images, their hashes known. */
void fillSet(QSprites &set, int count)
{
    set.setUndoEnabled(false);
    for (int i = 0; i < count; ++i)
        set.add()->setImage(SpriteSets::indexedImage(64, 64, i), NoShare, false, SwapPalette);
    set.setUndoEnabled(true);
}

void SetImageAmongSprites(benchmark::State &state)
{
    application();
    QSprites set(nullptr, int(state.range(1)), false, -1);
    fillSet(set, int(state.range(0)));
    set.setUndoEnabled(false);
    // The first search hashes every stored image; the ones measured find them known.
    set.at(0)->setImage(SpriteSets::indexedImage(64, 64, -1), Share);
    int seed = 0;
    for (auto _ : state)
        set.at(0)->setImage(SpriteSets::indexedImage(64, 64, 100000 + (seed++ % 2)), Share);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(SetImageAmongSprites)->Args({1000, 0})->Args({1000, 1})->Unit(benchmark::kMicrosecond);

void UndoRedoOfAnImage(benchmark::State &state)
{
    application();
    QSprites set(nullptr, int(state.range(0)), true, -1);
    fillSet(set, 100);
    set.at(5)->setImage(SpriteSets::indexedImage(256, 256, 7777), Share);
    for (auto _ : state) {
        set.undoStack()->undo();
        set.undoStack()->redo();
    }
}
BENCHMARK(UndoRedoOfAnImage)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

QImage trueColour(int side)
{
    QImage image(side, side, QImage::Format_RGB32);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y, qRgb(x * 255 / side, y * 255 / side, (x ^ y) & 255));
    }
    return image;
}

void DropAStackOfCrops(benchmark::State &state)
{
    application();
    for (auto _ : state) {
        state.PauseTiming();
        QSprites set(nullptr, 0, false, -1);
        set.setUndoEnabled(false);
        for (int i = 0; i < state.range(0); ++i) {
            QImage image(96, 96, QImage::Format_Indexed8);
            image.fill(0);
            for (int y = 8; y < 88; ++y) {
                for (int x = 8; x < 88; ++x)
                    image.scanLine(y)[x] = uchar((x * y + i) % 251 + 1);
            }
            set.add()->setImage(image, NoShare, false, SwapPalette);
        }
        set.setUndoEnabled(true);
        set.cropAll(true, 0, true, 0, 0);
        state.ResumeTiming();
        set.undoStack()->clear();
    }
}
BENCHMARK(DropAStackOfCrops)->Arg(2000)->Unit(benchmark::kMillisecond)->Iterations(1);

void ClearALargeSet(benchmark::State &state)
{
    application();
    for (auto _ : state) {
        state.PauseTiming();
        QSprites set(nullptr, 1, false, -1);
        fillSet(set, int(state.range(0)));
        state.ResumeTiming();
        set.clear();
    }
}
BENCHMARK(ClearALargeSet)->Arg(2000)->Unit(benchmark::kMillisecond)->Iterations(3);

void QuantizeTrueColour(benchmark::State &state)
{
    const QImage image = trueColour(int(state.range(0)));
    QRGBPal colors;
    QRGBPalette palette(&colors);
    for (auto _ : state)
        palette.quantize(image, 256, 8);
    state.SetItemsProcessed(state.iterations() * image.width() * image.height());
}
BENCHMARK(QuantizeTrueColour)->Arg(128)->Arg(512)->Unit(benchmark::kMillisecond);

void AdaptTrueColour(benchmark::State &state)
{
    const QImage image = trueColour(int(state.range(0)));
    QRGBPal colors;
    QRGBPalette(&colors).quantize(image, 256, 8);
    for (auto _ : state)
        benchmark::DoNotOptimize(QRGBPalette::adaptImage(image, colors));
    state.SetItemsProcessed(state.iterations() * image.width() * image.height());
}
BENCHMARK(AdaptTrueColour)->Arg(128)->Arg(512)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
