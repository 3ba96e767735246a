// The options: how long from "Options..." to the dialog shown and painted,
// with the program's data (presets, colorsets, languages, the code pages,
// every command in the shortcut table), on the offscreen platform unless
// another is asked for.
#include "benchsupport.h"

#include "core/base/apppaths.h"
#include "core/base/qcodepages.h"
#include "gui/app/mainwindow.h"
#include "gui/app/options.h"
#include "gui/app/qinterface.h"
#include "gui/app/startup.h"

#include <QApplication>

namespace {

QApplication *application = nullptr;

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
