#pragma once

#include "core/base/qmugenmodel.h"

#include <QDialog>

class QComboBox;
class QLineEdit;

/**
 * Edits one engine installation: its name, executable, icon and the
 * parameter template of test runs, with ready-made templates to choose
 * from.
 */
class MugenDlg : public QDialog
{
    Q_OBJECT

public:
    explicit MugenDlg(QWidget *parent);
    ~MugenDlg() override;

    /** Fills the fields from `info`. */
    void setInfo(const QMugenInfo &info);
    /** The installation as the fields stand. */
    QMugenInfo info() const;

    /** The ready-made templates, in the order of the combo box. */
    static QStringList templates();

private Q_SLOTS:
    /** Writes the template of the chosen item into the parameters. */
    void templateChosen(int index);
    void browseExe();
    void browseIcon();

private:
    QLineEdit *m_name;
    QLineEdit *m_exe;
    QLineEdit *m_icon;
    QLineEdit *m_params;
    QComboBox *m_templates;
};
