#include "core/app/calculatorengine.h"

#include <QtTest>

#include <limits>

class tst_CalculatorEngine : public QObject
{
    Q_OBJECT

private:
    /**
     * Presses the buttons named in `keys`, separated by blanks: numbers are
     * typed digit by digit, "=", "back", "clear", "pi" and "paste:N" are
     * their own; the rest are operators. Returns how often a division by
     * zero was reported.
     */
    static int press(CalculatorEngine &engine, const QString &keys)
    {
        static const QStringList binaries = {QStringLiteral("+"), QStringLiteral("-"), QStringLiteral("*"),
                                             QStringLiteral("/"), QStringLiteral("%"), QStringLiteral("**"),
                                             QStringLiteral("&"), QStringLiteral("|"), QStringLiteral("^")};
        int divisions = 0;
        for (const QString &key : keys.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            CalculatorEngine::Outcome outcome = CalculatorEngine::Done;
            const bool typed = key.at(0).isDigit() || key == QLatin1String(".") || key == QLatin1String(",");
            if (typed && key != QLatin1String("1/x")) {
                for (const QChar c : key)
                    engine.digit(QString(c));
            } else if (key == QLatin1String("=")) {
                outcome = engine.equal();
            } else if (key == QLatin1String("back")) {
                engine.back();
            } else if (key == QLatin1String("clear")) {
                engine.clear();
            } else if (key == QLatin1String("pi")) {
                engine.pi();
            } else if (key.startsWith(QLatin1String("paste:"))) {
                engine.paste(key.mid(6));
            } else if (binaries.contains(key)) {
                engine.binary(key);
            } else {
                outcome = engine.unary(key == QLatin1String("+-") ? QStringLiteral(u"\u00b1") : key);
            }
            divisions += outcome == CalculatorEngine::DivisionByZero;
        }
        return divisions;
    }

private Q_SLOTS:
    void keys_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("divisions");

        QTest::newRow("division by zero reports and gives 0") << "7 / 0 =" << "0" << 1;
        QTest::newRow("1/x of 0 reports and gives 0") << "0 1/x" << "0" << 1;
        QTest::newRow("1/x") << "4 1/x" << "0.25" << 0;
        QTest::newRow("modulo by zero is quiet") << "7 % 0 =" << "0" << 0;
        QTest::newRow("INT_MIN % -1, clamped from beyond") << "3000000000 +- % 1 +- =" << "0" << 0;
        QTest::newRow("modulo of negatives") << "7 +- % 3 =" << "-1" << 0;
        QTest::newRow("equal repeats the last operator") << "2 + 3 = =" << "8" << 0;
        QTest::newRow("one equal") << "2 + 3 =" << "5" << 0;
        QTest::newRow("six significant digits") << "1 / 3 =" << "0.333333" << 0;
        QTest::newRow("power") << "2 ** 10 =" << "1024" << 0;
        QTest::newRow("no operator gives 0") << "5 =" << "0" << 0;
        QTest::newRow("factorial wraps in 32 bits") << "13 !n" << "1932053504" << 0;
        QTest::newRow("factorial wraps to negative") << "17 !n" << "-288522240" << 0;
        QTest::newRow("factorial below 2") << "1 +- !n" << "1" << 0;
        QTest::newRow("factorial of the largest int") << "9999999999 !n" << "0" << 0;
        QTest::newRow("-0.5 rounds to 0") << "0.5 +- | 0 =" << "0" << 0;
        QTest::newRow("-1.5 rounds to -1") << "1.5 +- | 0 =" << "-1" << 0;
        QTest::newRow("2.5 rounds to 3") << "2.5 | 0 =" << "3" << 0;
        QTest::newRow("bit operators") << "12 & 10 = ^ 5 =" << "13" << 0;
        QTest::newRow("integer results are not shortened") << "1234567 | 0 =" << "1234567" << 0;
        QTest::newRow("complement") << "5 ~" << "-6" << 0;
        QTest::newRow("complement of -0.5") << "0.5 +- ~" << "-1" << 0;
        QTest::newRow("sign of 0 stays 0") << "0 +-" << "0" << 0;
        QTest::newRow("back removes a digit") << "12 back" << "1" << 0;
        QTest::newRow("back of the last digit") << "7 back" << "0" << 0;
        QTest::newRow("back after a result clears all") << "2 + 3 = back =" << "0" << 0;
        QTest::newRow("clear drops the operator") << "2 + clear 3 =" << "0" << 0;
        QTest::newRow("point only once") << "1 . 5 . 2" << "1.52" << 0;
        QTest::newRow("comma is the point") << "1 , 5 * 2 =" << "3" << 0;
        QTest::newRow("point first") << "." << "0." << 0;
        QTest::newRow("digit after a result starts afresh") << "2 + 3 = 7" << "7" << 0;
        QTest::newRow("operator after a result uses it") << "2 + 3 = * 2 =" << "10" << 0;
        QTest::newRow("unary after a result feeds the next operator") << "2 + 2 = sqrt + 1 =" << "3" << 0;
        QTest::newRow("unary after a result drops the operator") << "2 + 2 = sqrt =" << "0" << 0;
        QTest::newRow("pi") << "pi * 2 =" << "6.28319" << 0;
        QTest::newRow("cos in radians") << "pi cos" << "-1" << 0;
        QTest::newRow("paste types a character code") << "paste:65" << "A" << 0;
    }

    void keys()
    {
        QFETCH(QString, keys);
        QFETCH(QString, line);
        QFETCH(int, divisions);
        CalculatorEngine engine;
        QCOMPARE(press(engine, keys), divisions);
        QCOMPARE(engine.line(), line);
    }

    void rounding_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("rounded");
        QTest::newRow("-0.5") << -0.5 << 0;
        QTest::newRow("-0.51") << -0.51 << -1;
        QTest::newRow("2.5") << 2.5 << 3;
        QTest::newRow("2.49") << 2.49 << 2;
        QTest::newRow("above int32") << 1e12 << std::numeric_limits<int>::max();
        QTest::newRow("below int32") << -1e12 << std::numeric_limits<int>::min();
        QTest::newRow("infinity") << std::numeric_limits<double>::infinity() << std::numeric_limits<int>::max();
        QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN() << 0;
    }

    void rounding()
    {
        QFETCH(double, value);
        QFETCH(int, rounded);
        QCOMPARE(CalculatorEngine::toInt32(value), rounded);
    }
};

QTEST_GUILESS_MAIN(tst_CalculatorEngine)
#include "tst_calculatorengine.moc"
