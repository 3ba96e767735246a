#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QStringList>

/**
 * The backups of a project, as a list for a view: the folders under
 * "backup/" beside its DEF, sorted by name. Folders whose names begin with
 * a dot are not backups. The list is read once, at construction.
 */
class QBakManager : public QAbstractListModel
{
    Q_OBJECT

public:
    /** Lists the backups of the project whose DEF is `fileName`. */
    explicit QBakManager(const QString &fileName, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /** The folder's name for the display role; nothing else. */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    /** The DEF inside the backup of `index`; empty for an invalid index. */
    QString path(const QModelIndex &index) const;
    /** The backup folders' names, in the order shown. */
    const QStringList &folders() const { return m_folders; }

private:
    QStringList m_folders;
    /** The canonical folder of the DEF. */
    QString m_directory;
    /** The DEF's bare file name. */
    QString m_defName;
};
