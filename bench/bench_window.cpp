// The window: how long from the start of the program (its managers, the
// main window with its frame, actions, icons and preset) to a window shown
// and painted, and how long applying the configuration again takes. Runs on
// the offscreen platform unless another is asked for, from beside the
// program's data, as the program does. The splash's deliberate second is
// not counted.
#include "benchsupport.h"

#include "core/base/apppaths.h"
#include "core/base/qcodepages.h"
#include "core/base/qmugenmodel.h"
#include "gui/app/mainwindow.h"
#include "gui/app/options.h"
#include "gui/app/qinterface.h"
#include "gui/app/startup.h"

#include <QApplication>

namespace {

QApplication *application = nullptr;

void BM_StartToShownWindow(benchmark::State &state)
{
    for (auto _ : state) {
        ProcessManagers managers(application);
        MainWindow window(false);
        window.show();
        QCoreApplication::processEvents();
        benchmark::DoNotOptimize(window.grab());
        state.PauseTiming();
        window.hide();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_StartToShownWindow)->Unit(benchmark::kMillisecond);

/** The options applied: a preset read and placed, with its looks. */
void BM_ApplyConfig(benchmark::State &state)
{
    ProcessManagers managers(application);
    MainWindow window(false);
    window.show();
    QCoreApplication::processEvents();
    bool compact = false;
    for (auto _ : state) {
        // Another preset each time, so nothing is skipped as already loaded.
        configuration->config[QStringLiteral("preset")] = compact ? QStringLiteral("Compact") : QStringLiteral("Classic");
        compact = !compact;
        mainInterface->applyConfig();
        QCoreApplication::processEvents();
    }
}
BENCHMARK(BM_ApplyConfig)->Unit(benchmark::kMillisecond);

/**
 * "Options..." to the dialog shown and painted, with the program's data:
 * presets, colorsets, languages, every code page, every command in the
 * shortcut table.
 */
void BM_OpenOptions(benchmark::State &state)
{
    ProcessManagers managers(application);
    buildCodecNames();
    MainWindow window(false);
    window.show();
    QCoreApplication::processEvents();
    for (auto _ : state) {
        Options options(applicationDir(), &mainInterface->actions(), &window);
        options.show();
        QCoreApplication::processEvents();
        benchmark::DoNotOptimize(options.grab());
        state.PauseTiming();
        options.hide();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_OpenOptions)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    application = &app;
    return BenchSupport::runBenchmarks(argc, argv);
}
