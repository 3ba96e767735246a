#include "qinterface.h"

#include "qprogress.h"

#include "core/animation/qanimations.h"
#include "core/app/qproject.h"
#include "core/base/qhandover.h"
#include "core/base/qmugenmodel.h"
#include "core/sounds/qsounds.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"

#include <QFileInfo>
#include <QMainWindow>
#include <QTextDocument>

QInterface *mainInterface = nullptr;

QInterface::QInterface(QMainWindow *mainWindow)
    : QObject(mainWindow)
    , m_mainWindow(mainWindow)
{
}

QInterface::~QInterface()
{
    qDeleteAll(m_projects);
}

void QInterface::start(bool firstInstance)
{
    newProject(false);
    if (!firstInstance)
        return;
    // Watch first: a line another instance appends while the files handed
    // over so far are still opening would otherwise wait for the next one.
    m_watcher.addPath(QHandOver::path());
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &QInterface::fileChanged);
    consumeHandOver();
}

QProject *QInterface::createProject()
{
    return new QProject(configuration->config[QStringLiteral("cache_type")].toInt(),
                        configuration->config[QStringLiteral("cache_compression")].toBool());
}

void QInterface::addProject(QProject *project)
{
    m_projects.append(project);
    m_current = project;
    Q_EMIT projectsChanged();
}

void QInterface::newProject(bool fromTemplate)
{
    // TODO: offer the project templates when fromTemplate is set, once
    // scripts can make projects.
    Q_UNUSED(fromTemplate)
    addProject(createProject());
}

void QInterface::openProject(const QString &fileName)
{
    QProject *project = createProject();
    {
        QProgress progress(m_mainWindow, tr("Loading project..."));
        connect(project, &QProject::progress, &progress, &QProgress::onProgress);
        if (!project->fromFile(fileName,
                               configuration->config[QStringLiteral("default_codepage")].toInt(),
                               configuration->config[QStringLiteral("backup_onload")].toBool(),
                               false)) {
            delete project;
            return;
        }
    }
    addProject(project);
    project->setSetting(QStringLiteral("proj_path"), QFileInfo(fileName).absolutePath());
    // The blank project of the program's start gives way to the first real one.
    if (m_projects.size() == 2 && m_projects.first()->isBlank())
        projTabsClosed(0);
}

void QInterface::projTabsClosed(int index)
{
    if (index < 0 || index >= m_projects.size())
        return;
    QProject *project = m_projects.at(index);
    if (!project->canClose())
        return;
    if (m_projects.size() == 1)
        newProject(false);
    m_projects.removeAt(index);
    if (m_current == project)
        m_current = m_projects.isEmpty() ? nullptr : m_projects.at(qMin<int>(index, int(m_projects.size()) - 1));
    delete project;
    Q_EMIT projectsChanged();
}

void QInterface::consumeHandOver()
{
    QHandOver handOver;
    for (const QString &line : handOver.consume()) {
        const QFileInfo info(line);
        const QString suffix = info.suffix().toLower();
        if (suffix == QLatin1String("def"))
            openProject(info.absoluteFilePath());
        else
            openDocument(info.absoluteFilePath(), suffix);
    }
}

void QInterface::openDocument(const QString &fileName, const QString &suffix)
{
    const int codepage = configuration->config[QStringLiteral("default_codepage")].toInt();
    auto inUse = [&suffix](QProject *project) {
        if (suffix == QLatin1String("sff"))
            return project->sprites()->count() > 0 || project->sprites()->paletteCount() > 0;
        if (suffix == QLatin1String("air"))
            return project->animations()->count() > 0;
        if (suffix == QLatin1String("cmd"))
            return !project->commands()->isEmpty();
        if (suffix == QLatin1String("cns"))
            return project->statesCount() > 0;
        if (suffix == QLatin1String("snd"))
            return project->sounds()->count() > 0;
        return false;
    };
    static const QStringList known = {QStringLiteral("sff"), QStringLiteral("air"),
                                      QStringLiteral("cmd"), QStringLiteral("cns"),
                                      QStringLiteral("snd")};
    if (!known.contains(suffix))
        return;

    // Handed-over files go into the last tab, which need not be the current one.
    if (m_projects.isEmpty() || inUse(m_projects.last()))
        newProject(false);
    QProject *project = m_projects.last();

    if (suffix == QLatin1String("sff")) {
        // The set remembers no file name: saving it asks where to.
        project->sprites()->fromFile(fileName, true);
    } else if (suffix == QLatin1String("air")) {
        project->animationText()->load(fileName, codepage, false);
    } else if (suffix == QLatin1String("cmd")) {
        project->commands()->load(fileName, codepage, false);
    } else if (suffix == QLatin1String("cns")) {
        QSyntaxTextEditor *state = project->addState(QFileInfo(fileName).fileName());
        state->document()->setObjectName(fileName);
        state->load(fileName, codepage, false);
    } else if (suffix == QLatin1String("snd")) {
        project->sounds()->fromFile(fileName, false);
    }
    Q_EMIT projectsChanged();
}

void QInterface::fileChanged(const QString &path)
{
    Q_UNUSED(path)
    consumeHandOver();
    // Emptying the file fires the watcher once more; that pass finds no
    // lines but still brings the window forward, which is harmless.
    m_mainWindow->activateWindow();
    m_mainWindow->raise();
}
