#pragma once

#include "core/base/qprojecttypes.h"

#include <QDialog>

class QListView;
class QMessageList;
class QModelIndex;

/**
 * The Issues window: the check messages of the current project, beside the
 * main window and not modal. A double click on a message asks to be taken
 * to its place. Made once and kept by the interface.
 */
class ErrorDlg : public QDialog
{
    Q_OBJECT

public:
    explicit ErrorDlg(QWidget *parent = nullptr);
    ~ErrorDlg() override;

    /** Shows `model`, the current project's messages; null shows nothing. Not owned. */
    void setModel(QMessageList *model);
    /** The list shown; null when none is, or when it went with its project. */
    QMessageList *model() const;
    QListView *listView() const { return m_list; }

Q_SIGNALS:
    /** The place of a message: its document kind, the document's own index, the item or column, the line. */
    void navigateTo(QProjectFileType file, int fileIndex, int index, int line);

public Q_SLOTS:
    /** Sends navigateTo() with the fields of the message at `index`. */
    void dblClick(const QModelIndex &index);

private:
    QListView *m_list;
};
