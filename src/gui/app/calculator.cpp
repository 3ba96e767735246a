#include "calculator.h"

#include "qtranslationunit.h"

#include "core/base/quserprompt.h"

#include <QClipboard>
#include <QEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>

namespace {

constexpr int TitleId = 23;
constexpr int Columns = 6;

/** The operator a button stands for: a lone "&" is written "&&" on it, or it would be a mnemonic. */
QString dispatchText(const QString &label)
{
    QString text = label;
    return text.replace(QLatin1String("&&"), QLatin1String("&"));
}

/** The button text a key types; empty for a key that isn't one. */
QString keyText(int key)
{
    if (key >= Qt::Key_0 && key <= Qt::Key_9)
        return QString(QChar(u'0' + (key - Qt::Key_0)));
    switch (key) {
    case Qt::Key_Comma:
    case Qt::Key_Period:
        return QStringLiteral(".");
    case Qt::Key_Asterisk:
    case Qt::Key_multiply:
        return QStringLiteral("*");
    case Qt::Key_Plus:
        return QStringLiteral("+");
    case Qt::Key_Minus:
        return QStringLiteral("-");
    case Qt::Key_Slash:
    case Qt::Key_division:
        return QStringLiteral("/");
    default:
        return QString();
    }
}

} // namespace

Calculator::Calculator(QWidget *parent)
    : QWidget(parent, Qt::Tool)
    , m_line(new QLineEdit(this))
{
    setObjectName(QStringLiteral("calculator"));
    // Keys go to the window, not to the line or a button that took focus.
    setFocusPolicy(Qt::StrongFocus);

    m_line->setObjectName(QStringLiteral("line"));
    m_line->setReadOnly(true);
    m_line->setFocusPolicy(Qt::NoFocus);
    m_line->setAlignment(Qt::AlignRight);
    QFont big = m_line->font();
    if (big.pointSizeF() > 0)
        big.setPointSizeF(big.pointSizeF() * 1.4);
    m_line->setFont(big);

    auto *grid = new QGridLayout(this);
    grid->addWidget(m_line, 0, 0, 1, Columns);

    // The texts of the operator buttons are what the slots dispatch on.
    const char16_t *const rows[][Columns] = {
        {u"sin", u"cos", u"tan", u"sqrt", u"1/x", u"!n"},
        {u"7", u"8", u"9", u"/", u"**", u"~"},
        {u"4", u"5", u"6", u"*", u"%", u"&&"},
        {u"1", u"2", u"3", u"-", u"^", u"|"},
        {u"0", u".", u"\u00b1", u"+", nullptr, nullptr},
    };
    const QStringList unaries = {QStringLiteral(u"\u00b1"), QStringLiteral("1/x"), QStringLiteral("sqrt"),
                                 QStringLiteral("!n"), QStringLiteral("sin"), QStringLiteral("cos"),
                                 QStringLiteral("tan"), QStringLiteral("~")};
    for (int row = 0; row < int(std::size(rows)); ++row) {
        for (int column = 0; column < Columns; ++column) {
            if (!rows[row][column])
                continue;
            const QString text = QString::fromUtf16(rows[row][column]);
            const QString op = dispatchText(text);
            const bool typed = op.size() == 1 && (op.at(0).isDigit() || op == QLatin1String("."));
            const char *slot = typed ? SLOT(num_clicked())
                : unaries.contains(op) ? SLOT(unary_clicked())
                                       : SLOT(twoop_clicked());
            addButton(text, slot, row + 1, column);
        }
    }
    addButton(QStringLiteral(u"\u03c0"), SLOT(pi_clicked()), 5, 4)->setObjectName(QStringLiteral("pi"));
    m_back = addButton(QString(), SLOT(back_clicked()), 5, 5);
    m_clear = addButton(QString(), SLOT(clear_clicked()), 6, 0, 2);
    m_equal = addButton(QStringLiteral("="), SLOT(equal_clicked()), 6, 2, Columns - 2);
    m_back->setObjectName(QStringLiteral("back"));
    m_clear->setObjectName(QStringLiteral("clear"));
    m_equal->setObjectName(QStringLiteral("equal"));

    retranslate();
    refresh();
}

QAbstractButton *Calculator::addButton(const QString &text, const char *slot, int row, int column, int columns)
{
    // Tool buttons size to their text; push buttons would insist on a
    // minimum width in some styles and make the window wide for nothing.
    auto *button = new QToolButton(this);
    button->setText(text);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    button->setFocusPolicy(Qt::NoFocus);
    connect(button, SIGNAL(clicked()), this, slot);
    static_cast<QGridLayout *>(layout())->addWidget(button, row, column, 1, columns);
    if (!text.isEmpty())
        m_buttons.insert(dispatchText(text), button);
    return button;
}

QString Calculator::senderText() const
{
    const auto *button = qobject_cast<const QAbstractButton *>(sender());
    return button ? dispatchText(button->text()) : QString();
}

void Calculator::num_clicked()
{
    m_engine.digit(senderText());
    refresh();
}

void Calculator::twoop_clicked()
{
    m_engine.binary(senderText());
    refresh();
}

void Calculator::unary_clicked()
{
    refresh(m_engine.unary(senderText()));
}

void Calculator::pi_clicked()
{
    m_engine.pi();
    refresh();
}

void Calculator::equal_clicked()
{
    refresh(m_engine.equal());
}

void Calculator::back_clicked()
{
    m_engine.back();
    refresh();
}

void Calculator::clear_clicked()
{
    m_engine.clear();
    refresh();
}

void Calculator::refresh(CalculatorEngine::Outcome outcome)
{
    if (outcome == CalculatorEngine::DivisionByZero)
        userPrompt->critical(tr("Error"), tr("Division by zero."));
    m_line->setText(m_engine.line());
}

void Calculator::click(const QString &text)
{
    if (QAbstractButton *button = m_buttons.value(text))
        button->click();
}

void Calculator::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy)) {
        QGuiApplication::clipboard()->setText(m_line->text());
        return;
    }
    if (event->matches(QKeySequence::Paste)) {
        m_engine.paste(QGuiApplication::clipboard()->text());
        refresh();
        return;
    }
    // Shift is allowed too: on most keyboards "+" and "*" are shifted keys.
    if (event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier)) {
        QWidget::keyPressEvent(event);
        return;
    }
    const int key = event->key();
    if (key == Qt::Key_Backspace)
        m_back->click();
    else if (key == Qt::Key_Enter || key == Qt::Key_Return || key == Qt::Key_Equal)
        m_equal->click();
    else if (key == Qt::Key_Delete)
        m_clear->click();
    else if (const QString text = keyText(key); !text.isEmpty())
        click(text);
    else
        QWidget::keyPressEvent(event);
}

void Calculator::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void Calculator::retranslate()
{
    setWindowTitle(QTranslationUnit().title(TitleId));
    m_back->setText(tr("Back"));
    m_clear->setText(tr("C"));
    m_back->setToolTip(tr("Remove the last digit (Backspace)"));
    m_clear->setToolTip(tr("Clear all (Delete)"));
    m_equal->setToolTip(tr("Result (Enter)"));
}
