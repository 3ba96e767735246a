#pragma once

#include <QAbstractItemModel>
#include <QList>
#include <QString>
#include <QStringList>

/** One item of a hierarchy: a section, a key line, a variable. Items come from a pool. */
struct QSyntaxHierarchyItem
{
    QSyntaxHierarchyItem *parent = nullptr;
    QList<QSyntaxHierarchyItem *> children;
    /** "statedef", "state" or a controller type, "const", "quote", "command", "anim"... */
    QString kind;
    /** A section's name as its header gives it, or a key. */
    QString text;
    /** What follows the "=" of a key line. */
    QString value;
    /** The comment block above a section header, shown beside its name. */
    QString comment;
    /** The place among the parent's children. */
    int index = 0;
    /** The line, from 0. */
    int line = 0;
    /** Of a variable: the state definitions that set it. */
    QStringList users;
};

/**
 * The section tree of a text, read from scratch from the whole text: what
 * the side tree shows and what other code queries ("the value of name in
 * [Info]"). Two trees: the sections, and the variables (60 integer and 40
 * float ones) with the state definitions that set each.
 */
class QSyntaxHierarchy : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Mode { Sections = 0, Variables = 1 };
    /** The users of a variable entry, a QStringList. */
    static constexpr int UsersRole = Qt::UserRole + 1;

    explicit QSyntaxHierarchy(QObject *parent = nullptr);
    ~QSyntaxHierarchy() override;

    /** Reads `text` from scratch; sends updated(). */
    virtual void rebuild(const QString &text);
    /** The line of an item, from 0; -1 for none. */
    virtual int lineOf(const QModelIndex &index) const;
    /** The deepest item that starts at or before `line`. */
    virtual QModelIndex itemAtLine(int line) const;
    /** Whether a top-level section has the name `section`, case ignored. */
    virtual bool sectionExists(const QString &section) const;
    /** The value of `key` in the first section named `section`, both case ignored; empty without one. */
    virtual QString findValue(const QString &key, const QString &section) const;
    /** Shows the sections tree (0) or the variables tree (1). */
    virtual void setMode(int mode);
    int mode() const { return m_mode; }

    /** The project's name, as its DEF gives it. */
    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

    /** The top-level sections, in text order. */
    const QList<QSyntaxHierarchyItem *> &sections() const { return m_sections->children; }
    /** The variables tree: 0 "Integer" with 60 entries, 1 "Float" with 40. */
    const QList<QSyntaxHierarchyItem *> &variables() const { return m_variables->children; }

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    void updated();

protected:
    /** Empties both trees. */
    void clearTrees();
    /** Builds the two variable groups. */
    void buildVariables();
    /** A new item from the pool, appended to `parent`. */
    QSyntaxHierarchyItem *addItem(QSyntaxHierarchyItem *parent, const QString &kind, const QString &text,
                                  const QString &value, int line);
    QSyntaxHierarchyItem *root() const { return m_mode == Variables ? m_variables : m_sections; }

    QSyntaxHierarchyItem *m_sections;
    QSyntaxHierarchyItem *m_variables;

private:
    QSyntaxHierarchyItem *itemOf(const QModelIndex &index) const;

    QString m_name;
    int m_mode = Sections;
};

/** The hierarchy of text that has none: always empty. */
class QNullSyntaxHierarchy : public QSyntaxHierarchy
{
    Q_OBJECT

public:
    using QSyntaxHierarchy::QSyntaxHierarchy;
    void rebuild(const QString &text) override;
};

/** The hierarchy of engine text: CNS, ST, CMD, AIR and DEF files. */
class QMugenSyntaxHierarchy : public QSyntaxHierarchy
{
    Q_OBJECT

public:
    using QSyntaxHierarchy::QSyntaxHierarchy;
    void rebuild(const QString &text) override;

    /** The number of distinct names of "[Command]" blocks. */
    int uniqueCommands() const { return m_uniqueCommands; }

private:
    int m_uniqueCommands = 0;
};
