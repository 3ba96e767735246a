#include "qelementtexteditor.h"

#include <QTextDocument>

QElementTextEditor::QElementTextEditor(QObject *parent)
    : QObject(parent)
    , m_document(new QTextDocument(this))
{
    // Edits of engine text are undone as the user typed them, one step each;
    // grouping is done by the callers' edit blocks.
    m_document->setUndoRedoEnabled(true);
}

QElementTextEditor::~QElementTextEditor() = default;
