#include "qinterface.h"

#include "calculator.h"
#include "qhistorymanager.h"
#include "qiconsetmanager.h"
#include "qinterfacecontrol.h"
#include "qlanguagemanager.h"
#include "qpresetmanager.h"
#include "qprogress.h"

#include "core/animation/qanimations.h"
#include "core/app/qproject.h"
#include "core/base/apppaths.h"
#include "core/base/qhandover.h"
#include "core/base/qmugenmodel.h"
#include "core/base/qprojecttypes.h"
#include "core/sounds/qsounds.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"

#include <QActionGroup>
#include <QBoxLayout>
#include <QDockWidget>
#include <QFileInfo>
#include <QListView>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QStackedLayout>
#include <QStatusBar>
#include <QTabBar>
#include <QTextDocument>

QInterface *mainInterface = nullptr;

namespace {

QVariant &setting(const char *key)
{
    return configuration->config[QLatin1String(key)];
}

bool hasSetting(const char *key)
{
    return configuration && configuration->config.contains(QLatin1String(key));
}

Qt::ToolBarArea toolBarArea(const char *key)
{
    const int area = hasSetting(key) ? setting(key).toInt() : 0;
    return area == Qt::LeftToolBarArea || area == Qt::RightToolBarArea || area == Qt::BottomToolBarArea
        ? Qt::ToolBarArea(area)
        : Qt::TopToolBarArea;
}

} // namespace

void QClickableLabel::mouseReleaseEvent(QMouseEvent *event)
{
    QLabel::mouseReleaseEvent(event);
    Q_EMIT clicked();
}

void QInterfaceToolbar::showLayout(const QToolbarLayout &layout, bool replace)
{
    if (replace) {
        setIconSize(QSize(layout.iconSize, layout.iconSize));
        clear();
    }
    const bool hadEntries = !actions().isEmpty();
    for (QAction *action : layout.actions) {
        if (action)
            addAction(action);
        else
            addSeparator();
    }
    setVisible(replace ? !layout.actions.isEmpty() : hadEntries || !layout.actions.isEmpty());
}

QInterface::QInterface(QMainWindow *mainWindow, QDockWidget *actionsDock, QListView *actionList)
    : QObject(mainWindow)
    , m_mainWindow(mainWindow)
    , m_actions(mainWindow)
    , m_actionsDock(actionsDock)
    , m_actionList(actionList)
{
    buildFrame();
    createActions();
    setupCheck();
    // Made once and kept: it remembers where it stood and what it showed.
    setToolWindow(QStringLiteral("calculator"), new Calculator(m_mainWindow));
    retranslate();
}

QInterface::~QInterface()
{
    saveWindowState();
    saveToolWindows();
    if (m_history)
        m_history->save();
    m_actions.save(settingsFileForWrite(QStringLiteral("shortcuts.xml")));
    // Controls first: their widgets stand in pages that go with the window.
    qDeleteAll(m_controls);
    m_controls.clear();
    qDeleteAll(m_extraEditors);
    qDeleteAll(m_editors);
    qDeleteAll(m_workspaces);
    qDeleteAll(m_projects);
}

