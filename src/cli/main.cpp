#include "cliapp.h"
#include "verbs.h"

#include "core/app/qproject.h"
#include "core/base/apppaths.h"
#include "core/base/qcodepages.h"
#include "core/base/qmugenmodel.h"
#include "core/base/qsyntaxformats.h"
#include "core/text/qmugensyntaxproperties.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>

int main(int argc, char **argv)
{
    // Text layout and some image work need a GUI application, but the tool
    // runs where there is no display: use the offscreen platform unless
    // another one is asked for.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Without a desktop session there is no runtime folder, and Qt would
    // warn of it at every run: make a private one, as the session would.
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        const QString runtime = QDir::tempPath() + QStringLiteral("/kestrada-runtime-") + qEnvironmentVariable("USER");
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", runtime.toLocal8Bit());
    }
    QGuiApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kestrada"));

    // The user's settings (the default codepage above all) apply here as in
    // the program, but the tool never writes them. Messages of the core go
    // to standard error through the default console prompt.
    QMugenModel settings;
    settings.load(settingsFileForRead(QStringLiteral("config.xml")));
    QSyntaxFormats formats;
    syntaxFormats = &formats;
    configuration = &settings;
    buildCodecNames();
    registerProjectElements();
    // The vocabulary beside the program, as the program reads it.
    QMugenSyntaxProperties vocabulary;
    vocabulary.load(applicationDir() + QStringLiteral("/syntax_mugen.xml"));
    mugenSyntax = &vocabulary;

    Cli::registerFormats();
    Cli::registerVerbs();
    const int code = Cli::run(QCoreApplication::arguments().mid(1));
    mugenSyntax = nullptr;
    configuration = nullptr;
    syntaxFormats = nullptr;
    return code;
}
