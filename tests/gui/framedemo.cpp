// The window as the program makes it, with a stand-in editor where the
// real ones will stand: a way to look at the frame, its presets and its
// looks, and to drive it by hand or with xdotool, before the editors exist.
// Not a test and not installed; it takes its data from beside the program.
//
//   kestrada-framedemo        then KESTRADA_GRAB=FILE.png[,SECONDS] for a picture

#include "gui/app/mainwindow.h"
#include "gui/app/qguiuserprompt.h"
#include "gui/app/qorganizereditor.h"
#include "gui/app/startup.h"
#include "logeditor.h"

#include "core/app/qproject.h"
#include "core/base/qcodepages.h"

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kestrada"));
    QGuiUserPrompt prompt;
    QUserPrompt *previous = userPrompt;
    userPrompt = &prompt;
    QGuiUserDialogs dialogs;
    QUserDialogs *previousDialogs = userDialogs;
    userDialogs = &dialogs;
    ProcessManagers managers(&application);
    buildCodecNames();

    QStringList log;
    echoLog = true;
    const auto editors = [&log](QInterface *ui) {
        ui->addWorkspace(new LogWorkspace(0, &log));
        ui->addWorkspace(new LogWorkspace(1, &log));
        ui->addEditor(new LogEditor(ui, QInterfaceIds::Commands, QInterfaceIds::TextWorkspace, 1, &log,
                                    {{QStringLiteral("cmd_new"), 204}, {QStringLiteral("cmd_open"), 205}}));
        MainWindow::addEditors(ui);
    };
    int code = 0;
    {
        MainWindow window(false, editors);
        window.show();
        scheduleGrab(&window);
        code = QApplication::exec();
    }
    userDialogs = previousDialogs;
    userPrompt = previous;
    return code;
}
