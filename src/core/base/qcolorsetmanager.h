#pragma once

#include "qdatafolder.h"

#include <QAbstractListModel>
#include <QColor>
#include <QStringList>

class QSyntaxFormats;

/**
 * The colours of the program: those of syntax colouring, of the code
 * editor's highlights, of the work area's background and of the collision
 * boxes. A colorset is a file "<name>.xml" in the colorsets folder; the
 * manager holds the 19 colours of the one loaded, and is, for the options,
 * a list model of them. Editors and renderers read it when the
 * configuration is applied.
 */
class QColorsetManager : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Index {
        Comment, Block, Number, String, Keyword, Value, Controller, Trigger, Const,
        Paren, ParenRange, BlockRange, Line, BackStart, BackEnd, Clsn1, Clsn2, Clsn1Default, Clsn2Default,
        Count
    };

    struct Entry
    {
        QColor color;
        bool bold = false;
        bool italic = false;
    };

    /** The colorset every user can change and save from the options. */
    static QString customName() { return QStringLiteral("Custom"); }

    explicit QColorsetManager(const QDataFolder &folder, QObject *parent = nullptr);

    /** The colorsets found, "Custom" always first. */
    QStringList names() const { return m_names; }
    QString current() const { return m_current; }

    /**
     * Loads the colorset `name` over the default colours. Unless `force`,
     * the colorset already loaded isn't read again. A name the file doesn't
     * know is skipped, a colour it doesn't give keeps its default. False
     * when nothing was read.
     */
    bool load(const QString &name, bool force);
    /** Writes the colours held as the colorset `name`. False when it couldn't be written. */
    bool save(const QString &name);

    const Entry &entry(int index) const;
    void setEntry(int index, const Entry &entry);
    /** The colour named `name` ("clsn1", "comment"...); invalid for an unknown name. */
    QColor color(const QString &name) const;
    /** The index of a colour name, -1 when unknown. */
    static int indexOf(const QString &name);
    static QString name(int index);
    /** The label of a colour in the options ("Block header"), translated. */
    static QString label(int index);
    /** Whether the colour `index` has a weight and a slant: highlights and ranges are plain backgrounds. */
    static bool hasFontStyle(int index);
    /** The colour every colorset starts from. */
    static Entry defaultEntry(int index);

    /** Gives the nine syntax formats their colours, matched by name. */
    void applyTo(QSyntaxFormats &formats) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    void scan();
    void reset();

    QDataFolder m_folder;
    QStringList m_names;
    QString m_current;
    Entry m_entries[Count];
};

/** The process-wide colours; created at start by the entry point, may be null. */
extern QColorsetManager *colorsets;
