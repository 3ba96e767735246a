// The backup commands of the interface: make one of the current project,
// and read one back over it.

#include "qinterface.h"

#include "bakdlg.h"
#include "qprogress.h"

#include "core/app/qbakmanager.h"
#include "core/app/qproject.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"
#include "core/text/qdefinitions.h"

#include <QDir>
#include <QMainWindow>
#include <QStatusBar>

void QInterface::fileBackup()
{
    QProject *project = m_current;
    if (!project)
        return;
    const QString def = project->definitions()->fileName();
    if (def.isEmpty()) {
        userPrompt->information(tr("Create backup"),
                                tr("This project has no files yet. Save it first; then it can be backed up."));
        return;
    }
    QString folder;
    bool made = false;
    const auto shown = [](const QString &path) { return QDir::toNativeSeparators(QDir::cleanPath(path)); };
    {
        QProgress progress(m_mainWindow, tr("Creating backup..."));
        connect(project, &QProject::progress, &progress, &QProgress::onProgress);
        made = project->backup(&folder);
    }
    if (!made) {
        const QString text = folder.isEmpty()
            ? tr("The backup folder couldn't be made beside '%1'. Check that the folder can be written.")
                  .arg(shown(def))
            : tr("Not every file of the project could be written into '%1'. This backup is incomplete.")
                  .arg(shown(folder));
        userPrompt->critical(tr("Create backup"), text);
        return;
    }
    m_mainWindow->statusBar()->showMessage(tr("Backup created in '%1'").arg(shown(folder)), 10000);
}

void QInterface::fileLoadBackup()
{
    QProject *project = m_current;
    if (!project)
        return;
    QString selected;
    {
        BakDlg dialog(m_mainWindow, project->definitions()->fileName());
        if (dialog.backups()->rowCount() == 0) {
            userPrompt->information(tr("Load backup"), tr("This project has no backups yet."));
            return;
        }
        if (!dialog.run())
            return;
        selected = dialog.selected();
    }
    if (selected.isEmpty())
        return;
    {
        QProgress progress(m_mainWindow, tr("Loading backup..."));
        connect(project, &QProject::progress, &progress, &QProgress::onProgress);
        // The documents keep their own names: the next save goes over the
        // project's files, not into the backup.
        project->fromFile(selected, configuration->config[QStringLiteral("default_codepage")].toInt(), false, true);
    }
    refreshEditors();
    Q_EMIT projectsChanged();
}
