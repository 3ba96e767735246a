#pragma once

#include <QDialog>

class GroupInterval;
class QSpinBox;

/**
 * Asks for a group to delete: the whole group, or only the numbers of an
 * interval. The sprites and sounds editors share it.
 */
class DelGrp : public QDialog
{
    Q_OBJECT

public:
    /** Starts on `group`, the group of the current item. */
    DelGrp(QWidget *parent, int group);

    int group() const;
    void setGroup(int group);
    /** Whether the whole group goes, and otherwise which numbers. */
    GroupInterval *interval() const { return m_interval; }

private:
    QSpinBox *m_group;
    GroupInterval *m_interval;
};
