#pragma once

#include <QString>

#include <cstdint>

/**
 * The arithmetic of the calculator window, without the window: what is
 * typed, the pending operator and its left operand, and the last result.
 *
 * Values are doubles; the bit operators, "%", "!n" and "~" work on 32-bit
 * integers rounded half up, as the engine's expressions do. Every number is
 * read and written in the C locale, and both "," and "." type the point.
 *
 * Nothing here talks to the user: an operation that divides by zero says so
 * through its return value, and the window shows the message.
 */
class CalculatorEngine
{
public:
    enum Outcome {
        Done,
        /** "/" or "1/x" met a zero: the value became 0. */
        DivisionByZero,
    };

    /** Types one digit, "." or ",". Other text does nothing. */
    void digit(const QString &text);
    /** Replaces what is typed with pi. */
    void pi();
    /** Starts the operator `op` ("+", "-", "*", "/", "%", "**", "&", "|", "^") on what is shown. */
    void binary(const QString &op);
    /**
     * Applies the pending operator. Repeated, it applies the same operator
     * with the same right operand to the last result. An empty or unknown
     * operator gives 0.
     */
    Outcome equal();
    /** Applies "±", "1/x", "sqrt", "!n", "sin", "cos", "tan" or "~" to what is shown. */
    Outcome unary(const QString &op);
    /** Removes the last character typed; after a result, clears all. */
    void back();
    /** Back to the start: no operator, "0" typed, no result. */
    void clear();
    /**
     * Clears all, then types the character whose code is `text` read as a
     * decimal integer: pasting "65" types "A". Text that is no number types
     * the character of code 0.
     */
    void paste(const QString &text);

    /** What the line shows: the last result, or what is being typed. */
    const QString &line() const { return m_line; }

    /**
     * `value` rounded half up to a 32-bit integer: -0.5 gives 0, 2.5 gives
     * 3. Values beyond the range give its ends, and NaN gives 0.
     */
    static int32_t toInt32(double value);

private:
    /** `text` as a number in the C locale, "," taken as the point; 0 when it is none. */
    static double toDouble(const QString &text);
    /** How results are shown: format 'g', 6 significant digits. */
    static QString format(double value);

    /** The text of the pending operator's button, or empty. */
    QString m_operator;
    /** The last result; while there is one, the next digit starts afresh. */
    QString m_result;
    /** What is being typed. */
    QString m_display = QStringLiteral("0");
    QString m_line = QStringLiteral("0");
    /** The left operand of the pending operator. */
    double m_first = 0;
};
