#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>

class QCoreApplication;
class QTranslator;

/**
 * The languages that stand beside the program, one folder each, named by
 * its code ("en-us"), holding an "info.xml" and any number of ".qm" files.
 * As a list model it shows their names, for the Options dialog. The
 * manager installs the translators of one language at a time and owns them.
 * A missing or broken language is never an error: it isn't listed, or the
 * translators in use stay.
 */
class QLanguageManager : public QAbstractListModel
{
    Q_OBJECT

public:
    /** What a language's "info.xml" says, with the folder's name as its code. */
    struct Entry
    {
        QString code;
        QString name;
        QString author;
        QString contact;
    };

    /**
     * Lists the languages of `path` (the program's folder + "/languages"),
     * sorted by code. No language is installed until setLanguage().
     */
    QLanguageManager(QCoreApplication *application, const QString &path, QObject *parent = nullptr);
    ~QLanguageManager() override;

    /**
     * Installs every ".qm" file of the language `code`, after removing the
     * translators of the language before, and sends langChanged(). An
     * unknown code leaves the translators in use, and current() empty.
     */
    void setLanguage(const QString &code);
    /** The code of the language installed last; empty before any, or after an unknown one. */
    QString current() const { return m_current; }

    /** The language of `row`; an empty entry outside the list. */
    Entry entry(int row) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /** The display role gives the language's name. */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /** A language was installed; QEvent::LanguageChange has reached the widgets too. */
    void langChanged();

private:
    void scan();
    void removeTranslators();

    QCoreApplication *m_application;
    QString m_path;
    QList<Entry> m_entries;
    QString m_current;
    QList<QTranslator *> m_translators;
};

/** The process-wide language manager; created at start by the entry point, may be null. */
extern QLanguageManager *languages;
