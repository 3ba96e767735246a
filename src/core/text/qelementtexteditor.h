#pragma once

#include "../base/qfilewatchobject.h"
#include "qtextelement.h"

#include <QList>
#include <QMap>
#include <QTextCursor>

class QTextDocument;
class QTextTokenizer;

/**
 * Owner of one QTextDocument and of the chain of elements that lies over its
 * recognised lines.
 *
 * The text is the only truth about an engine file. With parsing on, every
 * change of the document re-reads the lines it touched, and the element
 * chain follows: elements are added, updated and removed, and listeners hear
 * of it through update(). Structured edits (a frame, a box, a name) are line
 * edits made through the primitives below, so the text view and the model
 * can never differ, and nothing the program doesn't understand is lost.
 * Its file, once it has one, is watched for changes made elsewhere.
 */
class QElementTextEditor : public QFileWatchObject
{
    Q_OBJECT

public:
    /** With `parse`, every change of the document is parsed. */
    explicit QElementTextEditor(bool parse, QObject *parent = nullptr);
    /** Releases every element before the document goes. */
    ~QElementTextEditor() override;

    /** The text document, owned by this object. */
    QTextDocument *document() const { return m_document; }
    /** The first element of the chain, in document order; null when there is none. */
    QTextElement *firstElement() const { return m_firstElement; }
    /** The cursor through which element edits go. */
    QTextCursor &cursor() { return m_cursor; }

    /**
     * Counts the use of an element kind up or down. A document only sees
     * the kinds whose count is positive, so one global registry serves all
     * kinds of document.
     */
    void setKindAccepted(bool accept, int type, int subType);
    bool isKindAccepted(int type, int subType) const;

    /** Starts a bracket of edits that listeners hear of as one, and that undo as one step. */
    void beginUpdate();
    /** Ends it; at the outermost end, updated() is sent once. */
    void endUpdate();
    /** Parses the whole text again. */
    void reparseAll();

    /** Appends a line feed and `text` at the end of the document. */
    void appendLine(const QString &text);
    /**
     * Inserts a line after `element`: after its own line with `blockOnly`,
     * otherwise after lastLine(). A null element appends.
     */
    void insertLineAfter(QTextElement *element, const QString &text, bool blockOnly);
    /** Inserts a line before `element`: its own line with `blockOnly`, otherwise firstLine(). */
    void insertLineBefore(QTextElement *element, const QString &text, bool blockOnly);
    /** Replaces the cursor's selection by `text` and parses the lines it touched. */
    void insertText(QTextCursor &cursor, const QString &text);
    /** Removes the cursor's selection and parses the lines it touched. */
    void removeSelection(QTextCursor &cursor);

    /**
     * The nearest live element before `element` whose type has a bit of
     * `mask`; null when one with a bit of `stopMask` comes first or the
     * chain ends.
     */
    QTextElement *findPrevious(QTextElement *element, int mask, int stopMask) const;
    /** The same, walking forward. */
    QTextElement *findNext(QTextElement *element, int mask, int stopMask) const;

    /** While raised, changes of the document aren't parsed: the primitives parse themselves. */
    void raiseParseGuard() { ++m_parseGuard; }
    void lowerParseGuard() { --m_parseGuard; }

    /**
     * Whether a parse is running on behalf of the document's own change
     * report: the document must not be edited then, so listeners that need
     * to write to it wait for the event loop.
     */
    bool isReactingToDocument() const { return m_reactingToDocument; }

    /** Called by block data that the document deletes: its element must go. */
    void elementOrphaned(QTextElement *element);

Q_SIGNALS:
    /** Elements were added, removed or changed; removed ones are still readable. */
    void update(QElementTextEditor *editor, QList<QTextElementChange> &changes);
    /** A parse, or an outermost update bracket, ended; `countChanged` when elements came or went. */
    void updated(bool countChanged);

public Q_SLOTS:
    /** Parses the lines that a change of the document touched. */
    void contentsChanged(int position, int charsRemoved, int charsAdded);

protected:
    /** Runs after a parse with the changes it made; the base form sends update(). */
    virtual void processChanges(QList<QTextElementChange> &changes);

private:
    void parseBlock(const QTextBlock &block, QList<QTextElementChange> &changes);
    QTextElementReg *identifyLine(const QTextBlock &block, QTextTokenizer &tokenizer, int firstType,
                                  QList<QTextElementToken> &tokens);
    void splice(QTextElement *element, const QTextBlock &block);
    void unlink(QTextElement *element);
    void finishRemovals(const QList<QTextElementChange> &changes);

    QTextDocument *m_document;
    QTextCursor m_cursor;
    int m_parseGuard = 1;
    int m_updateDepth = 0;
    bool m_countChanged = false;
    bool m_reactingToDocument = false;
    QTextElement *m_firstElement = nullptr;
    QMap<qint64, int> m_acceptedKinds;
    QList<QTextElement *> m_orphans;
    QList<QTextElementToken> m_tokens;
};
