#include "qguiuserprompt.h"

#include <QApplication>
#include <QMessageBox>

QGuiUserPrompt::QGuiUserPrompt(QWidget *parent)
    : m_parent(parent)
{
}

void QGuiUserPrompt::critical(const QString &title, const QString &text)
{
    QMessageBox::critical(m_parent, title, text);
}

void QGuiUserPrompt::warning(const QString &title, const QString &text)
{
    QMessageBox::warning(m_parent, title, text);
}

void QGuiUserPrompt::information(const QString &title, const QString &text)
{
    QMessageBox::information(m_parent, title, text);
}

bool QGuiUserPrompt::question(const QString &title, const QString &text, bool defaultYes)
{
    return QMessageBox::question(m_parent, title, text, QMessageBox::Yes | QMessageBox::No,
                                 defaultYes ? QMessageBox::Yes : QMessageBox::No)
        == QMessageBox::Yes;
}
