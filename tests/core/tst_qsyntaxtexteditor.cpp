#include "core/base/qcodepages.h"
#include "core/base/quserprompt.h"
#include "core/text/qcommand.h"
#include "core/text/qsyntaxtexteditor.h"
#include "testsupport.h"

#include <QTemporaryDir>
#include <QTextCodec>
#include <QTextDocument>
#include <QtTest>

#include <memory>

#include "testelementkinds.h"

using TestSupport::readFile;
using TestSupport::writeFile;

class tst_QSyntaxTextEditor : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QList<QTextElementReg *> m_registries;
    QString path(const char *name) const { return m_dir.filePath(QLatin1String(name)); }

    static int codepageOf(const char *name)
    {
        return codepageOfCodec(QTextCodec::codecForName(name));
    }

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        registerNameCommentElements();
        registerCommandElements();
        m_registries = TestKinds::registerAll();
        QVERIFY(!codecNames.isEmpty());
        QVERIFY(!codecNames.contains("System"));
        QVERIFY(std::is_sorted(codecNames.begin(), codecNames.end()));
        QVERIFY(codepageOf("Shift_JIS") > 0);
        QVERIFY(codepageOf("ISO-8859-1") > 0);
    }

    void cleanupTestCase()
    {
        TestKinds::unregisterAll(m_registries);
        releaseCommandElements();
        releaseNameCommentElements();
    }

    void codepagesMapBothWays()
    {
        // 0 and anything out of range mean the system's codec.
        for (int codepage : {0, -4, int(codecNames.size()) + 1})
            QCOMPARE(codecForCodepage(codepage), QTextCodec::codecForLocale());
        const int sjis = codepageOf("Shift_JIS");
        QCOMPARE(codecNames.at(sjis - 1).toLower(), codecForCodepage(sjis)->name().toLower());
        QCOMPARE(codepageOfCodec(nullptr), 0);
    }

    void encodingsRoundTrip_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("codec");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("saved");
        QByteArray sjis;
        for (int i = 0; i < 20; ++i)
            sjis += "; \x97\xa7\x82\xbf\x93\xae\x8d\xec\r\n";
        QTest::newRow("shift-jis") << sjis << QByteArray("Shift_JIS")
                                   << QStringLiteral("; \u7acb\u3061\u52d5\u4f5c\n").repeated(20) << sjis;
        QTest::newRow("latin-1") << QByteArray("; ca\xf1\xf3n\r\n") << QByteArray("ISO-8859-1")
                                 << QStringLiteral("; ca\u00f1\u00f3n\n") << QByteArray("; ca\xf1\xf3n\r\n");
        // The mark decides over the codepage given, and isn't written back.
        QTest::newRow("utf-8 with mark") << QByteArray("\xef\xbb\xbf; \xc3\xa9\r\n") << QByteArray("ISO-8859-1")
                                         << QStringLiteral("; \u00e9\n") << QByteArray("; \xc3\xa9\r\n");
        QTest::newRow("line feeds become CR LF") << QByteArray("[Statedef 0]\ntype = S\n") << QByteArray("ISO-8859-1")
                                                 << QStringLiteral("[Statedef 0]\ntype = S\n")
                                                 << QByteArray("[Statedef 0]\r\ntype = S\r\n");
    }

    void encodingsRoundTrip()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, codec);
        QFETCH(QString, text);
        QFETCH(QByteArray, saved);
        QVERIFY(writeFile(path("in.txt"), bytes));
        QSyntaxTextEditor document(nullptr, FileStates, false, 0x1010000, true);
        QVERIFY(document.load(path("in.txt"), codepageOf(codec.constData()), false));
        QCOMPARE(document.text(), text);
        QVERIFY(document.save(path("out.txt"), false, false));
        QCOMPARE(readFile(path("out.txt")), saved);
        QVERIFY(!document.isModified());
        QCOMPARE(document.title(), QStringLiteral("out.txt"));
        // Asked for UTF-8: UTF-8 without a mark.
        QVERIFY(document.save(path("utf8.txt"), true, true));
        QCOMPARE(readFile(path("utf8.txt")), QString(text).replace(QLatin1Char('\n'), QLatin1String("\r\n")).toUtf8());
    }

    void detectionChoosesTheEncoding_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("given");
        QTest::addColumn<QByteArray>("codec");
        QTest::addColumn<QString>("start");
        // Long enough for detection to be sure.
        QByteArray sjis;
        for (int i = 0; i < 20; ++i)
            sjis += "; \x97\xa7\x82\xbf\x93\xae\x8d\xec\x82\xcc\x83\x41\x83\x6a\x83\x81\r\n";
        QTest::newRow("shift-jis") << sjis << QByteArray() << QByteArray("Shift_JIS") << QStringLiteral("; \u7acb\u3061\u52d5\u4f5c");
        QTest::newRow("utf-8") << QByteArray("; \xc3\xa9t\xc3\xa9 \xe2\x82\xac\r\n") << QByteArray() << QByteArray("UTF-8")
                               << QStringLiteral("; \u00e9t\u00e9 \u20ac");
        QTest::newRow("utf-8 with mark") << QByteArray("\xef\xbb\xbf; x\r\n") << QByteArray() << QByteArray("UTF-8")
                                         << QStringLiteral("; x");
        // Not valid UTF-8 nor Shift-JIS: a single-byte codec that gives every byte back.
        QTest::newRow("broken double byte") << QByteArray("; \x82\x20\x97\xa7\x82\r\n") << QByteArray() << QByteArray()
                                            << QStringLiteral("; ");
        // Plain ASCII proves nothing: the codepage given stands.
        QTest::newRow("ascii") << QByteArray("[Statedef 0]\r\n") << QByteArray("ISO-8859-1") << QByteArray("ISO-8859-1")
                               << QStringLiteral("[Statedef 0]");
    }

    void detectionChoosesTheEncoding()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, given);
        QFETCH(QByteArray, codec);
        QFETCH(QString, start);
        int actual = -1;
        const QString text = QSyntaxTextEditor::decode(bytes, given.isEmpty() ? 0 : codepageOf(given.constData()), &actual);
        QVERIFY2(text.startsWith(start), qPrintable(text));
        if (!codec.isEmpty())
            QCOMPARE(actual, codepageOf(codec.constData()));
        // Whatever was chosen gives the same bytes back.
        QVERIFY(actual >= 0);
        QTextCodec *used = codecForCodepage(actual);
        QByteArray expected = bytes;
        if (expected.startsWith("\xef\xbb\xbf"))
            expected.remove(0, 3);
        QCOMPARE(std::unique_ptr<QTextEncoder>(used->makeEncoder(QTextCodec::IgnoreHeader))->fromUnicode(text), expected);
    }

    void corpusTextSavesBackUnchanged_data()
    {
        QTest::addColumn<QString>("file");
        const QStringList files = TestSupport::corpusFiles({QStringLiteral("*.cns"), QStringLiteral("*.st"),
                                                           QStringLiteral("*.cmd"), QStringLiteral("*.air"),
                                                           QStringLiteral("*.def")});
        if (files.isEmpty())
            QSKIP("the corpus isn't there");
        for (const QString &file : files)
            QTest::newRow(qPrintable(file.mid(TestSupport::corpusDir().size() + 1))) << file;
    }

    void corpusTextSavesBackUnchanged()
    {
        QFETCH(QString, file);
        // Lines are read as elements too: neither the decoding nor the parse may change a byte.
        QSyntaxTextEditor document(nullptr, FileStates, true, 0x1010000, true);
        TestKinds::acceptAll(document);
        QVERIFY(document.load(file, 0, false));
        if (file.endsWith(QLatin1String(".air"), Qt::CaseInsensitive) || file.endsWith(QLatin1String(".cmd"), Qt::CaseInsensitive))
            QVERIFY(document.firstElement());
        QVERIFY(document.save(path("saved.txt"), false, true));
        QByteArray expected = readFile(file);
        if (expected.startsWith("\xef\xbb\xbf"))
            expected.remove(0, 3);
        expected.replace("\r\n", "\n").replace('\r', '\n').replace("\n", "\r\n");
        QCOMPARE(readFile(path("saved.txt")), expected);
    }

    void japaneseFilesReadAsJapanese()
    {
        const QString file = TestSupport::corpusDir() + QStringLiteral("/webmugen/public/chars/kfm/kfm.cmd");
        if (!QFileInfo::exists(file))
            QSKIP("the corpus isn't there");
        QSyntaxTextEditor document(nullptr, FileCommands, true, 0x1010000, true);
        QVERIFY(document.load(file, 0, false));
        QCOMPARE(document.codepage(), codepageOf("Shift_JIS"));
        // "Kung Fu Man" in katakana stands in its first lines.
        QVERIFY(document.text().contains(QStringLiteral("\u30ab\u30f3\u30d5\u30fc\u30de\u30f3")));
    }

    void keepNameAndFailures()
    {
        QVERIFY(writeFile(path("first.air"), "[Begin Action 0]\n"));
        QVERIFY(writeFile(path("second.air"), "[Begin Action 1]\n"));
        QSyntaxTextEditor document(nullptr, FileAnimations, true, 0x1010000, true);
        QVERIFY(document.load(path("first.air"), 0, false));
        QVERIFY(document.load(path("second.air"), 0, true));
        QCOMPARE(document.title(), QStringLiteral("first.air"));
        // Nor does a copy change the name.
        QVERIFY(document.save(path("copy.air"), false, true));
        QCOMPARE(document.title(), QStringLiteral("first.air"));
        QCOMPARE(document.text(), QStringLiteral("[Begin Action 1]\n"));
        // A file that can't be read leaves the document as it was.
        QVERIFY(!document.load(path("absent.air"), 0, false));
        QCOMPARE(document.text(), QStringLiteral("[Begin Action 1]\n"));
        // A failed save tells the user where and why, and keeps the earlier file and the document's state.
        document.document()->setPlainText(QStringLiteral("changed"));
        QRecordingUserPrompt prompt;
        // The animation text has no discard question of its own: the animations ask.
        QVERIFY(document.checkDiscard());
        QVERIFY(!document.save(path("first.air/x"), false, false));
        QVERIFY(prompt.calls.size() == 1 && prompt.calls.first().kind == QRecordingUserPrompt::Critical);
        QCOMPARE(prompt.calls.first().title + QLatin1Char('|') + prompt.calls.first().text,
                 QStringLiteral("Text saving error|An error occurred when saving the file '%1'.\nNot a directory")
                     .arg(QDir::toNativeSeparators(path("first.air/x"))));
        QVERIFY(document.isModified());
        QCOMPARE(readFile(path("first.air")), QByteArray("[Begin Action 0]\n"));
        document.clear();
        QVERIFY(document.isEmpty() && !document.isModified() && document.fileName().isEmpty());
    }
};

QTEST_MAIN(tst_QSyntaxTextEditor)
#include "tst_qsyntaxtexteditor.moc"
