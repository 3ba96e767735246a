#pragma once

#include "qprojecttypes.h"

#include <QAbstractListModel>
#include <QList>
#include <QString>

class QMessageList;

/** One check message of a document. */
struct QMessage
{
    /** 0 error, 1 warning, 2 information. */
    int severity = 0;
    /** The document's QProjectFileType. */
    int file = 0;
    /** Sprites and sounds: the item's place from 0, negative for none. Text: the column. */
    int index = -1;
    /** Text: the line from 0. Sprites: 1 when `index` is a palette, 0 when it is a sprite. */
    int line = 0;
    /** Already translated. */
    QString text;
};

/**
 * The current list of what is wrong with one document. A document's check()
 * fills it between begin() and end(); the owning QMessageList joins the
 * lists of all documents of a project.
 */
class QMessages : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Severity { Error = 0, Warning = 1, Information = 2, AnySeverity = 3 };

    /** Registers with `owner` (may be null) for the document kind `file`. */
    QMessages(QMessageList *owner, QProjectFileType file);
    ~QMessages() override;

    /** Empties the list and the counts. */
    void clear();
    /** Starts a check: the owner isn't updated until end(). */
    void begin();
    /** Ends a check and updates the owner. */
    void end();
    /** Appends a message; updates the owner at once unless a check is under way. */
    void add(int severity, const QString &text, int index, int line);
    /** The count of one severity; AnySeverity (3) gives the total of rows. */
    int count(int severity) const;

    const QMessage &at(int row) const { return m_messages.at(row); }
    QProjectFileType fileType() const { return m_file; }
    /** The document's own place: in the states list for a state document, else 0. */
    int fileIndex() const { return m_fileIndex; }
    void setFileIndex(int index) { m_fileIndex = index; }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    friend class QMessageList;
    void updateOwner();

    QMessageList *m_owner;
    QProjectFileType m_file;
    int m_counts[3] = {0, 0, 0};
    QList<QMessage> m_messages;
    bool m_batch = false;
    int m_fileIndex = 0;
};

/**
 * The check messages of all documents of a project, as one list model with
 * totals. Information messages are rows but count in neither total.
 */
class QMessageList : public QAbstractListModel
{
    Q_OBJECT

public:
    explicit QMessageList(QObject *parent = nullptr);
    ~QMessageList() override;

    /** Recounts every registered list, rebuilds the rows and sends updated(). */
    void update();
    /**
     * The message at `row`, across all documents in registration order.
     * `fileIndex`, if given, receives the document's own index. Out of range,
     * an empty message with severity 0 and file 0.
     */
    QMessage message(int row, int *fileIndex = nullptr) const;
    /** The text shown for a message, with lines and items counted from 1. */
    static QString displayText(const QMessage &message, int fileIndex);

    int errors() const { return m_errors; }
    int warnings() const { return m_warnings; }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /** Display: the formatted text. Decoration: the icon of the severity. */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    void updated();

private:
    friend class QMessages;
    void attach(QMessages *messages);
    void detach(QMessages *messages);

    QList<QMessages *> m_lists;
    int m_rows = 0;
    int m_errors = 0;
    int m_warnings = 0;
};
