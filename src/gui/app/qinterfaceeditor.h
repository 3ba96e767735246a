#pragma once

#include "core/base/qprojectfile.h"

#include <QMap>
#include <QObject>
#include <QString>

class QMenu;
class QProject;
class QTranslationUnit;
class QWidget;

/** The options of find and replace, passed to every editor as a map. */
enum class QQuickFindOption { RegularExpression = 0, CaseSensitive = 1, Backward = 2, Circular = 3 };
using QQuickFindOptions = QMap<QQuickFindOption, bool>;

/** Ids of the editors, the workspaces and the extra editors of the window. */
namespace QInterfaceIds {
enum Editor { Definitions = 0, Sprites = 1, Animations = 2, Commands = 3, States = 4, Sounds = 5, NoEditor = 8 };
enum Workspace { TextWorkspace = 0, AnimSpriteWorkspace = 1, NoWorkspace = 3 };
enum Extra { Organizer = 0, Palettes = 1, Thumbnails = 2, NoExtra = 3 };
/** Panel flags of an editor: the extra toolbar, the left panel, the right panel, engine code. */
enum PanelFlag { ExtraToolbar = 1, LeftPanel = 2, RightPanel = 4, EngineCode = 8 };
} // namespace QInterfaceIds

/**
 * The big central area that several editors share: the text of documents,
 * or the drawing of sprites and animations. It follows the current project
 * like the editors do, and is shown while one of its editors is current.
 */
class QInterfaceWorkspace : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual int id() const = 0;
    /** The key of its toolbar layout in presets. */
    virtual const char *nameKey() const = 0;
    /** The widget that stands in the central area; owned by the workspace. */
    virtual QWidget *widget() = 0;
    /** Shown as the current editor's workspace. */
    virtual void activate() { m_active = true; }
    /** About to be hidden: let go of the document and the editors' connections. */
    virtual void deactivate() { m_active = false; }
    virtual void applyConfig() = 0;
    /** A new current project; always called while deactivated. */
    virtual void setProject(QProject *project) = 0;
    virtual void retranslate(QTranslationUnit *unit) = 0;

    bool isActive() const { return m_active; }

public Q_SLOTS:
    /** The user clicked the status label of the current editor. */
    virtual void statusClicked() {}

private:
    bool m_active = false;
};

/**
 * One kind of document in the window: its menu, its actions, the controls
 * it declares for presets to place, and its view of the current project's
 * document. Editors keep no model data: they show and change the project's
 * document, and follow the current project.
 *
 * An editor makes its menu, its actions (through QActionManager, with its
 * own id as the scope) and its controls (QInterface::addControl) in its
 * constructor, and is then handed to QInterface::addEditor, which calls
 * setup() once its panel page exists.
 */
class QInterfaceEditor : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual int id() const = 0;
    /** The key of its icon and of its action in the editor group. */
    virtual const char *nameKey() const = 0;
    /** The key under which presets describe its panel and toolbar. */
    virtual const char *panelKey() const = 0;
    /** Whether its document holds unsaved changes: the "*" of the panel's title. */
    virtual bool isModified() const = 0;
    /** Its menu in the menu bar, or null. */
    virtual QMenu *menu() const = 0;
    /** QInterfaceIds::PanelFlag values. */
    virtual int panelFlags() const = 0;
    virtual int workspaceId() const = 0;
    /** The document kind that messages name, for navigation; the same number as id(). */
    virtual QProjectFileType fileType() const = 0;
    /** Called once, when the editor has been added and its panel page exists. */
    virtual void setup() {}
    /**
     * `show` true: the editor becomes the visible one. False: it is told to
     * reload from its project without showing (after a change of project).
     */
    virtual void activate(bool show)
    {
        if (show)
            m_active = true;
    }
    /** About to be hidden: it must let go of the document's and the workspace's signals. */
    virtual void deactivate() { m_active = false; }
    virtual void applyConfig() = 0;
    /** QProjectType bits: the kinds of project whose documents it edits. */
    virtual int projectMask() const = 0;
    /** A new current project; always called while deactivated. */
    virtual void setProject(QProject *project) = 0;
    virtual int titleId() const = 0;
    /** The titles of its menu and of its own widgets. */
    virtual void retranslate(QTranslationUnit *unit) = 0;
    /** Shows a place that a message names. */
    virtual void navigate(int fileIndex, int index, int line)
    {
        Q_UNUSED(fileIndex)
        Q_UNUSED(index)
        Q_UNUSED(line)
    }

    bool isActive() const { return m_active; }

public Q_SLOTS:
    // The commands of the current file. Each may come from a key while the
    // editor isn't current, and then first makes it current (ensureCurrent()).
    virtual void clear() = 0;
    virtual void open() = 0;
    virtual void save() = 0;
    virtual void saveAs() = 0;
    virtual void undo() = 0;
    virtual void redo() = 0;
    virtual void cut() = 0;
    virtual void copy() = 0;
    virtual void paste() = 0;
    virtual void find(const QString &text, const QQuickFindOptions &options) = 0;
    virtual void replace(const QString &source, const QString &destination, const QQuickFindOptions &options,
                         bool all) = 0;

Q_SIGNALS:
    /** The document's modified state changed: the panel's title follows. */
    void modificationChanged();

protected:
    /** Makes this editor the current one if it isn't; the file commands start with it. */
    void ensureCurrent();

private:
    bool m_active = false;
};

/** A side panel that follows the current editor: the organizer, the palettes, the thumbnails. */
class QInterfaceExtraEditor : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual int id() const = 0;
    /** The key of its panel in presets, and of its icon. */
    virtual const char *nameKey() const = 0;
    virtual void activate(bool show)
    {
        if (show)
            m_active = true;
    }
    virtual void deactivate() { m_active = false; }
    virtual void applyConfig() = 0;
    virtual void setProject(QProject *project) = 0;
    virtual int titleId() const = 0;
    virtual void retranslate(QTranslationUnit *unit) = 0;

    bool isActive() const { return m_active; }

private:
    bool m_active = false;
};
