#include "qremapmodel.h"

namespace {

quint32 &cell(QRemap &row, int column)
{
    switch (column) {
    case 0:
        return row.srcGroup;
    case 1:
        return row.srcIndex;
    case 2:
        return row.dstGroup;
    default:
        return row.dstIndex;
    }
}

} // namespace

QRemapModel::QRemapModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

bool QRemapModel::remapOf(quint32 group, quint32 index, QRemap &out) const
{
    for (const QRemap &row : m_rows) {
        if (row.srcGroup == group && row.srcIndex == index) {
            out = row;
            return true;
        }
    }
    return false;
}

int QRemapModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int QRemapModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 4;
}

QVariant QRemapModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || (role != Qt::DisplayRole && role != Qt::EditRole))
        return QVariant();
    QRemap row = m_rows.at(index.row());
    return cell(row, index.column());
}

bool QRemapModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::EditRole)
        return false;
    bool ok = false;
    const quint32 number = value.toUInt(&ok);
    if (!ok)
        return false;
    cell(m_rows[index.row()], index.column()) = number;
    Q_EMIT dataChanged(index, index, {Qt::DisplayRole, Qt::EditRole});
    return true;
}

QVariant QRemapModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case 0:
        return tr("Src Grp");
    case 1:
        return tr("Src Num");
    case 2:
        return tr("Dst Grp");
    case 3:
        return tr("Dst Num");
    default:
        return QVariant();
    }
}

Qt::ItemFlags QRemapModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.isValid())
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool QRemapModel::insertRows(int, int count, const QModelIndex &parent)
{
    if (parent.isValid() || count < 1)
        return false;
    const int first = int(m_rows.size());
    beginInsertRows(QModelIndex(), first, first + count - 1);
    m_rows.insert(first, count, QRemap());
    endInsertRows();
    return true;
}

bool QRemapModel::removeRows(int row, int count, const QModelIndex &parent)
{
    if (parent.isValid() || count < 1 || row < 0 || row + count > m_rows.size())
        return false;
    beginRemoveRows(QModelIndex(), row, row + count - 1);
    m_rows.remove(row, count);
    endRemoveRows();
    return true;
}
