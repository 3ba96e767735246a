// The Project menu: new, open, save, save as and close, and the questions
// that a project asks while it saves.

#include "qinterface.h"

#include "qhistorymanager.h"
#include "qprogress.h"

#include "core/animation/qanimations.h"
#include "core/app/qproject.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserdialogs.h"
#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"
#include "core/sprites/qrgbpalette.h"
#include "core/sprites/qspritepalette.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMainWindow>
#include <QTabBar>

namespace {

QVariant config(const char *key)
{
    return configuration ? configuration->config.value(QLatin1String(key)) : QVariant();
}

/** The folder a file would be written into, when it exists and may be written. */
bool folderWritable(const QString &fileName)
{
    const QFileInfo folder(QFileInfo(fileName).absolutePath());
    return folder.isDir() && folder.isWritable();
}

/** Says which files weren't written; their documents stay modified. */
void reportUnwritten(const QStringList &files)
{
    if (!files.isEmpty())
        userPrompt->critical(QInterface::tr("Save"),
                             QInterface::tr("These files couldn't be written; their changes are still only in "
                                            "Kestrada:\n%1")
                                 .arg(files.join(QLatin1Char('\n'))));
}

/** False, after saying so, when the folder of `fileName` can't take a save. */
bool checkFolder(const QString &fileName)
{
    if (folderWritable(fileName))
        return true;
    userPrompt->critical(QInterface::tr("Save"),
                         QInterface::tr("The folder '%1' can't be written. Nothing was saved.")
                             .arg(QDir::toNativeSeparators(QFileInfo(fileName).absolutePath())));
    return false;
}

/**
 * Sprites and sounds fail quietly: a name that was given them during a
 * save and that they don't carry now wasn't written.
 */
QStringList unwritten(QProject *project, const QList<QPair<QProjectFileType, QString>> &given)
{
    QStringList failed;
    for (const auto &[kind, name] : given) {
        const QString now = kind == FileSprites ? project->sprites()->fileName() : project->sounds()->fileName();
        if (QFileInfo(now) != QFileInfo(name))
            failed.append(QDir::toNativeSeparators(name));
    }
    return failed;
}

/**
 * Keeps the window alive while one document of a project reads thousands of
 * items: the project itself reports only between documents.
 */
class DocumentProgress
{
public:
    explicit DocumentProgress(QProgress *dialog)
        : m_dialog(dialog)
    {
        m_clock.start();
    }

    void operator()(uint pos, uint, bool &allow)
    {
        // Often enough to paint and to hear Cancel, seldom enough to cost nothing.
        if (pos % 32 != 0 && m_clock.elapsed() < 40)
            return;
        m_clock.restart();
        QCoreApplication::processEvents();
        allow = !m_dialog->wasCanceled();
    }

private:
    QProgress *m_dialog;
    QElapsedTimer m_clock;
};

} // namespace

QProject *QInterface::createProject()
{
    auto *project = new QProject(config("cache_type").toInt(), config("cache_compression").toBool());
    wireProject(project);
    return project;
}

void QInterface::wireProject(QProject *project)
{
    connect(project, &QProject::saveFileName, this, &QInterface::saveFileName);
    connect(project, &QProject::spritesVersionToSave, this, &QInterface::spritesVersionToSave);
    QDefinitions *definitions = project->definitions();
    connect(definitions, &QDefinitions::nameChanged, this,
            [this, project](const QString &name) { changeTabName(project, name); });
    connect(definitions, &QDefinitions::typeChanged, this, [this, project] { projTypeChanged(project); });
    connect(definitions, &QDefinitions::versionChanged, this, [this, project] { projVerChanged(project); });
    connect(definitions, &QDefinitions::targetChanged, this, [this, project] { projVerChanged(project); });
    connect(project->sprites(), &QSprites::charPalette, this, &QInterface::charPalette);
}

void QInterface::addProject(QProject *project)
{
    // Listed before the tab exists: adding it makes it current at once.
    m_projects.append(project);
    m_current = nullptr;
    const int index = m_tabs->addTab(tabTitle(project));
    m_tabs->setCurrentIndex(index);
    if (m_current != project)
        projTabsChanged(index);
    Q_EMIT projectsChanged();
}

void QInterface::newProject(bool fromTemplate)
{
    // TODO: offer the project templates when fromTemplate is set, once
    // scripts can make projects.
    Q_UNUSED(fromTemplate)
    QProject *project = createProject();
    project->definitions()->setName(tr("Project %1").arg(++m_newProjects));
    addProject(project);
}

void QInterface::fileNew()
{
    newProject(true);
}

