// The Issues window with a large project's messages: giving it the list,
// scrolling a page, and the rebuild of the list after a check, each with the
// window shown and painted. Runs on the offscreen platform unless another is
// asked for.
#include "benchsupport.h"

#include "core/base/qmessages.h"
#include "gui/app/errordlg.h"

#include <QApplication>
#include <QListView>
#include <QScrollBar>

namespace {

constexpr int MessageCount = 5000;

/** The window shown with a list of `MessageCount` messages of a state file, all severities. */
struct Shown
{
    QMessageList list;
    QMessages state{&list, FileStates};
    ErrorDlg dialog;

    Shown()
    {
        state.begin();
        for (int i = 0; i < MessageCount; ++i)
            state.add(i % 3, QStringLiteral("Unknown parameter \"value%1\"").arg(i), i % 40, i);
        state.end();
        dialog.setModel(&list);
        dialog.show();
        paint();
    }
    void paint()
    {
        dialog.listView()->viewport()->repaint();
        QCoreApplication::processEvents();
    }
};

void BM_SetModel(benchmark::State &state)
{
    Shown shown;
    for (auto _ : state) {
        shown.dialog.setModel(nullptr);
        shown.dialog.setModel(&shown.list);
        shown.paint();
    }
}
BENCHMARK(BM_SetModel)->Unit(benchmark::kMillisecond);

/** One page down each time, from the top to the bottom and round again. */
void BM_ScrollPage(benchmark::State &state)
{
    Shown shown;
    QScrollBar *bar = shown.dialog.listView()->verticalScrollBar();
    for (auto _ : state) {
        const int next = bar->value() + bar->pageStep();
        bar->setValue(next > bar->maximum() ? 0 : next);
        shown.paint();
    }
}
BENCHMARK(BM_ScrollPage)->Unit(benchmark::kMillisecond);

/** What every check of a document costs the open window: all rows out and in again. */
void BM_UpdateWhileShown(benchmark::State &state)
{
    Shown shown;
    for (auto _ : state) {
        shown.list.update();
        shown.paint();
    }
}
BENCHMARK(BM_UpdateWhileShown)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return BenchSupport::runBenchmarks(argc, argv);
}
