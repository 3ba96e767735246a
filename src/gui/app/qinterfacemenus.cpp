// The commands of the menu bar, the project's line in the status bar, the
// project tabs' own slots and the tool windows beside the main window.

#include "qinterface.h"

#include "qhistorymanager.h"
#include "qinterfacecontrol.h"

#include "core/app/qproject.h"
#include "core/base/apppaths.h"
#include "core/base/qmugenmodel.h"
#include "core/base/qprojecttypes.h"
#include "core/base/quserprompt.h"
#include "core/text/qdefinitions.h"

#include <QMainWindow>
#include <QMenu>
#include <QTabBar>

namespace {

/** The menu of the main window with that object name, if the window has one (tests use a plain one). */
QMenu *windowMenu(QMainWindow *window, const char *name)
{
    // The menu bar holds the menus, not the window.
    return window->findChild<QMenu *>(QLatin1String(name));
}

/** "1.0" from the two highest bytes of a packed engine version; "Beta" for the oldest engine, 0. */
QString versionText(quint32 version)
{
    return version == 0 ? QInterface::tr("Beta")
                        : QStringLiteral("%1.%2").arg(version >> 24).arg((version >> 16) & 0xff);
}

} // namespace

void QInterface::createActions()
{
    const std::initializer_list<int> everywhere = {QActionInfo::Everywhere};
    QMenu *file = windowMenu(m_mainWindow, "menuFile");
    QMenu *edit = windowMenu(m_mainWindow, "menuEdit");
    QMenu *view = windowMenu(m_mainWindow, "menuView");
    QMenu *tools = windowMenu(m_mainWindow, "menuTools");
    QMenu *help = windowMenu(m_mainWindow, "menuHelp");
    auto put = [](QMenu *menu, QAction *action, bool separated = false) {
        if (menu && separated)
            menu->addSeparator();
        if (menu)
            menu->addAction(action);
        return action;
    };
    auto plain = [this, everywhere](const char *name, int titleId, auto slot) {
        return m_actions.addAction(everywhere, QLatin1String(name), titleId, false, this, slot);
    };

    put(file, plain("file_new", 0, &QInterface::fileNew));
    put(file, plain("file_open", 1, &QInterface::fileOpen));
    m_recentMenu = new QMenu(m_mainWindow);
    m_recentMenu->setObjectName(QStringLiteral("menuRecent"));
    if (file)
        file->addMenu(m_recentMenu);
    m_history = new QHistoryManager(m_recentMenu, settingsFileForWrite(QStringLiteral("history.xml")), this);
    m_history->load(settingsFileForRead(QStringLiteral("history.xml")));
    connect(m_history, &QHistoryManager::entryTriggered, this, &QInterface::openProject);
    put(file, plain("file_close", 2, &QInterface::fileClose));
    put(file, plain("file_close_all", 3, &QInterface::fileCloseAll));
    put(file, plain("file_close_others", 4, &QInterface::fileCloseAllCurr));
    put(file, plain("file_save", 5, &QInterface::fileSave));
    put(file, plain("file_saveas", 6, &QInterface::fileSaveAs));
    put(file, plain("file_backup", 7, &QInterface::fileBackup), true);
    put(file, plain("file_load_backup", 8, &QInterface::fileLoadBackup));
    put(file, plain("file_check_errors", 9, &QInterface::fileCheck), true);
    put(file, plain("file_run_mugen", 10, &QInterface::fileRunMugen));
    QAction *exit = m_actions.addAction(everywhere, QStringLiteral("file_exit"), 11);
    connect(exit, &QAction::triggered, m_mainWindow, &QWidget::close);
    put(file, exit, true);

    put(edit, plain("edit_undo", 12, &QInterface::editUndo));
    put(edit, plain("edit_redo", 13, &QInterface::editRedo));
    put(edit, plain("edit_cut", 14, &QInterface::editCut), true);
    put(edit, plain("edit_copy", 15, &QInterface::editCopy));
    put(edit, plain("edit_paste", 16, &QInterface::editPaste));
    put(edit, plain("edit_find_replace", 17, &QInterface::editFind), true);
    QAction *findMulti = m_actions.addAction(everywhere, QStringLiteral("edit_find_replace_multi"), 18);
    connect(findMulti, &QAction::triggered, this, [this] { showToolWindow(m_findMulti); });
    put(edit, findMulti);

    auto checkable = [this, everywhere](const char *name, int titleId, void (QInterface::*slot)(bool)) {
        return m_actions.addAction(everywhere, QLatin1String(name), titleId, true, this, slot);
    };
    put(view, checkable("view_left_panel", 19, &QInterface::viewLeftPanel));
    put(view, checkable("view_right_panel", 20, &QInterface::viewRightPanel));
    put(view, checkable("view_organizer", 21, &QInterface::viewOrganizer));
    put(view, checkable("view_actions", 22, &QInterface::viewActions));
    QAction *calculator = m_actions.addAction(everywhere, QStringLiteral("view_calculator"), 23);
    connect(calculator, &QAction::triggered, this, [this] { showToolWindow(m_calculator); });
    put(view, calculator);
    QAction *clipboard = m_actions.addAction(everywhere, QStringLiteral("view_clipboard"), 24);
    connect(clipboard, &QAction::triggered, this, [this] { showToolWindow(m_clipboard); });
    put(view, clipboard);

    put(tools, plain("tools_options", 37, &QInterface::toolsOptions));
    put(tools, plain("tools_export_html", 38, &QInterface::toolsExpHtml));
    QAction *scripts = put(tools, plain("tools_script_editor", 39, &QInterface::toolsScript));
    // There is no script host yet: the editor of scripts would have nothing to run them with.
    scripts->setEnabled(false);
    scripts->setVisible(false);

    put(help, plain("ref_docs", 40, &QInterface::helpRefDocs));
    put(help, plain("help_about", 41, &QInterface::helpAbout));

    for (QAction *control : {plain("editor_new", 49, &QInterface::editorNew),
                             plain("editor_open", 50, &QInterface::editorOpen),
                             plain("editor_save", 51, &QInterface::editorSave),
                             plain("editor_saveas", 52, &QInterface::editorSaveAs)})
        addControl(m_actions.info(control)->name, new QInterfaceControlAction(control));
    for (const char *name : {"edit_undo", "edit_redo", "edit_cut", "edit_copy", "edit_paste", "edit_find_replace",
                             "edit_find_replace_multi", "view_left_panel", "view_right_panel", "view_organizer",
                             "view_actions", "view_calculator", "view_clipboard"})
        addControl(QLatin1String(name), new QInterfaceControlAction(m_actions.action(QLatin1String(name))));
    rebuildToolsMenu();
    enableToolActions();
}

