#include "qanimationelements.h"

#include "../text/qelementtexteditor.h"
#include "../text/qtexttokenizer.h"

#include <QRegularExpression>
#include <QTextDocument>

#include <cmath>

namespace {

bool isWord(const QTextElementToken &token, const char *word)
{
    return token.type == QTextTokenizer::Identifier && token.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

int integer(const QList<QTextElementToken> &tokens, int position)
{
    return position < tokens.size() ? tokens.at(position).text.toInt() : 0;
}

/** The element that now starts on line `line`, or null. */
QTextElement *elementAtLine(QElementTextEditor *editor, int line)
{
    return QTextEditorBlockData::elementOf(editor->document()->findBlockByNumber(line));
}

QString number(double value)
{
    return QString::number(value, 'g', 6);
}

} // namespace

// Actions

void QAnimation::release()
{
    releaseLinks();
    frames.clear();
    currentFrameIndex = 0;
    m_number = 0;
    QTextElementPool<QAnimation>::give(this);
}

void QAnimation::update(const QList<QTextElementToken> &tokens)
{
    m_number = integer(tokens, 3);
}

void QAnimation::setNumber(int number)
{
    if (!editor)
        return;
    replaceLine(QStringLiteral("[Begin Action %1]").arg(number));
    m_number = number;
}

QAnimationFrame *QAnimation::frameAt(int index) const
{
    return index >= 0 && index < frames.size() ? frames.at(index) : nullptr;
}

QAnimationFrame *QAnimation::frameAdd()
{
    if (!editor)
        return nullptr;
    // Behind the last line that belongs to the frames: their boxes and qualifiers too.
    QTextElement *last = frames.isEmpty() ? static_cast<QTextElement *>(this) : frames.last();
    static const int frameKinds = AnimationElement::Frame | AnimationElement::Declaration | AnimationElement::Box
        | AnimationElement::InterFrame;
    for (QTextElement *next = last->next; next && (next->elementType() & frameKinds); next = next->next) {
        if (next->alive)
            last = next;
    }
    QElementTextEditor *owner = editor;
    const int line = last->lineNumber() + 1;
    owner->insertLineAfter(last, QStringLiteral("-1,0, 0,0, 10"), true);
    return qobject_cast<QAnimationFrame *>(elementAtLine(owner, line));
}

QAnimationFrame *QAnimation::frameInsert(int index)
{
    QAnimationFrame *before = frameAt(index);
    if (!before || !editor)
        return frameAdd();
    QElementTextEditor *owner = editor;
    const int line = before->firstLine();
    owner->insertLineBefore(before, QStringLiteral("-1,0, 0,0, 10"), false);
    return qobject_cast<QAnimationFrame *>(elementAtLine(owner, line));
}

QString QAnimation::text() const
{
    if (!editor)
        return QString();
    const QTextDocument *document = editor->document();
    QStringList lines;
    const int last = qMin(lastLine(), document->blockCount() - 1);
    for (int line = firstLine(); line <= last; ++line)
        lines.append(document->findBlockByNumber(line).text());
    return lines.join(QLatin1Char('\n'));
}

int QAnimation::loopStart() const
{
    for (int i = 0; i < frames.size(); ++i) {
        if (frames.at(i)->checkInterFrame(LoopStart))
            return i;
    }
    return -1;
}

// Frames

int QAnimationFrame::firstLine() const
{
    static const int above = AnimationElement::Declaration | AnimationElement::Box | AnimationElement::InterFrame;
    const QTextElement *first = this;
    for (const QTextElement *e = previous; e && (e->elementType() & above); e = e->previous) {
        if (e->alive)
            first = e;
    }
    return first->lineNumber();
}

void QAnimationFrame::release()
{
    parent = nullptr;
    for (QCollisionBoxes *&declaration : declarations) {
        if (declaration && declaration->parent == this)
            declaration->parent = nullptr;
        declaration = nullptr;
    }
    for (QInterFrameElement *element : std::as_const(interFrames)) {
        if (element->parent == this)
            element->parent = nullptr;
    }
    interFrames.clear();
    m_spriteGroup = m_spriteIndex = m_offsetX = m_offsetY = m_time = 0;
    m_flip = 0;
    m_blend = QAnimationFrameBlend::None;
    m_blendTarget = QBlendTarget();
    m_targetFromLine = false;
    m_scaleX = m_scaleY = m_angle = 0;
    QTextElementPool<QAnimationFrame>::give(this);
}

void QAnimationFrame::update(const QList<QTextElementToken> &tokens)
{
    // Sprite numbers are 16-bit; one beyond that reads as 0, as any number
    // too large for its field does, never wrapped into another sprite.
    m_spriteGroup = tokens.value(0).text.toShort();
    m_spriteIndex = tokens.value(2).text.toShort();
    m_offsetX = integer(tokens, 4);
    m_offsetY = integer(tokens, 6);
    m_time = integer(tokens, 8);
    m_flip = 0;
    m_blend = QAnimationFrameBlend::None;

    const auto isIdentifier = [&tokens](int p) {
        return p < tokens.size() && tokens.at(p).type == QTextTokenizer::Identifier;
    };
    int p = 10;
    if (tokens.size() >= 11 && isIdentifier(10)) {
        const QString word = tokens.at(10).text.toLower();
        if (word.contains(QLatin1Char('v')))
            m_flip |= 1;
        if (word.contains(QLatin1Char('h')))
            m_flip |= 2;
        p = 11;
    }
    p += 1;
    if (isIdentifier(p)) {
        const QString word = tokens.at(p).text;
        if (word.startsWith(QLatin1Char('a'), Qt::CaseInsensitive)) {
            m_blend = QAnimationFrameBlend::Addition;
            m_targetFromLine = true;
            if (word.size() == 1) {
                m_blendTarget = QBlendTarget();
            } else if (word.size() == 2) {
                m_blendTarget = QBlendTarget{256, 128};
            } else {
                static const QRegularExpression pattern(QStringLiteral("^as(\\d{1,3})d(\\d{1,3})$"),
                                                        QRegularExpression::CaseInsensitiveOption);
                const QRegularExpressionMatch match = pattern.match(word);
                if (match.hasMatch())
                    m_blendTarget = QBlendTarget{quint16(match.captured(1).toUInt()), quint16(match.captured(2).toUInt())};
                else
                    m_targetFromLine = false;
            }
        } else if (word.compare(QLatin1String("s"), Qt::CaseInsensitive) == 0) {
            m_blend = QAnimationFrameBlend::Subtraction;
        }
        p += 1;
    }

    m_scaleX = m_scaleY = m_angle = 0;
    // A comma in a place has no text: the field is empty and the place stays.
    const auto readNumber = [&tokens, &p](double &field) {
        if (p >= tokens.size())
            return;
        bool ok = false;
        const double value = tokens.at(p).text.toDouble(&ok);
        if (ok) {
            field = value;
            p += 1;
        }
    };
    p += 1;
    readNumber(m_scaleX);
    p += 1;
    readNumber(m_scaleY);
    p += 1;
    if (p < tokens.size())
        m_angle = tokens.at(p).text.toDouble();
}

QString QAnimationFrame::compose(int group, int index, int x, int y, int time, uint flip, QAnimationFrameBlend blend,
                                 QBlendTarget target, double scaleX, double scaleY, double angle)
{
    // The separators differ from place to place: this is how the lines are spelled.
    QString line = QStringLiteral("%1,%2, %3,%4, %5").arg(group).arg(index).arg(x).arg(y).arg(time);
    const bool scales = scaleX != 0 || scaleY != 0 || angle != 0;
    const bool more = blend != QAnimationFrameBlend::None || scales;
    switch (flip & 3) {
    case 3: line += QLatin1String(", HV"); break;
    case 1: line += QLatin1String(", V"); break;
    case 2: line += QLatin1String(", H"); break;
    default:
        if (!more)
            return line;
        line += QLatin1String(", ");
    }
    if (blend == QAnimationFrameBlend::Addition) {
        if (target.source == 256 && target.destination == 256)
            line += QLatin1String(", A");
        else if (target.source == 256 && target.destination == 128)
            line += QLatin1String(", A1");
        else
            line += QStringLiteral(", AS%1D%2").arg(target.source).arg(target.destination);
    } else if (blend == QAnimationFrameBlend::Subtraction) {
        line += QLatin1String(", S");
    } else if (scales) {
        line += QLatin1String(", ");
    } else {
        return line;
    }
    if (scaleX != 0)
        line += QLatin1String(", ") + number(scaleX);
    else if (scaleY != 0 || angle != 0)
        line += QLatin1Char(',');
    else
        return line;
    if (scaleY != 0)
        line += QLatin1Char(',') + number(scaleY);
    else if (angle != 0)
        line += QLatin1String(", ");
    else
        return line;
    if (angle != 0)
        line += QLatin1String(", ") + number(angle);
    return line;
}

void QAnimationFrame::setValues(int group, int index, int x, int y, int time, uint flip, QAnimationFrameBlend blend,
                                QBlendTarget target, double scaleX, double scaleY, double angle)
{
    const auto same = [](double a, double b) { return std::abs(a - b) <= 1e-12; };
    if (group == m_spriteGroup && index == m_spriteIndex && x == m_offsetX && y == m_offsetY && time == m_time
        && flip == m_flip && blend == m_blend && target == m_blendTarget && same(scaleX, m_scaleX)
        && same(scaleY, m_scaleY) && angle == m_angle)
        return;
    if (!editor)
        return;
    replaceLine(compose(group, index, x, y, time, flip, blend, target, scaleX, scaleY, angle));
    // The line was written without a parse: the fields are what a parse of it gives.
    m_spriteGroup = qint16(group);
    m_spriteIndex = qint16(index);
    m_offsetX = x;
    m_offsetY = y;
    m_time = time;
    m_flip = flip & 3;
    m_blend = blend;
    if (blend == QAnimationFrameBlend::Addition) {
        m_blendTarget = target;
        m_targetFromLine = true;
    }
    m_scaleX = scaleX;
    m_scaleY = scaleY;
    m_angle = angle;
}

void QAnimationFrame::setSpriteGroup(int group)
{
    setValues(group, m_spriteIndex, m_offsetX, m_offsetY, m_time, m_flip, m_blend, m_blendTarget, m_scaleX, m_scaleY, m_angle);
}

void QAnimationFrame::setSpriteIndex(int index)
{
    setValues(m_spriteGroup, index, m_offsetX, m_offsetY, m_time, m_flip, m_blend, m_blendTarget, m_scaleX, m_scaleY, m_angle);
}

void QAnimationFrame::setOffsetX(int x)
{
    setValues(m_spriteGroup, m_spriteIndex, x, m_offsetY, m_time, m_flip, m_blend, m_blendTarget, m_scaleX, m_scaleY, m_angle);
}

void QAnimationFrame::setOffsetY(int y)
{
    setValues(m_spriteGroup, m_spriteIndex, m_offsetX, y, m_time, m_flip, m_blend, m_blendTarget, m_scaleX, m_scaleY, m_angle);
}

void QAnimationFrame::setTime(int time)
{
    setValues(m_spriteGroup, m_spriteIndex, m_offsetX, m_offsetY, time, m_flip, m_blend, m_blendTarget, m_scaleX, m_scaleY, m_angle);
}

void QAnimationFrame::setFlip(uint flip)
{
    setValues(m_spriteGroup, m_spriteIndex, m_offsetX, m_offsetY, m_time, flip, m_blend, m_blendTarget, m_scaleX, m_scaleY, m_angle);
}

void QAnimationFrame::setBlend(QAnimationFrameBlend blend, QBlendTarget target)
{
    setValues(m_spriteGroup, m_spriteIndex, m_offsetX, m_offsetY, m_time, m_flip, blend, target, m_scaleX, m_scaleY, m_angle);
}

void QAnimationFrame::setBlendTarget(QBlendTarget target)
{
    setValues(m_spriteGroup, m_spriteIndex, m_offsetX, m_offsetY, m_time, m_flip, m_blend, target, m_scaleX, m_scaleY, m_angle);
}

void QAnimationFrame::setScaleX(double scale)
{
    setValues(m_spriteGroup, m_spriteIndex, m_offsetX, m_offsetY, m_time, m_flip, m_blend, m_blendTarget, scale, m_scaleY, m_angle);
}

void QAnimationFrame::setScaleY(double scale)
{
    setValues(m_spriteGroup, m_spriteIndex, m_offsetX, m_offsetY, m_time, m_flip, m_blend, m_blendTarget, m_scaleX, scale, m_angle);
}

void QAnimationFrame::setAngle(double angle)
{
    setValues(m_spriteGroup, m_spriteIndex, m_offsetX, m_offsetY, m_time, m_flip, m_blend, m_blendTarget, m_scaleX, m_scaleY, angle);
}

bool QAnimationFrame::checkInterFrame(QInterFrameElementType type) const
{
    for (const QInterFrameElement *element : interFrames) {
        if (element->type() == type)
            return true;
    }
    return false;
}

void QAnimationFrame::setInterFrame(QInterFrameElementType type, bool on)
{
    if (!editor || checkInterFrame(type) == on)
        return;
    if (!on) {
        for (QInterFrameElement *element : std::as_const(interFrames)) {
            if (element->type() == type) {
                element->remove(true);
                return;
            }
        }
        return;
    }
    // Before the frame's topmost declaration or qualifier, or the frame line itself.
    QTextElement *anchor = this;
    static const int above = AnimationElement::Declaration | AnimationElement::InterFrame;
    for (QTextElement *e = previous; e && (e->elementType() & (above | AnimationElement::Box)); e = e->previous) {
        if (e->alive && (e->elementType() & above))
            anchor = e;
    }
    editor->insertLineBefore(anchor, QInterFrameElement::line(type), true);
}

QCollisionBox *QAnimationFrame::insertBox(QCollisionBoxType type, const QRect &rect)
{
    if (!editor)
        return nullptr;
    QElementTextEditor *owner = editor;
    owner->beginUpdate();
    QCollisionBoxes *declaration = declarations[type];
    if (!declaration) {
        QTextElement *anchor = this;
        const auto first = [this](std::initializer_list<QCollisionBoxType> types) -> QTextElement * {
            for (QCollisionBoxType t : types) {
                if (declarations[t])
                    return declarations[t];
            }
            return nullptr;
        };
        QTextElement *found = nullptr;
        switch (type) {
        case Attack: found = first({Collision}); break;
        case Collision: break;
        case AttackDefault: found = first({CollisionDefault, Attack, Collision}); break;
        case CollisionDefault: found = first({Attack, Collision}); break;
        }
        if (found)
            anchor = found;
        const int line = anchor->lineNumber();
        owner->insertLineBefore(anchor, QCollisionBoxes::word(type) + QLatin1String(": 0"), true);
        declaration = qobject_cast<QCollisionBoxes *>(elementAtLine(owner, line));
    }
    QCollisionBox *box = declaration ? declaration->insert(rect) : nullptr;
    owner->endUpdate();
    return box;
}

int QAnimationFrame::index() const
{
    return parent ? int(parent->frames.indexOf(const_cast<QAnimationFrame *>(this))) : -1;
}

QList<QCollisionBox *> QAnimationFrame::resolvedBoxes(bool collision) const
{
    const QCollisionBoxType own = collision ? Collision : Attack;
    const QCollisionBoxType fallback = collision ? CollisionDefault : AttackDefault;
    if (declarations[own] && declarations[own]->count() > 0)
        return declarations[own]->boxes;
    if (!parent)
        return {};
    // Defaults reach forward from the frame that declares them; never back.
    for (int i = index(); i >= 0; --i) {
        const QCollisionBoxes *declaration = parent->frames.at(i)->declarations[fallback];
        if (declaration && declaration->count() > 0)
            return declaration->boxes;
    }
    return {};
}

// Declarations

int QCollisionBoxes::lastLine() const
{
    return boxes.isEmpty() ? lineNumber() : boxes.last()->lineNumber();
}

void QCollisionBoxes::release()
{
    if (parent && parent->declarations[m_type] == this)
        parent->declarations[m_type] = nullptr;
    parent = nullptr;
    for (QCollisionBox *box : std::as_const(boxes)) {
        if (box->parent == this)
            box->parent = nullptr;
    }
    boxes.clear();
    writtenCount = 0;
    m_type = Attack;
    QTextElementPool<QCollisionBoxes>::give(this);
}

void QCollisionBoxes::update(const QList<QTextElementToken> &tokens)
{
    const QString word = tokens.value(0).text.toLower();
    int type = 0;
    if (word.startsWith(QLatin1String("clsn2")))
        type |= 1;
    if (word.endsWith(QLatin1String("default")))
        type |= 2;
    m_type = QCollisionBoxType(type);
    writtenCount = integer(tokens, 2);
}

QString QCollisionBoxes::word(QCollisionBoxType type)
{
    static const char *const words[] = {"Clsn1", "Clsn2", "Clsn1Default", "Clsn2Default"};
    return QLatin1String(words[type & 3]);
}

QCollisionBox *QCollisionBoxes::insert(const QRect &rect)
{
    if (!editor)
        return nullptr;
    QElementTextEditor *owner = editor;
    QTextElement *after = boxes.isEmpty() ? static_cast<QTextElement *>(this) : boxes.last();
    const int line = after->lineNumber() + 1;
    owner->beginUpdate();
    owner->insertLineAfter(after, QCollisionBox::compose(this, count(), rect), true);
    owner->endUpdate();
    return qobject_cast<QCollisionBox *>(elementAtLine(owner, line));
}

void QCollisionBoxes::clear()
{
    if (!editor)
        return;
    QElementTextEditor *owner = editor;
    owner->beginUpdate();
    while (!boxes.isEmpty() && editor)
        boxes.last()->remove(true);
    owner->endUpdate();
}

// Boxes

void QCollisionBox::release()
{
    if (parent)
        parent->boxes.removeOne(this);
    parent = nullptr;
    writtenIndex = 0;
    m_rect = QRect(QPoint(0, 0), QPoint(-1, -1));
    QTextElementPool<QCollisionBox>::give(this);
}

void QCollisionBox::update(const QList<QTextElementToken> &tokens)
{
    writtenIndex = integer(tokens, 2);
    int left = integer(tokens, 5);
    int top = integer(tokens, 7);
    int right = integer(tokens, 9);
    int bottom = integer(tokens, 11);
    if (left > right)
        std::swap(left, right);
    if (top > bottom)
        std::swap(top, bottom);
    m_rect = QRect(QPoint(left, top), QPoint(right, bottom));
}

QString QCollisionBox::compose(const QCollisionBoxes *declaration, int index, const QRect &rect)
{
    // A default box is spelled like a plain one: the declaration tells them apart.
    const bool collision = declaration && (declaration->type() & 1);
    return QStringLiteral("  %1[%2] = %3, %4, %5, %6")
        .arg(collision ? QLatin1String("Clsn2") : QLatin1String("Clsn1"))
        .arg(index)
        .arg(rect.left())
        .arg(rect.top())
        .arg(rect.right())
        .arg(rect.bottom());
}

void QCollisionBox::setRect(const QRect &rect)
{
    if (!editor)
        return;
    const int place = qMax(0, index());
    replaceLine(compose(parent, place, rect));
    m_rect = rect;
    writtenIndex = place;
}

int QCollisionBox::index() const
{
    return parent ? int(parent->boxes.indexOf(const_cast<QCollisionBox *>(this))) : -1;
}

void QCollisionBox::remove(bool blockOnly)
{
    if (!editor)
        return;
    QElementTextEditor *owner = editor;
    QCollisionBoxes *declaration = parent;
    owner->beginUpdate();
    QTextElement::remove(blockOnly);
    if (declaration && declaration->editor == owner && declaration->alive && declaration->count() == 0)
        declaration->remove(blockOnly);
    owner->endUpdate();
}

// Inter-frame lines

void QInterFrameElement::release()
{
    if (parent)
        parent->interFrames.removeOne(this);
    parent = nullptr;
    m_type = LoopStart;
    QTextElementPool<QInterFrameElement>::give(this);
}

void QInterFrameElement::update(const QList<QTextElementToken> &tokens)
{
    if (!tokens.isEmpty() && isWord(tokens.first(), "loopstart")) {
        m_type = LoopStart;
        return;
    }
    const QString last = tokens.isEmpty() ? QString() : tokens.last().text.toLower();
    if (last == QLatin1String("blend"))
        m_type = InterpolateBlend;
    else if (last == QLatin1String("angle"))
        m_type = InterpolateAngle;
    else if (last == QLatin1String("scale"))
        m_type = InterpolateScale;
    else
        m_type = InterpolateOffset;
}

QString QInterFrameElement::line(QInterFrameElementType type)
{
    static const char *const lines[] = {"LoopStart", "Interpolate Blend", "Interpolate Offset", "Interpolate Scale",
                                        "Interpolate Angle"};
    return QLatin1String(lines[type]);
}

// Registries

namespace {

class AnimReg : public QTextElementReg
{
public:
    int elementType() const override { return AnimationElement::Action; }
    quint32 startRule() const override { return makeRule(3, '['); }
    bool accepts(int position, const QTextElementToken &token) override
    {
        switch (position) {
        case 0: return token.type == QTextTokenizer::OpenBracket;
        case 1: return isWord(token, "begin");
        case 2: return isWord(token, "action");
        case 3: return token.type == QTextTokenizer::Integer;
        case 4: return token.type == QTextTokenizer::CloseBracket;
        }
        return token.type == QTextTokenizer::EndOfLine;
    }
    QTextElement *create() override { return QTextElementPool<QAnimation>::take(); }
};

class FrameReg : public QTextElementReg
{
public:
    int elementType() const override { return AnimationElement::Frame; }
    quint32 startRule() const override { return makeRule(2); }
    bool accepts(int position, const QTextElementToken &token) override
    {
        // Five integer columns make a frame; the rest is read by the frame itself.
        if (position > 8)
            return true;
        return token.type == (position % 2 == 0 ? QTextTokenizer::Integer : QTextTokenizer::Comma);
    }
    QTextElement *create() override { return QTextElementPool<QAnimationFrame>::take(); }
};

class InterFrameReg : public QTextElementReg
{
public:
    int elementType() const override { return AnimationElement::InterFrame; }
    quint32 startRule() const override { return makeRule(7, 'L', 'I'); }
    bool accepts(int position, const QTextElementToken &token) override
    {
        if (position == 0) {
            m_loopStart = isWord(token, "loopstart");
            return m_loopStart || isWord(token, "interpolate");
        }
        if (position == 1 && !m_loopStart)
            return isWord(token, "blend") || isWord(token, "angle") || isWord(token, "scale") || isWord(token, "offset");
        return token.type == QTextTokenizer::EndOfLine;
    }
    QTextElement *create() override { return QTextElementPool<QInterFrameElement>::take(); }

private:
    bool m_loopStart = false;
};

class CLSNDeclReg : public QTextElementReg
{
public:
    int elementType() const override { return AnimationElement::Declaration; }
    quint32 startRule() const override { return makeRule(6, 'C'); }
    bool accepts(int position, const QTextElementToken &token) override
    {
        switch (position) {
        case 0:
            return isWord(token, "clsn2default") || isWord(token, "clsn2") || isWord(token, "clsn1")
                || isWord(token, "clsn1default");
        case 1: return token.type == QTextTokenizer::Colon;
        case 2: return token.type == QTextTokenizer::Integer;
        }
        return token.type == QTextTokenizer::EndOfLine;
    }
    QTextElement *create() override { return QTextElementPool<QCollisionBoxes>::take(); }
};

class CLSNReg : public QTextElementReg
{
public:
    int elementType() const override { return AnimationElement::Box; }
    quint32 startRule() const override { return makeRule(6, 'C'); }
    bool accepts(int position, const QTextElementToken &token) override
    {
        static const int expected[] = {QTextTokenizer::Identifier, QTextTokenizer::OpenBracket,
                                       QTextTokenizer::Integer,    QTextTokenizer::CloseBracket,
                                       QTextTokenizer::Equal,      QTextTokenizer::Integer,
                                       QTextTokenizer::Comma,      QTextTokenizer::Integer,
                                       QTextTokenizer::Comma,      QTextTokenizer::Integer,
                                       QTextTokenizer::Comma,      QTextTokenizer::Integer};
        // Any word that starts with "clsn": neither word nor index is checked against the declaration.
        if (position == 0)
            return token.type == QTextTokenizer::Identifier
                && token.text.startsWith(QLatin1String("clsn"), Qt::CaseInsensitive);
        return position < 12 ? token.type == expected[position] : token.type == QTextTokenizer::EndOfLine;
    }
    QTextElement *create() override { return QTextElementPool<QCollisionBox>::take(); }
};

QList<QTextElementReg *> animationRegistries;

} // namespace

void registerAnimationElements()
{
    if (!animationRegistries.isEmpty())
        return;
    animationRegistries = {new AnimReg, new FrameReg, new InterFrameReg, new CLSNDeclReg, new CLSNReg};
    for (QTextElementReg *registry : std::as_const(animationRegistries))
        QTextElementReg::add(registry);
}

void releaseAnimationElements()
{
    for (QTextElementReg *registry : std::as_const(animationRegistries))
        QTextElementReg::remove(registry);
    animationRegistries.clear();
}
