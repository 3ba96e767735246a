#pragma once

#include <QWidget>

class QCheckBox;
class QDialog;
class QLayout;
class QSpinBox;

/** A spin box for a group or a number, over the range the panels use, named for tests and style sheets. */
QSpinBox *itemSpinBox(QWidget *parent, const QString &name, int value);

/**
 * The choice "only the numbers (or groups) from ... to ..." of the group
 * and import dialogs: a check and two spin boxes, which follow the check.
 */
class GroupInterval : public QWidget
{
    Q_OBJECT

public:
    /** `text` is the text of the check. */
    GroupInterval(QWidget *parent, const QString &text);

    /** False when only the interval counts. */
    bool all() const;
    /** The interval, in order: a start above its end is swapped with it. */
    int first() const;
    int last() const;
    void setInterval(bool interval, int first, int last);

private:
    QCheckBox *m_interval;
    QSpinBox *m_first;
    QSpinBox *m_last;
};

/**
 * Lays out one of the small dialogs of the editors under `title`: the
 * `fields`, then `below` if given, then OK and Cancel, at the size they
 * need, whatever the scale.
 */
void layOutDialog(QDialog *dialog, const QString &title, QLayout *fields, QWidget *below = nullptr);
