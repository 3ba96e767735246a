#include "core/base/quserprompt.h"
#include "gui/app/calculator.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QToolButton>
#include <QtTest>

class tst_Calculator : public QObject
{
    Q_OBJECT

private:
    /** Clicks the buttons whose labels are `labels`, separated by blanks. */
    static void clickButtons(Calculator &calculator, const QString &labels)
    {
        const QList<QToolButton *> buttons = calculator.findChildren<QToolButton *>();
        for (const QString &label : labels.split(QLatin1Char(' '))) {
            auto found = std::find_if(buttons.begin(), buttons.end(),
                                      [&](QToolButton *button) { return button->text() == label; });
            QVERIFY2(found != buttons.end(), qPrintable(label));
            QTest::mouseClick(*found, Qt::LeftButton);
        }
    }

private Q_SLOTS:
    void typedSumAndRepeatedEnter()
    {
        Calculator calculator;
        QVERIFY(calculator.isWindow());
        QCOMPARE(calculator.windowTitle(), QStringLiteral("Calculator"));
        QTest::keyClicks(&calculator, QStringLiteral("2+3"));
        QCOMPARE(calculator.line()->text(), QStringLiteral("3"));
        QTest::keyClick(&calculator, Qt::Key_Return);
        QCOMPARE(calculator.line()->text(), QStringLiteral("5"));
        // Enter on the keypad repeats the last operator.
        QTest::keyClick(&calculator, Qt::Key_Enter, Qt::KeypadModifier);
        QCOMPARE(calculator.line()->text(), QStringLiteral("8"));
    }

    void buttonsDispatchOnTheirText_data()
    {
        QTest::addColumn<QString>("labels");
        QTest::addColumn<QString>("line");
        QTest::newRow("power") << "2 ** 1 0 =" << "1024";
        // "&" is labelled "&&", or it would be a mnemonic.
        QTest::newRow("and") << "6 && 3 =" << "2";
        QTest::newRow("factorial") << "1 3 !n" << "1932053504";
        QTest::newRow("sign and square root") << "9 \u00b1 \u00b1 sqrt" << "3";
        QTest::newRow("back, clear, equal") << "1 2 Back + 4 C 5 =" << "0";
    }

    void buttonsDispatchOnTheirText()
    {
        QFETCH(QString, labels);
        QFETCH(QString, line);
        Calculator calculator;
        clickButtons(calculator, labels);
        QCOMPARE(calculator.line()->text(), line);
    }

    void keys()
    {
        Calculator calculator;
        // The multiplication sign, the comma as the point, Backspace.
        QTest::keyClicks(&calculator, QStringLiteral("1,55"));
        QTest::keyClick(&calculator, Qt::Key_Backspace);
        QTest::keyClick(&calculator, Qt::Key_multiply);
        QTest::keyClick(&calculator, Qt::Key_4, Qt::KeypadModifier);
        QTest::keyClick(&calculator, Qt::Key_Return);
        QCOMPARE(calculator.line()->text(), QStringLiteral("6"));
        QTest::keyClick(&calculator, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("6"));
        // The division sign; Delete clears the pending operator.
        QTest::keyClicks(&calculator, QStringLiteral("8"));
        QTest::keyClick(&calculator, Qt::Key_division);
        QTest::keyClick(&calculator, Qt::Key_Delete);
        QTest::keyClicks(&calculator, QStringLiteral("2\r"));
        QCOMPARE(calculator.line()->text(), QStringLiteral("0"));
        // Another modifier is no calculator key.
        QTest::keyClick(&calculator, Qt::Key_7, Qt::AltModifier);
        QCOMPARE(calculator.line()->text(), QStringLiteral("0"));
        // A pasted number types the character of that code.
        QGuiApplication::clipboard()->setText(QStringLiteral("65"));
        QTest::keyClick(&calculator, Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(calculator.line()->text(), QStringLiteral("A"));
    }

    void divisionByZeroIsAnError()
    {
        QRecordingUserPrompt prompt;
        Calculator calculator;
        QTest::keyClicks(&calculator, QStringLiteral("7/0\r"));
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls[0].kind, QRecordingUserPrompt::Critical);
        QCOMPARE(prompt.calls[0].title, QStringLiteral("Error"));
        QCOMPARE(prompt.calls[0].text, QStringLiteral("Division by zero."));
        QCOMPARE(calculator.line()->text(), QStringLiteral("0"));
    }
};

QTEST_MAIN(tst_Calculator)
#include "tst_calculator.moc"
