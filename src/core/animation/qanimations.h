#pragma once

#include "../base/qprojectfile.h"

#include <QObject>

class QSyntaxTextEditor;

/**
 * The animations of a project, read live from an AIR text document. For a
 * character the document is the AIR file; for stages and storyboards the
 * project attaches the DEF, where their animations live.
 *
 * TODO: the animation list over the text's elements joins this class; until
 * then it counts no animations.
 */
class QAnimations : public QObject, public QProjectFile
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

    int count() const { return 0; }

    bool checkSave(quint32 version) override;
    bool checkDiscard() override;
    bool isModified() const override;
    bool isEmpty() const override { return count() == 0; }
    void check() override;

Q_SIGNALS:
    void changed();

private:
    QSyntaxTextEditor *m_editor;
};
