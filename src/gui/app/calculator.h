#pragma once

#include "core/app/calculatorengine.h"

#include <QHash>
#include <QWidget>

class QAbstractButton;
class QLineEdit;

/**
 * The calculator: a small tool window for the sums that state code and
 * offsets call for. The arithmetic is CalculatorEngine's; this window gives
 * it buttons and keys, and says "Division by zero." through the user prompt.
 *
 * The operator buttons are told apart by their own text, which is therefore
 * never translated.
 */
class Calculator : public QWidget
{
    Q_OBJECT

public:
    explicit Calculator(QWidget *parent = nullptr);

    /** The line that shows the value. */
    QLineEdit *line() const { return m_line; }

public Q_SLOTS:
    /** A digit or the point was pressed. */
    void num_clicked();
    /** "+", "-", "*", "/", "%", "**", "&", "|" or "^" was pressed. */
    void twoop_clicked();
    /** "±", "1/x", "sqrt", "!n", "sin", "cos", "tan" or "~" was pressed. */
    void unary_clicked();
    void pi_clicked();
    void equal_clicked();
    void back_clicked();
    void clear_clicked();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QAbstractButton *addButton(const QString &text, const char *slot, int row, int column, int columns = 1);
    /** The text of the button that sent the click, as its slot reads it. */
    QString senderText() const;
    /** Shows the line, after the message an operation may have to give. */
    void refresh(CalculatorEngine::Outcome outcome = CalculatorEngine::Done);
    /** Clicks the button whose dispatch text is `text`, as a key asks. */
    void click(const QString &text);
    void retranslate();

    CalculatorEngine m_engine;
    QLineEdit *m_line;
    QHash<QString, QAbstractButton *> m_buttons;
    QAbstractButton *m_back = nullptr;
    QAbstractButton *m_clear = nullptr;
    QAbstractButton *m_equal = nullptr;
};
