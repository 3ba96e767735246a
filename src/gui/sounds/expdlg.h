#pragma once

#include <QDialog>

class QRadioButton;
class QSpinBox;

/** Asks whether to export every sound or the sounds of one group. */
class ExpDlg : public QDialog
{
    Q_OBJECT

public:
    /** Starts on all sounds, with `group` (the current sound's) offered. */
    ExpDlg(QWidget *parent, int group);

    bool all() const;
    int group() const;
    /** All sounds when `all` is true, otherwise those of `group`. */
    void setChoice(bool all, int group);

private:
    QRadioButton *m_all;
    QRadioButton *m_one;
    QSpinBox *m_group;
};
