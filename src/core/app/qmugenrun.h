#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

class QMugenModel;
class QProject;

/**
 * A test run: a temporary copy of one or more projects is written into the
 * engine's own folders under made-up names, the engine is started on them,
 * and once it has ended everything written is removed.
 *
 * The parameter template is a blank-separated command line in which %N
 * stands for a project: %0 the current one, %1, %2 and so on the open
 * projects by their place in the tab list, from 1. No quoting is
 * supported, so no argument can hold a blank.
 *
 * The wait keeps the program responsive: events are processed until the
 * engine ends, so every slot may run meanwhile. Messages go through
 * userPrompt.
 */
class QMugenRun : public QObject
{
    Q_OBJECT

public:
    explicit QMugenRun(QObject *parent = nullptr);
    ~QMugenRun() override;

    /**
     * Warns that an engine must be configured first when `model` holds no
     * installation; false then.
     */
    static bool checkInstallations(const QMugenModel &model);

    /**
     * The numbers N of the "%N" (one or two digits) of `params`, in the
     * order of their first appearance, each once.
     */
    static QList<int> projectNumbers(const QString &params);
    /** `params` split at blanks, empty parts dropped. */
    static QStringList splitParameters(const QString &params);
    /**
     * The program and its arguments that start `exe` with `arguments`: an
     * executable whose name ends in ".exe" goes through `wine` when `wine`
     * (the path of that program) isn't empty; anything else starts as it is.
     */
    static QStringList commandLine(const QString &exe, const QStringList &arguments, const QString &wine);
    /**
     * Where wine is installed, on systems that need it for ".exe" files;
     * empty on Windows and where it isn't installed.
     */
    static QString wineProgram();
    /**
     * Deletes the folder `path` and everything in it, hidden entries too.
     * Links are removed, never followed. True when all of it went.
     */
    static bool removeFolder(const QString &path);

    /**
     * Runs the engine `exe` with the template `params` on copies of the
     * projects it names, from `projects` (the tab list) and `current`, and
     * returns once the engine has ended and the copies are gone.
     *
     * Each project numbered in the template, in order of appearance at
     * place i, is written as "ks3_i": a character into the engine's
     * "chars/ks3_i/" folder, a stage into its "stages/" folder. A number
     * beyond the projects stays in the line as it is. Without any number
     * the user is warned and nothing runs. False when nothing ran: no
     * number, or an engine that didn't start (errorString() says why);
     * false at once, changing nothing, while another run is under way.
     */
    bool run(const QString &exe, const QString &params, const QList<QProject *> &projects, QProject *current);

    bool isRunning() const { return m_running; }
    /** The program and arguments of the last run, wine included. */
    QStringList lastCommand() const { return m_command; }
    /** Why the last run failed; empty after a run that went. */
    QString errorString() const { return m_error; }

Q_SIGNALS:
    /** A copy of `project` is about to be written; its progress() reports on it until saveFinished(). */
    void saveStarted(QProject *project);
    void saveFinished(QProject *project);
    /** The engine of the run under way ended, with `exitCode`; the run returns right after. */
    void engineFinished(int exitCode);

private Q_SLOTS:
    /** The engine ended; its exit code means nothing to a test run. */
    void mugenFinished(int exitCode);

private:
    bool m_running = false;
    bool m_mugenDone = false;
    QStringList m_command;
    QString m_error;
};
