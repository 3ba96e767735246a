#include "qtexttokenizer.h"

namespace {

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\r');
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool isLetter(QChar c)
{
    return c.isLetter();
}

/** The longest run of one repeated character, counted after its first character. */
int longestRun(const QChar *text, int length)
{
    int best = 0;
    int run = 0;
    for (int i = 1; i < length; ++i) {
        run = text[i] == text[i - 1] ? run + 1 : 0;
        best = qMax(best, run);
    }
    return best;
}

int singleCharacterToken(QChar c)
{
    switch (c.unicode()) {
    case '+': return QTextTokenizer::Plus;
    case '-': return QTextTokenizer::Minus;
    case '/': return QTextTokenizer::Slash;
    case '%': return QTextTokenizer::Percent;
    case '=': return QTextTokenizer::Equal;
    case ',': return QTextTokenizer::Comma;
    case '(': return QTextTokenizer::OpenParen;
    case ')': return QTextTokenizer::CloseParen;
    case '{': return QTextTokenizer::OpenBrace;
    case '}': return QTextTokenizer::CloseBrace;
    case '[': return QTextTokenizer::OpenBracket;
    case ']': return QTextTokenizer::CloseBracket;
    case ':': return QTextTokenizer::Colon;
    case '~': return QTextTokenizer::Tilde;
    case '$': return QTextTokenizer::Dollar;
    }
    return QTextTokenizer::Other;
}

} // namespace

QTextTokenizer::QTextTokenizer(const QString &text)
    : m_source(text)
    , m_pos(m_source.constData())
    , m_end(m_source.constData() + m_source.size())
{
}

void QTextTokenizer::appendText(QChar c)
{
    if (m_textLength < MaxText)
        m_text[m_textLength++] = c;
}

void QTextTokenizer::appendComment(QChar c)
{
    if (m_commentLength < MaxText)
        m_comment[m_commentLength++] = c;
}

int QTextTokenizer::toInt(bool *ok) const
{
    return QStringView(m_text, m_textLength).toInt(ok, 10);
}

double QTextTokenizer::toFloat(bool *ok) const
{
    return QStringView(m_text, m_textLength).toDouble(ok);
}

int QTextTokenizer::next()
{
    m_textLength = 0;
    m_commentLength = 0;
    while (!atEnd()) {
        const QChar c = *m_pos;
        if (isBlank(c)) {
            ++m_pos;
            continue;
        }
        if (c == QLatin1Char(';')) {
            ++m_pos;
            readComment(false);
            if (atEnd())
                return EndOfText;
            // The comment's line feed comes next: the line ends here.
            continue;
        }
        if (c == QLatin1Char('\n')) {
            ++m_pos;
            ++m_line;
            if (m_commentLength > 0)
                takeCommentAsBlock();
            return readLineEnds();
        }
        if (isDigit(c))
            return readNumber(false);
        if (isLetter(c))
            return readIdentifier();
        ++m_pos;
        appendText(c);
        switch (c.unicode()) {
        case '-':
            if (isDigit(peek()) || peek() == QLatin1Char('.')) {
                m_textLength = 0;
                return readNumber(true);
            }
            return Minus;
        case '.':
            m_textLength = 0;
            --m_pos;
            return readNumber(false);
        case '"':
            m_textLength = 0;
            return readString();
        case '<':
            if (peek() == QLatin1Char('=')) {
                appendText(*m_pos++);
                return LessEqual;
            }
            return Less;
        case '>':
            if (peek() == QLatin1Char('=')) {
                appendText(*m_pos++);
                return GreaterEqual;
            }
            return Greater;
        case '!':
            if (peek() == QLatin1Char('=')) {
                appendText(*m_pos++);
                return NotEqual;
            }
            return Not;
        case '*':
        case '&':
        case '|':
        case '^':
            if (peek() == c) {
                appendText(*m_pos++);
                return c == QLatin1Char('*') ? StarStar : c == QLatin1Char('&') ? AmpAmp
                     : c == QLatin1Char('|') ? BarBar : CaretCaret;
            }
            return c == QLatin1Char('*') ? Star : c == QLatin1Char('&') ? Amp
                 : c == QLatin1Char('|') ? Bar : Caret;
        default:
            return singleCharacterToken(c);
        }
    }
    return EndOfText;
}

