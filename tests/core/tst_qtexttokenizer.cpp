#include "core/text/qtexttokenizer.h"

#include <QtTest>

class tst_QTextTokenizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokens_data()
    {
        QTest::addColumn<QString>("text");
        // "type:text" of every token up to the end, or the bare type when it has no text.
        QTest::addColumn<QString>("expected");
        QTest::newRow("frame") << QStringLiteral("0,10, -5,0, 4") << QStringLiteral("4:0 26:, 4:10 26:, 4:-5 26:, 4:0 26:, 4:4");
        QTest::newRow("identifiers keep dots and digits") << QStringLiteral("const.size.xscale Anim2 AS256D0 _x")
                                                          << QStringLiteral("3:const.size.xscale 3:Anim2 3:AS256D0 2:_ 3:x");
        QTest::newRow("floats") << QStringLiteral(".5 -.5 1.25 -3 3.") << QStringLiteral("5:0.5 5:-0.5 5:1.25 4:-3 5:3.");
        QTest::newRow("a number ends at anything else") << QStringLiteral("12abc 1.2.3") << QStringLiteral("4:12 3:abc 5:1.2 5:0.3");
        QTest::newRow("minus alone, no plus rule") << QStringLiteral("a - b +5") << QStringLiteral("3:a 8:- 3:b 7:+ 4:5");
        QTest::newRow("operators") << QStringLiteral("<= < >= > != ! ** * && & || | ^^ ^ = % / ~ $ : ( ) { } [ ]")
                                   << QStringLiteral("21:<= 20:< 23:>= 22:> 25:!= 24:! 12:** 11:* 14:&& 13:& 16:|| 15:| "
                                                     "18:^^ 17:^ 19:= 10:% 9:/ 34:~ 35:$ 33:: 27:( 28:) 29:{ 30:} 31:[ 32:]");
        QTest::newRow("other characters") << QStringLiteral("@ # \u00e9t\u00e9 \u00bf")
                                          << QStringLiteral("2:@ 2:# 3:\u00e9t\u00e9 2:\u00bf");
        QTest::newRow("string across lines") << QStringLiteral("name = \"Kung\nFu\" x") << QStringLiteral("3:name 19:= 6:Kung\nFu 3:x");
        QTest::newRow("no escapes") << QStringLiteral("\"a\\\" b") << QStringLiteral("6:a\\ 3:b");
        QTest::newRow("unterminated string ends the text") << QStringLiteral("x = \"abc") << QStringLiteral("3:x 19:=");
        QTest::newRow("line ends, blank and comment lines are one token") << QStringLiteral("a\r\n\r\n  ; c\n\n;d\n  b\n")
                                                                          << QStringLiteral("3:a 1 3:b 1");
        QTest::newRow("a comment hides the rest of its line") << QStringLiteral("a ; b = c\nd") << QStringLiteral("3:a 1 3:d");
        QTest::newRow("blanks, tabs and carriage returns") << QStringLiteral("\t a \r b") << QStringLiteral("3:a 3:b");
    }

    void tokens()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QTextTokenizer tokenizer(text);
        QStringList out;
        for (int type = tokenizer.next(); type != QTextTokenizer::EndOfText && out.size() < 1000; type = tokenizer.next())
            out.append(tokenizer.text().isEmpty() ? QString::number(type) : QStringLiteral("%1:%2").arg(type).arg(tokenizer.text()));
        QCOMPARE(out.join(QLatin1Char(' ')), expected);
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

    void commentBlocks_data()
    {
        QTest::addColumn<QString>("text");
        // The comment block that the "[" takes.
        QTest::addColumn<QString>("block");
        QTest::newRow("right above") << QStringLiteral("a\n; Standing\n[b]") << QStringLiteral(" Standing\n");
        QTest::newRow("a blank line breaks the bond") << QStringLiteral("a\n; far\n\n[b]") << QString();
        QTest::newRow("the first of several") << QStringLiteral("a\n;one\n;two\n[b]") << QStringLiteral("one\n");
        QTest::newRow("a trailing comment replaces it") << QStringLiteral("x\n;above\ny ;tail\n[b]") << QStringLiteral("tail\n");
        // Ruler lines name nothing: a run of one character more than five long.
        QTest::newRow("ruler") << QStringLiteral("a\n;-----------\n[b]") << QString();
        QTest::newRow("six of a kind") << QStringLiteral("a\n;------\n[b]") << QString();
        QTest::newRow("five of a kind") << QStringLiteral("a\n;-----\n[b]") << QStringLiteral("-----\n");
        QTest::newRow("spaced") << QStringLiteral("a\n;name      here\n[b]") << QString();
    }

    void commentBlocks()
    {
        QFETCH(QString, text);
        QFETCH(QString, block);
        QTextTokenizer tokenizer(text);
        for (int type = tokenizer.next(); type != QTextTokenizer::OpenBracket; type = tokenizer.next())
            QVERIFY(type != QTextTokenizer::EndOfText);
        QCOMPARE(tokenizer.commentBlock(), block);
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

    void textAndCommentsAreLimited()
    {
        QTextTokenizer tokenizer(QString(600, QLatin1Char('a')) + QStringLiteral(" b ;") + QString(700, QLatin1Char('c')));
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Identifier));
        QCOMPARE(tokenizer.text().size(), QTextTokenizer::MaxText);
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::Identifier));
        QCOMPARE(tokenizer.text(), QStringLiteral("b"));
        QVERIFY(!tokenizer.hasComment());
        QCOMPARE(tokenizer.next(), int(QTextTokenizer::EndOfText));
        // At the end of the text the comment stays raw and makes no block.
        QCOMPARE(tokenizer.comment(), QString(QTextTokenizer::MaxText, QLatin1Char('c')));
        QVERIFY(tokenizer.commentBlock().isEmpty());
        QTextTokenizer empty(QStringLiteral(";"));
        QCOMPARE(empty.next(), int(QTextTokenizer::EndOfText));
        QVERIFY(!empty.hasComment());
    }
};

QTEST_GUILESS_MAIN(tst_QTextTokenizer)
#include "tst_qtexttokenizer.moc"
