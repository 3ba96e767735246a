#include "calculatorengine.h"

#include <QLocale>

#include <cmath>
#include <limits>

namespace {

// M_PI is not standard C++ and MSVC hides it.
constexpr double Pi = 3.14159265358979323846;

bool isPoint(const QString &text)
{
    return text == QLatin1String(".") || text == QLatin1String(",");
}

QString decimal(int32_t value)
{
    return QString::number(value);
}

/** n! in 32 bits, wrapping as the engine's integers do; 1 below 2. */
int32_t wrappedFactorial(int32_t n)
{
    uint32_t product = 1;
    // Unsigned arithmetic wraps without undefined behaviour. Past 33 the
    // product has 32 factors of two and stays 0, so large n end early.
    for (uint32_t i = n < 2 ? 1 : uint32_t(n); i >= 2 && product != 0; --i)
        product *= i;
    return static_cast<int32_t>(product);
}

/** The bit operators and "%" on operands rounded to 32 bits; false for another operator. */
bool integerOperation(const QString &op, int32_t left, int32_t right, int32_t &value)
{
    if (op == QLatin1String("%")) {
        // No message for "% 0": the value is 0. 64 bits keep INT_MIN % -1 defined.
        value = right == 0 ? 0 : int32_t(int64_t(left) % int64_t(right));
    } else if (op == QLatin1String("&")) {
        value = left & right;
    } else if (op == QLatin1String("|")) {
        value = left | right;
    } else if (op == QLatin1String("^")) {
        value = left ^ right;
    } else {
        return false;
    }
    return true;
}

} // namespace

int32_t CalculatorEngine::toInt32(double value)
{
    if (std::isnan(value))
        return 0;
    // Half up, also below zero: -0.5 gives 0 and -1.5 gives -1.
    const double rounded = std::floor(value + 0.5);
    // Clamped before the conversion, which is undefined out of range.
    if (rounded <= double(std::numeric_limits<int32_t>::min()))
        return std::numeric_limits<int32_t>::min();
    if (rounded >= double(std::numeric_limits<int32_t>::max()))
        return std::numeric_limits<int32_t>::max();
    return int32_t(rounded);
}

double CalculatorEngine::toDouble(const QString &text)
{
    QString number = text;
    number.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double value = QLocale::c().toDouble(number, &ok);
    return ok ? value : 0.0;
}

QString CalculatorEngine::format(double value)
{
    // -0 reads as 0 to anyone who didn't ask for a sign.
    return QString::number(value == 0 ? 0.0 : value, 'g', 6);
}

void CalculatorEngine::digit(const QString &text)
{
    const bool point = isPoint(text);
    if (!point && (text.size() != 1 || !text.at(0).isDigit()))
        return;
    if (!m_result.isEmpty())
        clear();
    if (point) {
        if (!m_display.contains(QLatin1Char('.')))
            m_display += QLatin1Char('.');
    } else if (m_display == QLatin1String("0")) {
        m_display = text;
    } else {
        m_display += text;
    }
    m_line = m_display;
}

void CalculatorEngine::pi()
{
    if (!m_result.isEmpty())
        clear();
    m_display = QString::number(Pi, 'g', 15);
    m_line = m_display;
}

void CalculatorEngine::binary(const QString &op)
{
    if (!m_result.isEmpty())
        m_display = m_result;
    m_first = toDouble(m_display);
    m_operator = op;
    m_display = QStringLiteral("0");
    m_result.clear();
    m_line = m_display;
}

CalculatorEngine::Outcome CalculatorEngine::equal()
{
    // With a result showing, the last operator applies again to it with the
    // same right operand: "2 + 3 = =" gives 5, then 8.
    if (!m_result.isEmpty())
        m_first = toDouble(m_result);
    const double second = toDouble(m_display);

    Outcome outcome = Done;
    double value = 0;
    int32_t integer = 0;
    if (integerOperation(m_operator, toInt32(m_first), toInt32(second), integer)) {
        m_result = decimal(integer);
    } else {
        if (m_operator == QLatin1String("+"))
            value = m_first + second;
        else if (m_operator == QLatin1String("-"))
            value = m_first - second;
        else if (m_operator == QLatin1String("*"))
            value = m_first * second;
        else if (m_operator == QLatin1String("**"))
            value = std::pow(m_first, second);
        else if (m_operator == QLatin1String("/")) {
            if (second == 0)
                outcome = DivisionByZero;
            else
                value = m_first / second;
        }
        m_result = format(value);
    }
    m_line = m_result;
    return outcome;
}

CalculatorEngine::Outcome CalculatorEngine::unary(const QString &op)
{
    const bool resultShowing = !m_result.isEmpty();
    const double value = toDouble(m_line);
    Outcome outcome = Done;
    QString text;
    if (op == QStringLiteral(u"\u00b1")) {
        text = format(-value);
    } else if (op == QLatin1String("1/x")) {
        if (value == 0)
            outcome = DivisionByZero;
        text = format(value == 0 ? 0.0 : 1.0 / value);
    } else if (op == QLatin1String("sqrt")) {
        text = format(std::sqrt(value));
    } else if (op == QLatin1String("sin")) {
        text = format(std::sin(value));
    } else if (op == QLatin1String("cos")) {
        text = format(std::cos(value));
    } else if (op == QLatin1String("tan")) {
        text = format(std::tan(value));
    } else if (op == QLatin1String("!n")) {
        text = decimal(wrappedFactorial(toInt32(value)));
    } else if (op == QLatin1String("~")) {
        text = decimal(~toInt32(value));
    } else {
        return Done;
    }

    m_display = text;
    if (resultShowing) {
        // The value shown becomes the new result: the next operator works on
        // it, and the next digit starts afresh.
        m_operator.clear();
        m_result = m_display;
    } else {
        m_result.clear();
    }
    m_line = m_display;
    return outcome;
}

void CalculatorEngine::back()
{
    if (!m_result.isEmpty()) {
        clear();
        return;
    }
    m_display.chop(1);
    if (m_display.isEmpty() || m_display == QLatin1String("-"))
        m_display = QStringLiteral("0");
    m_line = m_display;
}

void CalculatorEngine::clear()
{
    m_operator.clear();
    m_display = QStringLiteral("0");
    m_result.clear();
    m_line = m_display;
}

void CalculatorEngine::paste(const QString &text)
{
    clear();
    // An old habit of the window, kept: the pasted number is a character code.
    const int code = text.trimmed().toInt(nullptr, 10);
    m_display = QString(QChar(char16_t(code)));
    m_line = m_display;
}
