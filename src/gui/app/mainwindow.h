#pragma once

#include <QMainWindow>

#include <functional>

class QDockWidget;
class QListView;
class QInterface;
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
    /** Adds the workspaces, editors and extra editors to a new interface, in their order. */
    using EditorSetup = std::function<void(QInterface *)>;

    /**
     * `firstInstance` decides whether this window receives files from other
     * instances. `editors` replaces the program's own editors (a window
     * made for a test); empty, the program's are added.
     */
    explicit MainWindow(bool firstInstance, const EditorSetup &editors = EditorSetup(), QWidget *parent = nullptr);
    /** The program's workspaces, editors and extra editors. */
    static void addEditors(QInterface *ui);
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
    /**
     * Asks "Do you really want to close Kestrada?" when confirm_close is
     * set, then closes every project that may be closed; the window closes
     * only when nothing but one blank project is left.
     */
    void closeEvent(QCloseEvent *event) override;

private:
    void setupUi();
};
