#pragma once

#include "qpool.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTextBlock>
#include <QTextBlockUserData>
#include <QVector>

class QElementTextEditor;
class QTextCursor;
class QTextElement;

/**
 * One token handed to a registry or an element. Only identifiers, strings
 * and numbers carry text: an integer as its value in base 10 (007 arrives as
 * 7), a float as its value with six significant digits.
 */
struct QTextElementToken
{
    int type = 0;
    QString text;
};

/** One entry of a change list of the parser. */
struct QTextElementChange
{
    enum Kind { Removed = 0, Added = 1, Changed = 2 };
    int kind = Changed;
    QTextElement *element = nullptr;
};

/**
 * Describes one kind of element: which lines it recognises. Registries live
 * in one global list filled at program start; the order of registration is
 * the order of preference.
 */
class QTextElementReg
{
public:
    virtual ~QTextElementReg();

    /** The type bits of the elements this registry makes. */
    virtual int elementType() const = 0;
    virtual int elementSubType() const { return 0; }
    /**
     * The start rule, packed: the low byte is the rule, the next bytes up to
     * three ASCII codes c1, c2, c3. Rule 1 passes any character, 2 a digit
     * or '-', 3 c1, 4 c1 or c2, 5 c1, c2 or c3, 6 c1 in either case, 7 and 8
     * the same for two and three letters.
     */
    virtual quint32 startRule() const = 0;
    /** Whether the token at `position` of a line still fits this kind. */
    virtual bool accepts(int position, const QTextElementToken &token) = 0;
    /** A fresh element, from the kind's pool. */
    virtual QTextElement *create() = 0;

    /** Packs a start rule. */
    static quint32 makeRule(int rule, char c1 = 0, char c2 = 0, char c3 = 0);
    /** Whether `rule` passes for the first character `c` of a line's first token (0 for none). */
    static bool rulePasses(quint32 rule, QChar c);

    /** The global list, in order of preference. */
    static const QList<QTextElementReg *> &registry();
    /** Appends a registry to the global list, which owns it from then on. */
    static void add(QTextElementReg *registry);
    /** Takes a registry out of the global list and deletes it. */
    static void remove(QTextElementReg *registry);
};

/**
 * One recognised line (or range of lines) of a text: a live view over the
 * text, made and updated by the parser of its QElementTextEditor. Elements
 * come from pools and are never owned by the chain.
 */
class QTextElement : public QObject
{
    Q_OBJECT

public:
    /** Type bits: 1 name comment, 2 group header, 4 parameter, 16 action, 32 frame... */
    virtual int elementType() const = 0;
    virtual int elementSubType() const { return 0; }
    /** The first line that belongs to the element; by default its own line. */
    virtual int firstLine() const;
    /** The last line that belongs to the element; by default its own line. */
    virtual int lastLine() const;
    /**
     * Removes the element's text: its own line with `blockOnly`, otherwise
     * the lines from firstLine() to lastLine().
     */
    virtual void remove(bool blockOnly);
    /** Clears the element's own data and gives it back to its pool. */
    virtual void release() = 0;
    /** Reads the element's fields from the tokens of its line. */
    virtual void update(const QList<QTextElementToken> &tokens) = 0;

    /** Replaces the element's own line by `text`, as one edit, without a re-parse. */
    void replaceLine(const QString &text);
    /** Selects from the start of firstLine() to behind lastLine() (the end of the text at most). */
    void selectRange(QTextCursor &cursor) const;
    /** The number of the element's own line, from 0. */
    int lineNumber() const { return block.blockNumber(); }

    /** The document that holds the element; null while it rests in its pool. */
    QElementTextEditor *editor = nullptr;
    QTextElement *previous = nullptr;
    QTextElement *next = nullptr;
    /** The block of the element's own line. */
    QTextBlock block;
    /** False from the moment the parser decided to remove the element until it is released. */
    bool alive = true;
};

/** A diagnostic of one line, columns in the line, `end` exclusive. */
struct QSyntaxIssue
{
    /** 0 error, 1 warning, 2 notice. */
    int severity = 0;
    int start = 0;
    int end = 0;
    QString text;
};

/** A round or square bracket of a line. */
struct QSyntaxParen
{
    /** 0 opening, 1 closing. */
    int closing = 0;
    QChar character;
    int position = 0;
};

/**
 * What a text block stores: the element that starts on the line, and what
 * the syntax processor found on it. Made on demand by whichever of the two
 * reaches the block first.
 */
class QTextEditorBlockData : public QTextBlockUserData
{
public:
    ~QTextEditorBlockData() override;

    /** The block's data; with `create`, made when missing; otherwise null when missing. */
    static QTextEditorBlockData *of(const QTextBlock &block, bool create);
    /** The element that starts on `block`, or null. */
    static QTextElement *elementOf(const QTextBlock &block);

    QTextElement *element = nullptr;
    bool isHeader = false;
    bool beforeHeader = false;
    int foldLevel = 0;
    QVector<QSyntaxIssue> issues;
    QVector<QSyntaxParen> parens;
};

/** Elements come from pools, one per element class. */
template <class T>
using QTextElementPool = QPool<T>;
