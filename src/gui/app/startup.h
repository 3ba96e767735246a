#pragma once

#include <QString>
#include <QStringList>

/** What the program does with its command line. */
struct StartDecision
{
    /** A file to append to the hand-over file, as an absolute path; empty for none. */
    QString handOverFile;
    /** Whether the splash and the main window come up. */
    bool showWindow = true;
    /** Whether the stand-alone palette editor runs. */
    bool paletteEditor = false;
};

/**
 * Decides from the arguments (program name first) what the program does.
 * Only exactly one argument counts: a file that exists is handed over, and
 * only the first instance goes on to show a window; "-ape", when no such
 * file exists, runs the stand-alone palette editor; anything else is ignored.
 */
StartDecision decideStart(const QStringList &arguments, bool firstInstance);

/** The program's entry point: managers, instance lock, hand-over, splash, main window. */
int kestradaMain(int argc, char **argv);

class QWidget;
/**
 * KESTRADA_GRAB=FILE.png[,SECONDS]: saves a picture of `window` after that
 * many seconds (3 by default) while the program goes on running; nothing
 * without the variable.
 */
void scheduleGrab(QWidget *window);

class QApplication;
/**
 * The process-wide managers of the program: presets, iconsets, stylesheets,
 * languages, colorsets, syntax formats, the configuration (read from
 * config.xml) and the file watcher, made in that order and deleted in the
 * reverse one but for the presets, which go first. What they find beside the program and in
 * the user's data folders is all they know.
 */
class ProcessManagers
{
public:
    explicit ProcessManagers(QApplication *application);
    ~ProcessManagers();
    ProcessManagers(const ProcessManagers &) = delete;
    ProcessManagers &operator=(const ProcessManagers &) = delete;
};
