#include "qsyntaxhierarchy.h"

#include "qpool.h"
#include "qtexttokenizer.h"

#include <QRegularExpression>
#include <QSet>

namespace {

constexpr int IntegerVariables = 60;
constexpr int FloatVariables = 40;

void releaseItem(QSyntaxHierarchyItem *item)
{
    for (QSyntaxHierarchyItem *child : std::as_const(item->children))
        releaseItem(child);
    item->children.clear();
    item->parent = nullptr;
    item->kind.clear();
    item->text.clear();
    item->value.clear();
    item->comment.clear();
    item->users.clear();
    item->index = item->line = 0;
    QPool<QSyntaxHierarchyItem>::give(item);
}

} // namespace

QSyntaxHierarchy::QSyntaxHierarchy(QObject *parent)
    : QAbstractItemModel(parent)
    , m_sections(QPool<QSyntaxHierarchyItem>::take())
    , m_variables(QPool<QSyntaxHierarchyItem>::take())
{
}

QSyntaxHierarchy::~QSyntaxHierarchy()
{
    releaseItem(m_sections);
    releaseItem(m_variables);
}

void QSyntaxHierarchy::rebuild(const QString &)
{
    beginResetModel();
    clearTrees();
    buildVariables();
    endResetModel();
    Q_EMIT updated();
}

void QSyntaxHierarchy::clearTrees()
{
    for (QSyntaxHierarchyItem *root : {m_sections, m_variables}) {
        for (QSyntaxHierarchyItem *child : std::as_const(root->children))
            releaseItem(child);
        root->children.clear();
    }
}

void QSyntaxHierarchy::buildVariables()
{
    QSyntaxHierarchyItem *integers = addItem(m_variables, QString(), tr("Integer"), QString(), -1);
    for (int i = 0; i < IntegerVariables; ++i)
        addItem(integers, QStringLiteral("var"), QString::number(i), QString(), -1);
    QSyntaxHierarchyItem *floats = addItem(m_variables, QString(), tr("Float"), QString(), -1);
    for (int i = 0; i < FloatVariables; ++i)
        addItem(floats, QStringLiteral("fvar"), QString::number(i), QString(), -1);
}

QSyntaxHierarchyItem *QSyntaxHierarchy::addItem(QSyntaxHierarchyItem *parent, const QString &kind,
                                                const QString &text, const QString &value, int line)
{
    QSyntaxHierarchyItem *item = QPool<QSyntaxHierarchyItem>::take();
    item->parent = parent;
    item->kind = kind;
    item->text = text;
    item->value = value;
    item->line = line;
    item->index = int(parent->children.size());
    parent->children.append(item);
    return item;
}

int QSyntaxHierarchy::lineOf(const QModelIndex &index) const
{
    const QSyntaxHierarchyItem *item = itemOf(index);
    return item ? item->line : -1;
}

QModelIndex QSyntaxHierarchy::itemAtLine(int line) const
{
    const QSyntaxHierarchyItem *level = root();
    const QSyntaxHierarchyItem *found = nullptr;
    for (;;) {
        const QSyntaxHierarchyItem *fit = nullptr;
        for (const QSyntaxHierarchyItem *child : level->children) {
            if (child->line >= 0 && child->line <= line)
                fit = child;
        }
        if (!fit)
            break;
        found = fit;
        level = fit;
    }
    return found ? createIndex(found->index, 0, const_cast<QSyntaxHierarchyItem *>(found)) : QModelIndex();
}

