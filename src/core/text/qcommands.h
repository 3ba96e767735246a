#pragma once

#include "qsyntaxtexteditor.h"

/** The CMD file of a character: its commands and the state entries that use them. */
class QCommands : public QSyntaxTextEditor
{
    Q_OBJECT

public:
    explicit QCommands(QProjectOwner *project);

protected:
    QString discardQuestion() const override;
};