void QInterface::rebuildToolsMenu()
{
    QMenu *tools = windowMenu(m_mainWindow, "menuTools");
    if (!tools)
        return;
    const QList<QAction *> entries = tools->actions();
    for (qsizetype i = 3; i < entries.size(); ++i) {
        tools->removeAction(entries.at(i));
        if (entries.at(i)->parent() == tools)
            entries.at(i)->deleteLater();
    }
}

void QInterface::showProjectStatus()
{
    showWindowTitle();
    QClickableLabel *label = m_status.value(3);
    if (!label)
        return;
    if (!m_current) {
        label->clear();
        return;
    }
    const QString kind = projectTypeText(m_current->type());
    const QString version = versionText(m_current->engineVersion());
    // Content for Ikemen GO still names the M.U.G.E.N. version it builds on.
    label->setText(m_current->engineTarget() == TargetIkemen
                       ? tr("Project: %1, Version: Ikemen GO (M.U.G.E.N. %2)").arg(kind, version)
                       : tr("Project: %1, Version: M.U.G.E.N. %2").arg(kind, version));
}

void QInterface::projVerChanged(QProject *project)
{
    if (project && project == m_current)
        showProjectStatus();
}

void QInterface::changeTabName(QProject *project, const QString &name)
{
    const int index = int(m_projects.indexOf(project));
    if (index < 0)
        return;
    // A DEF being edited may lose its name for a moment: the tab keeps one.
    const QString title = name.isEmpty() ? tabTitle(project) : name;
    if (!title.isEmpty())
        m_tabs->setTabText(index, title);
    if (project == m_current)
        showWindowTitle();
}

