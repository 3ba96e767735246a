#include "quserprompt.h"

#include <cstdio>

namespace {
QConsoleUserPrompt consolePrompt;
}

QUserPrompt *userPrompt = &consolePrompt;

void QConsoleUserPrompt::print(const QString &title, const QString &text)
{
    const QByteArray line = (title + QLatin1String(": ") + text + QLatin1Char('\n')).toLocal8Bit();
    std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
    std::fflush(stderr);
}

void QConsoleUserPrompt::critical(const QString &title, const QString &text)
{
    print(title, text);
}

void QConsoleUserPrompt::warning(const QString &title, const QString &text)
{
    print(title, text);
}

void QConsoleUserPrompt::information(const QString &title, const QString &text)
{
    print(title, text);
}

bool QConsoleUserPrompt::question(const QString &title, const QString &text, bool defaultYes)
{
    print(title, text + (defaultYes ? QLatin1String(" [Yes]") : QLatin1String(" [No]")));
    return defaultYes;
}

int QConsoleUserPrompt::choose(const QString &title, const QString &text, const QStringList &buttons,
                               int defaultIndex)
{
    print(title, text + QLatin1String(" [") + buttons.value(defaultIndex) + QLatin1Char(']'));
    return defaultIndex;
}

QRecordingUserPrompt::QRecordingUserPrompt()
    : m_previous(userPrompt)
{
    userPrompt = this;
}

QRecordingUserPrompt::~QRecordingUserPrompt()
{
    userPrompt = m_previous;
}

void QRecordingUserPrompt::critical(const QString &title, const QString &text)
{
    calls.append({Critical, title, text, false});
}

void QRecordingUserPrompt::warning(const QString &title, const QString &text)
{
    calls.append({Warning, title, text, false});
}

void QRecordingUserPrompt::information(const QString &title, const QString &text)
{
    calls.append({Information, title, text, false});
}

bool QRecordingUserPrompt::question(const QString &title, const QString &text, bool defaultYes)
{
    calls.append({Question, title, text, defaultYes});
    return m_answers.isEmpty() ? defaultYes : m_answers.takeFirst();
}

bool QRecordingUserPrompt::warningQuestion(const QString &title, const QString &text, bool defaultYes)
{
    calls.append({WarningQuestion, title, text, defaultYes});
    return m_answers.isEmpty() ? defaultYes : m_answers.takeFirst();
}

void QRecordingUserPrompt::answer(std::initializer_list<bool> answers)
{
    for (bool a : answers)
        m_answers.append(a);
}

int QRecordingUserPrompt::choose(const QString &title, const QString &text, const QStringList &buttons,
                                 int defaultIndex)
{
    calls.append({Choice, title, text, false, buttons});
    return m_choices.isEmpty() ? defaultIndex : m_choices.takeFirst();
}

void QRecordingUserPrompt::answerChoices(std::initializer_list<int> choices)
{
    for (int c : choices)
        m_choices.append(c);
}
