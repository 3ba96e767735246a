#pragma once

#include <QDialog>

class GroupInterval;
class QSpinBox;

/**
 * Asks for a group to move into another one: the whole group, or only the
 * numbers of an interval. The sprites and sounds editors share it.
 */
class RenGrp : public QDialog
{
    Q_OBJECT

public:
    /** Starts on `group`, the group of the current item, as both the old and the new group. */
    RenGrp(QWidget *parent, int group);

    int group() const;
    int newGroup() const;
    void setGroups(int group, int newGroup);
    /** Whether the whole group moves, and otherwise which numbers. */
    GroupInterval *interval() const { return m_interval; }

private:
    QSpinBox *m_group;
    QSpinBox *m_newGroup;
    GroupInterval *m_interval;
};
