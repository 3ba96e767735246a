#include "qanimations.h"

#include "../base/quserprompt.h"
#include "../text/qsyntaxtexteditor.h"

#include <QHash>
#include <QRegularExpression>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

namespace {

constexpr int AirKinds = AnimationElement::Action | AnimationElement::Frame | AnimationElement::Declaration
    | AnimationElement::Box | AnimationElement::InterFrame;
// Above this many elements come or go, one pass over the whole chain is cheaper.
constexpr int RebuildThreshold = 64;

QTextElement *previousAlive(QTextElement *e)
{
    QTextElement *p = e->previous;
    while (p && !p->alive)
        p = p->previous;
    return p;
}

QTextElement *nextAlive(QTextElement *e)
{
    QTextElement *n = e->next;
    while (n && !n->alive)
        n = n->next;
    return n;
}

bool isAction(const QTextElement *e)
{
    return e && e->elementType() == AnimationElement::Action;
}

/**
 * Whether a change can give lines other owners: a line that comes or goes,
 * or a declaration or an inter-frame line rewritten as another kind
 * ("Clsn1" typed into "Clsn2").
 */
bool reshapes(const QTextElementChange &change)
{
    const int type = change.element->elementType();
    if (change.kind == QTextElementChange::Changed)
        return type & (AnimationElement::Declaration | AnimationElement::InterFrame);
    return type & AirKinds;
}

QAnimation *actionBefore(QTextElement *e)
{
    QTextElement *p = previousAlive(e);
    while (p && !isAction(p))
        p = previousAlive(p);
    return static_cast<QAnimation *>(p);
}

} // namespace

QAnimations::QAnimations(QProjectOwner *project, QSyntaxTextEditor *editor)
    : QProjectFile(project, FileAnimations)
{
    setEditor(editor);
}

QAnimations::~QAnimations()
{
    if (m_editor)
        attach(m_editor, false);
}

void QAnimations::attach(QSyntaxTextEditor *editor, bool accept)
{
    for (int type : {1, AnimationElement::Action, AnimationElement::Frame, AnimationElement::Declaration,
                     AnimationElement::Box, AnimationElement::InterFrame})
        editor->setKindAccepted(accept, type, 0);
    if (accept) {
        connect(editor, &QElementTextEditor::update, this, &QAnimations::update);
        connect(editor, &QElementTextEditor::updated, this, &QAnimations::updated);
        connect(editor, &QSyntaxTextEditor::changed, this, &QAnimations::changed);
    } else {
        disconnect(editor, nullptr, this, nullptr);
    }
}

void QAnimations::setEditor(QSyntaxTextEditor *editor)
{
    if (editor == m_editor)
        return;
    if (m_editor) {
        attach(m_editor, false);
        // The lines of animations are no elements of that text any more.
        m_editor->reparseAll();
    }
    m_editor = editor;
    beginResetModel();
    m_animations.clear();
    endResetModel();
    if (m_editor) {
        attach(m_editor, true);
        const bool autoFix = m_autoFix;
        m_autoFix = false;
        m_editor->reparseAll();
        m_autoFix = autoFix;
        rebuildAll({});
        // Lines read, not edited: nothing to fix.
        m_touched.clear();
    }
}

bool QAnimations::fromFile(const QString &fileName, int codepage, bool keepName)
{
    if (!m_editor)
        return false;
    m_autoFix = false;
    const bool loaded = m_editor->load(fileName, codepage, keepName);
    m_autoFix = true;
    return loaded;
}

bool QAnimations::toFile(const QString &fileName, bool asUtf8, bool asCopy)
{
    return m_editor && m_editor->save(fileName, asUtf8, asCopy);
}

QAnimation *QAnimations::at(int index) const
{
    return index >= 0 && index < m_animations.size() ? m_animations.at(index) : nullptr;
}

int QAnimations::rowOf(const QAnimation *animation) const
{
    return int(m_animations.indexOf(const_cast<QAnimation *>(animation)));
}

