#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

class QMenu;

/**
 * The projects opened recently, newest first, shown in a submenu of the
 * Project menu and kept in an XML file between runs.
 *
 * The menu belongs to the window; the manager only fills it. A failure to
 * read or write the file is silent: the history is a convenience.
 */
class QHistoryManager : public QObject
{
    Q_OBJECT

public:
    /** `menu` receives the entries; `fileName` is where save() writes (and load() reads by default). */
    QHistoryManager(QMenu *menu, const QString &fileName, QObject *parent = nullptr);

    /**
     * Reads the list from `fileName`, or from the file given at construction.
     * A missing file, or one whose root isn't "history", leaves the list
     * empty. Rebuilds the menu.
     */
    bool load(const QString &fileName = QString());
    /** Writes the list: doctype "ZNLHistoryML", root "history", one "entry" with "file" per path. */
    bool save() const;

    /**
     * Puts `fileName` at the front: an entry already there only moves, a new
     * one pushes the oldest out once there are `max_history` of them.
     */
    void add(const QString &fileName);
    /** The menu again: an entry per path, then "Open all" and "Clear". */
    void rebuild();

    const QStringList &entries() const { return m_entries; }

Q_SIGNALS:
    /** The user chose an entry whose file exists. */
    void entryTriggered(const QString &fileName);

public Q_SLOTS:
    void clearTriggered();
    /** Opens every entry, the oldest first, as if each were chosen. */
    void allTriggered();
    /** The sender's data is the path of the entry chosen. */
    void actionTriggered();

private:
    /** Opens `fileName`, or asks whether to forget it when it is gone. */
    void open(const QString &fileName);
    int maximum() const;

    QPointer<QMenu> m_menu;
    QString m_fileName;
    QStringList m_entries;
};
