// The slots of the Help menu.

#include "qinterface.h"

#include "aboutdlg.h"

#include "core/base/apppaths.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

namespace {

constexpr int RefDocsTitleId = 40;
const QLatin1String DefaultLanguage("en-us");

QString docsPage(const QString &language)
{
    return applicationDir() + QLatin1String("/docs/") + language + QLatin1String("/index.html");
}

} // namespace

void QInterface::helpRefDocs()
{
    const QString language = configuration
        ? configuration->config.value(QStringLiteral("language")).toString()
        : QString();
    const QString wanted = docsPage(language.isEmpty() ? DefaultLanguage : language);
    QString page = wanted;
    // Few languages have a page of their own: English is better than none.
    if (!QFileInfo::exists(page))
        page = docsPage(DefaultLanguage);

    const QString title = translation()->title(RefDocsTitleId);
    if (!QFileInfo::exists(page)) {
        userPrompt->warning(title, tr("The reference documentation is missing. It should be here:\n%1")
                                       .arg(QDir::toNativeSeparators(wanted)));
        return;
    }
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(page)))
        userPrompt->warning(title, tr("No web browser could be started for the reference documentation. "
                                      "Open this file by hand:\n%1")
                                       .arg(QDir::toNativeSeparators(page)));
}

void QInterface::helpAbout()
{
    AboutDlg dialog(m_mainWindow);
    dialog.exec();
}
