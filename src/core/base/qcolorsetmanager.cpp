#include "qcolorsetmanager.h"

#include "atomicfile.h"
#include "qsyntaxformats.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QFont>
#include <QRegularExpression>

QColorsetManager *colorsets = nullptr;

namespace {

const char DocType[] = "ZNLColorsML";
const char RootTag[] = "colors";
const char EntryTag[] = "color";

struct Known
{
    const char *name;
    const char *label;
};

const Known known[QColorsetManager::Count] = {
    {"comment", QT_TRANSLATE_NOOP("QColorsetManager", "Comments")},
    {"block", QT_TRANSLATE_NOOP("QColorsetManager", "Block header")},
    {"number", QT_TRANSLATE_NOOP("QColorsetManager", "Number")},
    {"string", QT_TRANSLATE_NOOP("QColorsetManager", "String")},
    {"keyword", QT_TRANSLATE_NOOP("QColorsetManager", "Block parameter")},
    {"value", QT_TRANSLATE_NOOP("QColorsetManager", "Parameter literal value")},
    {"controller", QT_TRANSLATE_NOOP("QColorsetManager", "Block controller")},
    {"trigger", QT_TRANSLATE_NOOP("QColorsetManager", "Trigger")},
    {"const", QT_TRANSLATE_NOOP("QColorsetManager", "Constant")},
    {"paren", QT_TRANSLATE_NOOP("QColorsetManager", "Matched parenthesis")},
    {"paren_range", QT_TRANSLATE_NOOP("QColorsetManager", "Matched parenthesis range")},
    {"block_range", QT_TRANSLATE_NOOP("QColorsetManager", "Block range")},
    {"line", QT_TRANSLATE_NOOP("QColorsetManager", "Line highlight")},
    {"back_start", QT_TRANSLATE_NOOP("QColorsetManager", "Background start")},
    {"back_end", QT_TRANSLATE_NOOP("QColorsetManager", "Background end")},
    {"clsn1", QT_TRANSLATE_NOOP("QColorsetManager", "CLSN 1")},
    {"clsn2", QT_TRANSLATE_NOOP("QColorsetManager", "CLSN 2")},
    {"clsn1def", QT_TRANSLATE_NOOP("QColorsetManager", "CLSN 1 Default")},
    {"clsn2def", QT_TRANSLATE_NOOP("QColorsetManager", "CLSN 2 Default")},
};

} // namespace

QColorsetManager::QColorsetManager(const QDataFolder &folder, QObject *parent)
    : QAbstractListModel(parent)
    , m_folder(folder)
{
    scan();
    reset();
}

void QColorsetManager::scan()
{
    m_names = m_folder.fileNames(QStringLiteral(".xml"));
    m_names.removeAll(customName());
    m_names.prepend(customName());
}

bool QColorsetManager::hasFontStyle(int index)
{
    if (index < 0 || index >= Count)
        return false;
    const QString name = QLatin1String(known[index].name);
    return name != QLatin1String("line") && !name.endsWith(QLatin1String("_range"));
}

QColorsetManager::Entry QColorsetManager::defaultEntry(int index)
{
    if (index < 0 || index >= Count)
        return Entry();
    const int syntax = QSyntaxFormats::indexOf(name(index));
    if (syntax >= 0) {
        const QTextCharFormat &format = QSyntaxFormats::defaults().format(syntax);
        return {format.foreground().color(), format.fontWeight() >= QFont::Bold, format.fontItalic()};
    }
    switch (index) {
    case Paren:
        return {QColor(255, 0, 0), true, false};
    case ParenRange:
        return {QColor(232, 232, 255)};
    case BlockRange:
        return {QColor(244, 244, 244)};
    case Line:
        return {QColor(255, 255, 220)};
    case BackStart:
        return {QColor(255, 255, 255)};
    case BackEnd:
        return {QColor(200, 200, 200)};
    case Clsn1:
        return {QColor(255, 0, 0)};
    case Clsn2:
        return {QColor(0, 0, 255)};
    case Clsn1Default:
        return {QColor(255, 128, 0)};
    default:
        return {QColor(0, 160, 0)};
    }
}

void QColorsetManager::reset()
{
    for (int i = 0; i < Count; ++i)
        m_entries[i] = defaultEntry(i);
}