void QInterface::buildFrame()
{
    m_mainToolbar = new QInterfaceToolbar(m_mainWindow);
    m_mainToolbar->setObjectName(QStringLiteral("mainToolbar"));
    m_mainToolbar->setFloatable(false);
    m_extraToolbar = new QInterfaceToolbar(m_mainWindow);
    m_extraToolbar->setObjectName(QStringLiteral("extraToolbar"));
    m_extraToolbar->setFloatable(false);
    // At the top until the window's state, read at the start, puts them where they were.
    m_mainWindow->addToolBar(m_mainToolbar);
    m_mainWindow->addToolBar(m_extraToolbar);

    auto *central = m_mainWindow->centralWidget();
    if (!central) {
        central = new QWidget(m_mainWindow);
        m_mainWindow->setCentralWidget(central);
    }
    auto *outer = new QVBoxLayout(central);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    m_tabs = new QTabBar(central);
    m_tabs->setObjectName(QStringLiteral("projectTabs"));
    m_tabs->setExpanding(false);
    m_tabs->setMovable(true);
    m_tabs->setTabsClosable(true);
    outer->addWidget(m_tabs);
    m_editorToolbar = new QInterfaceToolbar(central);
    m_editorToolbar->setObjectName(QStringLiteral("editorToolbar"));
    m_editorToolbar->hide();
    outer->addWidget(m_editorToolbar);

    auto *row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    outer->addLayout(row, 1);
    m_leftPanel = new QPanelWidget(central);
    m_leftPanel->setObjectName(QStringLiteral("leftPanel"));
    m_leftPanel->setMinimumWidth(220);
    m_leftStack = new QStackedLayout(m_leftPanel);
    row->addWidget(m_leftPanel);
    auto *middle = new QVBoxLayout;
    m_centralStack = new QStackedLayout;
    middle->addLayout(m_centralStack, 1);
    row->addLayout(middle, 1);
    m_rightPanel = new QPanelWidget(central);
    m_rightPanel->setObjectName(QStringLiteral("rightPanel"));
    m_rightPanel->setMinimumWidth(220);
    m_rightStack = new QStackedLayout(m_rightPanel);
    row->addWidget(m_rightPanel);
    m_leftPanel->hide();
    m_rightPanel->hide();

    for (int i = 0; i < 5; ++i) {
        auto *label = new QClickableLabel;
        label->setObjectName(QStringLiteral("status%1").arg(i));
        m_status.append(label);
        if (i < 4)
            m_mainWindow->statusBar()->addWidget(label, i == 3 ? 1 : 0);
    }
    m_status.last()->setFixedSize(16, 16);
    m_mainWindow->statusBar()->addPermanentWidget(m_status.last());

    m_layouts.insert(QStringLiteral("main"), QToolbarLayout());
    m_layouts.insert(QStringLiteral("extra"), QToolbarLayout());
    m_editorGroup = new QActionGroup(this);
    connect(m_editorGroup, &QActionGroup::triggered, this, &QInterface::editorSwitch);

    connect(m_tabs, &QTabBar::currentChanged, this, &QInterface::projTabsChanged);
    connect(m_tabs, &QTabBar::tabMoved, this, &QInterface::projTabsMoved);
    connect(m_tabs, &QTabBar::tabCloseRequested, this, &QInterface::projTabsClosed);

    if (m_actionList) {
        m_actionList->setModel(&m_actions.list());
        connect(m_actionList, &QListView::clicked, this, &QInterface::actionChanged);
    }
}

void QInterface::start(bool firstInstance)
{
    restoreWindowState();
    const QList<QAction *> editorActions = m_editorGroup->actions();
    if (!editorActions.isEmpty()) {
        editorActions.first()->setChecked(true);
        makeCurrent(editorActions.first()->objectName().toInt());
    } else {
        makeCurrent(QInterfaceIds::NoEditor);
    }
    newProject(false);
    applyConfig();
    if (!firstInstance)
        return;
    // Watch first: a line another instance appends while the files handed
    // over so far are still opening would otherwise wait for the next one.
    m_watcher.addPath(QHandOver::path());
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &QInterface::fileChanged);
    consumeHandOver();
}

// ---------------------------------------------------------------------------
// The frame

void QInterface::addWorkspace(QInterfaceWorkspace *workspace)
{
    workspace->setParent(this);
    m_workspaces.insert(workspace->id(), workspace);
    m_centralStack->addWidget(workspace->widget());
    m_layouts.insert(QLatin1String(workspace->nameKey()), QToolbarLayout());
}

