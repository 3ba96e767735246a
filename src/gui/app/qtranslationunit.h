#pragma once

#include <QObject>
#include <QString>

class QMenu;

/**
 * The one table of the texts of every command, menu and panel label, by a
 * number that actions and controls keep instead of a text. All texts go
 * through tr() in the context "QTranslationUnit", so a language changes
 * them all at once; a caller asks again after a language change.
 */
class QTranslationUnit : public QObject
{
    Q_OBJECT
public:
    /** Ids run from 0 to Count - 1; from Count on every text is empty. */
    static constexpr int Count = 345;
    using QObject::QObject;
    QString title(int id) const;      // the short text: menus, labels, dialog titles
    QString tip(int id) const;        // the long text: tool tips and status tips
    QString whatsThis(int id) const;  // empty for every id
    /** Title, tool tip, status tip (the same as the tool tip) and what's this of a menu. */
    void setMenuTexts(QMenu *menu, int id) const;
};
