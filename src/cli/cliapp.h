#pragma once

#include <QJsonArray>
#include <QJsonValue>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <functional>

class QMessages;

/**
 * The frame of kestrada-cli: verbs, their options, and the formats that the
 * generic verbs (info, check, save) dispatch to by file.
 *
 * Exit status: 0 success; 1 the work found errors or failed (a file that
 * can't be read or written, a check with errors); 2 the command line was
 * wrong (unknown verb or option, missing argument, unsupported file kind).
 */
namespace Cli {

enum ExitCode { Success = 0, Failure = 1, UsageError = 2 };

/** One parsed command line of a verb. */
struct Command
{
    QStringList args;
    QSet<QString> flags;
    QMap<QString, QString> values;

    bool json() const { return flags.contains(QStringLiteral("--json")); }
    bool hasFlag(const char *flag) const { return flags.contains(QLatin1String(flag)); }
    QString value(const char *option) const { return values.value(QLatin1String(option)); }
};

/** A problem found in a file, printed the way compilers print them. */
struct Diagnostic
{
    enum Severity { Error, Warning, Note };

    QString path;
    /** From 1; 0 for a message about the whole file. */
    int line = 1;
    /** From 1. */
    int column = 1;
    Severity severity = Error;
    QString text;
};

/** A verb: "info", "check", "sff extract"... */
struct Verb
{
    /** One or more words. */
    QString name;
    /** The arguments as shown in the help, such as "FILE [--json]". */
    QString synopsis;
    QString summary;
    /** Options without a value that the verb accepts, such as "--json". */
    QStringList flags;
    /** Options followed by a value, such as "--mugen-version". */
    QStringList valueOptions;
    int minArgs = 0;
    /** -1 for no limit. */
    int maxArgs = -1;
    std::function<int(const Command &)> run;
};

/** What the generic verbs know of one kind of file. Any handler may be empty. */
struct Format
{
    /** Shown in messages, such as "sprite file". */
    QString name;
    std::function<bool(const QString &path)> matches;
    /** Prints what the file holds, as text or, with --json, as one JSON object. */
    std::function<int(const Command &, const QString &path)> info;
    /** Checks one file; false when it can't be read at all. */
    std::function<bool(const Command &, const QString &path, QList<Diagnostic> &out)> check;
    /** Reads `in` and writes `out`. */
    std::function<int(const Command &, const QString &in, const QString &out)> save;
    /** Options of save beyond the common ones. */
    QStringList saveFlags;
    QStringList saveValueOptions;
};

/**
 * What a verb that writes many files has written: their names, and how many
 * couldn't be written (each said on standard error as it fails).
 */
struct Extraction
{
    explicit Extraction(const QString &verb)
        : verb(verb)
    {
    }

    QString verb;
    QJsonArray written;
    int failed = 0;

    /** "<place>_<group>-<index>.<suffix>", the place from 0 padded to four digits. */
    static QString itemFileName(int place, int group, int index, const char *suffix);
    void record(bool ok, const QString &file);
    /** Prints the names with --json, `summary` otherwise; returns the exit status. */
    int finish(const Command &command, const QString &summary);
};

void registerVerb(const Verb &verb);
void registerFormat(const Format &format);
/** Every registered format, in registration order. */
const QList<Format> &allFormats();
/** The first registered format that claims `path`, or null. */
const Format *formatFor(const QString &path);

/** Standard output and standard error, UTF-8. */
QTextStream &out();
QTextStream &err();

/** Prints "kestrada-cli: <verb>: <text>" on standard error. */
void error(const QString &verb, const QString &text);
/** "path:line:column: error: text". */
QString formatDiagnostic(const Diagnostic &diagnostic);
/** "error", "warning" or "note". */
QLatin1String severityName(Diagnostic::Severity severity);
/**
 * A severity of the core, which messages and syntax issues share (0 error,
 * 1 warning, 2 note or information), as a diagnostic's.
 */
Diagnostic::Severity diagnosticSeverity(int severity);
/** Whether a path ends in one of `suffixes` (without the dot), in any case. */
std::function<bool(const QString &path)> hasSuffix(std::initializer_list<const char *> suffixes);
/**
 * Appends the messages of a binary document's check (sounds, sprites) as
 * diagnostics. Such a file has no lines: the line is the item's place from 1
 * (0 for the file as a whole), and the column tells the list of the item, 1
 * for the first (sounds, sprites) and 2 for the second (palettes).
 */
void appendItemDiagnostics(const QString &path, const QMessages &messages, QList<Diagnostic> &out);
/** Prints a JSON value (object or array) on standard output, indented. */
void printJson(const QJsonValue &value);

/** Parses the arguments after the program name and runs a verb. */
int run(const QStringList &arguments);

} // namespace Cli
