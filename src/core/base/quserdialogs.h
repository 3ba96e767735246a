#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

/**
 * The one way to ask a person for a file, a folder, a colour, a text or a
 * number.
 *
 * Beside QUserPrompt, for the same reason: whoever needs an answer calls the
 * global `userDialogs` instead of QFileDialog or QColorDialog, so the window
 * shows real dialogs while kestrada-cli and tests answer from a script and
 * never block on a modal window. Every function gives an empty or invalid
 * result, or false, when the person gives up.
 */
class QUserDialogs
{
public:
    virtual ~QUserDialogs() = default;

    /** One existing file; empty when cancelled. `filter` is in QFileDialog's form ("Images (*.png);;All (*)"). */
    virtual QString openFileName(const QString &title, const QString &folder, const QString &filter) = 0;
    /** Any number of existing files; empty when cancelled. */
    virtual QStringList openFileNames(const QString &title, const QString &folder, const QString &filter) = 0;
    /**
     * A file to write; empty when cancelled. When `selectedFilter` is given,
     * it receives the entry of `filter` that was chosen.
     */
    virtual QString saveFileName(const QString &title, const QString &folder, const QString &filter,
                                 QString *selectedFilter = nullptr) = 0;
    /** An existing folder; empty when cancelled. */
    virtual QString existingFolder(const QString &title, const QString &folder) = 0;
    /** A colour, starting at `initial`; invalid when cancelled. */
    virtual QColor color(const QColor &initial, const QString &title) = 0;
    /** A line of text, starting at `value`, which receives the answer. False when cancelled. */
    virtual bool text(const QString &title, const QString &label, QString &value) = 0;
    /** A whole number within [minimum, maximum], starting at `value`, which receives it. False when cancelled. */
    virtual bool integer(const QString &title, const QString &label, int &value, int minimum, int maximum) = 0;
};

/**
 * The installed dialogs. Never null: until the window installs its own, it
 * points at dialogs that cancel everything, which is what a program without
 * a person in front of it must do.
 */
extern QUserDialogs *userDialogs;

/** Cancels every request: the answer of kestrada-cli, where nobody can choose. */
class QCancellingUserDialogs : public QUserDialogs
{
public:
    QString openFileName(const QString &, const QString &, const QString &) override { return {}; }
    QStringList openFileNames(const QString &, const QString &, const QString &) override { return {}; }
    QString saveFileName(const QString &, const QString &, const QString &, QString *) override { return {}; }
    QString existingFolder(const QString &, const QString &) override { return {}; }
    QColor color(const QColor &, const QString &) override { return {}; }
    bool text(const QString &, const QString &, QString &) override { return false; }
    bool integer(const QString &, const QString &, int &, int, int) override { return false; }
};

/**
 * Records every request and answers from a script, so a test can assert the
 * exact title, folder and filter of each dialog and steer what follows.
 * Installs itself as `userDialogs` and puts the previous one back when
 * destroyed.
 */
class QRecordingUserDialogs : public QUserDialogs
{
public:
    enum Kind { OpenFile, OpenFiles, SaveFile, Folder, Color, Text, Integer };

    struct Call
    {
        Kind kind;
        QString title;
        /** The starting folder of a file dialog, or the label of a text or number. */
        QString where;
        QString filter;
    };

    QRecordingUserDialogs();
    ~QRecordingUserDialogs() override;

    /**
     * Queues the answers of the coming requests, first in first out: a
     * QString for a file, folder or text, a QStringList for several files,
     * a QColor, an int. A null QVariant, or none left, cancels the request.
     */
    void answer(std::initializer_list<QVariant> answers);

    QString openFileName(const QString &title, const QString &folder, const QString &filter) override;
    QStringList openFileNames(const QString &title, const QString &folder, const QString &filter) override;
    QString saveFileName(const QString &title, const QString &folder, const QString &filter,
                         QString *selectedFilter = nullptr) override;
    QString existingFolder(const QString &title, const QString &folder) override;
    QColor color(const QColor &initial, const QString &title) override;
    bool text(const QString &title, const QString &label, QString &value) override;
    bool integer(const QString &title, const QString &label, int &value, int minimum, int maximum) override;

    QList<Call> calls;

private:
    QVariant next(Kind kind, const QString &title, const QString &where, const QString &filter = {});

    QList<QVariant> m_answers;
    QUserDialogs *m_previous;
};
