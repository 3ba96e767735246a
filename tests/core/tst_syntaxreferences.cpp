// Reference tests of the syntax processor, the way syntax highlighters test
// themselves: each sample under tests/data/syntax/ is highlighted, and what
// every line got (block state, fold level, header flags, formats, diagnostics,
// brackets) is compared with the sample's ".ref" file beside it. A mismatch
// prints a unified diff.
//
// With KESTRADA_UPDATE_REFERENCES=1 in the environment (the build target
// update-syntax-references sets it), the ".ref" files are written instead,
// so that a change of behaviour arrives as a diff to review.
//
// A sample may start with directives in comments:
//   ; version 1.0          check at this engine version (default 1.1)
//   ; checking off         errors are not reported
//   ; vocabulary FILE      read the vocabulary from FILE beside the sample
//   ; vocabulary none      no vocabulary at all
//   ; target ikemen        check for Ikemen GO (default M.U.G.E.N.)
//   ; text FILE            check the text of the sample FILE beside it, so
//                          that one text has a reference for each target

#include "core/base/qcodepages.h"
#include "core/base/qsyntaxformats.h"
#include "core/text/qmugensyntaxprocessor.h"
#include "core/text/qmugensyntaxproperties.h"
#include "core/text/qsyntaxtexteditor.h"
#include "testsupport.h"

#include <QDir>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace {

QString samplesDir()
{
    return QStringLiteral(TEST_DATA_DIR "/syntax");
}

QString vocabularyFile()
{
    return QDir::cleanPath(QStringLiteral(TEST_DATA_DIR "/../../data/syntax_mugen.xml"));
}

/** The tagged text of a line: each span of one of the nine formats as <name>text</name>. */
QString taggedText(const QTextBlock &block)
{
    const QString text = block.text();
    QVector<QTextLayout::FormatRange> ranges = block.layout()->formats();
    std::sort(ranges.begin(), ranges.end(),
              [](const QTextLayout::FormatRange &a, const QTextLayout::FormatRange &b) { return a.start < b.start; });
    // Underlines split a span of one format: join them again.
    QVector<QPair<int, QPair<int, int>>> spans;
    for (const QTextLayout::FormatRange &range : std::as_const(ranges)) {
        const int index = QSyntaxFormats::indexOf(range.format);
        if (index < 0 || range.length <= 0)
            continue;
        if (!spans.isEmpty() && spans.last().first == index
            && spans.last().second.first + spans.last().second.second == range.start)
            spans.last().second.second += range.length;
        else
            spans.append({index, {range.start, range.length}});
    }
    QString tagged;
    int position = 0;
    for (const auto &span : std::as_const(spans)) {
        const QString name = QSyntaxFormats::name(span.first);
        tagged += text.mid(position, span.second.first - position);
        tagged += QLatin1Char('<') + name + QLatin1Char('>') + text.mid(span.second.first, span.second.second)
            + QStringLiteral("</") + name + QLatin1Char('>');
        position = span.second.first + span.second.second;
    }
    return tagged + text.mid(position);
}

/**
 * One line per text line: its number, block state, fold level, H for a
 * header and B for a line before a header, then the tagged text; under it
 * the diagnostics with their columns (from 0, end exclusive) and the
 * brackets with theirs.
 */
QStringList dump(const QTextDocument *document)
{
    static const char *const severities[] = {"error", "warning", "notice"};
    QStringList lines;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        const QTextEditorBlockData *data = QTextEditorBlockData::of(block, false);
        const bool header = data && data->isHeader;
        const bool before = data && data->beforeHeader;
        lines.append(QStringLiteral("%1 %2 %3 %4%5 |%6")
                         .arg(block.blockNumber() + 1, 4)
                         .arg(block.userState(), 3)
                         .arg(data ? data->foldLevel : 0, 2)
                         .arg(header ? QLatin1Char('H') : QLatin1Char('-'))
                         .arg(before ? QLatin1Char('B') : QLatin1Char('-'))
                         .arg(taggedText(block)));
        if (!data)
            continue;
        for (const QSyntaxIssue &issue : data->issues)
            lines.append(QStringLiteral("%1 %2 %3-%4: %5")
                             .arg(QString(), 15)
                             .arg(QLatin1String(severities[qBound(0, issue.severity, 2)]))
                             .arg(issue.start)
                             .arg(issue.end)
                             .arg(issue.text));
        if (!data->parens.isEmpty()) {
            QString parens = QString(15, QLatin1Char(' ')) + QStringLiteral(" brackets");
            for (const QSyntaxParen &paren : data->parens)
                parens += QStringLiteral(" %1%2").arg(paren.character).arg(paren.position);
            lines.append(parens);
        }
    }
    return lines;
}

