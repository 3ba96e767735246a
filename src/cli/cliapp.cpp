#include "cliapp.h"

#include "kestrada_version.h"

#include "core/base/qmessages.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>

namespace Cli {

namespace {

QList<Verb> &verbs()
{
    static QList<Verb> list;
    return list;
}

QList<Format> &formats()
{
    static QList<Format> list;
    return list;
}

QString helpText()
{
    QString text = QStringLiteral(
        "Usage: kestrada-cli <verb> [arguments] [options]\n"
        "       kestrada-cli --help | --version\n"
        "\n"
        "Reads, checks and converts M.U.G.E.N. content without a window.\n"
        "\n"
        "Verbs:\n");
    int width = 0;
    for (const Verb &verb : verbs())
        width = qMax(width, int((verb.name + QLatin1Char(' ') + verb.synopsis).size()));
    for (const Verb &verb : verbs()) {
        const QString line = verb.name + QLatin1Char(' ') + verb.synopsis;
        // Joined, not through arg(): a synopsis may hold a "%0" of its own.
        text += QStringLiteral("  ") + line.leftJustified(width) + QStringLiteral("  ") + verb.summary
            + QLatin1Char('\n');
    }
    text += QStringLiteral(
        "\n"
        "Options:\n"
        "  --json     print data as JSON (every verb that prints data)\n"
        "  --help     show this text\n"
        "  --version  show the version\n"
        "\n"
        "Exit status: 0 success, 1 errors found or the work failed, 2 wrong command line.\n");
    return text;
}

/** The verb whose words begin `arguments`, longest name first; words used go to `used`. */
const Verb *findVerb(const QStringList &arguments, int &used)
{
    const Verb *best = nullptr;
    used = 0;
    for (const Verb &verb : verbs()) {
        const QStringList words = verb.name.split(QLatin1Char(' '));
        if (words.size() > arguments.size() || words.size() <= used)
            continue;
        if (arguments.mid(0, words.size()) == words) {
            best = &verb;
            used = int(words.size());
        }
    }
    return best;
}

} // namespace

void registerVerb(const Verb &verb)
{
    verbs().append(verb);
}

void registerFormat(const Format &format)
{
    formats().append(format);
}

const QList<Format> &allFormats()
{
    return formats();
}

const Format *formatFor(const QString &path)
{
    for (const Format &format : formats()) {
        if (format.matches && format.matches(path))
            return &format;
    }
    return nullptr;
}

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

QTextStream &err()
{
    static QTextStream stream(stderr);
    return stream;
}

void error(const QString &verb, const QString &text)
{
    err() << "kestrada-cli: " << verb << ": " << text << Qt::endl;
}

QString formatDiagnostic(const Diagnostic &d)
{
    // A message about a whole binary file has no place in it.
    if (d.line <= 0)
        return QStringLiteral("%1: %2: %3").arg(d.path, severityName(d.severity), d.text);
    return QStringLiteral("%1:%2:%3: %4: %5")
        .arg(d.path)
        .arg(d.line)
        .arg(d.column)
        .arg(severityName(d.severity), d.text);
}

QString Extraction::itemFileName(int place, int group, int index, const char *suffix)
{
    return QStringLiteral("%1_%2-%3.%4")
        .arg(place, 4, 10, QLatin1Char('0'))
        .arg(group)
        .arg(index)
        .arg(QLatin1String(suffix));
}

void Extraction::record(bool ok, const QString &file)
{
    if (ok) {
        written.append(file);
        return;
    }
    error(verb, QStringLiteral("%1: can't be written").arg(file));
    ++failed;
}

int Extraction::finish(const Command &command, const QString &summary)
{
    if (command.json()) {
        printJson(written);
    } else {
        out() << summary << '\n';
        out().flush();
    }
    return failed ? Failure : Success;
}

QLatin1String severityName(Diagnostic::Severity severity)
{
    static const char *const names[] = {"error", "warning", "note"};
    return QLatin1String(names[severity]);
}

Diagnostic::Severity diagnosticSeverity(int severity)
{
    return severity <= 0 ? Diagnostic::Error : severity == 1 ? Diagnostic::Warning : Diagnostic::Note;
}

std::function<bool(const QString &path)> hasSuffix(std::initializer_list<const char *> suffixes)
{
    const QList<const char *> list(suffixes);
    return [list](const QString &path) {
        const QString suffix = QFileInfo(path).suffix();
        return std::any_of(list.cbegin(), list.cend(), [&](const char *s) {
            return suffix.compare(QLatin1String(s), Qt::CaseInsensitive) == 0;
        });
    };
}

void appendItemDiagnostics(const QString &path, const QMessages &messages, QList<Diagnostic> &out)
{
    for (int row = 0; row < messages.count(QMessages::AnySeverity); ++row) {
        const QMessage &message = messages.at(row);
        Diagnostic diagnostic;
        diagnostic.path = path;
        diagnostic.line = message.index + 1;
        diagnostic.column = message.line + 1;
        diagnostic.severity = diagnosticSeverity(message.severity);
        diagnostic.text = message.text;
        out.append(diagnostic);
    }
}

void printJson(const QJsonValue &value)
{
    const QJsonDocument document = value.isArray() ? QJsonDocument(value.toArray())
                                                   : QJsonDocument(value.toObject());
    out() << QString::fromUtf8(document.toJson(QJsonDocument::Indented));
    out().flush();
}

int run(const QStringList &arguments)
{
    if (arguments.isEmpty() || arguments.first() == QLatin1String("--help")
        || arguments.first() == QLatin1String("-h") || arguments.first() == QLatin1String("help")) {
        out() << helpText();
        out().flush();
        return arguments.isEmpty() ? UsageError : Success;
    }
    if (arguments.first() == QLatin1String("--version")) {
        out() << "kestrada-cli " << KESTRADA_VERSION << Qt::endl;
        return Success;
    }

    int used = 0;
    const Verb *verb = findVerb(arguments, used);
    if (!verb) {
        error(arguments.first(), QStringLiteral("unknown verb; see kestrada-cli --help"));
        return UsageError;
    }

    Command command;
    for (int i = used; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == QLatin1String("--help")) {
            out() << "Usage: kestrada-cli " << verb->name << ' ' << verb->synopsis << Qt::endl
                  << verb->summary << Qt::endl;
            return Success;
        }
        if (argument.startsWith(QLatin1String("--"))) {
            QString name = argument;
            QString value;
            const bool inlineValue = argument.contains(QLatin1Char('='));
            if (inlineValue) {
                name = argument.section(QLatin1Char('='), 0, 0);
                value = argument.section(QLatin1Char('='), 1);
            }
            if (verb->valueOptions.contains(name)) {
                if (!inlineValue) {
                    if (i + 1 >= arguments.size()) {
                        error(verb->name, QStringLiteral("%1 needs a value").arg(name));
                        return UsageError;
                    }
                    value = arguments.at(++i);
                }
                command.values.insert(name, value);
            } else if (verb->flags.contains(name) && !inlineValue) {
                command.flags.insert(name);
            } else {
                error(verb->name, QStringLiteral("unknown option %1").arg(argument));
                return UsageError;
            }
            continue;
        }
        command.args.append(argument);
    }

    if (command.args.size() < verb->minArgs
        || (verb->maxArgs >= 0 && command.args.size() > verb->maxArgs)) {
        error(verb->name, QStringLiteral("usage: kestrada-cli %1 %2").arg(verb->name, verb->synopsis));
        return UsageError;
    }
    return verb->run(command);
}

} // namespace Cli
