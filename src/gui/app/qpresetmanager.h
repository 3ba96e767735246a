#pragma once

#include "core/base/qdatafolder.h"

#include <QStringList>

class QDomElement;
class QInterface;

/**
 * The presets: files "<name>.xml" that tie a stylesheet, an iconset and a
 * colorset together and say which control stands where in the panels and
 * which actions fill the toolbars. A preset can rearrange the whole window;
 * editors only declare what they have.
 */
class QPresetManager
{
public:
    explicit QPresetManager(const QDataFolder &folder);

    QStringList names() const { return m_names; }

    /**
     * Applies the preset `preset`, with the stylesheet, iconset and colorset
     * given, or the preset's own for those given empty. The toolbars and
     * panels of the interface are emptied first; a preset that can't be
     * read leaves them empty. Without an interface (the palette editor on
     * its own) only the looks are applied.
     */
    void load(const QString &preset, const QString &iconset, const QString &stylesheet, const QString &colorset);
    /**
     * The stylesheet, iconset and colorset that the preset `preset` brings,
     * "Classic" for those it doesn't name: what load() uses when the
     * configuration names none. False, leaving the three as they were, when
     * the preset can't be read.
     */
    bool looks(const QString &preset, QString &stylesheet, QString &iconset, QString &colorset) const;
    /** `value` in pixels at 96 dots per inch, for the screen of the last load. */
    int scale(int value) const;

private:
    void loadToolbar(QInterface *ui, const QDomElement &element) const;
    void loadPanel(QInterface *ui, const QDomElement &element) const;

    QDataFolder m_folder;
    QStringList m_names;
    int m_dpi = 96;
};

/** The process-wide presets; created at start by the entry point, may be null. */
extern QPresetManager *presets;
