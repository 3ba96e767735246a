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

class TestFrame : public QTextElement
{
public:
    int elementType() const override { return 32; }
    void release() override
    {
        values.clear();
        QTextElementPool<TestFrame>::give(this);
    }
    void update(const QList<QTextElementToken> &tokens) override
    {
        values.clear();
        for (const QTextElementToken &token : tokens)
            values.append(token.text);
    }
    QStringList values;
};

/** A line kept as its words: the Clsn declarations (64) and boxes (128). */
template <int Type>
class TestWords : public QTextElement
{
public:
    int elementType() const override { return Type; }
    void release() override
    {
        words.clear();
        QTextElementPool<TestWords>::give(this);
    }
    void update(const QList<QTextElementToken> &tokens) override
    {
        words.clear();
        for (const QTextElementToken &token : tokens)
            words.append(token.text);
    }
    QStringList words;
};
using TestClsnDecl = TestWords<64>;
using TestClsn = TestWords<128>;

class TestActionReg : public QTextElementReg
{
public:
    int elementType() const override { return 18; }
    quint32 startRule() const override { return makeRule(3, '['); }
    bool accepts(int position, const QTextElementToken &t) override
    {
        switch (position) {
        case 0: return t.type == QTextTokenizer::OpenBracket;
        case 1: return t.type == QTextTokenizer::Identifier && t.text.compare(QLatin1String("begin"), Qt::CaseInsensitive) == 0;
        case 2: return t.type == QTextTokenizer::Identifier && t.text.compare(QLatin1String("action"), Qt::CaseInsensitive) == 0;
        case 3: return t.type == QTextTokenizer::Integer;
        case 4: return t.type == QTextTokenizer::CloseBracket;
        }
        return t.type == QTextTokenizer::EndOfLine;
    }
    QTextElement *create() override { return QTextElementPool<TestAction>::take(); }
};

class TestFrameReg : public QTextElementReg
{
public:
    int elementType() const override { return 32; }
    quint32 startRule() const override { return makeRule(2); }
    bool accepts(int position, const QTextElementToken &t) override
    {
        if (position > 8)
            return true;
        return t.type == (position % 2 == 0 ? QTextTokenizer::Integer : QTextTokenizer::Comma);
    }
    QTextElement *create() override { return QTextElementPool<TestFrame>::take(); }
};

class TestClsnDeclReg : public QTextElementReg
{
public:
    int elementType() const override { return 64; }
    quint32 startRule() const override { return makeRule(6, 'C'); }
    bool accepts(int position, const QTextElementToken &t) override
    {
        switch (position) {
        case 0:
            return t.type == QTextTokenizer::Identifier
                && QStringList({QStringLiteral("clsn1"), QStringLiteral("clsn2"), QStringLiteral("clsn1default"),
                                QStringLiteral("clsn2default")}).contains(t.text.toLower());
        case 1: return t.type == QTextTokenizer::Colon;
        case 2: return t.type == QTextTokenizer::Integer;
        }
        return t.type == QTextTokenizer::EndOfLine;
    }
    QTextElement *create() override { return QTextElementPool<TestClsnDecl>::take(); }
};

class TestClsnReg : public QTextElementReg
{
public:
    int elementType() const override { return 128; }
    quint32 startRule() const override { return makeRule(6, 'C'); }
    bool accepts(int position, const QTextElementToken &t) override
    {
        static const int expected[] = {QTextTokenizer::Identifier, QTextTokenizer::OpenBracket, QTextTokenizer::Integer,
                                       QTextTokenizer::CloseBracket, QTextTokenizer::Equal, QTextTokenizer::Integer,
                                       QTextTokenizer::Comma, QTextTokenizer::Integer, QTextTokenizer::Comma,
                                       QTextTokenizer::Integer, QTextTokenizer::Comma, QTextTokenizer::Integer};
        if (position == 0)
            return t.type == QTextTokenizer::Identifier && t.text.startsWith(QLatin1String("clsn"), Qt::CaseInsensitive);
        return position < 12 ? t.type == expected[position] : t.type == QTextTokenizer::EndOfLine;
    }
    QTextElement *create() override { return QTextElementPool<TestClsn>::take(); }
};

/** Registers the four kinds; give the result to unregisterAll() at the end. */
inline QList<QTextElementReg *> registerAll()
{
    const QList<QTextElementReg *> registries = {new TestActionReg, new TestFrameReg, new TestClsnDeclReg,
                                                 new TestClsnReg};
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
