#include "qanimations.h"

#include "../base/quserprompt.h"
#include "../text/qsyntaxtexteditor.h"

QAnimations::QAnimations(QProjectOwner *project, QSyntaxTextEditor *editor)
    : QProjectFile(project, FileAnimations)
    , m_editor(nullptr)
{
    setEditor(editor);
}

QAnimations::~QAnimations() = default;

void QAnimations::setEditor(QSyntaxTextEditor *editor)
{
    if (m_editor)
        disconnect(m_editor, nullptr, this, nullptr);
    m_editor = editor;
    if (m_editor)
        connect(m_editor, &QSyntaxTextEditor::changed, this, &QAnimations::changed);
}

bool QAnimations::checkSave(quint32)
{
    if (count() == 0) {
        userPrompt->warning(tr("Save AIR"),
                            tr("You can't save an empty AIR because M.U.G.E.N. will not open it."));
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
    messages().begin();
    messages().end();
}
