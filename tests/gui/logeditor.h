#pragma once

// A workspace and an editor that only say what is done to them: they prove
// the frame before the real editors stand in it, in the tests and in the
// frame's demonstration program.

#include "gui/app/qinterface.h"
#include "gui/app/qinterfacecontrol.h"

#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPair>
#include <QStringList>

/** Set by the demonstration program: every line is also printed, for whoever drives it from outside. */
inline bool echoLog = false;

inline void logLine(QStringList *log, const QString &line)
{
    log->append(line);
    if (echoLog)
        qInfo("%s", qPrintable(line));
}

/** A workspace that only says what is done to it. */
class LogWorkspace : public QInterfaceWorkspace
{
public:
    LogWorkspace(int id, QStringList *log)
        : m_id(id)
        , m_log(log)
    {
    }
    int id() const override { return m_id; }
    const char *nameKey() const override { return m_id == 0 ? "text" : "animsprites"; }
    QWidget *widget() override { return &m_widget; }
    void activate() override
    {
        QInterfaceWorkspace::activate();
        say(QStringLiteral("activate"));
    }
    void deactivate() override
    {
        QInterfaceWorkspace::deactivate();
        say(QStringLiteral("deactivate"));
    }
    void applyConfig() override {}
    void setProject(QProject *) override { say(QStringLiteral("setProject")); }
    void retranslate(QTranslationUnit *) override {}

private:
    void say(const QString &what) { logLine(m_log, QStringLiteral("W%1.%2").arg(m_id).arg(what)); }

    int m_id;
    QStringList *m_log;
    QWidget m_widget;
};

/**
 * An editor that only says what is done to it, with one command ("add"),
 * one spin box control and a menu, as a real editor declares them.
 */
class LogEditor : public QInterfaceEditor
{

public:
    /** `commands` are the names and title ids of its actions; the first is `add`. */
    LogEditor(QInterface *ui, int id, int workspace, int mask, QStringList *log,
              const QList<QPair<QString, int>> &commands)
        : m_id(id)
        , m_workspace(workspace)
        , m_mask(mask)
        , m_log(log)
        , m_name(keys[id][0])
        , m_panel(keys[id][1])
        , m_menu(new QMenu(ui->mainWindow()->menuBar()))
    {
        m_menu->setTitle(QStringLiteral("Test %1").arg(id));
        for (const auto &command : commands) {
            QAction *action = ui->actions().addAction({id}, command.first, command.second, false, this,
                                                      [this, command] { say(command.first); });
            add = add ? add : action;
            m_menu->addAction(action);
            ui->addControl(command.first, new QInterfaceControlAction(action));
        }
        ui->insertMenu(m_menu);
        ui->addControl(QStringLiteral("test_spin_%1").arg(id),
                       new QInterfaceControlWidget(QInterfaceControl::SpinBox, 91, this, nullptr, nullptr));
    }

    int id() const override { return m_id; }
    const char *nameKey() const override { return m_name; }
    const char *panelKey() const override { return m_panel; }
    bool isModified() const override { return false; }
    QMenu *menu() const override { return m_menu; }
    int panelFlags() const override
    {
        return QInterfaceIds::ExtraToolbar | QInterfaceIds::LeftPanel | QInterfaceIds::RightPanel;
    }
    int workspaceId() const override { return m_workspace; }
    QProjectFileType fileType() const override { return QProjectFileType(m_id); }
    void activate(bool show) override
    {
        QInterfaceEditor::activate(show);
        say(QStringLiteral("activate(%1)").arg(show));
    }
    void deactivate() override
    {
        QInterfaceEditor::deactivate();
        say(QStringLiteral("deactivate"));
    }
    void applyConfig() override {}
    int projectMask() const override { return m_mask; }
    void setProject(QProject *) override { say(QStringLiteral("setProject")); }
    int titleId() const override { return 221; }
    void retranslate(QTranslationUnit *) override {}
    void navigate(int fileIndex, int index, int line) override
    {
        say(QStringLiteral("navigate(%1,%2,%3)").arg(fileIndex).arg(index).arg(line));
    }

    void clear() override { ensureCurrent(); }
    void open() override {}
    void save() override {}
    void saveAs() override {}
    void undo() override { say(QStringLiteral("undo")); }
    void redo() override {}
    void cut() override {}
    void copy() override {}
    void paste() override {}
    void find(const QString &, const QQuickFindOptions &) override {}
    void replace(const QString &, const QString &, const QQuickFindOptions &, bool) override {}

    QAction *add = nullptr;

private:
    /** The keys of the editor of each id, which presets and iconsets know. */
    static constexpr const char *keys[6][2] = {{"editor_def", "definitions"}, {"editor_sff", "sprites"},
                                               {"editor_air", "animations"},  {"editor_cmd", "commands"},
                                               {"editor_cns", "states"},      {"editor_snd", "sounds"}};

    void say(const QString &what) { logLine(m_log, QStringLiteral("E%1.%2").arg(m_id).arg(what)); }

    int m_id;
    int m_workspace;
    int m_mask;
    QStringList *m_log;
    const char *m_name;
    const char *m_panel;
    QMenu *m_menu;
};