void QInterface::fileOpen()
{
    const QString fileName = userDialogs->openFileName(tr("Open project"), config("proj_path").toString(),
                                                       projectFileFilter(FileDefinitions));
    if (!fileName.isEmpty())
        openProject(fileName);
}

void QInterface::openProject(const QString &fileName)
{
    QProject *project = createProject();
    bool loaded = false;
    {
        QProgress progress(m_mainWindow, tr("Loading project..."));
        connect(project, &QProject::progress, &progress, &QProgress::onProgress);
        connect(project->sprites(), &QSprites::progress, &progress, DocumentProgress(&progress));
        connect(project->sounds(), &QSounds::progress, &progress, DocumentProgress(&progress));
        m_loading = project;
        loaded = project->fromFile(fileName, config("default_codepage").toInt(), config("backup_onload").toBool(),
                                   false);
        m_loading = nullptr;
    }
    if (!loaded) {
        delete project;
        const QString shown = QDir::toNativeSeparators(fileName);
        userPrompt->critical(tr("Open project"),
                             QFileInfo::exists(fileName)
                                 ? tr("The file '%1' can't be read: the project can't be opened.").arg(shown)
                                 : tr("The file '%1' doesn't exist: the project can't be opened.").arg(shown));
        return;
    }
    addProject(project);
    m_history->add(QFileInfo(fileName).absoluteFilePath());
    project->setSetting(QStringLiteral("proj_path"), QFileInfo(fileName).absolutePath());
    // The blank project of the program's start gives way to the first real one.
    if (m_projects.size() == 2 && m_projects.first()->isBlank())
        projTabsClosed(0);
}

void QInterface::fileSave()
{
    QProject *project = m_current;
    if (!project)
        return;
    // Nothing is written when one of the folders can't take it: the old
    // files stay as they are and the changes stay in memory.
    QStringList files = {project->definitions()->fileName(), project->sprites()->fileName(),
                         project->animationText()->fileName(), project->commands()->fileName(),
                         project->sounds()->fileName()};
    for (int i = 0; i < project->statesCount(); ++i)
        files.append(project->states(i)->fileName());
    for (const QString &file : std::as_const(files)) {
        if (QFileInfo(file).isFile() && !checkFolder(file))
            return;
    }
    m_savedNames.clear();
    QStringList failed;
    {
        // "Loading", not "Saving": the same dialog as for opening.
        QProgress progress(m_mainWindow, tr("Loading project..."));
        connect(project, &QProject::progress, &progress, &QProgress::onProgress);
        project->save();
        failed = unwritten(project, m_savedNames) + savePalettes(project, false);
    }
    m_savedNames.clear();
    reportUnwritten(failed);
}

void QInterface::fileSaveAs()
{
    QProject *project = m_current;
    if (!project)
        return;
    const QString fileName = saveFileName(FileDefinitions, project->setting(QStringLiteral("proj_path")));
    if (fileName.isEmpty())
        return;
    if (!checkFolder(fileName))
        return;
    // The other files of the new project most likely go beside its DEF.
    project->setSetting(QStringLiteral("proj_path"), QFileInfo(fileName).absolutePath());
    m_savedNames.clear();
    QStringList failed;
    {
        QProgress progress(m_mainWindow, tr("Loading project..."));
        connect(project, &QProject::progress, &progress, &QProgress::onProgress);
        const bool asUtf8 = userPrompt->question(
            tr("Save as UTF-8"),
            tr("You want to save the file as UTF-8? This ensures that all characters are saved in the same form in "
               "which they are viewed in the program. Otherwise, the source encoding detected when the file was "
               "opened will be used."));
        project->toFile(fileName, asUtf8);
        failed = unwritten(project, m_savedNames) + savePalettes(project, true);
    }
    m_savedNames.clear();
    reportUnwritten(failed);
}

QStringList QInterface::savePalettes(QProject *project, bool saveAs)
{
    QSprites *sprites = project->sprites();
    QStringList failed;
    if (project->type() != Character || sprites->version() != QSprites::Version_101
        || !config("ask_save_palettes").toBool())
        return failed;
    if (!userPrompt->question(translation()->title(saveAs ? 116 : 123),
                              tr("Do you want to save the palettes of the group 1 based on the definitions "
                                 "(palette 1,x = palx in DEF)?\nChoose No to ignore palettes.")))
        return failed;
    if (saveAs) {
        // Every palette of group 1 in the order of the list, each where the user says.
        for (int i = 0; i < sprites->paletteCount(); ++i) {
            const QSpritePalette *palette = sprites->paletteAt(i);
            if (palette->itemGroup() != 1)
                continue;
            const QString name = userDialogs->saveFileName(
                translation()->title(123) + QStringLiteral(" 1, %1").arg(palette->itemIndex()),
                project->setting(QStringLiteral("proj_path")), QRGBPalette::saveFilter());
            if (!name.isEmpty() && !palette->toFile(name))
                failed.append(QDir::toNativeSeparators(name));
        }
    } else {
        // Palette n of the DEF is the character's palette 1,n.
        const QDefinitionsFiles files = project->definitions()->files();
        for (int n = 1; n <= files.palettes.size(); ++n) {
            const QString path = files.directory + QLatin1Char('/') + files.palettes.at(n - 1);
            if (!QFileInfo::exists(path))
                QDir().mkpath(QFileInfo(path).absolutePath());
            const int found = sprites->findPalette(0, 1, n);
            if (found >= 0 && !sprites->paletteAt(found)->toFile(path))
                failed.append(QDir::toNativeSeparators(path));
        }
    }
    return failed;
}

