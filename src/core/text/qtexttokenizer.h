#pragma once

#include <QString>

/**
 * The tokenizer of all engine text (CNS, CMD, AIR, DEF...).
 *
 * It works over the characters of a QString, of which it keeps a shared
 * copy: no characters are copied. Token types are numbers that registries
 * test against, so they are part of the design:
 *
 *   0 end of text   1 end of line   2 any other character   3 identifier
 *   4 integer       5 float         6 string                7 +   8 -
 *   9 /   10 %   11 *   12 **   13 &   14 &&   15 |   16 ||   17 ^   18 ^^
 *   19 =  20 <   21 <=  22 >    23 >=  24 !    25 !=  26 ,   27 (   28 )
 *   29 {  30 }   31 [   32 ]    33 :   34 ~    35 $
 *
 * A `;` starts a comment up to the line's end. Any run of line ends, blank
 * lines and comment lines gives one single token 1. A comment on lines of
 * its own right above a token is kept as that token's comment block, unless
 * it is a ruler such as ";---------".
 */
class QTextTokenizer
{
public:
    enum Token {
        EndOfText = 0,
        EndOfLine = 1,
        Other = 2,
        Identifier = 3,
        Integer = 4,
        Float = 5,
        String = 6,
        Plus = 7,
        Minus = 8,
        Slash = 9,
        Percent = 10,
        Star = 11,
        StarStar = 12,
        Amp = 13,
        AmpAmp = 14,
        Bar = 15,
        BarBar = 16,
        Caret = 17,
        CaretCaret = 18,
        Equal = 19,
        Less = 20,
        LessEqual = 21,
        Greater = 22,
        GreaterEqual = 23,
        Not = 24,
        NotEqual = 25,
        Comma = 26,
        OpenParen = 27,
        CloseParen = 28,
        OpenBrace = 29,
        CloseBrace = 30,
        OpenBracket = 31,
        CloseBracket = 32,
        Colon = 33,
        Tilde = 34,
        Dollar = 35
    };

    /** Token text and comments hold at most this many characters; more are read and dropped. */
    static constexpr int MaxText = 512;

    /** Starts at the beginning of `text`, line 1. */
    explicit QTextTokenizer(const QString &text);

    /** Reads the next token and returns its type. */
    int next();

    /** The current token's characters; a string without its quotes, "-.5" as "-0.5". */
    QString text() const { return QString(m_text, m_textLength); }
    /** The first character of the current token's text, or 0 when it has none. */
    QChar firstChar() const { return m_textLength > 0 ? m_text[0] : QChar(); }
    int toInt(bool *ok = nullptr) const;
    double toFloat(bool *ok = nullptr) const;

    /** Whether the last next() passed a `;` comment of at least one character. */
    bool hasComment() const { return m_commentLength > 0; }
    /** That comment's raw characters, without the `;`. */
    QString comment() const { return QString(m_comment, m_commentLength); }
    /** The comment lines right above the current token, or empty. */
    QString commentBlock() const { return m_commentBlock; }

    /** Clears the comment block, consumes through the next line feed, counts the line; returns 1. */
    int skipLine();
    /**
     * Leaves the line of `token`, the current token, unless the line already
     * ended there, and returns the first token of the next line that has
     * one: blank and comment lines are passed.
     */
    int nextLine(int token);
    /**
     * Clears the comment block and collects raw characters into `out` until
     * `delimiter` or `;` (the rest up to `delimiter` is then dropped). The
     * delimiter stays unread; next() runs and its result is returned.
     */
    int readUntil(QString &out, QChar delimiter);

    /** The current line, from 1. */
    int line() const { return m_line; }

private:
    bool atEnd() const { return m_pos >= m_end; }
    QChar peek() const { return atEnd() ? QChar() : *m_pos; }
    void appendText(QChar c);
    void appendComment(QChar c);
    int readNumber(bool negative);
    int readIdentifier();
    int readString();
    void readComment(bool atLineStart);
    int readLineEnds();
    void takeCommentAsBlock();

    QString m_source;
    const QChar *m_pos;
    const QChar *m_end;
    int m_line = 1;
    QChar m_text[MaxText];
    int m_textLength = 0;
    QChar m_comment[MaxText];
    int m_commentLength = 0;
    QString m_commentBlock;
};
