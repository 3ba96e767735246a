#pragma once

#include <QDialog>

class QListView;
class QMugenModel;
class QPushButton;

/**
 * Chooses the engine installation of a test run from the configured ones.
 * The one used last starts selected; a double click accepts.
 */
class MugRunDlg : public QDialog
{
    Q_OBJECT

public:
    /** `model` lists the installations and keeps "last_mugen"; not owned. */
    MugRunDlg(QWidget *parent, QMugenModel *model);
    ~MugRunDlg() override;

    /**
     * The executable of the selected installation, empty without a
     * selection. Remembers the selected row in "last_mugen".
     */
    QString exe() const;
    /** The parameter template of the selected installation, empty without a selection. */
    QString params() const;

private:
    /** The selected row, or -1. */
    int selectedRow() const;

    QMugenModel *m_model;
    QListView *m_list;
    QPushButton *m_ok;
};
