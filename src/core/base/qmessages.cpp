#include "qmessages.h"

#include <QIcon>

QMessages::QMessages(QMessageList *owner, QProjectFileType file)
    : m_owner(owner)
    , m_file(file)
{
    if (m_owner)
        m_owner->attach(this);
}

QMessages::~QMessages()
{
    if (m_owner)
        m_owner->detach(this);
}

void QMessages::clear()
{
    beginResetModel();
    m_messages.clear();
    m_counts[0] = m_counts[1] = m_counts[2] = 0;
    endResetModel();
}

void QMessages::begin()
{
    m_batch = true;
    clear();
}

void QMessages::end()
{
    m_batch = false;
    updateOwner();
}

void QMessages::add(int severity, const QString &text, int index, int line)
{
    QMessage message;
    message.severity = severity;
    message.file = m_file;
    message.index = index;
    message.line = line;
    message.text = text;
    const int row = int(m_messages.size());
    beginInsertRows(QModelIndex(), row, row);
    m_messages.append(message);
    endInsertRows();
    if (severity >= 0 && severity < 3)
        ++m_counts[severity];
    if (!m_batch)
        updateOwner();
}

int QMessages::count(int severity) const
{
    if (severity >= 0 && severity < 3)
        return m_counts[severity];
    return int(m_messages.size());
}

int QMessages::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_messages.size());
}

QVariant QMessages::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_messages.size() || role != Qt::DisplayRole)
        return QVariant();
    return QMessageList::displayText(m_messages.at(index.row()), m_fileIndex);
}

void QMessages::updateOwner()
{
    if (m_owner)
        m_owner->update();
}

QMessageList::QMessageList(QObject *parent)
    : QAbstractListModel(parent)
{
}

QMessageList::~QMessageList()
{
    // Documents normally go before their list; any left behind must not
    // reach back into a destroyed list.
    for (QMessages *messages : std::as_const(m_lists))
        messages->m_owner = nullptr;
}

void QMessageList::attach(QMessages *messages)
{
    m_lists.append(messages);
}

void QMessageList::detach(QMessages *messages)
{
    m_lists.removeOne(messages);
}

void QMessageList::update()
{
    if (m_rows > 0) {
        beginRemoveRows(QModelIndex(), 0, m_rows - 1);
        m_rows = 0;
        endRemoveRows();
    }
    m_errors = m_warnings = 0;
    int rows = 0;
    for (const QMessages *messages : std::as_const(m_lists)) {
        rows += messages->count(QMessages::AnySeverity);
        m_errors += messages->count(QMessages::Error);
        m_warnings += messages->count(QMessages::Warning);
    }
    if (rows > 0) {
        beginInsertRows(QModelIndex(), 0, rows - 1);
        m_rows = rows;
        endInsertRows();
    }
    Q_EMIT updated();
}

QMessage QMessageList::message(int row, int *fileIndex) const
{
    if (row >= 0) {
        for (const QMessages *messages : m_lists) {
            const int count = messages->count(QMessages::AnySeverity);
            if (row < count) {
                if (fileIndex)
                    *fileIndex = messages->fileIndex();
                return messages->at(row);
            }
            row -= count;
        }
    }
    if (fileIndex)
        *fileIndex = 0;
    QMessage none;
    none.file = 0;
    return none;
}

QString QMessageList::displayText(const QMessage &m, int fileIndex)
{
    switch (m.file) {
    case FileDefinitions:
        return tr("DEF(%1): %2").arg(m.line + 1).arg(m.text);
    case FileSprites: {
        QString place;
        if (m.index >= 0)
            place = QStringLiteral("(%1%2)")
                        .arg(m.line == 1 ? tr("palette ") : QString())
                        .arg(m.index + 1);
        return tr("SFF%1: %2").arg(place, m.text);
    }
    case FileAnimations:
        return tr("AIR(%1): %2").arg(m.line + 1).arg(m.text);
    case FileCommands:
        return tr("CMD(%1): %2").arg(m.line + 1).arg(m.text);
    case FileStates:
        return tr("ST %1(%2): %3").arg(fileIndex + 1).arg(m.line + 1).arg(m.text);
    case FileSounds: {
        const QString place = m.index >= 0 ? QStringLiteral("(%1)").arg(m.index + 1) : QString();
        return tr("SND%1: %2").arg(place, m.text);
    }
    }
    return m.text;
}

int QMessageList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

QVariant QMessageList::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows)
        return QVariant();
    int fileIndex = 0;
    const QMessage m = message(index.row(), &fileIndex);
    switch (role) {
    case Qt::DisplayRole:
        return displayText(m, fileIndex);
    case Qt::DecorationRole: {
        // Made once: an icon made from its file reads that file again, and
        // a view asks for every row it paints.
        static const QIcon warning(QStringLiteral(":/imgs/Imgs/warn.png"));
        static const QIcon information(QStringLiteral(":/imgs/Imgs/info.png"));
        static const QIcon error(QStringLiteral(":/imgs/Imgs/error.png"));
        return m.severity == 1 ? warning : m.severity == 2 ? information : error;
    }
    }
    return QVariant();
}
