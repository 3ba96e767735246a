#include "qbakmanager.h"

#include <QDir>
#include <QFileInfo>

QBakManager::QBakManager(const QString &fileName, QObject *parent)
    : QAbstractListModel(parent)
{
    const QFileInfo def(fileName);
    m_directory = QFileInfo(def.absolutePath()).canonicalFilePath();
    m_defName = def.fileName();
    if (m_directory.isEmpty())
        return;
    const QStringList entries = QDir(m_directory + QLatin1String("/backup"))
                                    .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &entry : entries) {
        if (!entry.startsWith(QLatin1Char('.')))
            m_folders.append(entry);
    }
}

int QBakManager::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_folders.size());
}

QVariant QBakManager::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid() || index.row() >= m_folders.size())
        return QVariant();
    return m_folders.at(index.row());
}

QString QBakManager::path(const QModelIndex &index) const
{
    if (!index.isValid() || index.row() >= m_folders.size())
        return QString();
    return m_directory + QLatin1String("/backup/") + m_folders.at(index.row()) + QLatin1Char('/') + m_defName;
}
