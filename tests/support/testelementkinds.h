#pragma once

// Element kinds shaped like the lines of an AIR file ("[Begin Action n]",
// frames, Clsn declarations and boxes), so that the text framework can be
// driven over real animation files by tests and benchmarks.

#include "core/text/qelementtexteditor.h"
#include "core/text/qtextelements.h"
#include "core/text/qtexttokenizer.h"

#include <QStringList>

namespace TestKinds {

class TestAction : public QGroupHeader
{
public:
    int elementType() const override { return 18; }
    void release() override
    {
        releaseLinks();
        number = 0;
        QTextElementPool<TestAction>::give(this);
    }
    void update(const QList<QTextElementToken> &tokens) override { number = tokens.at(3).text.toInt(); }
    int number = 0;
};

/** A line kept as its words: frames (32), Clsn declarations (64) and boxes (128). */
class TestLine : public QTextElement
{
public:
    void update(const QList<QTextElementToken> &tokens) override
    {
        words.clear();
        for (const QTextElementToken &token : tokens)
            words.append(token.text);
    }
    QStringList words;
};

template <int Type>
class TestWords : public TestLine
{
public:
    int elementType() const override { return Type; }
    void release() override
    {
        words.clear();
        QTextElementPool<TestWords>::give(this);
    }
};
using TestFrame = TestWords<32>;
using TestClsnDecl = TestWords<64>;
using TestClsn = TestWords<128>;

/** A kind of line: its start rule and a test of the token at each position. */
template <typename Element>
class TestReg : public QTextElementReg
{
public:
    using Accepts = bool (*)(int position, const QTextElementToken &t);
    TestReg(int type, quint32 rule, Accepts accepts)
        : m_type(type)
        , m_rule(rule)
        , m_accepts(accepts)
    {
    }
    int elementType() const override { return m_type; }
    quint32 startRule() const override { return m_rule; }
    bool accepts(int position, const QTextElementToken &t) override { return m_accepts(position, t); }
    QTextElement *create() override { return QTextElementPool<Element>::take(); }

private:
    int m_type;
    quint32 m_rule;
    Accepts m_accepts;
};

inline bool isWord(const QTextElementToken &t, const char *word)
{
    return t.type == QTextTokenizer::Identifier && t.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

/** Registers the four kinds; give the result to unregisterAll() at the end. */
inline QList<QTextElementReg *> registerAll()
{
    using T = QTextTokenizer;
    const QList<QTextElementReg *> registries = {
        new TestReg<TestAction>(18, QTextElementReg::makeRule(3, '['), [](int position, const QTextElementToken &t) {
            static const int expected[] = {T::OpenBracket, T::Identifier, T::Identifier, T::Integer, T::CloseBracket};
            if (position == 1 || position == 2)
                return isWord(t, position == 1 ? "begin" : "action");
            return position < 5 ? t.type == expected[position] : t.type == T::EndOfLine;
        }),
        new TestReg<TestFrame>(32, QTextElementReg::makeRule(2), [](int position, const QTextElementToken &t) {
            return position > 8 || t.type == (position % 2 == 0 ? T::Integer : T::Comma);
        }),
        new TestReg<TestClsnDecl>(64, QTextElementReg::makeRule(6, 'C'), [](int position, const QTextElementToken &t) {
            if (position == 0)
                return isWord(t, "clsn1") || isWord(t, "clsn2") || isWord(t, "clsn1default") || isWord(t, "clsn2default");
            return t.type == (position == 1 ? T::Colon : position == 2 ? T::Integer : T::EndOfLine);
        }),
        new TestReg<TestClsn>(128, QTextElementReg::makeRule(6, 'C'), [](int position, const QTextElementToken &t) {
            static const int expected[] = {T::Identifier, T::OpenBracket, T::Integer, T::CloseBracket, T::Equal, T::Integer,
                                           T::Comma,      T::Integer,     T::Comma,   T::Integer,      T::Comma, T::Integer};
            if (position == 0)
                return t.type == T::Identifier && t.text.startsWith(QLatin1String("clsn"), Qt::CaseInsensitive);
            return position < 12 ? t.type == expected[position] : t.type == T::EndOfLine;
        })};
    for (QTextElementReg *registry : registries)
        QTextElementReg::add(registry);
    return registries;
}

inline void unregisterAll(const QList<QTextElementReg *> &registries)
{
    for (QTextElementReg *registry : registries)
        QTextElementReg::remove(registry);
}

/** Lets a document see these kinds, the name comments and the kinds of a CMD file. */
inline void acceptAll(QElementTextEditor &editor)
{
    for (int type : {18, 32, 64, 128, 514})
        editor.setKindAccepted(true, type, 0);
    editor.setKindAccepted(true, 1, 0);
    editor.setKindAccepted(true, 4, QGroupParam::QuotedText);
    editor.setKindAccepted(true, 4, QGroupParam::FreeValue);
}

} // namespace TestKinds
