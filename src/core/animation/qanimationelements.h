#pragma once

#include "../text/qtextelements.h"

#include <QRect>

class QAnimationFrame;
class QAnimations;
class QCollisionBoxes;

/** How a frame's sprite is blended. */
enum class QAnimationFrameBlend { None = 0, Addition = 1, Subtraction = 2 };

/** The weights of an additive blend, 256 each by default. */
struct QBlendTarget
{
    quint16 source = 256;
    quint16 destination = 256;
    bool operator==(const QBlendTarget &other) const
    {
        return source == other.source && destination == other.destination;
    }
    bool operator!=(const QBlendTarget &other) const { return !(*this == other); }
};

/** The kinds of collision box declarations. Bit 0 chooses Clsn2, bit 1 a default declaration. */
enum QCollisionBoxType { Attack = 0, Collision = 1, AttackDefault = 2, CollisionDefault = 3 };

/** The lines that qualify the frame below them. */
enum QInterFrameElementType {
    LoopStart = 0,
    InterpolateBlend = 1,
    InterpolateOffset = 2,
    InterpolateScale = 3,
    InterpolateAngle = 4
};

/** The element types of an AIR file. */
namespace AnimationElement {
constexpr int Action = 18;
constexpr int Frame = 32;
constexpr int Declaration = 64;
constexpr int Box = 128;
constexpr int InterFrame = 256;
} // namespace AnimationElement

/** One "[Begin Action n]" line and the animation it starts. */
class QAnimation : public QGroupHeader
{
    Q_OBJECT

public:
    int elementType() const override { return AnimationElement::Action; }
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;

    int number() const { return m_number; }
    /** Rewrites the header line as "[Begin Action n]"; the name comment stays. */
    void setNumber(int number);

    int frameCount() const { return int(frames.size()); }
    /** The frame at `index`, or null beyond the end. */
    QAnimationFrame *frameAt(int index) const;
    /** Adds a frame "-1,0, 0,0, 10" after the last line of the animation; returns it. */
    QAnimationFrame *frameAdd();
    /** Inserts a frame before the one at `index` (with its box lines); at or beyond the end, adds. */
    QAnimationFrame *frameInsert(int index);
    /** The whole text of the animation, from its comment lines to its last line. */
    QString text() const;
    /** The index of the frame that "LoopStart" qualifies, or -1. */
    int loopStart() const;

    /** Frames in document order. */
    QList<QAnimationFrame *> frames;
    /** The frame selected in this animation. */
    quint32 currentFrameIndex = 0;

private:
    int m_number = 0;
};

/**
 * One frame line: sprite, offset, time, flip, blend, scale and angle. Reads
 * give what the line holds; a setter composes a new line and replaces the
 * old one, losing only a comment behind the values.
 */
class QAnimationFrame : public QTextElement
{
    Q_OBJECT

public:
    int elementType() const override { return AnimationElement::Frame; }
    /** From the frame's own line up over the declaration, box and inter-frame lines right above it. */
    int firstLine() const override;
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;

    int spriteGroup() const { return m_spriteGroup; }
    int spriteIndex() const { return m_spriteIndex; }
    int offsetX() const { return m_offsetX; }
    int offsetY() const { return m_offsetY; }
    /** Ticks; -1 for ever. */
    int time() const { return m_time; }
    /** Bit 1 vertical, bit 2 horizontal. */
    uint flip() const { return m_flip; }
    QAnimationFrameBlend blend() const { return m_blend; }
    QBlendTarget blendTarget() const { return m_blendTarget; }
    /**
     * Whether the line gave the blend target. An "A..." word that fits no
     * form keeps the target the frame had before, which the text alone
     * doesn't tell.
     */
    bool blendTargetFromLine() const { return m_targetFromLine; }
    /** 0 when the line states no scale (drawn as 1). */
    double scaleX() const { return m_scaleX; }
    double scaleY() const { return m_scaleY; }
    /** Degrees; 0 when the line states none. */
    double angle() const { return m_angle; }

    void setSpriteGroup(int group);
    void setSpriteIndex(int index);
    void setOffsetX(int x);
    void setOffsetY(int y);
    void setTime(int time);
    void setFlip(uint flip);
    void setBlend(QAnimationFrameBlend blend, QBlendTarget target);
    void setBlendTarget(QBlendTarget target);
    void setScaleX(double scale);
    void setScaleY(double scale);
    void setAngle(double angle);
    /** Sets every field at once; the line is rewritten only when something differs. */
    void setValues(int group, int index, int x, int y, int time, uint flip, QAnimationFrameBlend blend,
                   QBlendTarget target, double scaleX, double scaleY, double angle);
    /** The line these values are written as. */
    static QString compose(int group, int index, int x, int y, int time, uint flip, QAnimationFrameBlend blend,
                           QBlendTarget target, double scaleX, double scaleY, double angle);

