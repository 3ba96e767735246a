#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

/** Helpers shared by the tests. */
namespace TestSupport {

/** The corpus of real files; empty when it isn't there (the tests then skip). */
QString corpusDir();
/** Every file under the corpus whose name matches one of `patterns` (wildcards, any case), sorted. */
QStringList corpusFiles(const QStringList &patterns);
/**
 * Adds the column `column` of a data function and a row for each file of the
 * corpus that matches one of `patterns` and that `take` accepts (every one
 * without it), named by its path in the corpus; without the corpus the test
 * is skipped.
 */
void addCorpusRows(const QStringList &patterns, const char *column = "file",
                   const std::function<bool(const QString &)> &take = {});
/** The folder of the programs and their data. */
QString binDir();
/** The whole content of a file; empty if it can't be read. */
QByteArray readFile(const QString &path);
/** Writes a file, making its folder; false on failure. */
bool writeFile(const QString &path, const QByteArray &bytes);
/**
 * The differences between two texts as a unified diff with three lines of
 * context, headed by the two names; empty when the texts are equal.
 */
QString unifiedDiff(const QStringList &expected, const QStringList &actual, const QString &expectedName,
                    const QString &actualName);

/** How a run of kestrada-cli ended. */
struct CliResult
{
    /** The exit code; -1 when it didn't end in time, -2 when it crashed. */
    int code = -1;
    QByteArray out;
    QByteArray err;
};
/**
 * Runs kestrada-cli with `arguments` and no display at all, in this
 * process's environment otherwise, and waits up to 30 seconds.
 */
CliResult runCli(const QStringList &arguments);

} // namespace TestSupport