void QInterface::addEditor(QInterfaceEditor *editor)
{
    editor->setParent(this);
    m_editors.insert(editor->id(), editor);
    QAction *action = m_actions.addAction({QActionInfo::Everywhere}, QLatin1String(editor->nameKey()),
                                          editor->titleId(), true);
    action->setObjectName(QString::number(editor->id()));
    m_editorGroup->addAction(action);
    m_layouts.insert(QLatin1String(editor->panelKey()), QToolbarLayout());
    auto *page = new QWidget;
    page->setObjectName(QLatin1String(editor->panelKey()));
    m_leftStack->addWidget(page);
    m_leftPages.insert(QLatin1String(editor->panelKey()), page);
    connect(editor, &QInterfaceEditor::modificationChanged, this, &QInterface::updateEditorName);
    editor->setup();
}

void QInterface::addExtraEditor(QInterfaceExtraEditor *editor)
{
    editor->setParent(this);
    m_extraEditors.insert(editor->id(), editor);
    auto *page = new QWidget;
    page->setObjectName(QLatin1String(editor->nameKey()));
    m_rightStack->addWidget(page);
    m_rightPages.insert(QLatin1String(editor->nameKey()), page);
}

void QInterface::addControl(const QString &name, QInterfaceControl *control)
{
    QInterfaceControl *old = m_controls.value(name);
    if (old != control)
        delete old;
    m_controls.insert(name, control);
}

QWidget *QInterface::control(const QString &name, int index) const
{
    const QInterfaceControl *found = m_controls.value(name);
    return found ? found->widget(index) : nullptr;
}

void QInterface::insertMenu(QMenu *menu)
{
    const QList<QAction *> entries = m_mainWindow->menuBar()->actions();
    // Before Tools and Help, the last two.
    QAction *before = entries.size() >= 2 ? entries.at(entries.size() - 2) : nullptr;
    m_mainWindow->menuBar()->insertMenu(before, menu);
}

void QInterface::clearLayouts()
{
    for (QToolbarLayout &layout : m_layouts)
        layout = QToolbarLayout();
    for (QInterfaceControl *control : std::as_const(m_controls))
        control->detach();
}

QToolbarLayout *QInterface::layout(const QString &name)
{
    const auto it = m_layouts.find(name);
    return it == m_layouts.end() ? nullptr : &it.value();
}

QWidget *QInterface::panelPage(bool editorPanel, const QString &name) const
{
    return (editorPanel ? m_leftPages : m_rightPages).value(name);
}

void QInterface::connectEditor(QInterfaceEditor *editor, bool connect)
{
    if (!editor)
        return;
    if (connect) {
        QObject::connect(this, &QInterface::editUndo, editor, &QInterfaceEditor::undo);
        QObject::connect(this, &QInterface::editRedo, editor, &QInterfaceEditor::redo);
        QObject::connect(this, &QInterface::editCut, editor, &QInterfaceEditor::cut);
        QObject::connect(this, &QInterface::editCopy, editor, &QInterfaceEditor::copy);
        QObject::connect(this, &QInterface::editPaste, editor, &QInterfaceEditor::paste);
    } else {
        disconnect(this, nullptr, editor, nullptr);
    }
}

void QInterface::makeCurrent(int id)
{
    QInterfaceEditor *next = editor(id);
    if (!next)
        id = QInterfaceIds::NoEditor;
    // "No editor" is applied again each time: a refresh lets go of the
    // editor without the panels and keys that went with it.
    if (id == m_currentEditor && next && next->isActive())
        return;
    if (QInterfaceEditor *previous = currentEditor()) {
        connectEditor(previous, false);
        previous->deactivate();
    }
    m_currentEditor = id;
    if (!next) {
        if (QInterfaceWorkspace *workspace = this->workspace(m_currentWorkspace))
            workspace->deactivate();
        m_currentWorkspace = QInterfaceIds::NoWorkspace;
        layoutPanels();
        m_actions.setScope(QActionInfo::NoScope);
        return;
    }
    connectEditor(next, true);
    updateEditorName();
    for (QAction *action : m_editorGroup->actions()) {
        if (action->objectName().toInt() == id)
            action->setChecked(true);
    }
    if (next->workspaceId() != m_currentWorkspace || !workspace(m_currentWorkspace)
        || !workspace(m_currentWorkspace)->isActive()) {
        if (QInterfaceWorkspace *old = workspace(m_currentWorkspace))
            old->deactivate();
        disconnect(m_statusClick);
        m_currentWorkspace = next->workspaceId();
        if (QInterfaceWorkspace *workspace = this->workspace(m_currentWorkspace)) {
            m_centralStack->setCurrentWidget(workspace->widget());
            m_statusClick = connect(m_status.first(), &QClickableLabel::clicked, workspace,
                                    &QInterfaceWorkspace::statusClicked);
            workspace->activate();
        }
    }
    layoutPanels();
    next->activate(true);
    m_actions.setScope(id);
}

