#include "startup.h"

#include "mainwindow.h"
#include "qguiuserprompt.h"
#include "qiconsetmanager.h"
#include "qlanguagemanager.h"
#include "qpresetmanager.h"
#include "qstylesheetmanager.h"

#include "core/base/apppaths.h"
#include "core/base/qcodepages.h"
#include "core/base/qcolorsetmanager.h"
#include "core/base/qfilewatchermanager.h"
#include "core/base/qhandover.h"
#include "core/base/qmugenmodel.h"
#include "core/base/qsyntaxformats.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QSplashScreen>
#include <QThread>
#include <QTimer>

#include <memory>

StartDecision decideStart(const QStringList &arguments, bool firstInstance)
{
    StartDecision decision;
    if (arguments.size() != 2)
        return decision;
    const QString &argument = arguments.at(1);
    if (QFile::exists(argument)) {
        // A second instance only hands the file over; the first one opens
        // the file itself, from the same hand-over file, once it is up. The
        // first may run in another folder: the path goes over whole.
        decision.handOverFile = QFileInfo(argument).absoluteFilePath();
        decision.showWindow = firstInstance;
    } else if (argument == QLatin1String("-ape")) {
        decision.showWindow = false;
        decision.paletteEditor = true;
    }
    return decision;
}

void scheduleGrab(QWidget *window)
{
    // How the window's look is checked on a machine with nobody in front of it.
    const QString request = qEnvironmentVariable("KESTRADA_GRAB");
    if (request.isEmpty())
        return;
    const QString file = request.section(QLatin1Char(','), 0, 0);
    bool given = false;
    const double seconds = request.section(QLatin1Char(','), 1, 1).toDouble(&given);
    QTimer::singleShot(int((given ? seconds : 3.0) * 1000), window, [window, file] {
        if (!window->grab().save(file))
            qWarning("KESTRADA_GRAB: can't write %s", qPrintable(file));
    });
}

namespace {

void runPaletteEditor()
{
    // TODO: apply the language and preset, then run the palette editor as
    // a dialog of its own, once it exists.
}

int runMainWindow(bool firstInstance)
{
    auto splashPixmap = std::make_unique<QPixmap>(QStringLiteral(":/imgs/Imgs/Splash.png"));
    auto *splash = new QSplashScreen(*splashPixmap);
    splash->show();
    QCoreApplication::processEvents();
    // The splash stays a moment whatever the speed of the start.
    QThread::msleep(1000);

    int code = 0;
    {
        MainWindow window(firstInstance);
        window.show();
        scheduleGrab(&window);
        delete splash;
        code = QApplication::exec();
    }
    return code;
}

} // namespace

ProcessManagers::ProcessManagers(QApplication *application)
{
    presets = new QPresetManager(QDataFolder::named(QStringLiteral("presets")));
    iconsets = new QIconsetManager(QDataFolder::named(QStringLiteral("iconsets")));
    stylesheets = new QStylesheetManager(QDataFolder::named(QStringLiteral("styles")));
    languages = new QLanguageManager(application, applicationDir() + QStringLiteral("/languages"));
    colorsets = new QColorsetManager(QDataFolder::named(QStringLiteral("colorsets")));
    syntaxFormats = new QSyntaxFormats;
    configuration = new QMugenModel;
    // A missing or unreadable file is no error: the defaults stay.
    configuration->load(settingsFileForRead(QStringLiteral("config.xml")));
    fileWatcher = new QFileWatcherManager;
}

ProcessManagers::~ProcessManagers()
{
    delete presets;
    presets = nullptr;
    delete fileWatcher;
    fileWatcher = nullptr;
    delete configuration;
    configuration = nullptr;
    delete syntaxFormats;
    syntaxFormats = nullptr;
    delete colorsets;
    colorsets = nullptr;
    delete stylesheets;
    stylesheets = nullptr;
    delete iconsets;
    iconsets = nullptr;
    delete languages;
    languages = nullptr;
}

int kestradaMain(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kestrada"));
    // Image format plug-ins beside the executable are found too.
    QCoreApplication::addLibraryPath(applicationDir());

    QGuiUserPrompt prompt;
    QUserPrompt *previousPrompt = userPrompt;
    userPrompt = &prompt;

    QGuiUserDialogs dialogs;
    QUserDialogs *previousDialogs = userDialogs;
    userDialogs = &dialogs;

    ProcessManagers managers(&application);
    buildCodecNames();

    // The lock lives until this function returns; its end frees it.
    QInstanceLock lock;
    QHandOver handOver;
    if (lock.isFirst())
        handOver.openForFirstInstance();

    const StartDecision decision = decideStart(QCoreApplication::arguments(), lock.isFirst());
    if (!decision.handOverFile.isEmpty())
        handOver.append(decision.handOverFile);
    if (decision.paletteEditor)
        runPaletteEditor();

    int code = 0;
    if (decision.showWindow)
        code = runMainWindow(lock.isFirst());

    userDialogs = previousDialogs;
    userPrompt = previousPrompt;
    return code;
}
