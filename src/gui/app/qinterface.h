#pragma once

#include "qactionmanager.h"
#include "qinterfaceeditor.h"

#include <QFileSystemWatcher>
#include <QLabel>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QToolBar>

#include <functional>

class QActionGroup;
class QDockWidget;
class QHistoryManager;
class QInterfaceControl;
class QListView;
class QMainWindow;
class QPanelWidget;
class QProject;
struct QRGBPal;
class QStackedLayout;
class QTabBar;

/** A label that says when it is clicked: the status bar's fields. */
class QClickableLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

Q_SIGNALS:
    void clicked();

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
};

/** What a preset puts into one toolbar: an icon size and actions, null standing for a separator. */
struct QToolbarLayout
{
    int iconSize = 24;
    QList<QAction *> actions;
};

/** A toolbar of the window, which shows the layouts it is given. */
class QInterfaceToolbar : public QToolBar
{
    Q_OBJECT

public:
    using QToolBar::QToolBar;

    /**
     * Shows `layout`: replacing what stood there (with its icon size, shown
     * only when it has entries), or after it (shown when either has entries).
     */
    void showLayout(const QToolbarLayout &layout, bool replace);
};

class ErrorDlg;
class QMugenRun;

/**
 * The controller behind the main window. It owns the open projects, one tab
 * each; the actions; the editors, extra editors and workspaces of the frame
 * and the controls they declare; the toolbars and side panels that presets
 * fill; and it receives the files that other instances hand over.
 *
 * Editors, workspaces and extra editors never talk to each other: the
 * interface calls them, in a fixed order, when the current project or the
 * current editor changes.
 */
class QInterface : public QObject
{
    Q_OBJECT

public:
    /**
     * Builds the frame into `mainWindow`'s central widget. `actionsDock`
     * and `actionList` are the "Action list" beside the window; either may
     * be null (tests).
     */
    explicit QInterface(QMainWindow *mainWindow, QDockWidget *actionsDock = nullptr,
                        QListView *actionList = nullptr);
    ~QInterface() override;

    /**
     * The start, once, as the last act of building the main window: the
     * window's state and the shortcuts, the first editor, one blank
     * project, the configuration applied, and for the first instance a
     * watch on the hand-over file, then the files handed over so far.
     */
    void start(bool firstInstance);

    const QList<QProject *> &projects() const { return m_projects; }
    QProject *currentProject() const { return m_current; }

    /** Reads the hand-over file and opens what it names; see fileChanged(). */
    void consumeHandOver();

    // The frame.
    QMainWindow *mainWindow() const { return m_mainWindow; }
    QActionManager &actions() { return m_actions; }
    QTranslationUnit *translation() { return &m_actions.translation(); }
    /** Adds a workspace; owned by the interface from now on. */
    void addWorkspace(QInterfaceWorkspace *workspace);
    /** Adds an editor with its switch action and its panel page, then calls its setup(); owned from now on. */
    void addEditor(QInterfaceEditor *editor);
    /** Adds an extra editor with its page in the right panel; owned from now on. */
    void addExtraEditor(QInterfaceExtraEditor *editor);
    /** Enters a control that presets may place, replacing one of the same name; owned from now on. */
    void addControl(const QString &name, QInterfaceControl *control);
    /** The widget of the control `name` for its placing `index`; null when there is none. */
    QWidget *control(const QString &name, int index = 0) const;
    QInterfaceControl *controlNamed(const QString &name) const { return m_controls.value(name); }
    /** Puts an editor's menu into the menu bar, before Tools and Help. */
    void insertMenu(QMenu *menu);

    QInterfaceEditor *editor(int id) const { return m_editors.value(id); }
    QInterfaceExtraEditor *extraEditor(int id) const { return m_extraEditors.value(id); }
    QInterfaceWorkspace *workspace(int id) const { return m_workspaces.value(id); }
    int currentEditorId() const { return m_currentEditor; }
    int currentExtraId() const { return m_currentExtra; }
    int currentWorkspaceId() const { return m_currentWorkspace; }
    QInterfaceEditor *currentEditor() const { return editor(m_currentEditor); }

    // What presets fill.
    /** Empties every toolbar layout and takes every control out of the panels. */
    void clearLayouts();
    /** The toolbar layout `name` ("main", "extra", a workspace's or an editor's key); null when unknown. */
    QToolbarLayout *layout(const QString &name);
    /** The page `name` of the left panel (`editorPanel`) or the right one; null when unknown. */
    QWidget *panelPage(bool editorPanel, const QString &name) const;
    QPanelWidget *leftPanel() const { return m_leftPanel; }
    QPanelWidget *rightPanel() const { return m_rightPanel; }
    QInterfaceToolbar *mainToolbar() const { return m_mainToolbar; }
    QInterfaceToolbar *extraToolbar() const { return m_extraToolbar; }
    QInterfaceToolbar *editorToolbar() const { return m_editorToolbar; }
    QTabBar *tabBar() const { return m_tabs; }
    /** The four fields of the status bar, then the check icon. */
    QClickableLabel *statusLabel(int index) const { return m_status.value(index); }