void QInterface::makeExtraCurrent(int id)
{
    QInterfaceExtraEditor *next = extraEditor(id);
    if (QInterfaceExtraEditor *previous = extraEditor(m_currentExtra))
        previous->deactivate();
    m_currentExtra = next ? id : int(QInterfaceIds::NoExtra);
    if (next) {
        m_rightStack->setCurrentWidget(m_rightPages.value(QLatin1String(next->nameKey())));
        next->activate(true);
    }
    updateExtraEditorName();
    layoutPanels();
}

void QInterface::layoutPanels()
{
    QInterfaceEditor *current = currentEditor();
    const int flags = current ? current->panelFlags() : 0;
    m_editorToolbar->showLayout(current ? m_layouts.value(QLatin1String(current->panelKey())) : QToolbarLayout(),
                                true);
    if (flags & QInterfaceIds::ExtraToolbar) {
        m_extraToolbar->showLayout(m_layouts.value(QStringLiteral("extra")), true);
        if (QInterfaceWorkspace *workspace = this->workspace(current->workspaceId()))
            m_extraToolbar->showLayout(m_layouts.value(QLatin1String(workspace->nameKey())), false);
    } else {
        m_extraToolbar->showLayout(QToolbarLayout(), true);
    }
    const QAction *left = m_actions.action(QStringLiteral("view_left_panel"));
    const QAction *right = m_actions.action(QStringLiteral("view_right_panel"));
    m_leftPanel->setVisible(current && left->isChecked() && (flags & QInterfaceIds::LeftPanel));
    m_rightPanel->setVisible(current && extraEditor(m_currentExtra) && right->isChecked()
                             && (flags & QInterfaceIds::RightPanel));
    if (current)
        m_leftStack->setCurrentWidget(m_leftPages.value(QLatin1String(current->panelKey())));
}

void QInterface::editorSwitch(QAction *action)
{
    makeCurrent(action->objectName().toInt());
}

void QInterface::actionChanged(const QModelIndex &index)
{
    QAction *action = m_actions.list().action(index.row());
    if (action && action->isEnabled())
        action->activate(QAction::Trigger);
}

void QInterface::chooseEditor()
{
    const QToolbarLayout main = m_layouts.value(QStringLiteral("main"));
    QAction *checked = m_editorGroup->checkedAction();
    if (checked && checked->isVisible() && main.actions.contains(checked)) {
        makeCurrent(checked->objectName().toInt());
        return;
    }
    for (QAction *action : m_editorGroup->actions()) {
        if (action->isVisible()) {
            action->setChecked(true);
            makeCurrent(action->objectName().toInt());
            return;
        }
    }
    makeCurrent(QInterfaceIds::NoEditor);
}

void QInterface::projTypeChanged(QProject *project)
{
    if (!project || project != m_current)
        return;
    for (QInterfaceEditor *editor : std::as_const(m_editors)) {
        const bool visible = (project->type() & editor->projectMask()) != 0;
        if (editor->menu())
            editor->menu()->menuAction()->setVisible(visible);
        for (QAction *action : m_editorGroup->actions()) {
            if (action->objectName().toInt() == editor->id())
                action->setVisible(visible);
        }
    }
    chooseEditor();
    showProjectStatus();
}