QAnimation *QAnimations::add(int number)
{
    if (!m_editor)
        return nullptr;
    m_editor->appendLine(QStringLiteral("[Begin Action %1]\n").arg(number));
    return m_animations.isEmpty() ? nullptr : m_animations.last();
}

QAnimation *QAnimations::insert(int index, int number)
{
    QAnimation *before = at(index);
    if (!before)
        return add(number);
    m_editor->insertLineBefore(before, QStringLiteral("[Begin Action %1]\n").arg(number), false);
    return at(index);
}

void QAnimations::remove(int index)
{
    if (QAnimation *animation = at(index))
        animation->remove(false);
}

QAnimation *QAnimations::duplicate(int index, int number)
{
    QAnimation *source = at(index);
    if (!source || !m_editor)
        return nullptr;
    QString text = source->text();
    if (number != -1) {
        // Every header of the old number in the copy, comments and all: that
        // is how it is meant. The number is compared as the header is read,
        // so "[Begin Action 000]" is a header of action 0.
        static const QRegularExpression header(QStringLiteral("\\[\\s*begin\\s+action\\s+(-?\\d+)\\s*\\]"),
                                               QRegularExpression::CaseInsensitiveOption);
        QString copy;
        qsizetype done = 0;
        for (auto it = header.globalMatch(text); it.hasNext();) {
            const QRegularExpressionMatch match = it.next();
            if (match.captured(1).toInt() != source->number())
                continue;
            copy += text.mid(done, match.capturedStart() - done) + QStringLiteral("[Begin Action %1]").arg(number);
            done = match.capturedEnd();
        }
        text = copy + text.mid(done);
    }
    beginUpdate();
    if (QAnimation *next = at(index + 1))
        m_editor->insertLineBefore(next, text, false);
    else
        m_editor->appendLine(text);
    endUpdate();
    return at(index + 1);
}

void QAnimations::move(int from, int to)
{
    QAnimation *animation = at(from);
    if (!animation || !at(to) || from == to)
        return;
    const int oldCount = count();
    const QString text = animation->text();
    beginUpdate();
    animation->remove(false);
    QTextCursor &cursor = m_editor->cursor();
    if (to < oldCount - 1) {
        QAnimation *target = at(to);
        const QTextBlock block = m_editor->document()->findBlockByNumber(target->firstLine());
        cursor.setPosition(block.position());
        m_editor->insertText(cursor, text + QLatin1Char('\n'));
    } else {
        m_editor->appendLine(text);
    }
    endUpdate();
}

void QAnimations::sort()
{
    if (count() < 2)
        return;
    beginUpdate();
    for (int i = 1; i < count(); ++i) {
        const int number = at(i)->number();
        for (int j = 0; j < i; ++j) {
            if (at(j)->number() > number) {
                move(i, j);
                break;
            }
        }
    }
    endUpdate();
}

int QAnimations::find(int start, const QString &text) const
{
    for (int i = qMax(0, start); i < count(); ++i) {
        const QAnimation *animation = m_animations.at(i);
        if (QString::number(animation->number()) == text || animation->name() == text)
            return i;
    }
    return -1;
}

void QAnimations::clear()
{
    if (m_editor)
        m_editor->clear();
}

void QAnimations::beginUpdate()
{
    if (m_editor)
        m_editor->beginUpdate();
}

void QAnimations::endUpdate()
{
    if (m_editor)
        m_editor->endUpdate();
}

int QAnimations::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant QAnimations::data(const QModelIndex &index, int role) const
{
    const QAnimation *animation = index.isValid() ? at(index.row()) : nullptr;
    if (!animation || role != Qt::DisplayRole)
        return QVariant();
    if (!animation->nameComment)
        return QString::number(animation->number());
    return QStringLiteral("%1 - %2").arg(animation->number()).arg(animation->name());
}

