#pragma once

#include <QDialog>

#include <functional>

class QBakManager;
class QListView;

/** Chooses one backup of a project to load: the folders under "backup/" beside its DEF. */
class BakDlg : public QDialog
{
    Q_OBJECT

public:
    /** Lists the backups of the project whose DEF is `fileName`. */
    BakDlg(QWidget *parent, const QString &fileName);

    /** The DEF inside the chosen backup; empty when none is chosen. */
    QString selected() const;
    /** The list of backups shown. */
    QListView *list() const { return m_list; }
    QBakManager *backups() const { return m_backups; }

    /**
     * Runs the dialog and says whether it was accepted. Tests replace this
     * through `runner`, which gets the dialog to choose in and answers for
     * the user, so that nothing waits on a modal window.
     */
    bool run();
    static std::function<bool(BakDlg &)> runner;

private:
    QBakManager *m_backups;
    QListView *m_list;
};