    // The Project menu's side.
    /** The recent projects behind "Open"; written when the interface goes. */
    QHistoryManager *history() const { return m_history; }
    /** The project whose DEF is being read by openProject(), before it has a tab; null otherwise. */
    QProject *loadingProject() const { return m_loading; }
    /**
     * Gives the tool window `key` ("calculator", "clipboard", "find_multi"
     * or "quicksearch"), made once and owned by the main window. The
     * actions of the View and Edit menus show it; the first three keep
     * show_%1, %1_x and %1_y between runs.
     */
    void setToolWindow(const QString &key, QWidget *window);

public Q_SLOTS:
    /** Opens a new blank project, "Project %1", as the last tab and makes it current. */
    void newProject(bool fromTemplate);
    void newProject() { newProject(true); }
    void fileNew();
    /** Asks for a DEF ("Open project") and opens it. */
    void fileOpen();
    /**
     * Opens the project of a DEF file, with a progress dialog, and enters it
     * in the history. A DEF that can't be read is said so, and nothing open
     * changes. A lone blank first project makes way for it.
     */
    void openProject(const QString &fileName);
    /** Saves the current project under its names, then offers to write its palettes. */
    void fileSave();
    /** "Save as": a new DEF, then a name for every other document, then the palettes. */
    void fileSaveAs();
    void fileClose();
    /** Closes every project whose changes may be dropped, from the last tab to the first. */
    void fileCloseAll();
    /** The same, except the current project. */
    void fileCloseAllCurr();
    /** Closes the project at `index` if its documents may be dropped; one tab always stays. */
    void projTabsClosed(int index);
    /** The answer to a project's saveFileName(): a save dialog; empty when cancelled. */
    QString saveFileName(QProjectFileType file, QString path);
    /** The answer to a project's spritesVersionToSave(): the version chosen, 0 when cancelled. */
    quint32 spritesVersionToSave(quint32 currentVersion);
    /** A character's sprites have no palette: warns, then reads one that the user picks into `palette`. */
    void charPalette(QRGBPal *palette);

    void changeTabName(QProject *project, const QString &name);
    /** Brings the window forward and makes the tab current. */
    void projTabClick(int tab);
    void projTabActivate(int tab);
    /** The engine version of `project` changed: the status line follows, for the current project. */
    void projVerChanged(QProject *project);
    void toolsExpHtml();
    /** After the script editor: the Tools menu again, and the editors refreshed. */
    void toolsScript();
    /** Shows the quick find and gives it the focus. */
    void editFind();
    /** The hand-over file changed: open what it names and bring the window forward. */
    void fileChanged(const QString &path);

    /** The tab `index` became current. */
    void projTabsChanged(int index);
    void projTabsMoved(int from, int to);
    /** The kind of `project` changed: editors it has no documents for hide. */
    void projTypeChanged(QProject *project);
    /** Makes the editor `id` current, QInterfaceIds::NoEditor for none. */
    void makeCurrent(int id);
    /** Makes the extra editor `id` the one in the right panel, QInterfaceIds::NoExtra for none. */
    void makeExtraCurrent(int id);
    /** The editor switch action `action` was chosen. */
    void editorSwitch(QAction *action);
    /** A click in the action list: runs that action if it is enabled. */
    void actionChanged(const QModelIndex &index);
    /** The configuration changed: language, preset, then every extra editor, editor and workspace. */
    void applyConfig();
    void updateEditorName();
    void updateExtraEditorName();
    void viewLeftPanel(bool checked);
    void viewRightPanel(bool checked);
    void viewOrganizer(bool checked);
    void viewActions(bool checked);

    // Backups (qinterfacebackup.cpp).
    /** Backs the current project up into a new dated folder beside its DEF, with a progress dialog. */
    void fileBackup();
    /** Lets the user choose a backup of the current project and reads it over the project. */
    void fileLoadBackup();

    void editorNew();
    void editorOpen();
    void editorSave();
    void editorSaveAs();
    /** Every text of the frame again, in the current language. */
    void retranslate();

    // The Help menu, defined in qinterfacehelp.cpp.
    /**
     * Opens docs/<language>/index.html beside the program in the web
     * browser, the English page when the language has none; a warning
     * when there is no page or nothing could open it.
     */
    void helpRefDocs();
    /** Shows the About box. */
    void helpAbout();
    /** Runs the options; each "Apply" there applies the configuration here. */
    void toolsOptions();

Q_SIGNALS:
    /** The list of projects or the current one changed. */
    void projectsChanged();
    void editUndo();
    void editRedo();
    void editCut();
    void editCopy();
    void editPaste();

private:
    void buildFrame();
    /** The commands of the menus in their order, and the controls of the frame (qinterfacemenus.cpp). */
    void createActions();
    QProject *createProject();
    void addProject(QProject *project);
    /** Loads a handed-over file of any kind but DEF into the last project. */
    void openDocument(const QString &fileName, const QString &suffix);
    /** setProject on every workspace, editor and extra editor, in the frame's order, then the editor again. */
    void refreshEditors();
    void connectEditor(QInterfaceEditor *editor, bool connect);
    /** Toolbars and panels for the current editor's panel flags. */
    void layoutPanels();
    /** The editor to show after a change of kind or of configuration. */
    void chooseEditor();
    void restoreWindowState();
    void saveWindowState();
    QString tabTitle(QProject *project) const;

