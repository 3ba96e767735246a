#pragma once

#include "qtranslationunit.h"

#include <QAbstractListModel>
#include <QAbstractTableModel>
#include <QAction>
#include <QHash>
#include <QKeySequence>
#include <QList>

#include <array>

class QActionManager;
class QWidget;

/** What the manager knows of one command action. */
struct QActionInfo
{
    /** The scope of commands that run wherever the user is. */
    static constexpr int Everywhere = 7;
    /** The current scope while no editor is current: no shortcut runs. */
    static constexpr int NoScope = 8;

    /** Into QTranslationUnit. */
    int titleId = 0;
    /** The stable name, such as "file_new": also the key of its icon and of shortcuts.xml. */
    QString name;
    /** Scopes 0 to 6 by editor id (6 is the image editor), 7 everywhere. */
    std::array<bool, 8> scopes{};
    /** The shared shortcut action the command is bound to, or null. */
    QAction *shortcut = nullptr;
};

/**
 * The actions of one scope, for the "Action list" beside the window: the
 * commands of the current editor, with their icons and tips.
 */
class QActionList : public QAbstractListModel
{
    Q_OBJECT

public:
    explicit QActionList(QActionManager *manager);

    /** Shows the actions of scope `id`; with QActionInfo::NoScope or more, none. */
    void setScope(int id);
    /** The action of `row`, or null beyond the end. */
    QAction *action(int row) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    QActionManager *m_manager;
    QList<QAction *> m_actions;
};

/**
 * Every command of the program is an action made here, with a stable name,
 * a title, and the scopes (editors) in which it may run.
 *
 * Keys are never set on the commands themselves. For each key sequence in
 * use there is one hidden shared action on the main window, and a press
 * runs those of its commands whose scope is the current editor's, or
 * everywhere. So one key can mean "add a sprite" in the sprites editor and
 * "add a sound" in the sounds editor, while a key of a global command
 * belongs to it alone: binding it elsewhere is refused as a conflict.
 *
 * As a table model it is the shortcut table of the options: "Function" and
 * "Keys", the keys editable.
 */
class QActionManager : public QAbstractTableModel
{
    Q_OBJECT

public:
    /**
     * `window` is the main window: the parent of every command action, and
     * the widget that carries the shared shortcut actions.
     */
    explicit QActionManager(QWidget *window);
    ~QActionManager() override;

    /**
     * Creates the command `name` with the title `titleId`, allowed in the
     * editors of `scopes` (QActionInfo::Everywhere for all). Texts are set
     * at once, in the current language.
     */
    QAction *addAction(std::initializer_list<int> scopes, const QString &name, int titleId,
                       bool checkable = false);
    /**
     * The same, and connects the action to `slot` of `receiver`: toggled(bool)
     * when checkable, triggered() otherwise.
     */
    template <typename Receiver, typename Slot>
    QAction *addAction(std::initializer_list<int> scopes, const QString &name, int titleId, bool checkable,
                       const Receiver *receiver, Slot slot)
    {
        QAction *made = addAction(scopes, name, titleId, checkable);
        if (checkable)
            connect(made, &QAction::toggled, receiver, slot);
        else
            connect(made, &QAction::triggered, receiver, slot);
        return made;
    }

    /** The first action named `name`, or null. */
    QAction *action(const QString &name) const;
    /** What is known of `action`; null for an action not made here. */
    const QActionInfo *info(const QAction *action) const;
    /** Every command, in the order of creation. */
    const QList<QAction *> &actions() const { return m_actions; }
    /** The keys bound to `action`; empty when none. */
    QKeySequence keys(const QAction *action) const;

    /**
     * Binds `keys` to `action`, or unbinds it when `keys` is empty. A key
     * already bound to a command that may run where this one runs is a
     * conflict: the user is warned and nothing changes. Returns false then.
     */
    bool setShortcut(QAction *action, const QKeySequence &keys);
    /** The editor whose commands the keys run now; QActionInfo::NoScope for none. */
    void setScope(int id);
    int scope() const { return m_scope; }

    /** The texts of every action again, in the current language. */
    void retranslate();
    QTranslationUnit &translation() { return m_unit; }
    QActionList &list() { return m_list; }

    /**
     * Binds the keys of a shortcuts file. False when there is no such file,
     * it isn't XML, or its root isn't "shortcuts"; a name no action has is
     * skipped.
     */
    bool load(const QString &fileName);
    /** Writes every binding, in the order of the actions. False when it couldn't be written. */
    bool save(const QString &fileName) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    /** Binds the edited keys; true even when a conflict stopped it, as the table has nothing to undo. */
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    /** The text an action shows: its title, and its keys after a tab. */
    QString text(const QAction *action) const;

public Q_SLOTS:
    /** A shared key was pressed: runs its commands that belong where the user is. */
    void shortcutTriggered();

private:
    void refreshTexts(QAction *action);
    /** How many commands the shared action serves. */
    static int users(const QAction *shared);
    void unbind(QActionInfo &info);

    QWidget *m_window;
    QTranslationUnit m_unit;
    QList<QAction *> m_actions;
    QHash<const QAction *, QActionInfo> m_info;
    QList<QAction *> m_shortcuts;
    QActionList m_list;
    int m_scope = QActionInfo::NoScope;
};