int QTextTokenizer::readNumber(bool negative)
{
    if (negative)
        appendText(QLatin1Char('-'));
    bool isFloat = false;
    if (peek() == QLatin1Char('.')) {
        // ".5" and "-.5" read as 0.5 and -0.5.
        appendText(QLatin1Char('0'));
        appendText(QLatin1Char('.'));
        ++m_pos;
        isFloat = true;
    }
    while (!atEnd()) {
        const QChar c = *m_pos;
        if (isDigit(c)) {
            appendText(c);
        } else if (c == QLatin1Char('.') && !isFloat) {
            appendText(c);
            isFloat = true;
        } else {
            break;
        }
        ++m_pos;
    }
    return isFloat ? Float : Integer;
}

int QTextTokenizer::readIdentifier()
{
    while (!atEnd()) {
        const QChar c = *m_pos;
        if (!isLetter(c) && !isDigit(c) && c != QLatin1Char('.') && c != QLatin1Char('_'))
            break;
        appendText(c);
        ++m_pos;
    }
    return Identifier;
}

int QTextTokenizer::readString()
{
    // No escapes: a string ends at the next quote, even lines further down.
    while (!atEnd()) {
        const QChar c = *m_pos++;
        if (c == QLatin1Char('"'))
            return String;
        appendText(c);
    }
    return EndOfText;
}

void QTextTokenizer::readComment(bool atLineStart)
{
    if (!atLineStart)
        m_commentBlock.clear();
    while (!atEnd() && *m_pos != QLatin1Char('\n'))
        appendComment(*m_pos++);
}

void QTextTokenizer::takeCommentAsBlock()
{
    // The raw comment keeps its line feed, as the text had it.
    appendComment(QLatin1Char('\n'));
    if (m_commentBlock.isEmpty() && longestRun(m_comment, m_commentLength) < 5)
        m_commentBlock = QString(m_comment, m_commentLength);
}

int QTextTokenizer::readLineEnds()
{
    while (!atEnd()) {
        const QChar c = *m_pos;
        if (isBlank(c)) {
            ++m_pos;
        } else if (c == QLatin1Char('\n')) {
            ++m_pos;
            ++m_line;
            m_commentBlock.clear();
        } else if (c == QLatin1Char(';')) {
            ++m_pos;
            m_commentLength = 0;
            readComment(true);
            if (!atEnd()) {
                ++m_pos;
                ++m_line;
                takeCommentAsBlock();
            }
        } else {
            break;
        }
    }
    return EndOfLine;
}

int QTextTokenizer::skipLine()
{
    m_commentBlock.clear();
    while (!atEnd() && *m_pos != QLatin1Char('\n'))
        ++m_pos;
    if (!atEnd()) {
        ++m_pos;
        ++m_line;
    }
    return EndOfLine;
}

int QTextTokenizer::nextLine(int token)
{
    if (token == EndOfText)
        return token;
    if (token != EndOfLine)
        skipLine();
    do {
        token = next();
    } while (token == EndOfLine);
    return token;
}

int QTextTokenizer::readUntil(QString &out, QChar delimiter)
{
    m_commentBlock.clear();
    out.clear();
    bool dropping = false;
    while (!atEnd() && *m_pos != delimiter) {
        const QChar c = *m_pos++;
        if (c == QLatin1Char('\n'))
            ++m_line;
        if (c == QLatin1Char(';'))
            dropping = true;
        if (!dropping)
            out.append(c);
    }
    return next();
}
