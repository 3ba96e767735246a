#pragma once

#include "qtextelements.h"

/** One "[Command]" block of a CMD file, with its "name" and "command" parameters. */
class QCommand : public QParamGroup
{
    Q_OBJECT

public:
    int elementType() const override { return 514; }
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;

    /**
     * The quoted "name" value, or empty. With `preferComment`, the name
     * comment above the block wins when there is one.
     */
    QString name(bool preferComment = false) const;
    /** The key sequence of the "command" parameter, written as the engine reads it. */
    QString commandText() const;
    /** The sort weight: 3 for each step with ">", 1 for each other step. */
    int length() const;
};

/** Writes a command's steps as text: "~30$D, $F, x+y". */
QString commandStepsText(const QList<QCommandStep> &steps);

/** Recognises "[Command]" lines. */
class CmdReg : public QTextElementReg
{
public:
    int elementType() const override { return 514; }
    quint32 startRule() const override { return makeRule(3, '['); }
    bool accepts(int position, const QTextElementToken &token) override;
    QTextElement *create() override;
};

/**
 * Registers the kinds of a CMD file: "[Command]", name = "..." and
 * command = ...; once per process.
 */
void registerCommandElements();
/** Takes them out of the global list again. */
void releaseCommandElements();