bool QAnimations::checkSave(quint32)
{
    if (count() == 0) {
        userPrompt->warning(tr("Save AIR"), tr("You can't save an empty AIR because M.U.G.E.N. will not open it."));
        return false;
    }
    return true;
}

bool QAnimations::checkDiscard()
{
    return askDiscard(tr("Do you really want to discard the changes made in the animations?"));
}

bool QAnimations::isModified() const
{
    return m_editor && m_editor->isModified();
}

void QAnimations::check()
{
    // What is wrong with an AIR file is what its text check says.
    if (m_editor && m_editor->fileType() == FileAnimations)
        m_editor->check();
}

// Following the text

void QAnimations::update(QElementTextEditor *editor, QList<QTextElementChange> &changes)
{
    if (editor != m_editor)
        return;
    QSet<QTextElement *> added;
    int structural = 0;
    for (const QTextElementChange &change : changes) {
        if (reshapes(change))
            ++structural;
        if (change.kind == QTextElementChange::Added)
            added.insert(change.element);
    }

    if (structural > RebuildThreshold) {
        rebuildAll(added);
    } else if (structural > 0) {
        followHeaders(changes);
        // Each change reshapes the animation around it; a new header also its own.
        QList<QAnimation *> starts;
        bool fromStart = false;
        for (const QTextElementChange &change : changes) {
            QTextElement *e = change.element;
            if (!reshapes(change))
                continue;
            QAnimation *start = actionBefore(e);
            if (start) {
                if (!starts.contains(start))
                    starts.append(start);
            } else {
                fromStart = true;
            }
            if (e->alive && isAction(e) && !starts.contains(static_cast<QAnimation *>(e)))
                starts.append(static_cast<QAnimation *>(e));
        }
        if (fromStart)
            recomputeRegion(nullptr, m_editor->firstElement(), added);
        for (QAnimation *start : std::as_const(starts))
            recomputeRegion(start, start->next, added);
    }

    // Names and numbers shown in the rows.
    for (const QTextElementChange &change : changes) {
        QTextElement *e = change.element;
        QTextElement *named = nullptr;
        if (e->elementType() == 1 && e->alive)
            named = nextAlive(e);
        else if (isAction(e) && change.kind == QTextElementChange::Changed)
            named = e;
        const int row = isAction(named) ? rowOf(static_cast<QAnimation *>(named)) : -1;
        if (row >= 0)
            Q_EMIT dataChanged(QAbstractListModel::index(row), QAbstractListModel::index(row));
    }

    // An undo or a redo gives back text as it was, and is no edit to fix:
    // a fix now would be a new edit, and would end the redo.
    if (m_editor->isReactingToDocument() && m_editor->document()->availableRedoSteps() > 0)
        m_touched.clear();
    if (m_autoFix && !m_touched.isEmpty()) {
        // The document can't be edited while it reports a change of its own:
        // the fix follows, and joins the undo step of that change.
        if (m_editor->isReactingToDocument()) {
            if (!m_fixQueued) {
                m_fixQueued = true;
                QMetaObject::invokeMethod(
                    this,
                    [this] {
                        m_fixQueued = false;
                        applyAutoFix(true);
                    },
                    Qt::QueuedConnection);
            }
        } else {
            applyAutoFix(false);
        }
    } else if (!m_autoFix) {
        m_touched.clear();
    }
}