    // The menus, the status line and the tool windows (qinterfacemenus.cpp).
    /** Tools keeps its first three entries; the scripts' tools would follow them. */
    void rebuildToolsMenu();
    void showProjectStatus();
    /** The window's title: the current project's name and the program's. */
    void showWindowTitle();
    void showToolWindow(QWidget *window);
    /** The commands of the tool windows are enabled where the window exists. */
    void enableToolActions();
    void saveToolWindows();
    // Projects (qinterfaceprojects.cpp).
    /** Connects a new project's questions and notices, before anything is loaded. */
    void wireProject(QProject *project);
    /** Closes `project` if its documents may be dropped; a blank one takes the last place if it was alone. */
    bool closeProject(QProject *project);
    /** The project `document` (sprites, definitions) belongs to; the current one when unknown. */
    QProject *projectOf(const QObject *document) const;
    /**
     * Asks to write the palettes of group 1 of a SFF 1.01 character; `saveAs`
     * picks the way and the title. Returns the files that couldn't be written.
     */
    QStringList savePalettes(QProject *project, bool saveAs);

    QFileSystemWatcher m_watcher;
    QMainWindow *m_mainWindow;
    QActionManager m_actions;
    QDockWidget *m_actionsDock;
    QListView *m_actionList;
    QInterfaceToolbar *m_mainToolbar = nullptr;
    QInterfaceToolbar *m_extraToolbar = nullptr;
    QInterfaceToolbar *m_editorToolbar = nullptr;
    QMap<QString, QToolbarLayout> m_layouts;
    QPanelWidget *m_leftPanel = nullptr;
    QPanelWidget *m_rightPanel = nullptr;
    QStackedLayout *m_leftStack = nullptr;
    QStackedLayout *m_rightStack = nullptr;
    QMap<QString, QWidget *> m_leftPages;
    QMap<QString, QWidget *> m_rightPages;
    QStackedLayout *m_centralStack = nullptr;
    QList<QClickableLabel *> m_status;
    QProject *m_current = nullptr;
    QList<QProject *> m_projects;
    QTabBar *m_tabs = nullptr;
    int m_newProjects = 0;
    QActionGroup *m_editorGroup = nullptr;
    int m_currentEditor = QInterfaceIds::NoEditor;
    int m_currentExtra = QInterfaceIds::NoExtra;
    int m_currentWorkspace = QInterfaceIds::NoWorkspace;
    QMap<int, QInterfaceEditor *> m_editors;
    QMap<int, QInterfaceExtraEditor *> m_extraEditors;
    QMap<int, QInterfaceWorkspace *> m_workspaces;
    QMap<QString, QInterfaceControl *> m_controls;
    QMetaObject::Connection m_statusClick;

    // The check messages and the test run, in qinterfacecheck.cpp.
public:
    /** The Issues window; null until it was first shown. */
    ErrorDlg *errorDialog() const { return m_errorDlg; }
    /** Whether the engine of the last test run has ended. */
    bool mugenDone() const { return m_mugenDone; }
    /**
     * How a test run chooses among several installations: fills `exe` and
     * `params` and returns true, or false to run nothing. MugRunDlg unless
     * another is set; tests choose here.
     */
    using MugenChooser = std::function<bool(QString &exe, QString &params)>;
    void setMugenChooser(MugenChooser chooser) { m_mugenChooser = std::move(chooser); }

public Q_SLOTS:
    /** Shows the Issues window, made at the first call. */
    void fileCheck();
    /** The check label shows the totals of the current project's messages. */
    void updateErrorStatus();
    /** Makes the visible editor of `file` current and shows the place there; nothing when there is none. */
    void navigateTo(QProjectFileType file, int fileIndex, int index, int line);
    /** Tries the current project, and the others the template names, in an engine. */
    void fileRunMugen();
    /** The engine of a test run ended; its code means nothing. */
    void mugenFinished(int exitCode);

private:
    /** Connects the check label, and follows the current project's messages; once, at construction. */
    void setupCheck();
    /** The current project's messages now drive the check label and the Issues window. */
    void followMessages();

    ErrorDlg *m_errorDlg = nullptr;
    QMetaObject::Connection m_messagesUpdated;
    QMugenRun *m_mugenRun = nullptr;
    MugenChooser m_mugenChooser;
    bool m_mugenDone = false;
    // The tool windows; null until they exist.
    QPointer<QWidget> m_calculator;
    QPointer<QWidget> m_clipboard;
    QPointer<QWidget> m_findMulti;
    QPointer<QWidget> m_quickFind;
    QHistoryManager *m_history = nullptr;
    QMenu *m_recentMenu = nullptr;
    QProject *m_loading = nullptr;
    /** The names given to sprites and sounds during one save, to find writes that failed. */
    QList<QPair<QProjectFileType, QString>> m_savedNames;
};

/** The one interface of the program; null while the palette editor runs alone. */
extern QInterface *mainInterface;
