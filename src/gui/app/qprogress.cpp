#include "qprogress.h"

#include <QCoreApplication>

QProgress::QProgress(QWidget *parent, const QString &title)
    : QProgressDialog(parent)
{
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    // Shown by the first report, not by a timer: a load announces itself.
    setMinimumDuration(INT_MAX);
    setAutoReset(false);
    setAutoClose(false);
    setRange(0, 0);
    reset();
}

QProgress::~QProgress() = default;

void QProgress::onProgress(uint pos, uint max, bool &allow)
{
    if (pos == 0) {
        setMinimum(0);
        setMaximum(int(qMin<uint>(max, INT_MAX)));
        show();
    }
    // After a report of max 0 the bar is a busy bar, and positions mean
    // nothing; Qt takes any value then.
    setValue(int(qMin<uint>(pos, INT_MAX)));
    allow = !wasCanceled();
    QCoreApplication::processEvents();
}