void QInterface::refreshEditors()
{
    if (QInterfaceEditor *current = currentEditor())
        connectEditor(current, false);
    for (QInterfaceWorkspace *workspace : std::as_const(m_workspaces)) {
        workspace->deactivate();
        workspace->setProject(m_current);
    }
    for (QInterfaceEditor *editor : std::as_const(m_editors)) {
        editor->deactivate();
        editor->setProject(m_current);
        editor->activate(false);
    }
    for (QInterfaceExtraEditor *editor : std::as_const(m_extraEditors)) {
        editor->deactivate();
        editor->setProject(m_current);
        editor->activate(false);
    }
    // Everything was let go of: the choice below brings the editor, its
    // workspace and the extra editor back up with their connections.
    m_currentEditor = QInterfaceIds::NoEditor;
    m_currentWorkspace = QInterfaceIds::NoWorkspace;
    makeExtraCurrent(m_currentExtra);
    projTypeChanged(m_current);
    if (!m_current)
        makeCurrent(QInterfaceIds::NoEditor);
}

void QInterface::applyConfig()
{
    if (languages)
        languages->setLanguage(setting("language").toString());
    if (presets)
        presets->load(setting("preset").toString(), setting("iconset").toString(),
                      setting("stylesheet").toString(), setting("colorset").toString());
    m_mainToolbar->showLayout(m_layouts.value(QStringLiteral("main")), true);
    for (QInterfaceExtraEditor *editor : std::as_const(m_extraEditors))
        editor->applyConfig();
    for (QInterfaceEditor *editor : std::as_const(m_editors))
        editor->applyConfig();
    for (QInterfaceWorkspace *workspace : std::as_const(m_workspaces))
        workspace->applyConfig();
    // A preset shows the actions it places; those of editors the project
    // has no documents for hide again.
    if (m_current)
        projTypeChanged(m_current);
    else
        chooseEditor();
    // The preset may have rebuilt the layouts: show them again.
    layoutPanels();
}

void QInterface::updateEditorName()
{
    QInterfaceEditor *current = currentEditor();
    m_leftPanel->setTitle(current ? translation()->title(current->titleId())
                                        + (current->isModified() ? QStringLiteral("*") : QString())
                                  : QString());
}

void QInterface::updateExtraEditorName()
{
    QInterfaceExtraEditor *current = extraEditor(m_currentExtra);
    m_rightPanel->setTitle(current ? translation()->title(current->titleId()) : QString());
}

void QInterface::viewLeftPanel(bool checked)
{
    setting("show_left_panel") = checked;
    layoutPanels();
}

void QInterface::viewRightPanel(bool checked)
{
    setting("show_right_panel") = checked;
    layoutPanels();
}

void QInterface::viewOrganizer(bool checked)
{
    setting("show_organizer") = checked;
    if (checked)
        makeExtraCurrent(QInterfaceIds::Organizer);
    else if (m_currentExtra == QInterfaceIds::Organizer)
        makeExtraCurrent(QInterfaceIds::NoExtra);
}

void QInterface::viewActions(bool checked)
{
    setting("show_action_list") = checked;
    if (m_actionsDock)
        m_actionsDock->setVisible(checked);
}

void QInterface::editorNew()
{
    if (QInterfaceEditor *current = currentEditor())
        current->clear();
}

void QInterface::editorOpen()
{
    if (QInterfaceEditor *current = currentEditor())
        current->open();
}

void QInterface::editorSave()
{
    if (QInterfaceEditor *current = currentEditor())
        current->save();
}

void QInterface::editorSaveAs()
{
    if (QInterfaceEditor *current = currentEditor())
        current->saveAs();
}