void QAnimations::followHeaders(const QList<QTextElementChange> &changes)
{
    for (const QTextElementChange &change : changes) {
        if (change.kind != QTextElementChange::Removed || !isAction(change.element))
            continue;
        const int row = rowOf(static_cast<QAnimation *>(change.element));
        if (row >= 0) {
            beginRemoveRows(QModelIndex(), row, row);
            m_animations.removeAt(row);
            endRemoveRows();
        }
    }
    // Added headers from the last: the next animation of each is then in the list.
    for (auto it = changes.crbegin(); it != changes.crend(); ++it) {
        if (it->kind != QTextElementChange::Added || !isAction(it->element))
            continue;
        auto *animation = static_cast<QAnimation *>(it->element);
        QTextElement *next = nextAlive(animation);
        while (next && !isAction(next))
            next = nextAlive(next);
        const int row = next ? rowOf(static_cast<QAnimation *>(next)) : count();
        const int at = row < 0 ? count() : row;
        beginInsertRows(QModelIndex(), at, at);
        m_animations.insert(at, animation);
        endInsertRows();
    }
}

void QAnimations::rebuildAll(const QSet<QTextElement *> &added)
{
    beginResetModel();
    m_animations.clear();
    if (m_editor) {
        for (QTextElement *e = m_editor->firstElement(); e; e = e->next) {
            if (e->alive && isAction(e))
                m_animations.append(static_cast<QAnimation *>(e));
        }
        recomputeRegion(nullptr, m_editor->firstElement(), added);
        for (QAnimation *animation : std::as_const(m_animations))
            recomputeRegion(animation, animation->next, added);
    }
    endResetModel();
}

void QAnimations::recomputeRegion(QAnimation *start, QTextElement *from, const QSet<QTextElement *> &added)
{
    if (start)
        start->frames.clear();
    QList<QCollisionBoxes *> declarations;
    QList<QInterFrameElement *> qualifiers;
    QCollisionBoxes *declaration = nullptr;
    QHash<QCollisionBoxes *, QList<QCollisionBox *>> before;

    for (QTextElement *e = from; e; e = e->next) {
        if (!e->alive)
            continue;
        const int type = e->elementType();
        if (type == AnimationElement::Action)
            break;
        if (type == AnimationElement::Frame) {
            auto *frame = static_cast<QAnimationFrame *>(e);
            frame->parent = start;
            if (start)
                start->frames.append(frame);
            for (QCollisionBoxes *&slot : frame->declarations) {
                if (slot && slot->parent == frame)
                    slot->parent = nullptr;
                slot = nullptr;
            }
            for (QInterFrameElement *qualifier : std::as_const(frame->interFrames)) {
                if (qualifier->parent == frame)
                    qualifier->parent = nullptr;
            }
            frame->interFrames.clear();
            // The first line of each kind right above the frame is its own;
            // a second one stays an orphan.
            for (QCollisionBoxes *d : std::as_const(declarations)) {
                if (!frame->declarations[d->type()]) {
                    frame->declarations[d->type()] = d;
                    d->parent = frame;
                }
            }
            for (QInterFrameElement *q : std::as_const(qualifiers)) {
                if (!frame->checkInterFrame(q->type())) {
                    frame->interFrames.append(q);
                    q->parent = frame;
                }
            }
            declarations.clear();
            qualifiers.clear();
            declaration = nullptr;
        } else if (type == AnimationElement::Declaration) {
            declaration = static_cast<QCollisionBoxes *>(e);
            before.insert(declaration, declaration->boxes);
            declaration->boxes.clear();
            declaration->parent = nullptr;
            declarations.append(declaration);
        } else if (type == AnimationElement::Box) {
            auto *box = static_cast<QCollisionBox *>(e);
            box->parent = declaration;
            if (declaration)
                declaration->boxes.append(box);
        } else if (type == AnimationElement::InterFrame) {
            auto *qualifier = static_cast<QInterFrameElement *>(e);
            qualifier->parent = nullptr;
            qualifiers.append(qualifier);
        }
    }
    // A declaration is edited when a box line joins or leaves it; only then
    // are its count and indexes fixed. One that came in with all its boxes
    // (a paste, a copy, a move) is text as it was written, and an edit
    // elsewhere leaves a wrong count as the file has it.
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        QCollisionBoxes *declaration = it.key();
        if (declaration->boxes == it.value())
            continue;
        const bool arrivedWhole = added.contains(declaration)
            && std::all_of(declaration->boxes.cbegin(), declaration->boxes.cend(),
                           [&added](QCollisionBox *box) { return added.contains(box); });
        if (!arrivedWhole)
            m_touched.append(declaration);
    }
}

