#pragma once

#include "gui/app/qinterfaceeditor.h"

#include "core/app/qproject.h"
#include "core/sounds/qsounds.h"

#include <QPointer>

#include <optional>

class QAction;
class QInterface;

/**
 * The editor of a project's sounds (SND). It has no work area: it selects a
 * sound, shows its group, number and header facts in the controls a preset
 * places, plays it, and turns the commands of its menu into operations of
 * the project's QSounds, each one undoable there.
 *
 * The current sound is the document's current index, so it survives a
 * change of project and back.
 */
class QSoundsEditor : public QInterfaceEditor
{
    Q_OBJECT

public:
    /** Makes the menu, the actions and the controls in `ui`, which takes the editor with addEditor(). */
    explicit QSoundsEditor(QInterface *ui);

    int id() const override { return QInterfaceIds::Sounds; }
    const char *nameKey() const override { return "editor_snd"; }
    const char *panelKey() const override { return "sounds"; }
    bool isModified() const override;
    QMenu *menu() const override { return m_menu; }
    int panelFlags() const override
    {
        return QInterfaceIds::ExtraToolbar | QInterfaceIds::LeftPanel | QInterfaceIds::RightPanel;
    }
    int workspaceId() const override { return QInterfaceIds::AnimSpriteWorkspace; }
    QProjectFileType fileType() const override { return FileSounds; }
    /** Shown: follows the document's changes and the organizer. Either way the controls show the document. */
    void activate(bool show) override;
    /** Stops what plays and lets go of the document and the organizer. */
    void deactivate() override;
    /** A preset may have placed the controls anew: they are filled again. */
    void applyConfig() override;
    int projectMask() const override { return Character; }
    void setProject(QProject *project) override;
    int titleId() const override { return 221; }
    void retranslate(QTranslationUnit *unit) override;
    /** A message about the sound `index`: it becomes the current one. */
    void navigate(int fileIndex, int index, int line) override;

    /** The document shown; null without a project. */
    QSounds *sounds() const { return m_sounds; }

public Q_SLOTS:
    void clear() override;
    void open() override;
    void save() override;
    void saveAs() override;
    void undo() override;
    void redo() override;
    /** Sounds have no clipboard form: cut, copy and paste do nothing here. */
    void cut() override {}
    void copy() override {}
    void paste() override {}
    /**
     * Goes to the next sound whose group, number or both match `text`
     * ("5", ",3", "5,3"), forward or backward, wrapping when circular.
     */
    void find(const QString &text, const QQuickFindOptions &options) override;
    /**
     * Gives the sounds that `source` matches the group and number of
     * `destination`, where a part left out stays as it was: every match
     * at once with `all`, otherwise the current sound if it matches, and
     * then the next match becomes current.
     */
    void replace(const QString &source, const QString &destination, const QQuickFindOptions &options,
                 bool all) override;

    /** Adds WAV files behind the current sound, numbered through AddSom, as one undo step. */
    void add();
    void del();
    /** Replaces the current sound's bytes by a WAV file. */
    void openWav();
    void saveWav();
    void duplicate();
    void delGroup();
    void renameGroup();
    /** Checked: plays the current sound once; unchecked (a second click): stops. */
    void play(bool checked);
    /** The same, looping. */
    void playLoop(bool checked);
    void stop(bool checked);
    void fileExport();
    void fileImport();
    /** Copies the sounds of another open project, or a range of its groups, behind the current sound. */
    void projImport();

    void selPosChanged(int value);
    void grpChanged(int value);
    void numChanged(int value);
    void prevGrp();
    void nextGrp();
    void prevSnd();
    void nextSnd();

    /** Makes `index` the current sound (clipped to the list) and shows it. */
    void definePos(int index);
    /** The organizer moved or deleted sounds. */
    void orgChanged(bool secondary);
    /** The organizer's question for the list to show: the sounds; there is no second list. */
    QOrganizableObject *orgObject(bool secondary);
    /** Stops playing and unchecks the play buttons. */
    void forceStop();

Q_SIGNALS:
    /** Whether there is a current sound for the commands and controls that need one. */
    void enabled(bool enabled);
    void setSelPos(int position);
    void setPosText(const QString &text);
    void setGroup(int group);
    void setNumber(int number);
    void setInfoText(const QString &text);

private:
    /** A search text read as a group and a number, either of which may be left out. */
    struct ItemPattern
    {
        std::optional<int> group;
        std::optional<int> number;
        bool matches(qint32 group, qint32 number) const;
    };
    /** Reads "5", ",3" or "5,3"; nothing for another text or one that names neither part. */
    static std::optional<ItemPattern> readPattern(const QString &text);

    /** Fills every control from the document and the current index. */
    void refresh();
    void documentChanged();
    int current() const;
    bool hasSound() const;
    /** The folder of the file dialogs: the last sound folder, else the project's. */
    QString folder() const;
    void rememberFolder(const QString &fileName);
    /** Plays in a loop or not, unchecking the other play button first. */
    void startPlaying(QAction *button, bool checked, bool loop);
    /** The next sound from the current one that `pattern` matches; -1 when none. */
    int findFrom(const ItemPattern &pattern, const QQuickFindOptions &options) const;
    void noSoundFound();
    /** Tells the user that `operation` on `fileName` failed, with the document's reason. */
    void failed(const QString &title, const QString &fileName);
    /** Lets the organizer ask again for the list to show, if it is shown. */
    void refreshOrganizer();

    QInterface *m_ui;
    QMenu *m_menu;
    QPointer<QProject> m_project;
    QPointer<QSounds> m_sounds;
    QAction *m_play = nullptr;
    QAction *m_playLoop = nullptr;
    /** Raised while the editor fills its own controls or buttons: their slots do nothing then. */
    int m_guard = 0;
};
