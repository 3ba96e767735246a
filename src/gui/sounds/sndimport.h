#pragma once

#include <QDialog>

class GroupInterval;
class QComboBox;

/** Chooses the project to copy sounds from, and optionally a range of its groups. */
class sndimport : public QDialog
{
    Q_OBJECT

public:
    /** `projects` are the titles of the open projects, `current` the one to start on. */
    sndimport(QWidget *parent, const QStringList &projects, int current);

    /** The chosen project's place in the list. */
    int project() const;
    void setProject(int index);
    /** All groups, or a range of groups. */
    GroupInterval *groups() const { return m_groups; }

private:
    QComboBox *m_projects;
    GroupInterval *m_groups;
};
