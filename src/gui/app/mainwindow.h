#pragma once

#include <QMainWindow>

class QDockWidget;
class QListView;
class QMenu;

/**
 * The shell of the program's window: the menu bar with the Project, Edit,
 * View, Tools and Help menus over the central area, and the action list
 * beside it. Its controller is QInterface, created here and deleted first
 * when the window goes.
 */
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /** `firstInstance` decides whether this window receives files from other instances. */
    explicit MainWindow(bool firstInstance, QWidget *parent = nullptr);
    /** Deletes the interface, then writes the configuration file. */
    ~MainWindow() override;

    QMenu *menuFile;
    QMenu *menuEdit;
    QMenu *menuView;
    QMenu *menuTools;
    QMenu *menuHelp;
    /** The "Action list" beside the window: the commands of the current editor. */
    QDockWidget *actions;
    QListView *actList;

public Q_SLOTS:
    /** Sets every text of the window again in the current language. */
    void retranslate();

protected:
    void changeEvent(QEvent *event) override;

private:
    void setupUi();
};
