#include "qlanguagemanager.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QTranslator>

QLanguageManager *languages = nullptr;

namespace {

const char *const InfoFile = "/info.xml";
const char *const RootTag = "language";

/** Reads a language folder's "info.xml"; false when it is missing, malformed or of another kind. */
bool readInfo(const QString &fileName, QLanguageManager::Entry &entry)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QDomDocument document;
    if (!document.setContent(&file))
        return false;
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String(RootTag))
        return false;
    const auto value = [&root](const char *tag) {
        return root.firstChildElement(QLatin1String(tag)).attribute(QStringLiteral("value"));
    };
    entry.name = value("name");
    entry.author = value("author");
    entry.contact = value("contact");
    return true;
}

} // namespace

QLanguageManager::QLanguageManager(QCoreApplication *application, const QString &path, QObject *parent)
    : QAbstractListModel(parent)
    , m_application(application)
    , m_path(path)
{
    scan();
}

QLanguageManager::~QLanguageManager()
{
    removeTranslators();
}

void QLanguageManager::scan()
{
    const QStringList folders = QDir(m_path).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &folder : folders) {
        if (folder.startsWith(QLatin1Char('.')))
            continue;
        Entry entry;
        entry.code = folder;
        if (readInfo(m_path + QLatin1Char('/') + folder + QLatin1String(InfoFile), entry))
            m_entries.append(entry);
    }
}

void QLanguageManager::setLanguage(const QString &code)
{
    m_current.clear();
    for (const Entry &entry : std::as_const(m_entries)) {
        if (entry.code == code)
            m_current = code;
    }
    if (m_current.isEmpty())
        return;

    removeTranslators();
    // A language may come in several files (ours, Qt's own dialogs...): all are used.
    const QDir folder(m_path + QLatin1Char('/') + m_current);
    const QStringList files = folder.entryList(QDir::Files | QDir::Readable | QDir::NoSymLinks, QDir::Name);
    for (const QString &name : files) {
        if (!name.endsWith(QLatin1String(".qm"), Qt::CaseInsensitive))
            continue;
        auto *translator = new QTranslator(this);
        if (translator->load(folder.filePath(name))) {
            m_application->installTranslator(translator);
            m_translators.append(translator);
        } else {
            delete translator;
        }
    }
    Q_EMIT langChanged();
}

void QLanguageManager::removeTranslators()
{
    for (QTranslator *translator : std::as_const(m_translators))
        m_application->removeTranslator(translator);
    qDeleteAll(m_translators);
    m_translators.clear();
}

QLanguageManager::Entry QLanguageManager::entry(int row) const
{
    return row >= 0 && row < m_entries.size() ? m_entries.at(row) : Entry();
}

int QLanguageManager::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_entries.size());
}

QVariant QLanguageManager::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid() || index.row() >= m_entries.size())
        return QVariant();
    return m_entries.at(index.row()).name;
}
