#include "qelementtexteditor.h"

#include "qtexttokenizer.h"

#include <QAbstractTextDocumentLayout>
#include <QTextDocument>
#include <QVarLengthArray>

namespace {

/**
 * A document reports its changes with positions only while it has a layout.
 * The editors of the window set their own layout when they show a document;
 * until then this one, which lays out nothing, keeps the reports coming
 * without the cost of a real layout.
 */
class NoLayout : public QAbstractTextDocumentLayout
{
public:
    using QAbstractTextDocumentLayout::QAbstractTextDocumentLayout;

    void draw(QPainter *, const PaintContext &) override {}
    int hitTest(const QPointF &, Qt::HitTestAccuracy) const override { return -1; }
    int pageCount() const override { return 1; }
    QSizeF documentSize() const override { return QSizeF(); }
    QRectF frameBoundingRect(QTextFrame *) const override { return QRectF(); }
    QRectF blockBoundingRect(const QTextBlock &) const override { return QRectF(); }

protected:
    void documentChanged(int, int, int) override {}
};

qint64 kindKey(int type, int subType)
{
    return qint64(quint32(type)) | qint64(subType) << 32;
}

bool isBlankLine(const QString &text)
{
    for (const QChar c : text) {
        if (!c.isSpace())
            return false;
    }
    return true;
}

/** A token as elements see it: numbers as their values, punctuation without text. */
QTextElementToken elementToken(const QTextTokenizer &tokenizer, int type)
{
    QTextElementToken token;
    token.type = type;
    switch (type) {
    case QTextTokenizer::Identifier:
    case QTextTokenizer::String:
        token.text = tokenizer.text();
        break;
    case QTextTokenizer::Integer: {
        bool ok = false;
        const qlonglong value = tokenizer.text().toLongLong(&ok);
        token.text = ok ? QString::number(value) : tokenizer.text();
        break;
    }
    case QTextTokenizer::Float:
        token.text = QString::number(tokenizer.toFloat(), 'g', 6);
        break;
    default:
        break;
    }
    return token;
}

/** Whether the next line that isn't blank starts with '['. */
bool headerFollows(const QTextBlock &block)
{
    for (QTextBlock line = block.next(); line.isValid(); line = line.next()) {
        const QString text = line.text();
        if (isBlankLine(text))
            continue;
        return text.startsWith(QLatin1Char('['));
    }
    return false;
}

} // namespace

QElementTextEditor::QElementTextEditor(bool parse, QObject *parent)
    : QFileWatchObject(parent)
    , m_document(new QTextDocument(this))
    , m_cursor(m_document)
{
    m_document->setDocumentLayout(new NoLayout(m_document));
    if (parse)
        connect(m_document, &QTextDocument::contentsChange, this, &QElementTextEditor::contentsChanged);
    m_parseGuard = 0;
}

QElementTextEditor::~QElementTextEditor()
{
    // The document's blocks are deleted after this; their data must not
    // reach elements that other documents may already use again. Orphans
    // lost their lines already: their block handles lead nowhere.
    for (QTextElement *element = m_firstElement; element;) {
        QTextElement *next = element->next;
        QTextEditorBlockData *data = m_orphans.contains(element)
            ? nullptr : QTextEditorBlockData::of(element->block, false);
        if (data && data->element == element)
            data->element = nullptr;
        element->alive = true;
        element->release();
        element->editor = nullptr;
        element->previous = element->next = nullptr;
        element->block = QTextBlock();
        element = next;
    }
    m_firstElement = nullptr;
}

void QElementTextEditor::setKindAccepted(bool accept, int type, int subType)
{
    int &count = m_acceptedKinds[kindKey(type, subType)];
    count += accept ? 1 : -1;
}

bool QElementTextEditor::isKindAccepted(int type, int subType) const
{
    return m_acceptedKinds.value(kindKey(type, subType)) > 0;
}

void QElementTextEditor::beginUpdate()
{
    if (m_updateDepth++ == 0)
        m_countChanged = false;
    m_cursor.beginEditBlock();
}

void QElementTextEditor::endUpdate()
{
    // The document reports the whole bracket once more at its end; the
    // primitives have parsed each step already.
    ++m_parseGuard;
    m_cursor.endEditBlock();
    --m_parseGuard;
    if (--m_updateDepth == 0)
        Q_EMIT updated(m_countChanged);
}

void QElementTextEditor::reparseAll()
{
    if (!m_document->isEmpty())
        contentsChanged(0, 0, m_document->characterCount());
}

