#pragma once

#include <QProgressDialog>

/**
 * The dialog around one long operation, made on the stack by the caller:
 * connect an object's progress(uint, uint, bool&) to onProgress() and let
 * the connection die with the dialog. It shows itself at the first report,
 * keeps the window responsive, and turns Cancel into a request to stop.
 */
class QProgress : public QProgressDialog
{
    Q_OBJECT

public:
    QProgress(QWidget *parent, const QString &title);
    ~QProgress() override;

public Q_SLOTS:
    /**
     * The progress convention: `max` counts only when `pos` is 0, which also
     * shows the dialog; `allow` becomes false once the user cancelled.
     */
    void onProgress(uint pos, uint max, bool &allow);
};
