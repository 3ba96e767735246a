#include "qtextelements.h"

#include "qelementtexteditor.h"
#include "qtexttokenizer.h"

#include <QSet>
#include <QTextCursor>
#include <QTextDocument>

// Name comments

void QNameComment::release()
{
    if (header && header->nameComment == this)
        header->nameComment = nullptr;
    header = nullptr;
    text.clear();
    QTextElementPool<QNameComment>::give(this);
}

void QNameComment::update(const QList<QTextElementToken> &tokens)
{
    text = tokens.isEmpty() ? QString() : tokens.first().text.trimmed();
}

bool NameCmmReg::accepts(int position, const QTextElementToken &token)
{
    if (token.type != QTextTokenizer::EndOfLine)
        return false;
    return position != 0 || !token.text.isEmpty();
}

QTextElement *NameCmmReg::create()
{
    return QTextElementPool<QNameComment>::take();
}

// Headers

namespace {

/** A line belongs to the comments above a header when a ';' comes before any blank. */
bool isCommentAbove(const QString &text)
{
    for (const QChar c : text) {
        if (c == QLatin1Char(';'))
            return true;
        if (c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\r')
            || c == QLatin1Char('\n'))
            return false;
    }
    return false;
}

/** A line opens the next group when its first character that isn't blank is '['. */
bool opensGroup(const QString &text)
{
    for (const QChar c : text) {
        if (!c.isSpace())
            return c == QLatin1Char('[');
    }
    return false;
}

} // namespace

int QGroupHeader::firstLine() const
{
    QTextBlock line = block.previous();
    int first = block.blockNumber();
    while (line.isValid() && isCommentAbove(line.text())) {
        first = line.blockNumber();
        line = line.previous();
    }
    return first;
}

int QGroupHeader::lastLine() const
{
    QTextBlock line = block.next();
    // An indented header is a header all the same: the engine reads it so.
    while (line.isValid() && !opensGroup(line.text()))
        line = line.next();
    if (!line.isValid())
        return block.document()->blockCount();
    // The comments right above the next header belong to that header.
    line = line.previous();
    while (line.isValid() && line != block
           && (line.text().isEmpty() || line.text().startsWith(QLatin1Char(';'))))
        line = line.previous();
    return line.blockNumber();
}

QString QGroupHeader::name() const
{
    return nameComment ? nameComment->text : QString();
}

