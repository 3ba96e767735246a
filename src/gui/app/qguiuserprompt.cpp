#include "qguiuserprompt.h"

#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>

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

bool QGuiUserPrompt::warningQuestion(const QString &title, const QString &text, bool defaultYes)
{
    return QMessageBox::warning(m_parent, title, text, QMessageBox::Yes | QMessageBox::No,
                                defaultYes ? QMessageBox::Yes : QMessageBox::No)
        == QMessageBox::Yes;
}

int QGuiUserPrompt::choose(const QString &title, const QString &text, const QStringList &buttons,
                           int defaultIndex)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::NoButton, m_parent);
    QList<QAbstractButton *> made;
    for (const QString &label : buttons)
        made.append(box.addButton(label, QMessageBox::AcceptRole));
    if (defaultIndex >= 0 && defaultIndex < made.size()) {
        box.setDefaultButton(static_cast<QPushButton *>(made.at(defaultIndex)));
        box.setEscapeButton(made.at(defaultIndex));
    }
    box.exec();
    const int chosen = int(made.indexOf(box.clickedButton()));
    return chosen >= 0 ? chosen : defaultIndex;
}

QString QGuiUserDialogs::openFileName(const QString &title, const QString &folder, const QString &filter)
{
    return QFileDialog::getOpenFileName(QApplication::activeWindow(), title, folder, filter);
}

QStringList QGuiUserDialogs::openFileNames(const QString &title, const QString &folder, const QString &filter)
{
    return QFileDialog::getOpenFileNames(QApplication::activeWindow(), title, folder, filter);
}

QString QGuiUserDialogs::saveFileName(const QString &title, const QString &folder, const QString &filter,
                                      QString *selectedFilter)
{
    return QFileDialog::getSaveFileName(QApplication::activeWindow(), title, folder, filter, selectedFilter);
}

QString QGuiUserDialogs::existingFolder(const QString &title, const QString &folder)
{
    return QFileDialog::getExistingDirectory(QApplication::activeWindow(), title, folder);
}

QColor QGuiUserDialogs::color(const QColor &initial, const QString &title)
{
    return QColorDialog::getColor(initial, QApplication::activeWindow(), title);
}

bool QGuiUserDialogs::text(const QString &title, const QString &label, QString &value)
{
    bool ok = false;
    const QString answer = QInputDialog::getText(QApplication::activeWindow(), title, label,
                                                 QLineEdit::Normal, value, &ok);
    if (ok)
        value = answer;
    return ok;
}

bool QGuiUserDialogs::integer(const QString &title, const QString &label, int &value, int minimum, int maximum)
{
    bool ok = false;
    const int answer = QInputDialog::getInt(QApplication::activeWindow(), title, label, value, minimum,
                                            maximum, 1, &ok);
    if (ok)
        value = answer;
    return ok;
}
