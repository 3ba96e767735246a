#pragma once

#include <functional>

class QDialog;

/**
 * How the program's own modal dialogs are run: exec() in the window. Tests
 * put a function here that fills in the dialog's fields and answers
 * QDialog::Accepted or Rejected, so no test ever waits for a person.
 */
using DialogRunner = std::function<int(QDialog *)>;
extern DialogRunner dialogRunner;

/** Runs `dialog` through dialogRunner, or with exec() when none is set; QDialog::Accepted or Rejected. */
int runDialog(QDialog *dialog);
