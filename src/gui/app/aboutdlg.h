#pragma once

#include <QDialog>

class QLabel;

/**
 * The About box: the program's icon, name and version, the Qt it runs on,
 * and the credits of what it is built from.
 */
class AboutDlg : public QDialog
{
    Q_OBJECT

public:
    explicit AboutDlg(QWidget *parent = nullptr);

    /** The text of the box, as rich text. */
    QString text() const;

private:
    QLabel *m_text;
};