void QElementTextEditor::appendLine(const QString &text)
{
    m_cursor.movePosition(QTextCursor::End);
    insertText(m_cursor, QLatin1Char('\n') + text);
}

void QElementTextEditor::insertLineAfter(QTextElement *element, const QString &text, bool blockOnly)
{
    if (!element) {
        appendLine(text);
        return;
    }
    const int line = qMin(blockOnly ? element->lineNumber() : element->lastLine(),
                          m_document->blockCount() - 1);
    const QTextBlock block = m_document->findBlockByNumber(line);
    m_cursor.setPosition(block.position() + block.length() - 1);
    insertText(m_cursor, QLatin1Char('\n') + text);
}

void QElementTextEditor::insertLineBefore(QTextElement *element, const QString &text, bool blockOnly)
{
    if (!element) {
        appendLine(text);
        return;
    }
    const QTextBlock block =
        m_document->findBlockByNumber(blockOnly ? element->lineNumber() : element->firstLine());
    // Before the very first line this leaves an empty first line and joins
    // the text to the old first line; callers live with that corner.
    m_cursor.setPosition(qMax(0, block.position() - 1));
    insertText(m_cursor, QLatin1Char('\n') + text);
}

void QElementTextEditor::insertText(QTextCursor &cursor, const QString &text)
{
    const int start = cursor.selectionStart();
    const int end = cursor.selectionEnd();
    ++m_parseGuard;
    cursor.insertText(text);
    --m_parseGuard;
    contentsChanged(start, end - start + 1, int(text.size()));
}

void QElementTextEditor::removeSelection(QTextCursor &cursor)
{
    const int start = cursor.selectionStart();
    const int end = cursor.selectionEnd();
    ++m_parseGuard;
    cursor.removeSelectedText();
    --m_parseGuard;
    contentsChanged(start, end - start + 1, 0);
}

namespace {

/** Walks the chain along `link` from the element's neighbour; see findPrevious(). */
QTextElement *findAlong(QTextElement *element, int mask, int stopMask, QTextElement *QTextElement::*link)
{
    for (QTextElement *e = element ? element->*link : nullptr; e; e = e->*link) {
        if (!e->alive)
            continue;
        if (e->elementType() & mask)
            return e;
        if (e->elementType() & stopMask)
            return nullptr;
    }
    return nullptr;
}

} // namespace

QTextElement *QElementTextEditor::findPrevious(QTextElement *element, int mask, int stopMask) const
{
    return findAlong(element, mask, stopMask, &QTextElement::previous);
}

QTextElement *QElementTextEditor::findNext(QTextElement *element, int mask, int stopMask) const
{
    return findAlong(element, mask, stopMask, &QTextElement::next);
}

void QElementTextEditor::elementOrphaned(QTextElement *element)
{
    m_orphans.append(element);
}

void QElementTextEditor::contentsChanged(int position, int charsRemoved, int charsAdded)
{
    if (m_parseGuard != 0)
        return;
    QTextBlock first = m_document->findBlock(position);
    if (!first.isValid())
        return;
    const bool wasReacting = m_reactingToDocument;
    m_reactingToDocument = wasReacting || sender() == m_document;
    const QTextBlock last =
        m_document->findBlock(position + charsAdded + (charsRemoved > 0 ? 1 : 0));
    const int endPosition = last.isValid() ? last.position() + last.length()
                                           : m_document->characterCount();

    QList<QTextElementChange> changes;
    // Lines that vanished took their data with them; their elements go.
    for (QTextElement *orphan : std::as_const(m_orphans)) {
        if (orphan->alive && orphan->editor == this) {
            orphan->alive = false;
            changes.append({QTextElementChange::Removed, orphan});
        }
    }
    m_orphans.clear();

    // A comment line is a name only when the next line that isn't blank is
    // a header: the line above the change may have become one, or stopped
    // being one.
    for (QTextBlock above = first.previous(); above.isValid(); above = above.previous()) {
        const QString text = above.text();
        if (isBlankLine(text))
            continue;
        if (text.contains(QLatin1Char(';')))
            first = above;
        break;
    }

    for (QTextBlock block = first; block.isValid() && block.position() < endPosition;
         block = block.next())
        parseBlock(block, changes);

    if (!changes.isEmpty())
        processChanges(changes);
    finishRemovals(changes);

    bool countChanged = false;
    for (const QTextElementChange &change : std::as_const(changes)) {
        if (change.kind != QTextElementChange::Changed) {
            countChanged = true;
            break;
        }
    }
    if (m_updateDepth > 0)
        m_countChanged = m_countChanged || countChanged;
    else
        Q_EMIT updated(countChanged);
    m_reactingToDocument = wasReacting;
}

