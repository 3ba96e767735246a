// Any text may be opened as engine text: the processor reads every line of
// it, and what it leaves on a line (diagnostics, brackets) stays inside the
// line, whatever the text holds. An edit in the middle is read as well.

#include "core/text/qelementtexteditor.h"
#include "core/text/qmugensyntaxprocessor.h"
#include "core/text/qmugensyntaxproperties.h"

#include <QCoreApplication>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace {

void checkLines(const QTextDocument *document)
{
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        // An empty document is never read: there is nothing to read.
        const QTextEditorBlockData *data = QTextEditorBlockData::of(block, false);
        if (!data) {
            if (!document->isEmpty())
                __builtin_trap();
            continue;
        }
        const int length = block.length();
        for (const QSyntaxIssue &issue : data->issues) {
            if (issue.start < 0 || issue.start > issue.end || issue.end > length || issue.text.isEmpty())
                __builtin_trap();
        }
        for (const QSyntaxParen &paren : data->parens) {
            if (paren.position < 0 || paren.position >= length)
                __builtin_trap();
        }
        if (data->foldLevel < 0)
            __builtin_trap();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The application object and the vocabulary, once for the process.
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    static QMugenSyntaxProperties *vocabulary = [] {
        auto *properties = new QMugenSyntaxProperties;
        properties->load(QStringLiteral(KESTRADA_DATA_DIR "/syntax_mugen.xml"));
        return properties;
    }();

    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    QElementTextEditor editor(false);
    editor.document()->setPlainText(text);
    QMugenSyntaxProcessor processor(editor.document(), 0x1010000, true, vocabulary);
    checkLines(editor.document());

    QTextCursor cursor(editor.document());
    cursor.setPosition(int(editor.document()->characterCount() / 2));
    cursor.insertText(QStringLiteral("[State 0]\ntype = Null\n"));
    processor.setVersion(0);
    checkLines(editor.document());
    return 0;
}
