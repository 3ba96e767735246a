// The syntax processor runs on every keystroke, for the line typed in and
// for every line after it until the block state settles: one keystroke must
// cost well under a millisecond, whatever the length of the file, and a
// whole file of 40,000 lines must be read in well under half a second.

#include "benchsupport.h"
#include "core/text/qelementtexteditor.h"
#include "core/text/qmugensyntaxprocessor.h"
#include "core/text/qmugensyntaxproperties.h"

#include <QDir>
#include <QGuiApplication>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>


#include <cstdio>
#include <memory>

namespace {

using BenchSupport::corpusText;
using BenchSupport::repeatedToLines;

/** The states of the largest real character, repeated to 40,000 lines. */
QString fortyThousandLines()
{
    static const QString text =
        repeatedToLines(corpusText("ikemen-go-test-text/chars/NormalKyo/States/Special.st"), 40000);
    return text;
}

/** A document without a view, as documents of a project are, and its processor. */
struct Document
{
    explicit Document(const QString &text)
    {
        editor.document()->setUndoRedoEnabled(false);
        editor.document()->setPlainText(text);
        processor = std::make_unique<QMugenSyntaxProcessor>(editor.document());
    }
    QElementTextEditor editor{false};
    std::unique_ptr<QMugenSyntaxProcessor> processor;
};

void wholeFile(benchmark::State &state, const QString &text)
{
    if (text.isEmpty()) {
        state.SkipWithError("the corpus isn't there");
        return;
    }
    Document document(text);
    for (auto _ : state)
        document.processor->rehighlightAll();
    const int lines = document.editor.document()->blockCount();
    state.counters["lines"] = lines;
    state.SetItemsProcessed(state.iterations() * lines);
}

void BM_WholeLargestCns(benchmark::State &state)
{
    wholeFile(state, corpusText("webmugen/public/chars/T-H-M-A/T-H-M-A/T-H-M-Atyouhi.cns"));
}
BENCHMARK(BM_WholeLargestCns)->Unit(benchmark::kMillisecond);

void BM_WholeLargestSt(benchmark::State &state)
{
    wholeFile(state, corpusText("ikemen-go-test-text/chars/NormalKyo/States/Special.st"));
}
BENCHMARK(BM_WholeLargestSt)->Unit(benchmark::kMillisecond);

void BM_WholeLargestAir(benchmark::State &state)
{
    wholeFile(state, corpusText("ikemen-go-test-text/chars/NormalKyo/Anim.air"));
}
BENCHMARK(BM_WholeLargestAir)->Unit(benchmark::kMillisecond);

void BM_WholeLargestCmd(benchmark::State &state)
{
    wholeFile(state, corpusText("ikemen-go-test-text/chars/NormalKyo/Command.cmd"));
}
BENCHMARK(BM_WholeLargestCmd)->Unit(benchmark::kMillisecond);

void BM_Whole40000Lines(benchmark::State &state)
{
    wholeFile(state, fortyThousandLines());
}
BENCHMARK(BM_Whole40000Lines)->Unit(benchmark::kMillisecond);

/** The line in the middle of the document that starts with `prefix`, case ignored. */
QTextBlock middleLine(QTextDocument *document, const char *prefix)
{
    QTextBlock block = document->findBlockByNumber(document->blockCount() / 2);
    while (block.isValid() && !block.text().trimmed().startsWith(QLatin1String(prefix), Qt::CaseInsensitive))
        block = block.next();
    return block;
}

/**
 * A digit typed into a value in the middle of 40,000 lines and taken back:
 * two keystrokes that leave the section as it was, so the reading stops at
 * the line.
 */
void BM_KeystrokeInAValue(benchmark::State &state)
{
    const QString text = fortyThousandLines();
    if (text.isEmpty()) {
        state.SkipWithError("the corpus isn't there");
        return;
    }
    Document document(text);
    const QTextBlock line = middleLine(document.editor.document(), "trigger");
    QTextCursor cursor(document.editor.document());
    for (auto _ : state) {
        cursor.setPosition(line.position() + line.length() - 1);
        cursor.insertText(QStringLiteral("7"));
        cursor.deletePreviousChar();
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_KeystrokeInAValue)->Unit(benchmark::kMicrosecond);

/**
 * The "[" of a [State] header in the middle of 40,000 lines deleted and
 * typed again: the header stops being one, so every line of its block
 * changes section, then changes back; the reading goes on until the state
 * settles at the next header.
 */
void BM_KeystrokeInAHeader(benchmark::State &state)
{
    const QString text = fortyThousandLines();
    if (text.isEmpty()) {
        state.SkipWithError("the corpus isn't there");
        return;
    }
    Document document(text);
    const QTextBlock header = middleLine(document.editor.document(), "[state ");
    QTextCursor cursor(document.editor.document());
    for (auto _ : state) {
        cursor.setPosition(header.position());
        cursor.deleteChar();
        cursor.insertText(QStringLiteral("["));
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_KeystrokeInAHeader)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    // Without its vocabulary the processor would only find unknown words,
    // which is quicker and says nothing.
    QMugenSyntaxProperties vocabulary;
    const QString file = QCoreApplication::applicationDirPath() + QStringLiteral("/../bin/syntax_mugen.xml");
    if (!vocabulary.load(file) || vocabulary.stateControllers().isEmpty()) {
        fprintf(stderr, "%s can't be read\n", qPrintable(QDir::toNativeSeparators(file)));
        return 1;
    }
    mugenSyntax = &vocabulary;
    const int code = BenchSupport::runBenchmarks(argc, argv);
    mugenSyntax = nullptr;
    return code;
}
