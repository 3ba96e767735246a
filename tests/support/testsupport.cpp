#include "testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

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

} // namespace TestSupport
