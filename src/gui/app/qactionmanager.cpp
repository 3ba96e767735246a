#include "qactionmanager.h"

#include "core/base/atomicfile.h"
#include "core/base/quserprompt.h"

#include <QDomDocument>
#include <QWidget>

namespace {

const char DocType[] = "ZNLShortcutML";
const char RootTag[] = "shortcuts";
const char EntryTag[] = "shortcut";

} // namespace

QActionList::QActionList(QActionManager *manager)
    : m_manager(manager)
{
}

void QActionList::setScope(int id)
{
    beginResetModel();
    m_actions.clear();
    if (id >= 0 && id < QActionInfo::NoScope) {
        for (QAction *action : m_manager->actions()) {
            if (m_manager->info(action)->scopes[size_t(id)])
                m_actions.append(action);
        }
    }
    endResetModel();
}

QAction *QActionList::action(int row) const
{
    return m_actions.value(row);
}

int QActionList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_actions.size());
}

QVariant QActionList::data(const QModelIndex &index, int role) const
{
    const QAction *action = this->action(index.row());
    if (!action)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return action->toolTip();
    case Qt::DecorationRole:
        return action->icon();
    default:
        return QVariant();
    }
}

QActionManager::QActionManager(QWidget *window)
    : m_window(window)
    , m_list(this)
{
}

QActionManager::~QActionManager()
{
    // The shared actions are children of the manager and go with it; the
    // commands belong to the window.
    for (QAction *shared : std::as_const(m_shortcuts))
        m_window->removeAction(shared);
}

QAction *QActionManager::addAction(std::initializer_list<int> scopes, const QString &name, int titleId,
                                   bool checkable)
{
    auto *made = new QAction(m_window);
    made->setCheckable(checkable);
    QActionInfo info;
    info.titleId = titleId;
    info.name = name;
    for (int scope : scopes) {
        if (scope >= 0 && scope <= QActionInfo::Everywhere)
            info.scopes[size_t(scope)] = true;
    }
    const int row = int(m_actions.size());
    beginInsertRows(QModelIndex(), row, row);
    m_info.insert(made, info);
    m_actions.append(made);
    endInsertRows();
    refreshTexts(made);
    return made;
}

QAction *QActionManager::action(const QString &name) const
{
    for (QAction *action : m_actions) {
        if (m_info.value(action).name == name)
            return action;
    }
    return nullptr;
}

const QActionInfo *QActionManager::info(const QAction *action) const
{
    const auto it = m_info.constFind(action);
    return it == m_info.cend() ? nullptr : &it.value();
}

QKeySequence QActionManager::keys(const QAction *action) const
{
    const QActionInfo *known = info(action);
    return known && known->shortcut ? known->shortcut->shortcut() : QKeySequence();
}

int QActionManager::users(const QAction *shared)
{
    return shared->data().toInt();
}

void QActionManager::unbind(QActionInfo &info)
{
    QAction *shared = info.shortcut;
    if (!shared)
        return;
    info.shortcut = nullptr;
    const int left = users(shared) - 1;
    shared->setData(left);
    if (left > 0)
        return;
    m_window->removeAction(shared);
    m_shortcuts.removeOne(shared);
    delete shared;
}

bool QActionManager::setShortcut(QAction *action, const QKeySequence &keys)
{
    const auto it = m_info.find(action);
    if (it == m_info.end())
        return false;
    QActionInfo &info = it.value();

    QAction *shared = nullptr;
    if (!keys.isEmpty()) {
        for (QAction *candidate : std::as_const(m_shortcuts)) {
            if (candidate->shortcut() == keys) {
                shared = candidate;
                break;
            }
        }
    }
    // Bound already: nothing changes. Going on would free the shared action
    // found above when this action is its only user.
    if (shared && info.shortcut == shared)
        return true;

    if (shared) {
        for (auto other = m_info.cbegin(); other != m_info.cend(); ++other) {
            if (other.key() == action || other.value().shortcut != shared)
                continue;
            bool clash = other.value().scopes[QActionInfo::Everywhere] || info.scopes[QActionInfo::Everywhere];
            // Scope 0, the definitions, may share any key with the others.
            for (size_t scope = 1; scope < QActionInfo::Everywhere && !clash; ++scope)
                clash = other.value().scopes[scope] && info.scopes[scope];
            if (clash) {
                userPrompt->warning(tr("Conflict!"),
                                    tr("This shortcut conflict with another that resides in the same scope."));
                return false;
            }
        }
    }

    unbind(info);
    if (keys.isEmpty()) {
        refreshTexts(action);
        return true;
    }
    if (!shared) {
        shared = new QAction(this);
        shared->setShortcut(keys);
        shared->setData(0);
        connect(shared, &QAction::triggered, this, &QActionManager::shortcutTriggered);
        m_shortcuts.append(shared);
        m_window->addAction(shared);
    }
    shared->setData(users(shared) + 1);
    info.shortcut = shared;
    refreshTexts(action);
    const int row = int(m_actions.indexOf(action));
    Q_EMIT dataChanged(index(row, 1), index(row, 1));
    return true;
}

