#pragma once

#include <QFile>
#include <QString>
#include <QTextCodec>

#include <benchmark/benchmark.h>

namespace BenchSupport {

/**
 * A text file of the corpus, decoded as the engine's Japanese files need
 * (UTF with a byte order mark, Shift-JIS otherwise). Empty without the corpus.
 */
inline QString corpusText(const char *relative)
{
    QFile file(QStringLiteral(KESTRADA_CORPUS_DIR "/") + QLatin1String(relative));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QByteArray bytes = file.readAll();
    return QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("Shift_JIS"))->toUnicode(bytes);
}

/** `text` over and over, a line between, until it has at least `lines` lines. Empty for an empty text. */
inline QString repeatedToLines(const QString &text, int lines)
{
    if (text.isEmpty())
        return QString();
    const QString piece = text + QLatin1Char('\n');
    const qsizetype perPiece = piece.count(QLatin1Char('\n'));
    QString result;
    for (qsizetype have = 0; have < lines; have += perPiece)
        result += piece;
    return result;
}

/**
 * Runs the benchmarks that the command line selects (--benchmark_filter and
 * the like). The caller makes the Qt application first, since most of what
 * is measured needs one.
 */
inline int runBenchmarks(int &argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace BenchSupport