void QAnimations::applyAutoFix(bool joinPrevious)
{
    QList<QCollisionBoxes *> touched;
    touched.swap(m_touched);
    if (!m_editor || !m_autoFix)
        return;
    QSet<QCollisionBoxes *> done;
    bool begun = false;
    for (QCollisionBoxes *declaration : std::as_const(touched)) {
        // An element may have gone, or come back for another line, since it was noted.
        if (declaration->editor != m_editor || !declaration->alive || done.contains(declaration))
            continue;
        done.insert(declaration);
        const auto begin = [&] {
            if (!begun) {
                if (joinPrevious)
                    m_editor->cursor().joinPreviousEditBlock();
                m_editor->beginUpdate();
                begun = true;
            }
        };
        if (declaration->writtenCount != declaration->count()) {
            begin();
            declaration->replaceLine(QCollisionBoxes::word(declaration->type()) + QStringLiteral(": %1").arg(declaration->count()));
            declaration->writtenCount = declaration->count();
        }
        for (int i = 0; i < declaration->count(); ++i) {
            QCollisionBox *box = declaration->boxes.at(i);
            if (box->writtenIndex != i) {
                begin();
                box->replaceLine(QCollisionBox::compose(declaration, i, box->rect()));
                box->writtenIndex = i;
            }
        }
    }
    if (begun) {
        m_editor->endUpdate();
        if (joinPrevious) {
            // Its end reports the whole step again; the lines are parsed already.
            m_editor->raiseParseGuard();
            m_editor->cursor().endEditBlock();
            m_editor->lowerParseGuard();
        }
    }
}

QString dumpAnimations(const QAnimations &animations)
{
    QStringList lines;
    for (int i = 0; i < animations.count(); ++i) {
        const QAnimation *animation = animations.at(i);
        lines.append(QStringLiteral("[%1] \"%2\" loop %3").arg(animation->number()).arg(animation->name())
                         .arg(animation->loopStart()));
        for (const QAnimationFrame *frame : animation->frames) {
            QString line = QStringLiteral("  %1,%2 %3,%4 t%5 f%6 b%7").arg(frame->spriteGroup()).arg(frame->spriteIndex())
                               .arg(frame->offsetX()).arg(frame->offsetY()).arg(frame->time()).arg(frame->flip())
                               .arg(int(frame->blend()));
            if (frame->blend() == QAnimationFrameBlend::Addition && frame->blendTargetFromLine())
                line += QStringLiteral(" %1/%2").arg(frame->blendTarget().source).arg(frame->blendTarget().destination);
            if (frame->scaleX() != 0 || frame->scaleY() != 0 || frame->angle() != 0)
                line += QStringLiteral(" s%1,%2 a%3").arg(frame->scaleX()).arg(frame->scaleY()).arg(frame->angle());
            for (const QInterFrameElement *qualifier : frame->interFrames)
                line += QLatin1Char(' ') + QInterFrameElement::line(qualifier->type());
            lines.append(line);
            for (int type = 0; type < 4; ++type) {
                const QCollisionBoxes *declaration = frame->declarations[type];
                if (!declaration)
                    continue;
                QStringList boxes;
                for (const QCollisionBox *box : declaration->boxes) {
                    const QRect r = box->rect();
                    boxes.append(QStringLiteral("(%1,%2,%3,%4)").arg(r.left()).arg(r.top()).arg(r.right()).arg(r.bottom()));
                }
                lines.append(QStringLiteral("    %1: %2").arg(QCollisionBoxes::word(QCollisionBoxType(type)), boxes.join(QLatin1Char(' '))));
            }
        }
    }
    return lines.join(QLatin1Char('\n'));
}
