#pragma once

#include <QDialog>

class QRadioButton;
class QSpinBox;

/** Asks for the group and the first number of the sounds being added, and the step between numbers. */
class AddSom : public QDialog
{
    Q_OBJECT

public:
    AddSom(QWidget *parent, int group, int number);

    int group() const;
    int number() const;
    /** 1 or 10: how much the number rises from one sound to the next. */
    int step() const;
    void setValues(int group, int number, int step);

private:
    QSpinBox *m_group;
    QSpinBox *m_number;
    QRadioButton *m_one;
    QRadioButton *m_ten;
};
