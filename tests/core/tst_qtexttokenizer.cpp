#include "core/text/qtexttokenizer.h"

#include <QtTest>

namespace {

/** "type:text" for every token up to the end of the text. */
QStringList tokens(const QString &text)
{
    QTextTokenizer tokenizer(text);
    QStringList out;
    for (int guard = 0; guard < 1000; ++guard) {
        const int type = tokenizer.next();
        if (type == QTextTokenizer::EndOfText)
            break;
        const QString t = tokenizer.text();
        out.append(t.isEmpty() ? QString::number(type) : QStringLiteral("%1:%2").arg(type).arg(t));
    }
    return out;
}

} // namespace

class tst_QTextTokenizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokens_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("frame") << QStringLiteral("0,10, -5,0, 4")
                               << QStringList{QStringLiteral("4:0"), QStringLiteral("26:,"), QStringLiteral("4:10"),
                                              QStringLiteral("26:,"), QStringLiteral("4:-5"), QStringLiteral("26:,"),
                                              QStringLiteral("4:0"), QStringLiteral("26:,"), QStringLiteral("4:4")};
        QTest::newRow("identifiers keep dots and digits")
            << QStringLiteral("const.size.xscale Anim2 AS256D0 _x")
            << QStringList{QStringLiteral("3:const.size.xscale"), QStringLiteral("3:Anim2"),
                           QStringLiteral("3:AS256D0"), QStringLiteral("2:_"), QStringLiteral("3:x")};
        QTest::newRow("floats") << QStringLiteral(".5 -.5 1.25 -3 3.")
                                << QStringList{QStringLiteral("5:0.5"), QStringLiteral("5:-0.5"), QStringLiteral("5:1.25"),
                                               QStringLiteral("4:-3"), QStringLiteral("5:3.")};
        QTest::newRow("a number ends at anything else")
            << QStringLiteral("12abc 1.2.3")
            << QStringList{QStringLiteral("4:12"), QStringLiteral("3:abc"), QStringLiteral("5:1.2"), QStringLiteral("5:0.3")};
        QTest::newRow("minus alone") << QStringLiteral("a - b")
                                     << QStringList{QStringLiteral("3:a"), QStringLiteral("8:-"), QStringLiteral("3:b")};
        QTest::newRow("no plus rule") << QStringLiteral("+5") << QStringList{QStringLiteral("7:+"), QStringLiteral("4:5")};
        QTest::newRow("operators")
            << QStringLiteral("<= < >= > != ! ** * && & || | ^^ ^ = % / ~ $ : ( ) { } [ ]")
            << QStringList{QStringLiteral("21:<="), QStringLiteral("20:<"), QStringLiteral("23:>="), QStringLiteral("22:>"),
                           QStringLiteral("25:!="), QStringLiteral("24:!"), QStringLiteral("12:**"), QStringLiteral("11:*"),
                           QStringLiteral("14:&&"), QStringLiteral("13:&"), QStringLiteral("16:||"), QStringLiteral("15:|"),
                           QStringLiteral("18:^^"), QStringLiteral("17:^"), QStringLiteral("19:="), QStringLiteral("10:%"),
                           QStringLiteral("9:/"), QStringLiteral("34:~"), QStringLiteral("35:$"), QStringLiteral("33::"),
                           QStringLiteral("27:("), QStringLiteral("28:)"), QStringLiteral("29:{"), QStringLiteral("30:}"),
                           QStringLiteral("31:["), QStringLiteral("32:]")};
        QTest::newRow("other characters") << QStringLiteral("@ # \u00e9t\u00e9 \u00bf")
                                          << QStringList{QStringLiteral("2:@"), QStringLiteral("2:#"),
                                                         QStringLiteral("3:\u00e9t\u00e9"), QStringLiteral("2:\u00bf")};
        QTest::newRow("string across lines")
            << QStringLiteral("name = \"Kung\nFu\" x")
            << QStringList{QStringLiteral("3:name"), QStringLiteral("19:="), QStringLiteral("6:Kung\nFu"), QStringLiteral("3:x")};
        QTest::newRow("no escapes") << QStringLiteral("\"a\\\" b")
                                    << QStringList{QStringLiteral("6:a\\"), QStringLiteral("3:b")};
        QTest::newRow("unterminated string ends the text") << QStringLiteral("x = \"abc")
                                                           << QStringList{QStringLiteral("3:x"), QStringLiteral("19:=")};
        QTest::newRow("line ends, blank and comment lines are one token")
            << QStringLiteral("a\r\n\r\n  ; c\n\n;d\n  b\n")
            << QStringList{QStringLiteral("3:a"), QStringLiteral("1"), QStringLiteral("3:b"), QStringLiteral("1")};
        QTest::newRow("a comment hides the rest of its line")
            << QStringLiteral("a ; b = c\nd") << QStringList{QStringLiteral("3:a"), QStringLiteral("1"), QStringLiteral("3:d")};
        QTest::newRow("blanks, tabs and carriage returns")
            << QStringLiteral("\t a \r b") << QStringList{QStringLiteral("3:a"), QStringLiteral("3:b")};
    }

    void tokens()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, expected);
        QCOMPARE(::tokens(text), expected);
    }

    void numbersConvert()
    {
        QTextTokenizer tokenizer(QStringLiteral("007 -.25 99999999999"));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Integer));
        QCOMPARE(tokenizer.toInt(), 7);
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Float));
        QCOMPARE(tokenizer.toFloat(), -0.25);
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Integer));
        bool ok = true;
        tokenizer.toInt(&ok);
        QVERIFY(!ok);
    }

    void linesAreCounted()
    {
        QTextTokenizer tokenizer(QStringLiteral("a\n\n;c\n\"x\ny\" b\nc"));
        tokenizer.next();
        QCOMPARE(tokenizer.line(), 1);
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::EndOfLine));
        QCOMPARE(tokenizer.line(), 4);
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::String));
        // A line feed inside a string isn't counted.
        QCOMPARE(tokenizer.line(), 4);
        tokenizer.next();
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::EndOfLine));
        QCOMPARE(tokenizer.line(), 5);
    }

    void comments()
    {
        QTextTokenizer tokenizer(QStringLiteral("x ;trailing"));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Identifier));
        QVERIFY(!tokenizer.hasComment());
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::EndOfText));
        QVERIFY(tokenizer.hasComment());
        // At the end of the text the comment stays raw and makes no block.
        QCOMPARE(tokenizer.comment(), QStringLiteral("trailing"));
        QVERIFY(tokenizer.commentBlock().isEmpty());

        QTextTokenizer empty(QStringLiteral(";"));
        QCOMPARE(empty.next(), int(QTextTokenizer::EndOfText));
        QVERIFY(!empty.hasComment());
    }

    void commentBlocks()
    {
        QTextTokenizer tokenizer(QStringLiteral("a\n; Standing\n[Begin Action 0]\n"));
        tokenizer.next();
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::EndOfLine));
        QCOMPARE(tokenizer.commentBlock(), QStringLiteral(" Standing\n"));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::OpenBracket));
        QCOMPARE(tokenizer.commentBlock(), QStringLiteral(" Standing\n"));

        // A blank line between comment and token breaks the bond.
        QTextTokenizer gap(QStringLiteral("a\n; far\n\n[b]"));
        gap.next();
        gap.next();
        QVERIFY(gap.commentBlock().isEmpty());

        // The first of several comment lines is the block.
        QTextTokenizer two(QStringLiteral("a\n;one\n;two\n[b]"));
        two.next();
        two.next();
        QCOMPARE(two.commentBlock(), QStringLiteral("one\n"));
    }

    void rulersAreNoBlocks_data()
    {
        QTest::addColumn<QString>("comment");
        QTest::addColumn<bool>("isBlock");
        QTest::newRow("ruler") << QStringLiteral(";-----------") << false;
        QTest::newRow("six of a kind") << QStringLiteral(";------") << false;
        QTest::newRow("five of a kind") << QStringLiteral(";-----") << true;
        QTest::newRow("words") << QStringLiteral("; Walk forward") << true;
        QTest::newRow("spaced") << QStringLiteral(";name      here") << false;
    }

    void rulersAreNoBlocks()
    {
        QFETCH(QString, comment);
        QFETCH(bool, isBlock);
        QTextTokenizer tokenizer(QStringLiteral("a\n") + comment + QStringLiteral("\n[b]"));
        tokenizer.next();
        tokenizer.next();
        QCOMPARE(!tokenizer.commentBlock().isEmpty(), isBlock);
    }

    void midLineCommentClearsTheBlock()
    {
        QTextTokenizer tokenizer(QStringLiteral("x\n;above\ny ;tail\nz"));
        tokenizer.next();
        tokenizer.next();
        QCOMPARE(tokenizer.commentBlock(), QStringLiteral("above\n"));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Identifier)); // y
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::EndOfLine));
        // The trailing comment replaced the block of the line above.
        QCOMPARE(tokenizer.commentBlock(), QStringLiteral("tail\n"));
    }

    void skipLineAndReadUntil()
    {
        QTextTokenizer tokenizer(QStringLiteral("sprite = chars\\kfm.sff ; the sprites\nanim = kfm.air\n[x"));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Identifier));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Equal));
        QString value;
        QCOMPARE(tokenizer.readUntil(value, QLatin1Char('\n')), int(QTextTokenizer::EndOfLine));
        QCOMPARE(value, QStringLiteral(" chars\\kfm.sff "));
        QCOMPARE(tokenizer.line(), 2);
        QCOMPARE(tokenizer.text(), QString());
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Identifier));
        QCOMPARE(tokenizer.skipLine(), int(QTextTokenizer::EndOfLine));
        QCOMPARE(tokenizer.line(), 3);
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::OpenBracket));
        // No delimiter up to the end: everything left, then the end of the text.
        QCOMPARE(tokenizer.readUntil(value, QLatin1Char(']')), int(QTextTokenizer::EndOfText));
        QCOMPARE(value, QStringLiteral("x"));
    }

    void textIsLimited()
    {
        const QString long1 = QString(600, QLatin1Char('a'));
        QTextTokenizer tokenizer(long1 + QStringLiteral(" b ;") + QString(700, QLatin1Char('c')));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Identifier));
        QCOMPARE(tokenizer.text().size(), QTextTokenizer::MaxText);
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Identifier));
        QCOMPARE(tokenizer.text(), QStringLiteral("b"));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::EndOfText));
        QCOMPARE(tokenizer.comment().size(), QTextTokenizer::MaxText);
    }
};

QTEST_GUILESS_MAIN(tst_QTextTokenizer)
#include "tst_qtexttokenizer.moc"
