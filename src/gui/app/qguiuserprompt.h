#pragma once

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

private:
    QWidget *m_parent;
};
