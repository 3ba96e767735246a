#include "qsyntaxprocessor.h"

#include "qsyntaxhierarchy.h"
#include "qtextelement.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTextDocument>

QSyntaxProcessor::QSyntaxProcessor(int kind, QSyntaxHierarchy *hierarchy, const QSyntaxProperties *properties,
                                   quint32 version, bool checking, int target)
    : QSyntaxHighlighter(static_cast<QObject *>(nullptr))
    , m_hierarchy(hierarchy)
    , m_syntaxKind(kind)
    , m_properties(properties)
    , m_version(version)
    , m_checking(checking)
    , m_target(target)
{
}

QSyntaxProcessor::~QSyntaxProcessor() = default;

void QSyntaxProcessor::attach(QTextDocument *document)
{
    setDocument(document);
    // QSyntaxHighlighter puts its first pass over a text that isn't empty
    // off to the event loop, and ignores every edit until that pass has run.
    // The pass is a queued call to this object: deliver it now, so that a
    // document is checked as soon as it has a processor, with or without an
    // event loop (the command-line tool has none).
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

QSyntaxHierarchy *QSyntaxProcessor::hierarchy() const
{
    return m_hierarchy.get();
}

void QSyntaxProcessor::rehighlightAll()
{
    rehighlight();
}

void QSyntaxProcessor::setVersion(quint32 version)
{
    if (version == m_version)
        return;
    m_version = version;
    rehighlightAll();
}

void QSyntaxProcessor::setTarget(int target)
{
    if (target == m_target)
        return;
    m_target = target;
    rehighlightAll();
}

void QSyntaxProcessor::setChecking(bool checking)
{
    if (checking == m_checking)
        return;
    m_checking = checking;
    rehighlightAll();
}

QNullSyntaxProcessor::QNullSyntaxProcessor(QTextDocument *document, quint32 version)
    : QSyntaxProcessor(NullKind, new QNullSyntaxHierarchy, nullptr, version, false)
{
    attach(document);
}

void QNullSyntaxProcessor::highlightBlock(const QString &)
{
    if (QTextEditorBlockData *data = QTextEditorBlockData::of(currentBlock(), false)) {
        data->isHeader = data->beforeHeader = false;
        data->foldLevel = 0;
        data->issues.clear();
        data->parens.clear();
    }
}
