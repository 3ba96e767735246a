#pragma once

#include "../base/qorganizableobject.h"
#include "../base/qprojectfile.h"
#include "qanimationelements.h"

#include <QList>
#include <QSet>

class QElementTextEditor;
class QSyntaxTextEditor;

/**
 * The animations of a project: a typed view over the text of an AIR file.
 *
 * The text document is the only truth. Every animation, frame, Clsn
 * declaration, box and inter-frame line is an element of one line of it;
 * reading a field reads what its line holds, and writing one rewrites the
 * line. This model follows the text through the document's parse, so the
 * text view and the graphic view can't differ, and the document's undo is
 * the animations' undo. For a character the document is the AIR file; for
 * stages and storyboards the project attaches the DEF, where their
 * animations live.
 */
class QAnimations : public QOrganizableObject, public QProjectFile
{
    Q_OBJECT

public:
    /** `editor` is the text document read and written; not owned. */
    QAnimations(QProjectOwner *project, QSyntaxTextEditor *editor);
    ~QAnimations() override;

    /** The text document the animations are read from. */
    QSyntaxTextEditor *editor() const { return m_editor; }
    /** Reads and writes through another text document from now on. */
    void setEditor(QSyntaxTextEditor *editor);

    /** Loads an AIR file into the document; the file isn't changed by being read. */
    bool fromFile(const QString &fileName, int codepage, bool keepName);
    /** Writes the document's text (see QSyntaxTextEditor::save). */
    bool toFile(const QString &fileName, bool asUtf8, bool asCopy);

    int count() const { return int(m_animations.size()); }
    /** The animation at `index`, or null beyond the end. */
    QAnimation *at(int index) const;
    /** Appends "[Begin Action n]" and a blank line at the end; returns the new animation. */
    QAnimation *add(int number);
    /** Inserts an animation before the one at `index`, or at the end; returns it. */
    QAnimation *insert(int index, int number);
    /**
     * Copies the animation's text right behind it; with a number other than
     * -1, every "[Begin Action n]" in the copy takes the new number. Returns
     * the copy.
     */
    QAnimation *duplicate(int index, int number);
    /** Sorts by number, stable, as one undo step. */
    void sort();
    /** The first animation at or after `start` whose number or name is `text`; -1 if none. */
    int find(int start, const QString &text) const;
    /** Empties the document. */
    void clear();
    /** Brackets many edits into one undo step, heard as one update. */
    void beginUpdate();
    void endUpdate();

    /** The selected row, kept here so that it survives a change of tab. */
    quint32 currentIndex = 0;

    // QOrganizableObject
    void remove(int index) override;
    void move(int from, int to) override;
    void autoOrganize() override { sort(); }
    /** One edit block of the text, so that the rows' moves are one undo step. */
    void beginOrganize(const QList<int> &) override { beginUpdate(); }
    void endOrganize() override { endUpdate(); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /** The number, or "number - name" when a comment names the animation. */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    // QProjectFile
    bool checkSave(quint32 version) override;
    bool checkDiscard() override;
    bool isModified() const override;
    bool isEmpty() const override { return count() == 0; }
    void check() override;

Q_SIGNALS:
    void changed();
    void updated(bool countChanged);

public Q_SLOTS:
    /** Follows a parse of the document. */
    void update(QElementTextEditor *editor, QList<QTextElementChange> &changes);

private:
    void attach(QSyntaxTextEditor *editor, bool accept);
    /** Rebuilds the rows and every animation; `added` holds the elements this parse made. */
    void rebuildAll(const QSet<QTextElement *> &added);
    /** Gives the frames from `from` to the next header to `start`, noting the declarations edited. */
    void recomputeRegion(QAnimation *start, QTextElement *from, const QSet<QTextElement *> &added);
    void followHeaders(const QList<QTextElementChange> &changes);
    int rowOf(const QAnimation *animation) const;
    /**
     * Rewrites the counts and indexes of the declarations that edits left
     * wrong; with `joinPrevious`, as part of the document's last undo step.
     */
    void applyAutoFix(bool joinPrevious);

    QSyntaxTextEditor *m_editor = nullptr;
    QList<QAnimation *> m_animations;
    /** False while a file loads: opening a file never changes it. */
    bool m_autoFix = true;
    QList<QCollisionBoxes *> m_touched;
    bool m_fixQueued = false;
};

/** A stable text of the whole model: for tests, kestrada-cli and bug reports. */
QString dumpAnimations(const QAnimations &animations);