bool QColorsetManager::load(const QString &name, bool force)
{
    if (!force && name == m_current)
        return false;
    beginResetModel();
    reset();
    m_current = name;
    QDomDocument document;
    const QDomElement root = readXmlRoot(document, m_folder.find(name + QLatin1String(".xml")),
                                         QLatin1String(RootTag));
    static const QRegularExpression valuePattern(QStringLiteral("^(\\d{1,3})\\,(\\d{1,3})\\,(\\d{1,3})$"));
    for (QDomElement e = root.firstChildElement(QLatin1String(EntryTag)); !e.isNull();
         e = e.nextSiblingElement(QLatin1String(EntryTag))) {
        const int index = indexOf(e.attribute(QStringLiteral("name")));
        if (index < 0)
            continue;
        Entry &entry = m_entries[index];
        const QRegularExpressionMatch match = valuePattern.match(e.attribute(QStringLiteral("value")));
        if (match.hasMatch()) {
            entry.color = QColor(qMin(match.captured(1).toInt(), 255), qMin(match.captured(2).toInt(), 255),
                                 qMin(match.captured(3).toInt(), 255));
        }
        if (e.hasAttribute(QStringLiteral("bold")))
            entry.bold = e.attribute(QStringLiteral("bold")) == QLatin1String("true");
        if (e.hasAttribute(QStringLiteral("italic")))
            entry.italic = e.attribute(QStringLiteral("italic")) == QLatin1String("true");
    }
    endResetModel();
    return !root.isNull();
}

bool QColorsetManager::save(const QString &name)
{
    QDomDocument document{QLatin1String(DocType)};
    QDomElement root = document.createElement(QLatin1String(RootTag));
    document.appendChild(root);
    for (int i = 0; i < Count; ++i) {
        QDomElement e = document.createElement(QLatin1String(EntryTag));
        e.setAttribute(QStringLiteral("name"), this->name(i));
        const QColor &c = m_entries[i].color;
        e.setAttribute(QStringLiteral("value"), QStringLiteral("%1,%2,%3").arg(c.red()).arg(c.green()).arg(c.blue()));
        if (hasFontStyle(i)) {
            e.setAttribute(QStringLiteral("bold"), m_entries[i].bold ? QStringLiteral("true") : QStringLiteral("false"));
            e.setAttribute(QStringLiteral("italic"),
                           m_entries[i].italic ? QStringLiteral("true") : QStringLiteral("false"));
        }
        root.appendChild(e);
    }
    if (!writeXmlAtomically(m_folder.writable() + QLatin1Char('/') + name + QLatin1String(".xml"), document))
        return false;
    scan();
    return true;
}

const QColorsetManager::Entry &QColorsetManager::entry(int index) const
{
    static const Entry none;
    return index >= 0 && index < Count ? m_entries[index] : none;
}

void QColorsetManager::setEntry(int index, const Entry &entry)
{
    if (index < 0 || index >= Count)
        return;
    m_entries[index] = entry;
    Q_EMIT dataChanged(this->index(index), this->index(index));
}

QColor QColorsetManager::color(const QString &name) const
{
    const int index = indexOf(name);
    return index < 0 ? QColor() : m_entries[index].color;
}

int QColorsetManager::indexOf(const QString &name)
{
    for (int i = 0; i < Count; ++i) {
        if (name == QLatin1String(known[i].name))
            return i;
    }
    return -1;
}

QString QColorsetManager::name(int index)
{
    return index >= 0 && index < Count ? QLatin1String(known[index].name) : QString();
}

QString QColorsetManager::label(int index)
{
    return index >= 0 && index < Count ? QCoreApplication::translate("QColorsetManager", known[index].label)
                                       : QString();
}

void QColorsetManager::applyTo(QSyntaxFormats &formats) const
{
    for (int i = 0; i < Count; ++i) {
        const int syntax = QSyntaxFormats::indexOf(name(i));
        if (syntax >= 0)
            formats.setFormat(syntax, m_entries[i].color, m_entries[i].bold, m_entries[i].italic);
    }
}

int QColorsetManager::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : Count;
}

QVariant QColorsetManager::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= Count)
        return QVariant();
    const Entry &e = m_entries[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return label(index.row());
    case Qt::DecorationRole:
        return e.color;
    case Qt::FontRole: {
        QFont font;
        font.setBold(e.bold);
        font.setItalic(e.italic);
        return font;
    }
    default:
        return QVariant();
    }
}
