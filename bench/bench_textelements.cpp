// The element parse runs on every keystroke in a text document: one edit
// must cost microseconds whatever the length of the file, and a whole parse
// of the largest real files must stay well below what a user notices.

#include "benchsupport.h"
#include "core/text/qcommand.h"
#include "core/text/qsyntaxtexteditor.h"
#include "testelementkinds.h"

#include <QGuiApplication>
#include <QTextCursor>
#include <QTextDocument>


namespace {

using BenchSupport::corpusText;
using BenchSupport::repeatedToLines;

struct Document
{
    Document()
        : editor(nullptr, FileAnimations, true, 0x1010000, true)
    {
        TestKinds::acceptAll(editor);
    }
    QSyntaxTextEditor editor;
};

void wholeParse(benchmark::State &state, const char *file)
{
    const QString text = corpusText(file);
    if (text.isEmpty()) {
        state.SkipWithError("the corpus isn't there");
        return;
    }
    Document document;
    for (auto _ : state)
        document.editor.document()->setPlainText(text);
    state.counters["lines"] = document.editor.document()->blockCount();
    state.SetItemsProcessed(state.iterations() * document.editor.document()->blockCount());
}

void BM_WholeParseLargestAir(benchmark::State &state)
{
    wholeParse(state, "ikemen-go-test-text/chars/NormalKyo/Anim.air");
}
BENCHMARK(BM_WholeParseLargestAir)->Unit(benchmark::kMillisecond);

void BM_WholeParseLargestCmd(benchmark::State &state)
{
    wholeParse(state, "ikemen-go-test-text/chars/NormalKyo/Command.cmd");
}
BENCHMARK(BM_WholeParseLargestCmd)->Unit(benchmark::kMillisecond);

/** One character typed and taken back again in a frame line near the end of a 40,000-line file. */
void BM_KeystrokeNearEndOf40000Lines(benchmark::State &state)
{
    const QString text = repeatedToLines(corpusText("ikemen-go-test-text/chars/NormalKyo/Anim.air"), 40000);
    if (text.isEmpty()) {
        state.SkipWithError("the corpus isn't there");
        return;
    }
    Document document;
    QTextDocument *doc = document.editor.document();
    doc->setPlainText(text);
    doc->setUndoRedoEnabled(false);

    // The last frame line of the file.
    QTextBlock line = doc->lastBlock();
    while (line.isValid() && !line.text().contains(QLatin1Char(',')))
        line = line.previous();
    QTextCursor cursor(doc);
    for (auto _ : state) {
        cursor.setPosition(line.position() + 1);
        cursor.insertText(QStringLiteral("7"));
        cursor.deletePreviousChar();
    }
    state.counters["lines"] = doc->blockCount();
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_KeystrokeNearEndOf40000Lines)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    registerNameCommentElements();
    registerCommandElements();
    const QList<QTextElementReg *> kinds = TestKinds::registerAll();
    const int code = BenchSupport::runBenchmarks(argc, argv);
    TestKinds::unregisterAll(kinds);
    return code;
}
