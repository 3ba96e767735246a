#include "qiconsetmanager.h"

#include "qactionmanager.h"

#include "core/base/atomicfile.h"

#include <QDomDocument>
#include <QFileInfo>

QIconsetManager *iconsets = nullptr;

QIconsetManager::QIconsetManager(const QDataFolder &folder)
    : m_folder(folder)
    , m_names(folder.folderNames())
{
}

void QIconsetManager::load(const QString &name, QActionManager *actions, bool reload)
{
    if (reload) {
        if (name == m_current)
            return;
        m_current.clear();
        if (!m_names.contains(name))
            return;
        m_files.clear();
        m_icons.clear();
        const QString file = m_folder.find(name + QLatin1String("/Iconset.xml"));
        QDomDocument document;
        const QDomElement root = readXmlRoot(document, file, QStringLiteral("iconset"));
        if (root.isNull())
            return;
        m_current = name;
        m_setFolder = QFileInfo(file).absolutePath();
        for (QDomElement e = root.firstChildElement(QStringLiteral("icon")); !e.isNull();
             e = e.nextSiblingElement(QStringLiteral("icon")))
            m_files.insert(e.attribute(QStringLiteral("name")), e.attribute(QStringLiteral("file")));
    }
    if (m_files.isEmpty() || !actions)
        return;
    for (QAction *action : actions->actions())
        action->setIcon(icon(actions->info(action)->name));
}

QString QIconsetManager::iconFile(const QString &name) const
{
    const QString file = m_files.value(name);
    return file.isEmpty() ? QString() : m_setFolder + QLatin1Char('/') + file;
}

QIcon QIconsetManager::icon(const QString &name) const
{
    const auto cached = m_icons.constFind(name);
    if (cached != m_icons.cend())
        return cached.value();
    const QString file = iconFile(name);
    const QIcon made = file.isEmpty() ? QIcon() : QIcon(file);
    m_icons.insert(name, made);
    return made;
}
