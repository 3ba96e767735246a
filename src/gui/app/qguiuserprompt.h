#pragma once

#include "core/base/quserdialogs.h"
#include "core/base/quserprompt.h"

class QWidget;

/** Asks through QMessageBox, with the titles, texts and buttons the models give. */
class QGuiUserPrompt : public QUserPrompt
{
public:
    /** `parent` is the window the boxes stand over; may be null. */
    explicit QGuiUserPrompt(QWidget *parent = nullptr);

    void setParent(QWidget *parent) { m_parent = parent; }

    void critical(const QString &title, const QString &text) override;
    void warning(const QString &title, const QString &text) override;
    void information(const QString &title, const QString &text) override;
    bool question(const QString &title, const QString &text, bool defaultYes = false) override;
    bool warningQuestion(const QString &title, const QString &text, bool defaultYes = false) override;
    int choose(const QString &title, const QString &text, const QStringList &buttons,
               int defaultIndex) override;

private:
    QWidget *m_parent;
};

/** Asks through Qt's file, colour and input dialogs, over the active window. */
class QGuiUserDialogs : public QUserDialogs
{
public:
    QString openFileName(const QString &title, const QString &folder, const QString &filter) override;
    QStringList openFileNames(const QString &title, const QString &folder, const QString &filter) override;
    QString saveFileName(const QString &title, const QString &folder, const QString &filter,
                         QString *selectedFilter = nullptr) override;
    QString existingFolder(const QString &title, const QString &folder) override;
    QColor color(const QColor &initial, const QString &title) override;
    bool text(const QString &title, const QString &label, QString &value) override;
    bool integer(const QString &title, const QString &label, int &value, int minimum, int maximum) override;
};