QString QInterface::saveFileName(QProjectFileType file, QString path)
{
    static const int titles[] = {0, 72, 143, 206, 211, 224};
    const QString title = file == FileDefinitions ? tr("Save project") : translation()->title(titles[file]);
    const QString name = userDialogs->saveFileName(title, path, projectFileFilter(file));
    if (!name.isEmpty() && (file == FileSprites || file == FileSounds))
        m_savedNames.append({file, name});
    return name;
}

quint32 QInterface::spritesVersionToSave(quint32 currentVersion)
{
    static const quint32 versions[] = {QSprites::Version_101, QSprites::Version_200, QSprites::Version_201};
    const QStringList buttons = {tr("M.U.G.E.N. Beta"), tr("M.U.G.E.N. 1.0"), tr("M.U.G.E.N. 1.1"), tr("Cancel")};
    int current = 2;
    for (int i = 0; i < 3; ++i) {
        if (versions[i] == currentVersion)
            current = i;
    }
    const int chosen = userPrompt->choose(
        tr("Format"),
        tr("Choose the format to be saved:") + QLatin1Char('\n')
            + tr("M.U.G.E.N. Beta: 8 bits only, other formats will be converted to 8 bits") + QLatin1Char('\n')
            + tr("M.U.G.E.N. 1.0: 5 / 8 bits, other formats will be converted to 8 bits") + QLatin1Char('\n')
            + tr("M.U.G.E.N. 1.1: 5 / 8 / 24 / 32 bits, other formats will be converted to 24 bits"),
        buttons, current);
    return chosen >= 0 && chosen < 3 ? versions[chosen] : 0;
}

void QInterface::charPalette(QRGBPal *palette)
{
    QProject *project = projectOf(sender());
    userPrompt->warning(tr("Palette warning!"),
                        tr("Kestrada not found the character palette. To view all sprites properly you must "
                           "select an external palette file."));
    QString folder = project ? project->setting(QStringLiteral("proj_path")) : QString();
    // While the project is still being read its folder is the DEF's.
    if (folder.isEmpty() && project)
        folder = project->definitions()->directory();
    const QString fileName = userDialogs->openFileName(translation()->title(259), folder,
                                                       QRGBPalette::openFilter(tr("All palette files")));
    if (!fileName.isEmpty() && palette)
        QRGBPalette(palette).fromFile(fileName);
}

QProject *QInterface::projectOf(const QObject *document) const
{
    if (m_loading && (document == m_loading->sprites() || document == m_loading->definitions()))
        return m_loading;
    for (QProject *project : m_projects) {
        if (document == project->sprites() || document == project->definitions())
            return project;
    }
    return m_current;
}

void QInterface::fileClose()
{
    projTabsClosed(int(m_projects.indexOf(m_current)));
}

void QInterface::projTabsClosed(int index)
{
    if (index >= 0 && index < m_projects.size())
        closeProject(m_projects.at(index));
}

bool QInterface::closeProject(QProject *project)
{
    if (!project->canClose())
        return false;
    if (m_projects.size() == 1)
        newProject(false);
    const int index = int(m_projects.indexOf(project));
    // Out of the list before the tab goes: removing it makes another current.
    m_projects.removeAt(index);
    m_tabs->removeTab(index);
    if (m_current == project)
        projTabsChanged(m_tabs->currentIndex());
    delete project;
    Q_EMIT projectsChanged();
    return true;
}

void QInterface::fileCloseAll()
{
    // A refusal doesn't stop the others; a blank project made for the last
    // one isn't in the copy.
    const QList<QProject *> projects = m_projects;
    for (auto it = projects.crbegin(); it != projects.crend(); ++it)
        closeProject(*it);
}

void QInterface::fileCloseAllCurr()
{
    const QList<QProject *> projects = m_projects;
    QProject *current = m_current;
    for (auto it = projects.crbegin(); it != projects.crend(); ++it) {
        if (*it != current)
            closeProject(*it);
    }
}