void QInterface::retranslate()
{
    m_actions.retranslate();
    QTranslationUnit *unit = translation();
    for (QInterfaceControl *control : std::as_const(m_controls))
        control->retranslate(unit);
    for (QInterfaceWorkspace *workspace : std::as_const(m_workspaces))
        workspace->retranslate(unit);
    for (QInterfaceEditor *editor : std::as_const(m_editors))
        editor->retranslate(unit);
    for (QInterfaceExtraEditor *editor : std::as_const(m_extraEditors))
        editor->retranslate(unit);
    m_mainToolbar->setWindowTitle(tr("Main"));
    m_extraToolbar->setWindowTitle(tr("Extra"));
    if (m_actionsDock)
        m_actionsDock->setWindowTitle(tr("Action list"));
    updateEditorName();
    updateExtraEditorName();
    if (m_recentMenu) {
        unit->setMenuTexts(m_recentMenu, 42);
        m_history->rebuild();
    }
    showProjectStatus();
}

void QInterface::restoreWindowState()
{
    if (!configuration)
        return;
    m_actions.load(settingsFileForRead(QStringLiteral("shortcuts.xml")));
    // The position and size of the window without its frame, which is what
    // geometry() gives back at the end: restoring the frame's would drift.
    m_mainWindow->setGeometry(setting("window_left").toInt(), setting("window_top").toInt(),
                              qMax(setting("window_width").toInt(), 200), qMax(setting("window_height").toInt(), 200));
    m_mainWindow->setWindowState(Qt::WindowStates(setting("window_state").toInt()));
    auto check = [this](const char *action, const char *key, bool byDefault) {
        m_actions.action(QLatin1String(action))->setChecked(hasSetting(key) ? setting(key).toBool() : byDefault);
    };
    check("view_actions", "show_action_list", true);
    check("view_left_panel", "show_left_panel", true);
    check("view_right_panel", "show_right_panel", true);
    check("view_organizer", "show_organizer", true);

    const bool mainFirst = hasSetting("toolbar_first") ? setting("toolbar_first").toBool() : true;
    QInterfaceToolbar *first = mainFirst ? m_mainToolbar : m_extraToolbar;
    QInterfaceToolbar *second = mainFirst ? m_extraToolbar : m_mainToolbar;
    m_mainWindow->addToolBar(toolBarArea(mainFirst ? "main_toolbar" : "extra_toolbar"), first);
    if (hasSetting("toolbar_break") && setting("toolbar_break").toBool())
        m_mainWindow->addToolBarBreak(toolBarArea(mainFirst ? "extra_toolbar" : "main_toolbar"));
    m_mainWindow->addToolBar(toolBarArea(mainFirst ? "extra_toolbar" : "main_toolbar"), second);

    if (m_actionsDock) {
        const int area = hasSetting("action_list_area") ? setting("action_list_area").toInt() : 0;
        m_mainWindow->addDockWidget(area == Qt::LeftDockWidgetArea ? Qt::LeftDockWidgetArea
                                                                   : Qt::RightDockWidgetArea,
                                    m_actionsDock);
        if (hasSetting("action_list_width"))
            m_mainWindow->resizeDocks({m_actionsDock}, {qBound(100, setting("action_list_width").toInt(), 480)},
                                      Qt::Horizontal);
        m_actionsDock->setVisible(m_actions.action(QStringLiteral("view_actions"))->isChecked());
    }
}

void QInterface::saveWindowState()
{
    if (!configuration)
        return;
    const QRect geometry = m_mainWindow->normalGeometry().isValid() ? m_mainWindow->normalGeometry()
                                                                   : m_mainWindow->geometry();
    setting("window_left") = geometry.left();
    setting("window_top") = geometry.top();
    setting("window_width") = geometry.right() - geometry.left() + 1;
    setting("window_height") = geometry.bottom() - geometry.top() + 1;
    setting("window_state") = int(m_mainWindow->windowState() & ~Qt::WindowActive);
    setting("main_toolbar") = int(m_mainWindow->toolBarArea(m_mainToolbar));
    setting("extra_toolbar") = int(m_mainWindow->toolBarArea(m_extraToolbar));
    setting("toolbar_break") = m_mainWindow->toolBarBreak(m_extraToolbar) || m_mainWindow->toolBarBreak(m_mainToolbar);
    const QPoint main = m_mainToolbar->pos();
    const QPoint extra = m_extraToolbar->pos();
    setting("toolbar_first") = main.y() < extra.y() || (main.y() == extra.y() && main.x() <= extra.x());
    if (m_actionsDock) {
        setting("action_list_area") = int(m_mainWindow->dockWidgetArea(m_actionsDock));
        setting("action_list_width") = m_actionsDock->width();
    }
}

