#pragma once

#include "core/base/qdatafolder.h"

#include <QStringList>

/**
 * The style sheets: folders holding a "Stylesheet.css" and its images. A
 * number in square brackets in a style sheet is a length in pixels at 96
 * dots per inch, scaled to the screen; url() paths are relative to the
 * style's folder.
 */
class QStylesheetManager
{
public:
    explicit QStylesheetManager(const QDataFolder &folder);

    QStringList names() const { return m_names; }
    QString current() const { return m_current; }

    /**
     * Makes `name` the application's style sheet. The one loaded already
     * isn't read again; an unknown or unreadable one leaves the style sheet
     * in use.
     */
    void load(const QString &name);
    /** The text of a style sheet as the application gets it, from its folder `folder`. */
    static QString prepare(const QString &text, const QString &folder);

private:
    QDataFolder m_folder;
    QStringList m_names;
    QString m_current;
};

/** The process-wide style sheets; created at start by the entry point, may be null. */
extern QStylesheetManager *stylesheets;