void QElementTextEditor::parseBlock(const QTextBlock &block, QList<QTextElementChange> &changes)
{
    QTextEditorBlockData *data = QTextEditorBlockData::of(block, false);
    QTextElement *old = data ? data->element : nullptr;
    const QString text = block.text();
    QTextTokenizer tokenizer(text);
    const int type = tokenizer.next();
    const bool nothing = type == QTextTokenizer::EndOfText && !tokenizer.hasComment();

    auto removeOld = [&] {
        old->alive = false;
        changes.append({QTextElementChange::Removed, old});
        data->element = nullptr;
        old = nullptr;
    };

    if (old) {
        // A merge of lines may have left the data on another block handle.
        old->block = block;
        if (text.isEmpty() || nothing) {
            removeOld();
            return;
        }
    } else if (nothing) {
        return;
    }

    QTextElementReg *winner = identifyLine(block, tokenizer, type, m_tokens);
    if (old && (!winner || winner->elementType() != old->elementType()
                || winner->elementSubType() != old->elementSubType()))
        removeOld();
    if (!winner)
        return;
    if (old) {
        old->update(m_tokens);
        changes.append({QTextElementChange::Changed, old});
        return;
    }

    QTextElement *element = winner->create();
    element->editor = this;
    element->block = block;
    element->alive = true;
    splice(element, block);
    QTextEditorBlockData::of(block, true)->element = element;
    element->update(m_tokens);
    changes.append({QTextElementChange::Added, element});
}

QTextElementReg *QElementTextEditor::identifyLine(const QTextBlock &block, QTextTokenizer &tokenizer,
                                                   int firstType, QList<QTextElementToken> &tokens)
{
    tokens.clear();
    const QChar first = tokenizer.firstChar();
    QVarLengthArray<QTextElementReg *, 16> candidates;
    for (QTextElementReg *registry : QTextElementReg::registry()) {
        if (!isKindAccepted(registry->elementType(), registry->elementSubType()))
            continue;
        // A line without a first token is a candidate only for a comment.
        if (first.isNull() && !tokenizer.hasComment())
            continue;
        if (QTextElementReg::rulePasses(registry->startRule(), first))
            candidates.append(registry);
    }

    auto offer = [&candidates](int position, const QTextElementToken &token) {
        for (qsizetype i = candidates.size() - 1; i >= 0; --i) {
            if (!candidates[i]->accepts(position, token))
                candidates.remove(i);
        }
    };

    int position = 0;
    int type = firstType;
    while (type != QTextTokenizer::EndOfText && !candidates.isEmpty()) {
        tokens.append(elementToken(tokenizer, type));
        offer(position++, tokens.last());
        type = tokenizer.next();
    }
    if (type == QTextTokenizer::EndOfText && tokenizer.hasComment() && !candidates.isEmpty()
        && headerFollows(block)) {
        tokens.append({QTextTokenizer::EndOfLine, tokenizer.comment()});
        offer(position++, tokens.last());
    }
    // A last, empty line end: how a registry refuses a line that ended too early.
    offer(position, {QTextTokenizer::EndOfLine, QString()});

    if (tokens.isEmpty() || candidates.isEmpty())
        return nullptr;
    return candidates.first();
}

void QElementTextEditor::splice(QTextElement *element, const QTextBlock &block)
{
    QTextElement *before = nullptr;
    for (QTextBlock line = block.previous(); line.isValid() && !before; line = line.previous())
        before = QTextEditorBlockData::elementOf(line);
    element->previous = before;
    element->next = before ? before->next : m_firstElement;
    if (element->next)
        element->next->previous = element;
    if (before)
        before->next = element;
    else
        m_firstElement = element;
}

void QElementTextEditor::unlink(QTextElement *element)
{
    if (element->previous)
        element->previous->next = element->next;
    if (element->next)
        element->next->previous = element->previous;
    if (m_firstElement == element)
        m_firstElement = element->next;
    element->editor = nullptr;
    element->previous = element->next = nullptr;
    element->block = QTextBlock();
}

void QElementTextEditor::finishRemovals(const QList<QTextElementChange> &changes)
{
    for (const QTextElementChange &change : changes) {
        if (change.kind != QTextElementChange::Removed)
            continue;
        QTextElement *element = change.element;
        element->alive = true;
        element->release();
        unlink(element);
    }
}

void QElementTextEditor::processChanges(QList<QTextElementChange> &changes)
{
    Q_EMIT update(this, changes);
}
