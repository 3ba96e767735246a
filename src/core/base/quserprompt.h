#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/**
 * The one way the core talks to a person.
 *
 * Models report what the user must know (a refused save, a discard question)
 * through the global pointer `userPrompt` instead of opening message boxes,
 * so the same model runs in the window, in kestrada-cli and in tests. The
 * program installs one implementation at start; readers never own it.
 */
class QUserPrompt
{
public:
    virtual ~QUserPrompt() = default;

    virtual void critical(const QString &title, const QString &text) = 0;
    virtual void warning(const QString &title, const QString &text) = 0;
    virtual void information(const QString &title, const QString &text) = 0;
    /** A Yes/No question. Returns true for Yes. `defaultYes` picks the default button. */
    virtual bool question(const QString &title, const QString &text, bool defaultYes = false) = 0;
    /**
     * A Yes/No question that warns: the same as question(), shown with a
     * warning's icon. Returns true for Yes.
     */
    virtual bool warningQuestion(const QString &title, const QString &text, bool defaultYes = false)
    {
        return question(title, text, defaultYes);
    }
    /**
     * A question with more answers than Yes and No: one button per entry of
     * `buttons`, in that order. Returns the index of the button chosen, or
     * `defaultIndex` when the question is dismissed without a choice.
     */
    virtual int choose(const QString &title, const QString &text, const QStringList &buttons,
                       int defaultIndex) = 0;
};

/**
 * The installed prompt. Never null: until something else is installed it
 * points at a console prompt, so a model used before start-up still has
 * somewhere to say things.
 */
extern QUserPrompt *userPrompt;

/**
 * Writes "title: text" to standard error and answers every question with its
 * default. Used by kestrada-cli, where nobody is there to answer.
 */
class QConsoleUserPrompt : public QUserPrompt
{
public:
    void critical(const QString &title, const QString &text) override;
    void warning(const QString &title, const QString &text) override;
    void information(const QString &title, const QString &text) override;
    bool question(const QString &title, const QString &text, bool defaultYes = false) override;
    int choose(const QString &title, const QString &text, const QStringList &buttons,
               int defaultIndex) override;

private:
    void print(const QString &title, const QString &text);
};

/**
 * Records every call and answers questions from a script, so a test can
 * assert the exact texts a model shows and steer its decisions.
 */
class QRecordingUserPrompt : public QUserPrompt
{
public:
    enum Kind { Critical, Warning, Information, Question, Choice, WarningQuestion };

    struct Call
    {
        Kind kind;
        QString title;
        QString text;
        bool defaultYes;
        /** The buttons of a choice; empty for the other kinds. */
        QStringList buttons = {};
    };

    /** Installs itself as `userPrompt` and puts the previous one back when destroyed. */
    QRecordingUserPrompt();
    ~QRecordingUserPrompt() override;

    void critical(const QString &title, const QString &text) override;
    void warning(const QString &title, const QString &text) override;
    void information(const QString &title, const QString &text) override;
    /** Answers with the next scripted answer, or with the default when none is left. */
    bool question(const QString &title, const QString &text, bool defaultYes = false) override;
    /** As question(), recorded as a WarningQuestion. */
    bool warningQuestion(const QString &title, const QString &text, bool defaultYes = false) override;
    /** Answers with the next scripted choice, or with the default when none is left. */
    int choose(const QString &title, const QString &text, const QStringList &buttons,
               int defaultIndex) override;

    /** Queues answers for the coming questions, first in first out. */
    void answer(std::initializer_list<bool> answers);
    /** Queues button indexes for the coming choices, first in first out. */
    void answerChoices(std::initializer_list<int> choices);

    QList<Call> calls;

private:
    QList<bool> m_answers;
    QList<int> m_choices;
    QUserPrompt *m_previous;
};
