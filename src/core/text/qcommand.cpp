#include "qcommand.h"

#include "qtexttokenizer.h"

void QCommand::release()
{
    releaseLinks();
    QTextElementPool<QCommand>::give(this);
}

void QCommand::update(const QList<QTextElementToken> &)
{
}

QString QCommand::name(bool preferComment) const
{
    if (preferComment && nameComment)
        return nameComment->text;
    const QGroupParam *p = param(QStringLiteral("name"));
    if (p && p->subType == QGroupParam::QuotedText)
        return static_cast<const QStringParam *>(p)->value;
    return QString();
}

QString QCommand::commandText() const
{
    for (const QGroupParam *p : params) {
        if (p->key == QLatin1String("command") && p->subType == QGroupParam::FreeValue)
            return commandStepsText(static_cast<const QCommandParam *>(p)->steps);
    }
    return QString();
}

int QCommand::length() const
{
    int weight = 0;
    for (const QGroupParam *p : params) {
        if (p->key != QLatin1String("command") || p->subType != QGroupParam::FreeValue)
            continue;
        for (QCommandStep step : static_cast<const QCommandParam *>(p)->steps)
            weight += CommandStep::modifiers(step) & 8 ? 3 : 1;
        break;
    }
    return weight;
}

QString commandStepsText(const QList<QCommandStep> &steps)
{
    QStringList parts;
    for (QCommandStep step : steps) {
        const quint32 keys = CommandStep::keys(step);
        const quint16 modifiers = CommandStep::modifiers(step);
        QString text;
        if (modifiers & 1)
            text += QLatin1Char('/');
        if (modifiers & 2) {
            text += QLatin1Char('~');
            if (CommandStep::ticks(step) != 0)
                text += QString::number(CommandStep::ticks(step));
        }
        if (modifiers & 4)
            text += QLatin1Char('$');
        if (modifiers & 8)
            text += QLatin1Char('>');
        static const char directions[] = {'U', 'D', 'B', 'F'};
        for (int i = 0; i < 4; ++i) {
            if (keys & (1u << i))
                text += QLatin1Char(directions[i]);
        }
        // Buttons join with "+"; "s" (start) follows without one.
        QStringList buttons;
        static const char names[] = {'a', 'b', 'c', 'x', 'y', 'z'};
        for (int i = 0; i < 6; ++i) {
            if (keys & (16u << i))
                buttons.append(QString(QLatin1Char(names[i])));
        }
        if (!buttons.isEmpty() && keys & 15)
            text += QLatin1Char('+');
        text += buttons.join(QLatin1Char('+'));
        if (keys & 1024)
            text += QLatin1Char('s');
        parts.append(text);
    }
    return parts.join(QLatin1String(", "));
}

bool CmdReg::accepts(int position, const QTextElementToken &token)
{
    switch (position) {
    case 0:
        return token.type == QTextTokenizer::OpenBracket;
    case 1:
        return token.type == QTextTokenizer::Identifier
            && token.text.compare(QLatin1String("command"), Qt::CaseInsensitive) == 0;
    case 2:
        return token.type == QTextTokenizer::CloseBracket;
    }
    return token.type == QTextTokenizer::EndOfLine;
}

QTextElement *CmdReg::create()
{
    return QTextElementPool<QCommand>::take();
}

namespace {
QList<QTextElementReg *> commandRegistries;
}

void registerCommandElements()
{
    if (!commandRegistries.isEmpty())
        return;
    commandRegistries = {new CmdReg,
                         new ParamReg<QStringParam>(QStringLiteral("name"), QGroupParam::QuotedText),
                         new ParamReg<QCommandParam>(QStringLiteral("command"), QGroupParam::FreeValue)};
    for (QTextElementReg *registry : std::as_const(commandRegistries))
        QTextElementReg::add(registry);
}

void releaseCommandElements()
{
    for (QTextElementReg *registry : std::as_const(commandRegistries))
        QTextElementReg::remove(registry);
    commandRegistries.clear();
}
