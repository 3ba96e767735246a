#include "testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <vector>

namespace TestSupport {

QString corpusDir()
{
    const QString dir = QStringLiteral(KESTRADA_CORPUS_DIR);
    return QFileInfo(dir).isDir() ? QFileInfo(dir).canonicalFilePath() : QString();
}

QStringList corpusFiles(const QStringList &patterns)
{
    QStringList files;
    const QString root = corpusDir();
    if (root.isEmpty())
        return files;
    QDirIterator it(root, patterns, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    files.sort();
    return files;
}

void addCorpusRows(const QStringList &patterns, const char *column, const std::function<bool(const QString &)> &take)
{
    QTest::addColumn<QString>(column);
    const QStringList files = corpusFiles(patterns);
    if (files.isEmpty())
        QSKIP("the corpus isn't there");
    for (const QString &file : files) {
        if (!take || take(file))
            QTest::newRow(qPrintable(QDir(corpusDir()).relativeFilePath(file))) << file;
    }
}

QString binDir()
{
    return QStringLiteral(KESTRADA_BIN_DIR);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QString unifiedDiff(const QStringList &expected, const QStringList &actual, const QString &expectedName,
                    const QString &actualName)
{
    if (expected == actual)
        return QString();
    // The longest common subsequence, by a table over what follows each line.
    const int n = int(expected.size());
    const int m = int(actual.size());
    std::vector<std::vector<int>> common(size_t(n) + 1, std::vector<int>(size_t(m) + 1, 0));
    for (int i = n - 1; i >= 0; --i) {
        for (int j = m - 1; j >= 0; --j)
            common[i][j] = expected.at(i) == actual.at(j) ? common[i + 1][j + 1] + 1
                                                           : qMax(common[i + 1][j], common[i][j + 1]);
    }
    // The edit script: ' ' both, '-' expected only, '+' actual only.
    struct Edit
    {
        char kind;
        int expectedLine;
        int actualLine;
    };
    std::vector<Edit> edits;
    int i = 0;
    int j = 0;
    while (i < n || j < m) {
        if (i < n && j < m && expected.at(i) == actual.at(j)) {
            edits.push_back({' ', i++, j++});
        } else if (i < n && (j >= m || common[i + 1][j] >= common[i][j + 1])) {
            // Removals before additions, as diff prints them.
            edits.push_back({'-', i++, j});
        } else {
            edits.push_back({'+', i, j++});
        }
    }

    QString diff = QStringLiteral("--- %1\n+++ %2\n").arg(expectedName, actualName);
    const int context = 3;
    const int count = int(edits.size());
    int k = 0;
    while (k < count) {
        if (edits[k].kind == ' ') {
            ++k;
            continue;
        }
        // A hunk: from three lines before this change to three lines after
        // the last change that is no more than six lines further on.
        const int first = qMax(0, k - context);
        int last = k;
        for (int e = k; e < count && e <= last + 2 * context; ++e) {
            if (edits[e].kind != ' ')
                last = e;
        }
        const int end = qMin(count, last + context + 1);
        int expectedCount = 0;
        int actualCount = 0;
        QString body;
        for (int e = first; e < end; ++e) {
            const Edit &edit = edits[e];
            const QString &line = edit.kind == '+' ? actual.at(edit.actualLine) : expected.at(edit.expectedLine);
            body += QLatin1Char(edit.kind) + line + QLatin1Char('\n');
            expectedCount += edit.kind != '+';
            actualCount += edit.kind != '-';
        }
        diff += QStringLiteral("@@ -%1,%2 +%3,%4 @@\n")
                    .arg(edits[first].expectedLine + 1)
                    .arg(expectedCount)
                    .arg(edits[first].actualLine + 1)
                    .arg(actualCount)
            + body;
        k = end;
    }
    return diff;
}

CliResult runCli(const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // No display at all: the tool must not need one.
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    process.setProcessEnvironment(environment);
    process.start(binDir() + QStringLiteral("/kestrada-cli"), arguments);
    CliResult result;
    if (!process.waitForFinished(30000))
        return result;
    result.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

} // namespace TestSupport