    /** Whether an inter-frame line of `type` qualifies this frame. */
    bool checkInterFrame(QInterFrameElementType type) const;
    /** Adds or deletes the inter-frame line of `type`. */
    void setInterFrame(QInterFrameElementType type, bool on);
    /** The declaration of `type`, or null. */
    QCollisionBoxes *hitBoxes(QCollisionBoxType type) const { return declarations[type]; }
    /** Adds a box of `type`, with its declaration if the frame has none; returns the box. */
    class QCollisionBox *insertBox(QCollisionBoxType type, const QRect &rect);
    /** The place in the animation's frames, -1 for an orphan. */
    int index() const;
    /**
     * The boxes that act on this frame: Clsn1 (`collision` false) or Clsn2.
     * A frame's own declaration wins; otherwise the nearest default
     * declaration at or before it in the animation.
     */
    QList<class QCollisionBox *> resolvedBoxes(bool collision) const;

    /** The animation, or null for a frame before any header. */
    QAnimation *parent = nullptr;
    /** The declarations of the frame, by QCollisionBoxType; null where it has none. */
    QCollisionBoxes *declarations[4] = {nullptr, nullptr, nullptr, nullptr};
    QList<class QInterFrameElement *> interFrames;

private:
    int m_spriteGroup = 0;
    int m_spriteIndex = 0;
    int m_offsetX = 0;
    int m_offsetY = 0;
    int m_time = 0;
    uint m_flip = 0;
    QAnimationFrameBlend m_blend = QAnimationFrameBlend::None;
    QBlendTarget m_blendTarget;
    bool m_targetFromLine = false;
    double m_scaleX = 0;
    double m_scaleY = 0;
    double m_angle = 0;
};

/** A "Clsn2: 3" line: the declaration of the boxes below it. */
class QCollisionBoxes : public QTextElement
{
    Q_OBJECT

public:
    int elementType() const override { return AnimationElement::Declaration; }
    /** The last line of its last box, or its own line. */
    int lastLine() const override;
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;

    QCollisionBoxType type() const { return m_type; }
    /** The number of box lines that belong to it, whatever the line says. */
    int count() const { return int(boxes.size()); }
    class QCollisionBox *at(int index) const { return index >= 0 && index < boxes.size() ? boxes.at(index) : nullptr; }
    /** Adds a box line after the last box; returns it. */
    class QCollisionBox *insert(const QRect &rect);
    /** Deletes every box line, and with the last one the declaration. */
    void clear();
    /** "Clsn1Default" and the like. */
    static QString word(QCollisionBoxType type);

    /** The frame it belongs to, or null for an orphan. */
    QAnimationFrame *parent = nullptr;
    QList<class QCollisionBox *> boxes;
    /** The count the line holds, as read. */
    int writtenCount = 0;

private:
    friend class QAnimations;
    QCollisionBoxType m_type = Attack;
};

/** A "  Clsn2[0] = -10, 0, 10, -60" line. */
class QCollisionBox : public QTextElement
{
    Q_OBJECT

public:
    int elementType() const override { return AnimationElement::Box; }
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;
    /** Deletes the line; with the last box of a declaration, the declaration goes too. */
    void remove(bool blockOnly) override;

    /** Corners left, top, right, bottom relative to the axis; normalised when read from the text. */
    QRect rect() const { return m_rect; }
    /** Stores `rect` as given and rewrites the line. */
    void setRect(const QRect &rect);
    /** The place in the declaration's boxes, -1 for an orphan. */
    int index() const;
    /** The line a box of this declaration and place is written as. */
    static QString compose(const QCollisionBoxes *declaration, int index, const QRect &rect);

    QCollisionBoxes *parent = nullptr;
    /** The index the line holds, as read. */
    int writtenIndex = 0;

private:
    QRect m_rect = QRect(QPoint(0, 0), QPoint(-1, -1));
};

/** A "LoopStart" or "Interpolate Offset" line. */
class QInterFrameElement : public QTextElement
{
    Q_OBJECT

public:
    int elementType() const override { return AnimationElement::InterFrame; }
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;

    QInterFrameElementType type() const { return m_type; }
    static QString line(QInterFrameElementType type);

    QAnimationFrame *parent = nullptr;

private:
    QInterFrameElementType m_type = LoopStart;
};

/** Registers the five kinds of AIR lines; once per process. */
void registerAnimationElements();
/** Takes them out of the global list again. */
void releaseAnimationElements();
