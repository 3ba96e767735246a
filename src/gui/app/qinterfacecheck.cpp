// The interface's part in checking and trying a project: the check label of
// the status bar, the Issues window, the way from a message to its place,
// and the test run in an engine.

#include "qinterface.h"

#include "errordlg.h"
#include "mugrundlg.h"
#include "qprogress.h"

#include "core/app/qmugenrun.h"
#include "core/app/qproject.h"
#include "core/base/qmessages.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"

#include <QActionGroup>
#include <QDir>
#include <QMainWindow>
#include <QStatusBar>
#include <QTabBar>

#include <memory>

void QInterface::setupCheck()
{
    connect(statusLabel(4), &QClickableLabel::clicked, this, &QInterface::fileCheck);
    // Every way the current project can change passes one of these, after
    // the interface has taken the new project.
    connect(this, &QInterface::projectsChanged, this, &QInterface::followMessages);
    connect(m_tabs, &QTabBar::currentChanged, this, &QInterface::followMessages);
}

void QInterface::followMessages()
{
    disconnect(m_messagesUpdated);
    QMessageList *messages = m_current ? &m_current->messages() : nullptr;
    if (messages)
        m_messagesUpdated = connect(messages, &QMessageList::updated, this, &QInterface::updateErrorStatus);
    if (m_errorDlg && m_errorDlg->model() != messages)
        m_errorDlg->setModel(messages);
    updateErrorStatus();
}

void QInterface::updateErrorStatus()
{
    if (!m_current)
        return;
    const QMessageList &messages = m_current->messages();
    QString icon;
    QString tip;
    if (messages.errors() > 0) {
        icon = QStringLiteral(":/imgs/Imgs/error.png");
        tip = tr("%n error(s) found!", nullptr, messages.errors());
    } else if (messages.warnings() > 0) {
        icon = QStringLiteral(":/imgs/Imgs/warn.png");
        tip = tr("%n warnings found!", nullptr, messages.warnings());
    } else {
        icon = QStringLiteral(":/imgs/Imgs/ok.png");
        tip = tr("No issues found!");
    }
    QClickableLabel *label = statusLabel(4);
    label->setPixmap(QPixmap(icon));
    label->setToolTip(tip);
}

void QInterface::fileCheck()
{
    if (!m_errorDlg) {
        m_errorDlg = new ErrorDlg(m_mainWindow);
        connect(m_errorDlg, &ErrorDlg::navigateTo, this, &QInterface::navigateTo);
        m_errorDlg->setModel(m_current ? &m_current->messages() : nullptr);
        // First above the corner of the window where the check label stands.
        const QRect window = m_mainWindow->geometry();
        m_errorDlg->resize(qMax(m_errorDlg->minimumWidth(), window.width() / 3), m_errorDlg->minimumHeight());
        m_errorDlg->move(qMax(window.left(), window.right() - m_errorDlg->width()),
                         qMax(window.top(), window.bottom() - m_errorDlg->height()
                                                - m_mainWindow->statusBar()->height()));
    }
    m_errorDlg->show();
    m_errorDlg->raise();
    m_errorDlg->activateWindow();
}

void QInterface::navigateTo(QProjectFileType file, int fileIndex, int index, int line)
{
    for (QInterfaceEditor *editor : std::as_const(m_editors)) {
        if (editor->fileType() != file)
            continue;
        // A hidden action means the project's kind has no such editor.
        QAction *switchAction = nullptr;
        for (QAction *action : m_editorGroup->actions()) {
            if (action->objectName().toInt() == editor->id())
                switchAction = action;
        }
        if (!switchAction || !switchAction->isVisible())
            continue;
        makeCurrent(editor->id());
        editor->navigate(fileIndex, index, line);
        return;
    }
}

void QInterface::fileRunMugen()
{
    // Events go on during a run: the command may come again meanwhile.
    if (!configuration || (m_mugenRun && m_mugenRun->isRunning()))
        return;
    if (!QMugenRun::checkInstallations(*configuration))
        return;
    QString exe;
    QString params;
    if (configuration->count() == 1) {
        exe = configuration->installation(0).exe;
        params = configuration->installation(0).params;
    } else if (m_mugenChooser) {
        if (!m_mugenChooser(exe, params))
            return;
    } else {
        MugRunDlg dialog(m_mainWindow, configuration);
        if (dialog.exec() != QDialog::Accepted)
            return;
        exe = dialog.exe();
        params = dialog.params();
    }
    // An installation without a program would have its copies written
    // wherever this process stands.
    if (exe.isEmpty()) {
        userPrompt->warning(tr("Warning!"), tr("Oops, wrong parameters on the M.U.G.E.N. configuration. "
                                               "Check it in the Tools / Options."));
        return;
    }

    if (!m_mugenRun) {
        m_mugenRun = new QMugenRun(this);
        connect(m_mugenRun, &QMugenRun::engineFinished, this, &QInterface::mugenFinished);
    }
    // One progress dialog for the copy of each project.
    std::unique_ptr<QProgress> progress;
    const auto saveStarted = connect(m_mugenRun, &QMugenRun::saveStarted, this, [&](QProject *project) {
        progress = std::make_unique<QProgress>(m_mainWindow, tr("Saving project for testing..."));
        connect(project, &QProject::progress, progress.get(), &QProgress::onProgress);
    });
    const auto saveFinished = connect(m_mugenRun, &QMugenRun::saveFinished, this, [&] { progress.reset(); });
    m_mugenDone = false;
    const bool ran = m_mugenRun->run(exe, params, m_projects, m_current);
    disconnect(saveStarted);
    disconnect(saveFinished);
    progress.reset();
    // Without a command the template named no project, which was said.
    if (m_mugenRun->lastCommand().isEmpty())
        return;
    if (!ran) {
        QString text = tr("M.U.G.E.N. could not be started: %1\n\n%2")
                           .arg(QDir::toNativeSeparators(exe), m_mugenRun->errorString());
#ifndef Q_OS_WIN
        if (exe.endsWith(QLatin1String(".exe"), Qt::CaseInsensitive) && QMugenRun::wineProgram().isEmpty())
            text += QLatin1String("\n\n") + tr("Windows programs need wine, which isn't installed.");
#endif
        userPrompt->critical(tr("Run in M.U.G.E.N."), text);
    }
    // The copies were written from the documents: the editor shows them again.
    if (QInterfaceEditor *editor = currentEditor()) {
        editor->deactivate();
        editor->activate(true);
    }
}

void QInterface::mugenFinished(int exitCode)
{
    Q_UNUSED(exitCode)
    m_mugenDone = true;
}
