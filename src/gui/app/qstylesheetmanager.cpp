#include "qstylesheetmanager.h"

#include "screenscale.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

QStylesheetManager *stylesheets = nullptr;

QStylesheetManager::QStylesheetManager(const QDataFolder &folder)
    : m_folder(folder)
    , m_names(folder.folderNames())
{
}

namespace {

/** `text` with each match of `pattern` replaced by what `replace` makes of it. */
template <typename Replace>
QString replaceMatches(const QString &text, const QRegularExpression &pattern, Replace replace)
{
    QString result;
    result.reserve(text.size());
    qsizetype from = 0;
    for (const QRegularExpressionMatch &match : pattern.globalMatch(text)) {
        result += QStringView(text).mid(from, match.capturedStart() - from);
        result += replace(match);
        from = match.capturedEnd();
    }
    result += QStringView(text).mid(from);
    return result;
}

} // namespace

QString QStylesheetManager::prepare(const QString &text, const QString &folder)
{
    static const QRegularExpression length(QStringLiteral("\\[(\\d+)\\]"));
    const QString scaled = replaceMatches(text, length, [](const QRegularExpressionMatch &match) {
        return QString::number(scaledPixels(match.captured(1).toInt()));
    });
    // Image paths are relative to the style's folder. The result is quoted,
    // so that a folder with spaces or brackets in its name stays one path;
    // resources (":/...") and absolute paths are left alone.
    static const QRegularExpression url(QStringLiteral("url\\(\\s*([\"']?)([^\"')]*)\\1\\s*\\)"));
    return replaceMatches(scaled, url, [&folder](const QRegularExpressionMatch &match) {
        const QString path = match.captured(2);
        const bool relative = !path.startsWith(QLatin1Char(':')) && QFileInfo(path).isRelative();
        return QLatin1String("url(\"") + (relative ? folder + QLatin1Char('/') + path : path) + QLatin1String("\")");
    });
}

void QStylesheetManager::load(const QString &name)
{
    if (name == m_current)
        return;
    m_current.clear();
    if (!m_names.contains(name))
        return;
    QFile file(m_folder.find(name + QLatin1String("/Stylesheet.css")));
    if (!file.open(QIODevice::ReadOnly))
        return;
    m_current = name;
    auto *application = qobject_cast<QApplication *>(QCoreApplication::instance());
    if (application)
        application->setStyleSheet(prepare(QString::fromUtf8(file.readAll()), QFileInfo(file).absolutePath()));
}