struct Directives
{
    quint32 version = DefaultEngineVersion;
    bool checking = true;
    /** Empty for the program's vocabulary; "none" for no vocabulary. */
    QString vocabulary;
    int target = TargetMugen;
    /** Another sample whose text is checked; empty for this one's. */
    QString text;
};

Directives directivesOf(const QString &text)
{
    Directives directives;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        if (!line.startsWith(QLatin1Char(';')))
            break;
        const QString directive = line.mid(1).trimmed();
        if (directive.startsWith(QLatin1String("version ")))
            directives.version = QSyntaxProperties::packVersion(directive.mid(8).trimmed());
        else if (directive == QLatin1String("checking off"))
            directives.checking = false;
        else if (directive.startsWith(QLatin1String("vocabulary ")))
            directives.vocabulary = directive.mid(11).trimmed();
        else if (directive == QLatin1String("target ikemen"))
            directives.target = TargetIkemen;
        else if (directive.startsWith(QLatin1String("text ")))
            directives.text = directive.mid(5).trimmed();
    }
    return directives;
}

} // namespace

class tst_SyntaxReferences : public QObject
{
    Q_OBJECT

private:
    QMugenSyntaxProperties m_vocabulary;

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        QVERIFY2(m_vocabulary.load(vocabularyFile()), qPrintable(vocabularyFile()));
        QVERIFY(!m_vocabulary.stateControllers().isEmpty());
    }

    void cleanup()
    {
        mugenSyntax = nullptr;
    }

    void sample_data()
    {
        QTest::addColumn<QString>("path");
        const QStringList samples = QDir(samplesDir()).entryList(QDir::Files, QDir::Name);
        int count = 0;
        for (const QString &name : samples) {
            if (name.endsWith(QLatin1String(".ref")) || name.endsWith(QLatin1String(".xml")))
                continue;
            QTest::newRow(qPrintable(name)) << samplesDir() + QLatin1Char('/') + name;
            ++count;
        }
        QVERIFY2(count >= 10, "the samples are missing");
    }

    void sample()
    {
        QFETCH(QString, path);
        const QString text = QString::fromUtf8(TestSupport::readFile(path));
        const Directives directives = directivesOf(text);

        QMugenSyntaxProperties own;
        if (directives.vocabulary.isEmpty()) {
            mugenSyntax = &m_vocabulary;
        } else if (directives.vocabulary == QLatin1String("none")) {
            mugenSyntax = nullptr;
        } else {
            QVERIFY(own.load(QFileInfo(path).absolutePath() + QLatin1Char('/') + directives.vocabulary));
            mugenSyntax = &own;
        }
        QSyntaxTextEditor document(nullptr, FileStates, false, directives.version, directives.checking);
        document.setTarget(directives.target);
        const QString textPath =
            directives.text.isEmpty() ? path : QFileInfo(path).absolutePath() + QLatin1Char('/') + directives.text;
        QVERIFY(document.load(textPath, 0, true));
        QCOMPARE(document.language(), 1);

        const QStringList actual = dump(document.document());
        const QString referencePath = path + QStringLiteral(".ref");
        if (qEnvironmentVariableIsSet("KESTRADA_UPDATE_REFERENCES")) {
            QVERIFY(TestSupport::writeFile(referencePath, (actual.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8()));
            qInfo("updated %s", qPrintable(referencePath));
            return;
        }
        QString expectedText = QString::fromUtf8(TestSupport::readFile(referencePath));
        QVERIFY2(!expectedText.isEmpty(), qPrintable(QStringLiteral("%1 is missing: build the target "
                                                                    "update-syntax-references")
                                                         .arg(referencePath)));
        if (expectedText.endsWith(QLatin1Char('\n')))
            expectedText.chop(1);
        const QString diff = TestSupport::unifiedDiff(expectedText.split(QLatin1Char('\n')), actual,
                                                      referencePath, QStringLiteral("actual"));
        if (!diff.isEmpty())
            qWarning().noquote() << "\n" << diff;
        QVERIFY2(diff.isEmpty(), "the highlighting differs from the reference");
    }
};

QTEST_MAIN(tst_SyntaxReferences)
#include "tst_syntaxreferences.moc"
