#pragma once

#include "qinterfaceeditor.h"

#include "core/base/qorganizableobject.h"

#include <QPointer>

class QAction;
class QInterface;
class QListView;

/**
 * The organizer: the list of the current editor's items (sprites,
 * animations, commands, sounds, or the palettes of the sprites) with the
 * commands to move them up and down, to the ends, into their natural
 * order, and to delete them. It knows no document: the current editor
 * answers its object() signal with the list to show.
 */
class QOrganizerEditor : public QInterfaceExtraEditor
{
    Q_OBJECT

public:
    explicit QOrganizerEditor(QInterface *ui);

    int id() const override;
    const char *nameKey() const override { return "organizer"; }
    /** Asks the current editor for its list again, and shows it. */
    void activate(bool show) override;
    void deactivate() override;
    void applyConfig() override {}
    void setProject(QProject *project) override;
    int titleId() const override { return 245; }
    void retranslate(QTranslationUnit *unit) override { Q_UNUSED(unit) }

    /** The list shown, or null. */
    QOrganizableObject *model() const { return m_model; }
    /** The selected rows, in order. */
    QList<int> selectedRows() const;

public Q_SLOTS:
    void moveUp();
    void moveDown();
    void moveUp10();
    void moveDown10();
    void moveTop();
    void moveBottom();
    void moveAuto();
    /** Shows the second list of the editor (the palettes of the sprites), or the first. */
    void palToggled(bool checked);
    void itemDblClick(const QModelIndex &index);
    /** Deletes the selected rows, as one undo step, after the question if the user wants it asked. */
    void removeSelected();

Q_SIGNALS:
    /** The list shown changed; `secondary` is the second list. */
    void changed(bool secondary);
    /** The list to show; the current editor answers. Null when none is connected. */
    QOrganizableObject *object(bool secondary);
    void enabled(bool enabled);
    /** An item was double-clicked. */
    void itemClicked(int index);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QListView *list() const;
    /**
     * Moves the selected rows by `delta` (negative: up), clipped at the
     * ends, or with `block` to the top or the bottom as one block; as one
     * undo step, keeping them selected.
     */
    void moveSelection(int delta, bool block);
    void setModel(QOrganizableObject *model);

    QInterface *m_ui;
    QAction *m_palette;
    QPointer<QOrganizableObject> m_model;
};
