#pragma once

#include "core/base/qdatafolder.h"

#include <QHash>
#include <QIcon>
#include <QStringList>

class QActionManager;

/**
 * The iconsets: folders holding an "Iconset.xml" that maps action names
 * (and the other keys the window asks for) to image files in the folder.
 */
class QIconsetManager
{
public:
    explicit QIconsetManager(const QDataFolder &folder);

    /** The iconsets found, by folder name. */
    QStringList names() const { return m_names; }
    QString current() const { return m_current; }

    /**
     * With `reload`, reads the iconset `name` unless it is the one loaded
     * already; an unknown or unreadable set leaves none loaded. Then, with
     * a set loaded, gives every action of `actions` its icon, or none.
     */
    void load(const QString &name, QActionManager *actions, bool reload);
    /** The icon of `name` in the loaded set; a null icon when it has none. */
    QIcon icon(const QString &name) const;
    /** The file of `name` in the loaded set; empty when it has none. */
    QString iconFile(const QString &name) const;

private:
    QDataFolder m_folder;
    QStringList m_names;
    QString m_current;
    /** The folder of the loaded set, where its files stand. */
    QString m_setFolder;
    QHash<QString, QString> m_files;
    mutable QHash<QString, QIcon> m_icons;
};

/** The process-wide iconsets; created at start by the entry point, may be null. */
extern QIconsetManager *iconsets;
