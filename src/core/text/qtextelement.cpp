#include "qtextelement.h"

#include "qelementtexteditor.h"

#include <QTextCursor>
#include <QTextDocument>

namespace {

struct Registry
{
    ~Registry() { qDeleteAll(list); }
    QList<QTextElementReg *> list;
};

Registry &globalRegistry()
{
    static Registry registry;
    return registry;
}

bool sameLetter(QChar c, uchar upper)
{
    return upper != 0 && (c.unicode() == upper || c.unicode() == ushort(upper + 32));
}

} // namespace

QTextElementReg::~QTextElementReg() = default;

quint32 QTextElementReg::makeRule(int rule, char c1, char c2, char c3)
{
    return quint32(uchar(rule)) | quint32(uchar(c1)) << 8 | quint32(uchar(c2)) << 16
        | quint32(uchar(c3)) << 24;
}

bool QTextElementReg::rulePasses(quint32 rule, QChar c)
{
    const uchar c1 = uchar(rule >> 8);
    const uchar c2 = uchar(rule >> 16);
    const uchar c3 = uchar(rule >> 24);
    const ushort u = c.unicode();
    switch (rule & 0xff) {
    case 1: return true;
    case 2: return (u >= '0' && u <= '9') || u == '-';
    case 3: return u != 0 && u == c1;
    case 4: return u != 0 && (u == c1 || u == c2);
    case 5: return u != 0 && (u == c1 || u == c2 || u == c3);
    case 6: return sameLetter(c, c1);
    case 7: return sameLetter(c, c1) || sameLetter(c, c2);
    case 8: return sameLetter(c, c1) || sameLetter(c, c2) || sameLetter(c, c3);
    }
    return false;
}

const QList<QTextElementReg *> &QTextElementReg::registry()
{
    return globalRegistry().list;
}

void QTextElementReg::add(QTextElementReg *registry)
{
    globalRegistry().list.append(registry);
}

void QTextElementReg::remove(QTextElementReg *registry)
{
    if (globalRegistry().list.removeOne(registry))
        delete registry;
}

int QTextElement::firstLine() const
{
    return block.blockNumber();
}

int QTextElement::lastLine() const
{
    return block.blockNumber();
}

void QTextElement::remove(bool blockOnly)
{
    if (!editor)
        return;
    QTextCursor cursor(editor->document());
    if (blockOnly) {
        const QTextBlock after = block.next();
        cursor.setPosition(block.position());
        cursor.setPosition(after.isValid() ? after.position() : block.position() + block.length() - 1,
                           QTextCursor::KeepAnchor);
    } else {
        selectRange(cursor);
    }
    editor->removeSelection(cursor);
}

void QTextElement::replaceLine(const QString &text)
{
    if (!editor)
        return;
    QElementTextEditor *owner = editor;
    owner->raiseParseGuard();
    QTextCursor cursor(owner->document());
    cursor.setPosition(block.position());
    cursor.setPosition(block.position() + block.length() - 1, QTextCursor::KeepAnchor);
    owner->insertText(cursor, text);
    owner->lowerParseGuard();
}

void QTextElement::selectRange(QTextCursor &cursor) const
{
    const QTextDocument *document = cursor.document();
    const QTextBlock first = document->findBlockByNumber(firstLine());
    const QTextBlock behind = document->findBlockByNumber(lastLine() + 1);
    cursor.setPosition(first.isValid() ? first.position() : 0);
    cursor.setPosition(behind.isValid() ? behind.position() : document->characterCount() - 1,
                       QTextCursor::KeepAnchor);
}

QTextEditorBlockData::~QTextEditorBlockData()
{
    // The document deletes the data of the lines it loses; their elements
    // must leave the chain at the coming parse.
    if (element && element->editor)
        element->editor->elementOrphaned(element);
}

QTextEditorBlockData *QTextEditorBlockData::of(const QTextBlock &block, bool create)
{
    auto *data = static_cast<QTextEditorBlockData *>(block.userData());
    if (!data && create && block.isValid()) {
        data = new QTextEditorBlockData;
        QTextBlock(block).setUserData(data);
    }
    return data;
}

QTextElement *QTextEditorBlockData::elementOf(const QTextBlock &block)
{
    const auto *data = static_cast<const QTextEditorBlockData *>(block.userData());
    return data ? data->element : nullptr;
}
