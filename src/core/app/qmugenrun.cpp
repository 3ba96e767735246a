#include "qmugenrun.h"

#include "../base/qmugenmodel.h"
#include "../base/qprojecttypes.h"
#include "../base/quserprompt.h"
#include "qproject.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

QMugenRun::QMugenRun(QObject *parent)
    : QObject(parent)
{
    // So that saveStarted() and saveFinished() can be queued and spied on.
    qRegisterMetaType<QProject *>();
}

QMugenRun::~QMugenRun() = default;

bool QMugenRun::checkInstallations(const QMugenModel &model)
{
    if (model.count() > 0)
        return true;
    userPrompt->warning(tr("Warning!"),
                        tr("Oops, you need to configure a M.U.G.E.N. first. Do it in the Tools / Options."));
    return false;
}

QList<int> QMugenRun::projectNumbers(const QString &params)
{
    static const QRegularExpression number(QStringLiteral("%(\\d{1,2})"));
    QList<int> numbers;
    auto matches = number.globalMatch(params);
    while (matches.hasNext()) {
        const int n = matches.next().captured(1).toInt();
        if (!numbers.contains(n))
            numbers.append(n);
    }
    return numbers;
}

QStringList QMugenRun::splitParameters(const QString &params)
{
    return params.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QStringList QMugenRun::commandLine(const QString &exe, const QStringList &arguments, const QString &wine)
{
    if (!wine.isEmpty() && exe.endsWith(QLatin1String(".exe"), Qt::CaseInsensitive))
        return QStringList{wine, exe} + arguments;
    return QStringList{exe} + arguments;
}

QString QMugenRun::wineProgram()
{
#ifdef Q_OS_WIN
    return QString();
#else
    return QStandardPaths::findExecutable(QStringLiteral("wine"));
#endif
}

bool QMugenRun::removeFolder(const QString &path)
{
    QDir folder(path);
    if (!folder.exists())
        return true;
    bool ok = true;
    const QFileInfoList entries =
        folder.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        // A link to a folder goes as a link: what it points at isn't ours.
        if (entry.isDir() && !entry.isSymLink())
            ok = removeFolder(entry.filePath()) && ok;
        else
            ok = QFile::remove(entry.filePath()) && ok;
    }
    return folder.rmdir(folder.absolutePath()) && ok;
}

bool QMugenRun::run(const QString &exe, const QString &params, const QList<QProject *> &projects,
                    QProject *current)
{
    // Events run during a test, so the command may come again meanwhile;
    // it is refused, and the run under way goes on undisturbed.
    if (m_running)
        return false;
    m_error.clear();
    m_command.clear();
    const QList<int> numbers = projectNumbers(params);
    if (numbers.isEmpty()) {
        userPrompt->warning(tr("Warning!"), tr("Oops, wrong parameters on the M.U.G.E.N. configuration. "
                                               "Check it in the Tools / Options."));
        m_error = tr("The parameters name no project.");
        return false;
    }
    m_running = true;

    const QFileInfo program(exe);
    const QString base = program.absolutePath();
    QStringList created;
    QString line = params;
    for (int i = 0; i < numbers.size(); ++i) {
        const int n = numbers.at(i);
        if (n > projects.size())
            continue;
        QProject *project = n == 0 ? current : projects.at(n - 1);
        if (!project)
            continue;
        const QString name = QStringLiteral("ks3_%1").arg(i);
        QString target;
        if (project->type() == Character) {
            target = base + QLatin1String("/chars/") + name + QLatin1Char('/');
            created.append(target);
        } else if (project->type() == Stage) {
            target = base + QLatin1String("/stages/");
        }
        // Storyboards and fonts have no folder of their own in the engine:
        // a copy would land wherever this process happens to stand, and
        // nobody would remove it.
        if (!target.isEmpty()) {
            // An engine folder without chars/ or stages/ gets one for the
            // copy; it goes again afterwards, with nothing of anyone's in it.
            const QString parent = QFileInfo(target.chopped(1)).path() + QLatin1Char('/');
            const QString folder = project->type() == Character ? parent : target;
            const bool madeFolder = !QFileInfo::exists(folder);
            Q_EMIT saveStarted(project);
            project->saveForTest(target, name, created);
            Q_EMIT saveFinished(project);
            if (madeFolder && !created.contains(folder))
                created.append(folder);
        }
        // A plain replacement: %1 also hits the start of %10.
        line.replace(QLatin1Char('%') + QString::number(n), name);
    }

    m_mugenDone = false;
    m_command = commandLine(program.absoluteFilePath(), splitParameters(line), wineProgram());
    QProcess process;
    connect(&process, &QProcess::finished, this, &QMugenRun::mugenFinished);
    // An engine that can't start never finishes: that ends the wait too.
    connect(&process, &QProcess::errorOccurred, this, [this, &process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            m_error = process.errorString();
            m_mugenDone = true;
        }
    });
    process.setWorkingDirectory(base);
    // The engine's own output goes where ours goes, so nothing piles up unread.
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(m_command.first(), m_command.mid(1), QIODevice::ReadWrite);
    // The process lives on this stack: the wait can't end before it does.
    while (!m_mugenDone) {
        process.waitForFinished(10);
        QCoreApplication::processEvents();
    }

    for (const QString &path : std::as_const(created)) {
        if (path.endsWith(QLatin1Char('/')))
            removeFolder(path);
        else
            QFile::remove(path);
    }
    m_running = false;
    return m_error.isEmpty();
}

void QMugenRun::mugenFinished(int exitCode)
{
    m_mugenDone = true;
    Q_EMIT engineFinished(exitCode);
}