void QGroupHeader::setName(const QString &name)
{
    if (!editor)
        return;
    // A name is one line.
    QString line = name;
    line.replace(QLatin1Char('\r'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    if (nameComment) {
        if (line.isEmpty()) {
            nameComment->remove(false);
        } else {
            QNameComment *comment = nameComment;
            comment->replaceLine(QLatin1String("; ") + line);
            // The line was rewritten without a parse: keep the element in step.
            comment->text = line.trimmed();
        }
        return;
    }
    if (line.isEmpty())
        return;
    if (lineNumber() == 0) {
        // insertLineBefore() would join the comment to this very line and
        // turn the header into a comment: put the name line above it.
        QTextCursor cursor(editor->document());
        editor->insertText(cursor, QLatin1String("; ") + line + QLatin1Char('\n'));
        return;
    }
    editor->insertLineBefore(this, QLatin1String("; ") + line, true);
}

void QGroupHeader::releaseLinks()
{
    if (nameComment && nameComment->header == this)
        nameComment->header = nullptr;
    nameComment = nullptr;
}

QGroupParam *QParamGroup::param(const QString &key) const
{
    for (QGroupParam *p : params) {
        if (p->key == key)
            return p;
    }
    return nullptr;
}

void QParamGroup::releaseLinks()
{
    for (QGroupParam *p : std::as_const(params)) {
        if (p->group == this)
            p->group = nullptr;
    }
    params.clear();
    QGroupHeader::releaseLinks();
}

// Parameters

void QGroupParam::releaseLinks()
{
    if (group)
        group->params.removeOne(this);
    group = nullptr;
}

void QStringParam::release()
{
    releaseLinks();
    value.clear();
    QTextElementPool<QStringParam>::give(this);
}

void QStringParam::update(const QList<QTextElementToken> &tokens)
{
    value = tokens.size() > 2 ? tokens.at(2).text : QString();
}

void QCommandParam::release()
{
    releaseLinks();
    steps.clear();
    QTextElementPool<QCommandParam>::give(this);
}

namespace {

quint32 commandKey(const QString &word)
{
    static const struct
    {
        const char *word;
        quint32 keys;
    } table[] = {{"U", 1},   {"D", 2},   {"B", 4},   {"F", 8},    {"UB", 5},   {"UF", 9},
                 {"DB", 6},  {"DF", 10}, {"a", 16},  {"b", 32},   {"c", 64},   {"x", 128},
                 {"y", 256}, {"z", 512}, {"s", 1024}};
    for (const auto &entry : table) {
        if (word == QLatin1String(entry.word))
            return entry.keys;
    }
    return 0;
}

} // namespace

void QCommandParam::update(const QList<QTextElementToken> &tokens)
{
    steps.clear();
    quint32 keys = 0;
    quint16 modifiers = 0;
    quint16 ticks = 0;
    for (int i = 2; i < tokens.size(); ++i) {
        const QTextElementToken &token = tokens.at(i);
        switch (token.type) {
        case QTextTokenizer::Identifier:
            keys |= commandKey(token.text);
            break;
        case QTextTokenizer::Slash:
            modifiers |= 1;
            break;
        case QTextTokenizer::Greater:
            modifiers |= 8;
            break;
        case QTextTokenizer::Dollar:
            modifiers |= 4;
            break;
        case QTextTokenizer::Tilde:
            modifiers |= 2;
            if (i + 1 < tokens.size() && tokens.at(i + 1).type == QTextTokenizer::Integer)
                ticks = quint16(tokens.at(++i).text.toInt());
            break;
        case QTextTokenizer::Comma:
            steps.append(CommandStep::make(keys, modifiers, ticks));
            keys = 0;
            modifiers = 0;
            ticks = 0;
            break;
        default:
            break;
        }
    }
    steps.append(CommandStep::make(keys, modifiers, ticks));
}

// Parameter registries

ParamRegBase::ParamRegBase(const QString &key, int subType)
    : m_key(key)
    , m_subType(subType)
{
    const QChar first = key.isEmpty() ? QChar() : key.at(0).toUpper();
    if (first.isDigit())
        m_rule = makeRule(2);
    else if (first.unicode() < 128 && first.isLetter())
        m_rule = makeRule(6, char(first.unicode()));
    else
        m_rule = 0;
}

bool ParamRegBase::accepts(int position, const QTextElementToken &token)
{
    switch (position) {
    case 0:
        return token.type == QTextTokenizer::Identifier
            && token.text.compare(m_key, Qt::CaseInsensitive) == 0;
    case 1:
        return token.type == QTextTokenizer::Equal;
    case 2:
        if (m_subType == QGroupParam::QuotedText)
            return token.type == QTextTokenizer::String;
        if (m_subType == QGroupParam::IntegerValue)
            return token.type == QTextTokenizer::Integer;
        return true;
    }
    if (m_subType == QGroupParam::QuotedText || m_subType == QGroupParam::IntegerValue)
        return token.type == QTextTokenizer::EndOfLine;
    return true;
}

QTextElement *ParamRegBase::stamp(QGroupParam *param) const
{
    param->key = m_key;
    param->subType = m_subType;
    return param;
}

namespace {
NameCmmReg *nameCommentRegistry = nullptr;
}

void registerNameCommentElements()
{
    if (nameCommentRegistry)
        return;
    nameCommentRegistry = new NameCmmReg;
    QTextElementReg::add(nameCommentRegistry);
}

void releaseNameCommentElements()
{
    QTextElementReg::remove(nameCommentRegistry);
    nameCommentRegistry = nullptr;
}

// Group linking

namespace {

bool isNameComment(const QTextElement *e)
{
    return e && e->elementType() == 1;
}

bool isHeader(const QTextElement *e)
{
    return e && (e->elementType() & 2);
}

bool isParam(const QTextElement *e)
{
    return e && (e->elementType() & 4);
}

QTextElement *previousAlive(const QTextElement *e)
{
    QTextElement *p = e->previous;
    while (p && !p->alive)
        p = p->previous;
    return p;
}

QTextElement *nextAlive(const QTextElement *e)
{
    QTextElement *n = e->next;
    while (n && !n->alive)
        n = n->next;
    return n;
}

void bindComment(QNameComment *comment, QGroupHeader *header)
{
    if (comment->header != header) {
        if (comment->header && comment->header->nameComment == comment)
            comment->header->nameComment = nullptr;
        comment->header = nullptr;
    }
    if (!header)
        return;
    if (header->nameComment && header->nameComment != comment
        && header->nameComment->header == header)
        header->nameComment->header = nullptr;
    header->nameComment = comment;
    comment->header = header;
}

void setGroup(QGroupParam *param, QParamGroup *group)
{
    if (param->group == group)
        return;
    if (param->group)
        param->group->params.removeOne(param);
    param->group = group;
    if (!group)
        return;
    // Parameters stay in document order: behind the last one of this group above.
    int index = 0;
    for (QTextElement *e = previousAlive(param); e && e != group; e = previousAlive(e)) {
        if (isParam(e) && static_cast<QGroupParam *>(e)->group == group) {
            index = int(group->params.indexOf(static_cast<QGroupParam *>(e))) + 1;
            break;
        }
    }
    group->params.insert(index, param);
}

QParamGroup *asParamGroup(QTextElement *e)
{
    return isHeader(e) && static_cast<QGroupHeader *>(e)->isParamGroup() ? static_cast<QParamGroup *>(e)
                                                                         : nullptr;
}

/**
 * Gives every parameter between `header` and the next header to `header`;
 * without a header, those from `from` on go to no group.
 */
void regroupAfter(QTextElement *header, QTextElement *from)
{
    QParamGroup *group = asParamGroup(header);
    QTextElement *n = header ? nextAlive(header) : from;
    while (n && !n->alive)
        n = n->next;
    for (; n && !isHeader(n); n = nextAlive(n)) {
        if (isParam(n))
            setGroup(static_cast<QGroupParam *>(n), group);
    }
}

QTextElement *headerBefore(QTextElement *e)
{
    QTextElement *header = previousAlive(e);
    while (header && !isHeader(header))
        header = previousAlive(header);
    return header;
}

QTextElement *chainStart(QTextElement *e)
{
    while (e->previous)
        e = e->previous;
    return e;
}

void relink(QTextElement *e)
{
    if (!e || !e->alive)
        return;
    if (isNameComment(e)) {
        QTextElement *next = nextAlive(e);
        bindComment(static_cast<QNameComment *>(e), isHeader(next) ? static_cast<QGroupHeader *>(next) : nullptr);
    } else if (isHeader(e)) {
        auto *header = static_cast<QGroupHeader *>(e);
        QTextElement *previous = previousAlive(e);
        if (isNameComment(previous)) {
            bindComment(static_cast<QNameComment *>(previous), header);
        } else if (header->nameComment) {
            if (header->nameComment->header == header)
                header->nameComment->header = nullptr;
            header->nameComment = nullptr;
        }
        regroupAfter(e, nullptr);
    } else if (isParam(e)) {
        setGroup(static_cast<QGroupParam *>(e), asParamGroup(headerBefore(e)));
    }
}

/** Breaks the bonds of an element that leaves the chain; adds to `touched` what must be looked at again. */
void detach(QTextElement *e, QList<QTextElement *> &touched)
{
    if (isNameComment(e)) {
        auto *comment = static_cast<QNameComment *>(e);
        if (comment->header) {
            touched.append(comment->header);
            bindComment(comment, nullptr);
        }
    } else if (isHeader(e)) {
        auto *header = static_cast<QGroupHeader *>(e);
        if (header->nameComment) {
            touched.append(header->nameComment);
            bindComment(header->nameComment, nullptr);
        }
        if (QParamGroup *group = asParamGroup(e)) {
            for (QGroupParam *param : std::as_const(group->params)) {
                param->group = nullptr;
                touched.append(param);
            }
            group->params.clear();
        }
    } else if (isParam(e)) {
        setGroup(static_cast<QGroupParam *>(e), nullptr);
    }
}

} // namespace

void linkGroups(const QList<QTextElementChange> &changes)
{
    QList<QTextElement *> touched;
    QSet<QTextElement *> seen;
    bool regroupFromStart = false;
    for (const QTextElementChange &change : changes) {
        QTextElement *e = change.element;
        if (change.kind == QTextElementChange::Changed)
            continue;
        if (change.kind == QTextElementChange::Added) {
            touched.append(e);
            touched.append(previousAlive(e));
            touched.append(nextAlive(e));
            continue;
        }
        detach(e, touched);
        if (seen.contains(e))
            continue;
        // Walk the whole run of removed elements once: what lies on either
        // side of it is what may have to bond anew, and when a header went,
        // the parameters behind it go to the header above the run.
        QTextElement *first = e;
        bool header = isHeader(e);
        while (first->previous && !first->previous->alive) {
            first = first->previous;
            header = header || isHeader(first);
            seen.insert(first);
        }
        QTextElement *last = e;
        while (last->next && !last->next->alive) {
            last = last->next;
            header = header || isHeader(last);
            seen.insert(last);
        }
        seen.insert(e);
        touched.append(first->previous);
        touched.append(last->next);
        if (header) {
            if (QTextElement *above = first->previous ? (isHeader(first->previous) ? first->previous
                                                                                     : headerBefore(first->previous))
                                                      : nullptr)
                touched.append(above);
            else
                regroupFromStart = true;
        }
    }
    if (regroupFromStart && !changes.isEmpty()) {
        QTextElement *start = chainStart(changes.first().element);
        while (start && !start->alive)
            start = start->next;
        if (start && !isHeader(start))
            regroupAfter(nullptr, start);
    }
    for (QTextElement *e : std::as_const(touched))
        relink(e);
}