// ---------------------------------------------------------------------------
// Projects

QString QInterface::tabTitle(QProject *project) const
{
    const QString name = project->definitions()->name();
    return name.isEmpty() ? QFileInfo(project->definitions()->fileName()).completeBaseName() : name;
}

void QInterface::projTabsChanged(int index)
{
    QProject *project = m_projects.value(index);
    if (project == m_current && project)
        return;
    m_current = project;
    refreshEditors();
    if (!m_current)
        showProjectStatus();
}

void QInterface::projTabsMoved(int from, int to)
{
    if (from >= 0 && from < m_projects.size() && to >= 0 && to < m_projects.size())
        m_projects.move(from, to);
}

void QInterface::consumeHandOver()
{
    QHandOver handOver;
    for (const QString &line : handOver.consume()) {
        const QFileInfo info(line);
        const QString suffix = info.suffix().toLower();
        if (suffix == QLatin1String("def"))
            openProject(info.absoluteFilePath());
        else
            openDocument(info.absoluteFilePath(), suffix);
    }
}

void QInterface::openDocument(const QString &fileName, const QString &suffix)
{
    const int codepage = configuration->config[QStringLiteral("default_codepage")].toInt();
    auto inUse = [&suffix](QProject *project) {
        if (suffix == QLatin1String("sff"))
            return project->sprites()->count() > 0 || project->sprites()->paletteCount() > 0;
        if (suffix == QLatin1String("air"))
            return project->animations()->count() > 0;
        if (suffix == QLatin1String("cmd"))
            return !project->commands()->isEmpty();
        if (suffix == QLatin1String("cns"))
            return project->statesCount() > 0;
        if (suffix == QLatin1String("snd"))
            return project->sounds()->count() > 0;
        return false;
    };
    static const QStringList known = {QStringLiteral("sff"), QStringLiteral("air"),
                                      QStringLiteral("cmd"), QStringLiteral("cns"),
                                      QStringLiteral("snd")};
    if (!known.contains(suffix))
        return;

    // Handed-over files go into the last tab, which need not be the current one.
    if (m_projects.isEmpty() || inUse(m_projects.last()))
        newProject(false);
    QProject *project = m_projects.last();

    if (suffix == QLatin1String("sff")) {
        // The set remembers no file name: saving it asks where to.
        project->sprites()->fromFile(fileName, true);
    } else if (suffix == QLatin1String("air")) {
        project->animationText()->load(fileName, codepage, false);
    } else if (suffix == QLatin1String("cmd")) {
        project->commands()->load(fileName, codepage, false);
    } else if (suffix == QLatin1String("cns")) {
        QSyntaxTextEditor *state = project->addState(QFileInfo(fileName).fileName());
        state->document()->setObjectName(fileName);
        state->load(fileName, codepage, false);
    } else if (suffix == QLatin1String("snd")) {
        project->sounds()->fromFile(fileName, false);
    }
    Q_EMIT projectsChanged();
}

void QInterface::fileChanged(const QString &path)
{
    Q_UNUSED(path)
    consumeHandOver();
    if (m_current)
        refreshEditors();
    // Emptying the file fires the watcher once more; that pass finds no
    // lines but still brings the window forward, which is harmless.
    m_mainWindow->activateWindow();
    m_mainWindow->raise();
}

void QInterfaceEditor::ensureCurrent()
{
    if (!isActive() && mainInterface)
        mainInterface->makeCurrent(id());
}
