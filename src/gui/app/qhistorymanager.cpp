#include "qhistorymanager.h"

#include "core/base/atomicfile.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"

#include <QAction>
#include <QDir>
#include <QDomDocument>
#include <QFileInfo>
#include <QMenu>

namespace {
const char DocType[] = "ZNLHistoryML";
const char RootTag[] = "history";
const char EntryTag[] = "entry";
} // namespace

QHistoryManager::QHistoryManager(QMenu *menu, const QString &fileName, QObject *parent)
    : QObject(parent)
    , m_menu(menu)
    , m_fileName(fileName)
{
}

bool QHistoryManager::load(const QString &fileName)
{
    m_entries.clear();
    QDomDocument document;
    const QDomElement root =
        readXmlRoot(document, fileName.isEmpty() ? m_fileName : fileName, QLatin1String(RootTag));
    for (QDomElement e = root.firstChildElement(QLatin1String(EntryTag)); !e.isNull();
         e = e.nextSiblingElement(QLatin1String(EntryTag))) {
        const QString file = e.attribute(QStringLiteral("file"));
        if (!file.isEmpty() && !m_entries.contains(file))
            m_entries.append(file);
    }
    // A file edited by hand may hold more than the options allow.
    while (m_entries.size() > maximum())
        m_entries.removeLast();
    rebuild();
    return !root.isNull();
}

bool QHistoryManager::save() const
{
    QDomDocument document{QLatin1String(DocType)};
    QDomElement root = document.createElement(QLatin1String(RootTag));
    document.appendChild(root);
    for (const QString &file : m_entries) {
        QDomElement entry = document.createElement(QLatin1String(EntryTag));
        entry.setAttribute(QStringLiteral("file"), file);
        root.appendChild(entry);
    }
    return writeXmlAtomically(m_fileName, document);
}

int QHistoryManager::maximum() const
{
    const int configured = configuration ? configuration->config.value(QStringLiteral("max_history")).toInt() : 0;
    return configured > 0 ? configured : 30;
}

void QHistoryManager::add(const QString &fileName)
{
    if (!m_menu)
        return;
    if (m_entries.contains(fileName)) {
        m_entries.move(m_entries.indexOf(fileName), 0);
    } else {
        while (m_entries.size() >= maximum())
            m_entries.removeLast();
        m_entries.prepend(fileName);
    }
    rebuild();
}

void QHistoryManager::rebuild()
{
    if (!m_menu)
        return;
    // Later, not now: the entry that was chosen may be what asks for this.
    const QList<QAction *> old = m_menu->actions();
    for (QAction *action : old) {
        m_menu->removeAction(action);
        action->deleteLater();
    }
    for (const QString &file : std::as_const(m_entries)) {
        QAction *action = m_menu->addAction(QFileInfo(file).completeBaseName());
        action->setData(file);
        action->setToolTip(QDir::toNativeSeparators(file));
        action->setStatusTip(QDir::toNativeSeparators(file));
        connect(action, &QAction::triggered, this, &QHistoryManager::actionTriggered);
    }
    if (!m_entries.isEmpty()) {
        m_menu->addSeparator();
        connect(m_menu->addAction(tr("Open all")), &QAction::triggered, this, &QHistoryManager::allTriggered);
        connect(m_menu->addAction(tr("Clear")), &QAction::triggered, this, &QHistoryManager::clearTriggered);
    }
    m_menu->setEnabled(!m_entries.isEmpty());
}

void QHistoryManager::clearTriggered()
{
    m_entries.clear();
    rebuild();
}

void QHistoryManager::allTriggered()
{
    // Opening moves an entry to the front, and a missing one may go: walk a copy.
    const QStringList entries = m_entries;
    for (auto it = entries.crbegin(); it != entries.crend(); ++it)
        open(*it);
}

void QHistoryManager::actionTriggered()
{
    if (const auto *action = qobject_cast<QAction *>(sender()))
        open(action->data().toString());
}

void QHistoryManager::open(const QString &fileName)
{
    if (QFileInfo::exists(fileName)) {
        Q_EMIT entryTriggered(fileName);
        return;
    }
    if (userPrompt->warningQuestion(tr("File not found!"),
                                    tr("The file '%1' doesn't exists. Do you want to remove it from the history?")
                                        .arg(QDir::toNativeSeparators(fileName)),
                                    true)) {
        m_entries.removeAll(fileName);
        rebuild();
    }
}