void QInterface::showWindowTitle()
{
    // The project's name first, so the task bar and window lists tell open windows apart.
    const int index = int(m_projects.indexOf(m_current));
    const QString program = tr("Kestrada");
    m_mainWindow->setWindowTitle(index < 0 ? program : m_tabs->tabText(index) + QStringLiteral(" - ") + program);
}

void QInterface::projTabClick(int tab)
{
    if (m_mainWindow->isMinimized())
        m_mainWindow->showNormal();
    m_mainWindow->raise();
    m_mainWindow->activateWindow();
    projTabActivate(tab);
}

void QInterface::projTabActivate(int tab)
{
    if (tab >= 0 && tab < m_tabs->count())
        m_tabs->setCurrentIndex(tab);
}

void QInterface::toolsExpHtml()
{
    const QString title = translation()->title(38);
    if (!m_current || m_current->type() != Character) {
        userPrompt->information(title, tr("You can export only characters as HTML!"));
        return;
    }
    userPrompt->information(title, tr("The export of a move list to HTML isn't available in this version yet."));
}

void QInterface::toolsScript()
{
    rebuildToolsMenu();
    refreshEditors();
}

void QInterface::editFind()
{
    if (!m_quickFind)
        return;
    m_quickFind->show();
    m_quickFind->setFocus();
}

void QInterface::setToolWindow(const QString &key, QWidget *window)
{
    QPointer<QWidget> *slot = key == QLatin1String("calculator")   ? &m_calculator
                              : key == QLatin1String("clipboard")  ? &m_clipboard
                              : key == QLatin1String("find_multi") ? &m_findMulti
                              : key == QLatin1String("quicksearch") ? &m_quickFind
                                                                    : nullptr;
    if (!slot)
        return;
    *slot = window;
    enableToolActions();
    if (!window || !configuration || slot == &m_quickFind)
        return;
    // Where the user left it, and open if it was.
    const QMap<QString, QVariant> &config = configuration->config;
    const QString x = key + QStringLiteral("_x");
    const QString y = key + QStringLiteral("_y");
    if (config.contains(x) && config.contains(y))
        window->move(config.value(x).toInt(), config.value(y).toInt());
    if (config.value(QStringLiteral("show_") + key).toBool())
        window->show();
}

void QInterface::enableToolActions()
{
    // A command whose window doesn't exist yet would do nothing when chosen.
    const std::pair<const char *, QWidget *> commands[] = {{"edit_find_replace", m_quickFind},
                                                           {"edit_find_replace_multi", m_findMulti},
                                                           {"view_calculator", m_calculator},
                                                           {"view_clipboard", m_clipboard}};
    for (const auto &[name, window] : commands) {
        if (QAction *action = m_actions.action(QLatin1String(name)))
            action->setEnabled(window != nullptr);
    }
}

void QInterface::showToolWindow(QWidget *window)
{
    if (!window)
        return;
    window->show();
    window->raise();
    window->activateWindow();
}

void QInterface::saveToolWindows()
{
    if (!configuration)
        return;
    QMap<QString, QVariant> &config = configuration->config;
    const std::pair<QString, QWidget *> windows[] = {{QStringLiteral("find_multi"), m_findMulti},
                                                     {QStringLiteral("clipboard"), m_clipboard},
                                                     {QStringLiteral("calculator"), m_calculator}};
    for (const auto &[key, window] : windows) {
        const bool visible = window && window->isVisible();
        config[QStringLiteral("show_") + key] = visible;
        if (visible) {
            config[key + QStringLiteral("_x")] = window->x();
            config[key + QStringLiteral("_y")] = window->y();
        }
    }
}
