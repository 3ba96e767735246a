// The window: how long from the start of the program (its managers, the
// main window with its frame, actions, icons and preset) to a window shown
// and painted, how long applying the configuration again takes, and how
// long a change of project tab or of editor takes. Runs on
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
#include "../tests/gui/logeditor.h"

#include <QApplication>
#include <QFileInfo>
#include <QTabBar>

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

/** Two characters of the corpus open; each step makes the other tab current. */
void BM_SwitchProjectTabs(benchmark::State &state)
{
    const QString corpus = QStringLiteral(KESTRADA_CORPUS_DIR);
    const QStringList defs = {corpus + QStringLiteral("/elecbyte-mugen10/chars/kfm/kfm.def"),
                              corpus + QStringLiteral("/takezo/takezo.def")};
    for (const QString &def : defs) {
        if (!QFileInfo::exists(def)) {
            state.SkipWithError("no corpus");
            return;
        }
    }
    ProcessManagers managers(application);
    MainWindow window(false);
    window.show();
    for (const QString &def : defs)
        mainInterface->openProject(def);
    QCoreApplication::processEvents();
    int tab = 0;
    for (auto _ : state) {
        tab = 1 - tab;
        mainInterface->tabBar()->setCurrentIndex(tab);
        QCoreApplication::processEvents();
    }
}
BENCHMARK(BM_SwitchProjectTabs)->Unit(benchmark::kMillisecond);

/**
 * Stand-in editors in two workspaces, as the frame holds the real ones:
 * each step makes the next one current, so the workspace changes every
 * other step. What is measured is the frame's own part of the switch.
 */
void BM_SwitchEditors(benchmark::State &state)
{
    ProcessManagers managers(application);
    QStringList log;
    MainWindow window(false, [&log](QInterface *ui) {
        ui->addWorkspace(new LogWorkspace(0, &log));
        ui->addWorkspace(new LogWorkspace(1, &log));
        for (int id = 0; id < 6; ++id)
            ui->addEditor(new LogEditor(ui, id, id % 2, 15, &log, {}));
    });
    window.show();
    QCoreApplication::processEvents();
    int id = 0;
    for (auto _ : state) {
        id = (id + 1) % 6;
        mainInterface->makeCurrent(id);
        QCoreApplication::processEvents();
        state.PauseTiming();
        log.clear();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_SwitchEditors)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    application = &app;
    return BenchSupport::runBenchmarks(argc, argv);
}
