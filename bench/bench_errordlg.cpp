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

/** A project's list with `MessageCount` messages of a state file, all severities. */
struct Messages
{
    QMessageList list;
    QMessages state{&list, FileStates};

    Messages()
    {
        state.begin();
        for (int i = 0; i < MessageCount; ++i)
            state.add(i % 3, QStringLiteral("Unknown parameter \"value%1\"").arg(i), i % 40, i);
        state.end();
    }
};

/** The dialog shown on the screen, once painted. */
void paint(ErrorDlg &dialog)
{
    dialog.listView()->viewport()->repaint();
    QCoreApplication::processEvents();
}

void BM_SetModel(benchmark::State &state)
{
    Messages messages;
    ErrorDlg dialog;
    dialog.show();
    for (auto _ : state) {
        dialog.setModel(nullptr);
        dialog.setModel(&messages.list);
        paint(dialog);
    }
}
BENCHMARK(BM_SetModel)->Unit(benchmark::kMillisecond);

/** One page down each time, from the top to the bottom and round again. */
void BM_ScrollPage(benchmark::State &state)
{
    Messages messages;
    ErrorDlg dialog;
    dialog.setModel(&messages.list);
    dialog.show();
    paint(dialog);
    QScrollBar *bar = dialog.listView()->verticalScrollBar();
    for (auto _ : state) {
        const int next = bar->value() + bar->pageStep();
        bar->setValue(next > bar->maximum() ? 0 : next);
        paint(dialog);
    }
}
BENCHMARK(BM_ScrollPage)->Unit(benchmark::kMillisecond);

/** What every check of a document costs the open window: all rows out and in again. */
void BM_UpdateWhileShown(benchmark::State &state)
{
    Messages messages;
    ErrorDlg dialog;
    dialog.setModel(&messages.list);
    dialog.show();
    paint(dialog);
    for (auto _ : state) {
        messages.list.update();
        paint(dialog);
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
