#include "dialogrunner.h"

#include <QDialog>

DialogRunner dialogRunner;

int runDialog(QDialog *dialog)
{
    return dialogRunner ? dialogRunner(dialog) : dialog->exec();
}