void QActionManager::setScope(int id)
{
    m_scope = id;
    m_list.setScope(id);
}

void QActionManager::shortcutTriggered()
{
    const auto *shared = qobject_cast<QAction *>(sender());
    if (!shared)
        return;
    // Without a current editor (a project kind no editor serves) the
    // window's own commands still run: Ctrl+S must save a stage.
    const bool editor = m_scope >= 0 && m_scope < QActionInfo::NoScope;
    // A command may delete others or change the scope; walk a copy.
    const QList<QAction *> commands = m_actions;
    for (QAction *command : commands) {
        const QActionInfo *known = info(command);
        if (known && known->shortcut == shared
            && (known->scopes[QActionInfo::Everywhere] || (editor && known->scopes[size_t(m_scope)])))
            command->activate(QAction::Trigger);
    }
}

QString QActionManager::text(const QAction *action) const
{
    const QActionInfo *known = info(action);
    if (!known)
        return QString();
    QString text = m_unit.title(known->titleId);
    if (known->shortcut)
        text += QLatin1String("\t (") + known->shortcut->shortcut().toString(QKeySequence::NativeText)
            + QLatin1Char(')');
    return text;
}

void QActionManager::refreshTexts(QAction *action)
{
    const QActionInfo *known = info(action);
    action->setText(text(action));
    const QString tip = m_unit.tip(known->titleId);
    action->setToolTip(tip);
    action->setStatusTip(tip);
    action->setWhatsThis(m_unit.whatsThis(known->titleId));
}

void QActionManager::retranslate()
{
    for (QAction *action : std::as_const(m_actions))
        refreshTexts(action);
    if (!m_actions.isEmpty())
        Q_EMIT dataChanged(index(0, 0), index(int(m_actions.size()) - 1, 1));
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, 1);
    m_list.setScope(m_scope);
}

bool QActionManager::load(const QString &fileName)
{
    QDomDocument document;
    const QDomElement root = readXmlRoot(document, fileName, QLatin1String(RootTag));
    if (root.isNull())
        return false;
    for (QDomElement e = root.firstChildElement(QLatin1String(EntryTag)); !e.isNull();
         e = e.nextSiblingElement(QLatin1String(EntryTag))) {
        QAction *command = action(e.attribute(QStringLiteral("action")));
        if (command)
            setShortcut(command, QKeySequence(e.attribute(QStringLiteral("keys")), QKeySequence::PortableText));
    }
    return true;
}

bool QActionManager::save(const QString &fileName) const
{
    QDomDocument document{QLatin1String(DocType)};
    QDomElement root = document.createElement(QLatin1String(RootTag));
    document.appendChild(root);
    for (const QAction *command : m_actions) {
        const QActionInfo *known = info(command);
        if (!known->shortcut)
            continue;
        QDomElement entry = document.createElement(QLatin1String(EntryTag));
        entry.setAttribute(QStringLiteral("action"), known->name);
        // Portable text, so that a file written on a German desktop doesn't say "Strg+S".
        entry.setAttribute(QStringLiteral("keys"), known->shortcut->shortcut().toString(QKeySequence::PortableText));
        root.appendChild(entry);
    }
    return writeXmlAtomically(fileName, document);
}

int QActionManager::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_actions.size());
}

int QActionManager::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 2;
}

QVariant QActionManager::data(const QModelIndex &index, int role) const
{
    const QAction *command = m_actions.value(index.row());
    if (!command)
        return QVariant();
    if (role == Qt::DisplayRole || role == Qt::EditRole) {
        return index.column() == 0 ? QVariant(command->toolTip())
                                   : QVariant(keys(command).toString(QKeySequence::NativeText));
    }
    if (role == Qt::DecorationRole && index.column() == 0)
        return command->icon();
    return QVariant();
}

QVariant QActionManager::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    if (section == 0)
        return tr("Function");
    if (section == 1)
        return tr("Keys");
    return QVariant();
}

Qt::ItemFlags QActionManager::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return index.column() == 1 ? Qt::ItemIsEnabled | Qt::ItemIsEditable : Qt::ItemIsEnabled;
}

bool QActionManager::setData(const QModelIndex &index, const QVariant &value, int role)
{
    QAction *command = m_actions.value(index.row());
    if (role != Qt::EditRole || index.column() != 1 || !command)
        return false;
    // The table shows native text, so that is what a typed edit holds.
    setShortcut(command, value.typeId() == QMetaType::QKeySequence
                             ? value.value<QKeySequence>()
                             : QKeySequence(value.toString(), QKeySequence::NativeText));
    return true;
}
