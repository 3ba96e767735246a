#include "testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

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