bool QSyntaxHierarchy::sectionExists(const QString &section) const
{
    for (const QSyntaxHierarchyItem *item : m_sections->children) {
        if (item->text.compare(section, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QString QSyntaxHierarchy::findValue(const QString &key, const QString &section) const
{
    for (const QSyntaxHierarchyItem *item : m_sections->children) {
        if (item->text.compare(section, Qt::CaseInsensitive) != 0)
            continue;
        for (const QSyntaxHierarchyItem *child : item->children) {
            if (child->text.compare(key, Qt::CaseInsensitive) == 0)
                return child->value;
        }
        return QString();
    }
    return QString();
}

void QSyntaxHierarchy::setMode(int mode)
{
    if (mode == m_mode)
        return;
    beginResetModel();
    m_mode = mode;
    endResetModel();
}

QSyntaxHierarchyItem *QSyntaxHierarchy::itemOf(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<QSyntaxHierarchyItem *>(index.internalPointer()) : nullptr;
}

QModelIndex QSyntaxHierarchy::index(int row, int column, const QModelIndex &parent) const
{
    const QSyntaxHierarchyItem *item = parent.isValid() ? itemOf(parent) : root();
    if (!item || row < 0 || row >= item->children.size() || column < 0 || column > 1)
        return QModelIndex();
    return createIndex(row, column, item->children.at(row));
}

QModelIndex QSyntaxHierarchy::parent(const QModelIndex &child) const
{
    const QSyntaxHierarchyItem *item = itemOf(child);
    if (!item || !item->parent || item->parent == root())
        return QModelIndex();
    return createIndex(item->parent->index, 0, item->parent);
}

int QSyntaxHierarchy::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    const QSyntaxHierarchyItem *item = parent.isValid() ? itemOf(parent) : root();
    return item ? int(item->children.size()) : 0;
}

int QSyntaxHierarchy::columnCount(const QModelIndex &) const
{
    return 2;
}

QVariant QSyntaxHierarchy::data(const QModelIndex &index, int role) const
{
    const QSyntaxHierarchyItem *item = itemOf(index);
    if (!item)
        return QVariant();
    if (role == Qt::DisplayRole) {
        if (index.column() == 1)
            return item->value;
        return item->comment.isEmpty() ? item->text : item->text + QLatin1String(" - ") + item->comment;
    }
    if (role == UsersRole)
        return item->users;
    if (role == Qt::ToolTipRole && !item->value.isEmpty())
        return item->text + QLatin1String(" = ") + item->value;
    return QVariant();
}

void QNullSyntaxHierarchy::rebuild(const QString &)
{
    beginResetModel();
    clearTrees();
    endResetModel();
    Q_EMIT updated();
}

// The reading of engine text

namespace {

struct KeyLine
{
    QString key;
    QString value;
    int line = 0;
};

/** Reads the "key = value" lines of a section, up to the next "[" or the end. */
int readKeys(QTextTokenizer &tokenizer, int token, QList<KeyLine> &keys)
{
    while (token != QTextTokenizer::EndOfText && token != QTextTokenizer::OpenBracket) {
        if (token == QTextTokenizer::Identifier) {
            KeyLine key;
            key.line = tokenizer.line() - 1;
            key.key = tokenizer.text();
            token = tokenizer.next();
            if (token == QTextTokenizer::OpenParen) {
                // var(1), fvar(2), sysvar(0): the argument belongs to the key.
                QString argument;
                while ((token = tokenizer.next()) != QTextTokenizer::CloseParen
                       && token != QTextTokenizer::EndOfText && token != QTextTokenizer::EndOfLine)
                    argument += tokenizer.text();
                if (token == QTextTokenizer::CloseParen) {
                    key.key += QLatin1Char('(') + argument + QLatin1Char(')');
                    token = tokenizer.next();
                }
            }
            if (token == QTextTokenizer::Equal) {
                token = tokenizer.readUntil(key.value, QLatin1Char('\n'));
                key.value = key.value.trimmed();
                keys.append(key);
            }
        }
        token = tokenizer.nextLine(token);
    }
    return token;
}

QString unquoted(const QString &value)
{
    if (value.size() >= 2 && value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"')))
        return value.mid(1, value.size() - 2);
    return value;
}

QString valueOf(const QList<KeyLine> &keys, const char *key)
{
    for (const KeyLine &line : keys) {
        if (line.key.compare(QLatin1String(key), Qt::CaseInsensitive) == 0)
            return line.value;
    }
    return QString();
}

/** The variables a controller block sets: integer ones in `integers`, float ones in `floats`. */
void variablesSet(const QList<KeyLine> &keys, QSet<int> &integers, QSet<int> &floats)
{
    static const QStringList setters = {QStringLiteral("varset"), QStringLiteral("varadd"),
                                        QStringLiteral("varrandom"), QStringLiteral("varrangeset"),
                                        QStringLiteral("parentvarset"), QStringLiteral("parentvaradd")};
    static const QRegularExpression keyForm(QStringLiteral("^(f?)var\\((\\d{1,3})\\)$"),
                                            QRegularExpression::CaseInsensitiveOption);
    // An assignment inside an expression: var(3) := ...
    static const QRegularExpression assignment(QStringLiteral("(f?)var\\s*\\(\\s*(\\d{1,3})\\s*\\)\\s*:="),
                                               QRegularExpression::CaseInsensitiveOption);
    const QString type = valueOf(keys, "type").toLower();
    const bool setter = setters.contains(type);

    if (type == QLatin1String("varrangeset")) {
        const bool isFloat = !valueOf(keys, "fvalue").isEmpty();
        const int top = isFloat ? FloatVariables - 1 : IntegerVariables - 1;
        bool ok = false;
        int first = valueOf(keys, "first").toInt(&ok);
        if (!ok)
            first = 0;
        int last = valueOf(keys, "last").toInt(&ok);
        if (!ok)
            last = top;
        for (int v = qMax(0, first); v <= qMin(top, last); ++v)
            (isFloat ? floats : integers).insert(v);
    }
    for (const KeyLine &line : keys) {
        const QString key = line.key.toLower();
        if (setter && (key == QLatin1String("v") || key == QLatin1String("fv"))) {
            bool ok = false;
            const int v = line.value.toInt(&ok);
            if (ok)
                (key == QLatin1String("fv") ? floats : integers).insert(v);
            continue;
        }
        if (setter) {
            const QRegularExpressionMatch match = keyForm.match(key);
            if (match.hasMatch()) {
                (match.capturedLength(1) ? floats : integers).insert(match.captured(2).toInt());
                continue;
            }
        }
        // Each search starts six characters behind the last hit.
        for (int from = 0;;) {
            const QRegularExpressionMatch match = assignment.match(line.value, from);
            if (!match.hasMatch())
                break;
            (match.capturedLength(1) ? floats : integers).insert(match.captured(2).toInt());
            from = int(match.capturedStart()) + 6;
        }
    }
}

} // namespace

void QMugenSyntaxHierarchy::rebuild(const QString &text)
{
    beginResetModel();
    clearTrees();
    buildVariables();
    m_uniqueCommands = 0;

    QTextTokenizer tokenizer(text);
    int token = tokenizer.next();
    if (token == QTextTokenizer::EndOfLine)
        token = tokenizer.next();
    while (token != QTextTokenizer::EndOfText && token != QTextTokenizer::OpenBracket)
        token = tokenizer.nextLine(token);

    QSyntaxHierarchyItem *statedef = nullptr;
    QSyntaxHierarchyItem *commands = nullptr;
    QSyntaxHierarchyItem *animations = nullptr;
    QSet<QString> commandNames;
    QSyntaxHierarchyItem *integers = m_variables->children.at(0);
    QSyntaxHierarchyItem *floats = m_variables->children.at(1);

    while (token == QTextTokenizer::OpenBracket) {
        const QString comment = tokenizer.commentBlock().trimmed();
        const int line = tokenizer.line() - 1;
        QString header;
        token = tokenizer.readUntil(header, QLatin1Char(']'));
        header = header.trimmed();
        token = tokenizer.nextLine(token);
        QList<KeyLine> keys;
        token = readKeys(tokenizer, token, keys);

        const QString word = header.section(QLatin1Char(' '), 0, 0).section(QLatin1Char(','), 0, 0).toLower();
        QSyntaxHierarchyItem *item = nullptr;
        if (word == QLatin1String("statedef")) {
            item = statedef = addItem(m_sections, QStringLiteral("statedef"), header, QString(), line);
        } else if (word == QLatin1String("state")) {
            const QString type = valueOf(keys, "type").toLower();
            item = addItem(statedef ? statedef : m_sections, type.isEmpty() ? QStringLiteral("state") : type,
                           header, QString(), line);
            QSet<int> integerSet;
            QSet<int> floatSet;
            variablesSet(keys, integerSet, floatSet);
            if (statedef) {
                const auto use = [&](const QSet<int> &set, QSyntaxHierarchyItem *group) {
                    for (int v : set) {
                        if (v < 0 || v >= group->children.size())
                            continue;
                        QSyntaxHierarchyItem *entry = group->children.at(v);
                        if (entry->users.contains(statedef->text))
                            continue;
                        entry->users.append(statedef->text);
                        addItem(entry, QStringLiteral("statedef"), statedef->text, QString(), statedef->line);
                    }
                };
                use(integerSet, integers);
                use(floatSet, floats);
            }
        } else if (word == QLatin1String("command")) {
            if (!commands)
                commands = addItem(m_sections, QStringLiteral("commands"), tr("Commands"), QString(), line);
            const QString name = unquoted(valueOf(keys, "name"));
            item = addItem(commands, QStringLiteral("command"), name.isEmpty() ? header : name, QString(), line);
            if (!name.isEmpty() && !commandNames.contains(name)) {
                commandNames.insert(name);
                ++m_uniqueCommands;
            }
            keys.clear();
        } else if (word == QLatin1String("begin")) {
            if (!animations)
                animations = addItem(m_sections, QString(), tr("Animations"), QString(), line);
            item = addItem(animations, QStringLiteral("anim"), header, QString(), line);
            keys.clear();
        } else {
            item = addItem(m_sections, QString(), header, QString(), line);
        }
        item->comment = comment != header && !header.endsWith(comment) ? comment : QString();

        static const QStringList constants = {QStringLiteral("data"), QStringLiteral("size"),
                                              QStringLiteral("velocity"), QStringLiteral("movement")};
        const bool isConstants = constants.contains(word);
        const bool isQuotes = word == QLatin1String("quotes");
        for (const KeyLine &key : std::as_const(keys)) {
            if (key.key.compare(QLatin1String("anim"), Qt::CaseInsensitive) == 0) {
                addItem(item, QStringLiteral("anim"), key.key, key.value, key.line);
            } else if (isQuotes) {
                addItem(item, QStringLiteral("quote"), key.key, unquoted(key.value), key.line);
            } else {
                addItem(item, isConstants ? QStringLiteral("const") : QString(), key.key, key.value, key.line);
            }
        }
    }
    endResetModel();
    Q_EMIT updated();
}
