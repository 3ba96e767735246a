#include "qorganizereditor.h"

#include "qinterface.h"
#include "qinterfacecontrol.h"

#include "core/base/qmugenmodel.h"
#include "core/base/qorganizableobject.h"
#include "core/base/quserprompt.h"

#include <QKeyEvent>
#include <QListView>

#include <algorithm>

namespace {

/** The editors whose documents are lists the organizer can show. */
const std::initializer_list<int> organizerScopes = {QInterfaceIds::Sprites, QInterfaceIds::Animations,
                                                    QInterfaceIds::Commands, QInterfaceIds::Sounds};

} // namespace

QOrganizerEditor::QOrganizerEditor(QInterface *ui)
    : m_ui(ui)
{
    QActionManager &actions = ui->actions();
    auto declare = [ui](QAction *action) {
        ui->addControl(ui->actions().info(action)->name, new QInterfaceControlAction(action));
        return action;
    };
    // The second list is the palettes of the sprites: the switch is theirs alone.
    m_palette = declare(actions.addAction({QInterfaceIds::Sprites}, QStringLiteral("org_palette"), 116, true, this,
                                          &QOrganizerEditor::palToggled));
    declare(actions.addAction(organizerScopes, QStringLiteral("org_up"), 246, false, this, &QOrganizerEditor::moveUp));
    declare(actions.addAction(organizerScopes, QStringLiteral("org_down"), 247, false, this,
                              &QOrganizerEditor::moveDown));
    declare(actions.addAction(organizerScopes, QStringLiteral("org_up_10"), 248, false, this,
                              &QOrganizerEditor::moveUp10));
    declare(actions.addAction(organizerScopes, QStringLiteral("org_down_10"), 249, false, this,
                              &QOrganizerEditor::moveDown10));
    declare(actions.addAction(organizerScopes, QStringLiteral("org_top"), 250, false, this,
                              &QOrganizerEditor::moveTop));
    declare(actions.addAction(organizerScopes, QStringLiteral("org_bottom"), 251, false, this,
                              &QOrganizerEditor::moveBottom));
    declare(actions.addAction(organizerScopes, QStringLiteral("org_auto"), 252, false, this,
                              &QOrganizerEditor::moveAuto));

    QInterfaceControl::Parameters listParameters;
    listParameters.multiSelection = true;
    listParameters.uniformSizes = true;
    ui->addControl(QStringLiteral("org_list"),
                   new QInterfaceControlWidget(QInterfaceControl::ListView, QInterfaceControl::NoTitle, this,
                                               SLOT(itemDblClick(QModelIndex)), nullptr, listParameters));
    list()->installEventFilter(this);
}

int QOrganizerEditor::id() const
{
    return QInterfaceIds::Organizer;
}

QListView *QOrganizerEditor::list() const
{
    return static_cast<QListView *>(m_ui->control(QStringLiteral("org_list")));
}

void QOrganizerEditor::activate(bool show)
{
    QInterfaceExtraEditor::activate(show);
    m_palette->setVisible(m_ui->currentEditorId() == QInterfaceIds::Sprites);
    if (!m_palette->isVisible())
        m_palette->setChecked(false);
    setModel(Q_EMIT object(m_palette->isChecked()));
}

void QOrganizerEditor::deactivate()
{
    QInterfaceExtraEditor::deactivate();
    setModel(nullptr);
}

void QOrganizerEditor::setProject(QProject *project)
{
    // The list comes from the current editor, which knows the project.
    Q_UNUSED(project)
}

void QOrganizerEditor::setModel(QOrganizableObject *model)
{
    m_model = model;
    list()->setModel(model);
    Q_EMIT enabled(model != nullptr);
}

QList<int> QOrganizerEditor::selectedRows() const
{
    QList<int> rows;
    if (!list()->selectionModel())
        return rows;
    for (const QModelIndex &index : list()->selectionModel()->selectedIndexes())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void QOrganizerEditor::moveSelection(int delta, bool block)
{
    const QList<int> rows = selectedRows();
    if (!m_model || rows.isEmpty())
        return;
    const int count = m_model->rowCount();
    QList<int> targets;
    for (int i = 0; i < rows.size(); ++i) {
        if (block)
            targets.append(delta < 0 ? i : count - int(rows.size()) + i);
        else if (delta < 0)
            targets.append(rows.at(i) - qMin(-delta, rows.first()));
        else
            targets.append(rows.at(i) + qMin(delta, count - 1 - rows.last()));
    }
    if (targets == rows)
        return;
    m_model->beginOrganize(rows);
    // Up: from the first row on, so that each lands above those still to
    // move; down: from the last. Every row then ends at its target.
    if (delta < 0) {
        for (int i = 0; i < rows.size(); ++i)
            m_model->move(rows.at(i), targets.at(i));
    } else {
        for (int i = int(rows.size()) - 1; i >= 0; --i)
            m_model->move(rows.at(i), targets.at(i));
    }
    m_model->endOrganize();

    QItemSelection selection;
    for (int row : std::as_const(targets))
        selection.select(m_model->index(row), m_model->index(row));
    list()->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    list()->selectionModel()->setCurrentIndex(m_model->index(targets.first()), QItemSelectionModel::NoUpdate);
    Q_EMIT changed(m_palette->isChecked());
}

void QOrganizerEditor::moveUp()
{
    moveSelection(-1, false);
}

void QOrganizerEditor::moveDown()
{
    moveSelection(1, false);
}

void QOrganizerEditor::moveUp10()
{
    moveSelection(-10, false);
}

void QOrganizerEditor::moveDown10()
{
    moveSelection(10, false);
}

void QOrganizerEditor::moveTop()
{
    moveSelection(-1, true);
}

void QOrganizerEditor::moveBottom()
{
    moveSelection(1, true);
}

void QOrganizerEditor::moveAuto()
{
    if (!m_model)
        return;
    m_model->autoOrganize();
    Q_EMIT changed(m_palette->isChecked());
}

void QOrganizerEditor::palToggled(bool checked)
{
    setModel(Q_EMIT object(checked));
}

void QOrganizerEditor::itemDblClick(const QModelIndex &index)
{
    Q_EMIT itemClicked(index.row());
}

void QOrganizerEditor::removeSelected()
{
    const QList<int> rows = selectedRows();
    if (!m_model || rows.isEmpty())
        return;
    if (configuration && configuration->config.value(QStringLiteral("confirm_delete"), true).toBool()
        && !userPrompt->question(tr("Delete"), tr("Do you really want to delete the selected item(s)?")))
        return;
    m_model->beginOrganize(rows);
    for (auto row = rows.crbegin(); row != rows.crend(); ++row)
        m_model->remove(*row);
    m_model->endOrganize();
    Q_EMIT changed(m_palette->isChecked());
}

bool QOrganizerEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Delete) {
        removeSelected();
        return true;
    }
    return QInterfaceExtraEditor::eventFilter(watched, event);
}
