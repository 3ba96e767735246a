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
