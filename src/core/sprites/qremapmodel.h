#pragma once

#include <QAbstractTableModel>
#include <QList>

/** One row of the remap table: the palette (source) that another (destination) stands in for. */
struct QRemap
{
    quint32 srcGroup = 1;
    quint32 srcIndex = 1;
    quint32 dstGroup = 1;
    quint32 dstIndex = 1;
};

/**
 * The remap table of a sprite set: which palette image(Remapped) uses in
 * place of a sprite's own. Four editable columns, "Src Grp", "Src Num",
 * "Dst Grp" and "Dst Num". The table is a viewing aid: it isn't saved and
 * doesn't make the set modified.
 */
class QRemapModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit QRemapModel(QObject *parent = nullptr);

    const QList<QRemap> &remaps() const { return m_rows; }
    /**
     * The first row whose source is (`group`, `index`), copied to `out`.
     * False when there is none.
     */
    bool remapOf(quint32 group, quint32 index, QRemap &out) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    /** Display and edit: the number in the cell. */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /** Edit: sets one number of a row. */
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    /** Appends `count` rows of (1, 1, 1, 1) at the end, wherever `row` points. */
    bool insertRows(int row, int count, const QModelIndex &parent = QModelIndex()) override;
    bool removeRows(int row, int count, const QModelIndex &parent = QModelIndex()) override;

private:
    QList<QRemap> m_rows;
};
