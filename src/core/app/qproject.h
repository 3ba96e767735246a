#pragma once

#include "../base/qmessages.h"
#include "../base/qprojectfile.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>

class QAnimations;
class QCommands;
class QDefinitions;
class QSounds;
class QSprites;
class QSyntaxTextEditor;

/**
 * One open piece of engine content: a character, storyboard, stage or font.
 *
 * It owns one document of each kind and a list of state documents, knows
 * which of them hold unsaved work, and never talks to the user: questions
 * that need a person (a file name, a sprite file version) go out as signals
 * with a return value, answered synchronously by the shell.
 */
class QProject : public QObject, public QProjectOwner
{
    Q_OBJECT

public:
    /** `cacheType` and `cacheCompression` configure the stores of the sprites and sounds. */
    QProject(int cacheType, bool cacheCompression, QObject *parent = nullptr);
    ~QProject() override;

    /** The kind, a QProjectType value, as the DEF says; a character until a DEF is read. */
    int type() const;
    void setType(int type);

    QDefinitions *definitions() const { return m_definitions; }
    QSprites *sprites() const { return m_sprites; }
    /** The text document of the AIR file; stages and storyboards keep theirs in the DEF. */
    QSyntaxTextEditor *animationText() const { return m_animationText; }
    QAnimations *animations() const { return m_animations; }
    QCommands *commands() const { return m_commands; }
    QSounds *sounds() const { return m_sounds; }

    int statesCount() const { return int(m_states.size()); }
    /** The state document at `index`, or null out of range. */
    QSyntaxTextEditor *states(int index) const;
    /** Creates an empty state document titled `title` at the end of the list. Owned by the project. */
    QSyntaxTextEditor *addState(const QString &title);
    /** Moves a state document; indexes are renumbered and the message list updated. */
    void moveState(int from, int to);
    /** Deletes a state document; indexes are renumbered and the message list updated. */
    void removeState(int index);

    /**
     * Opens the project of the DEF `fileName`, decoding text with `codepage`
     * where no encoding can be detected. With `backup`, every file read is
     * first copied into a time-stamped folder under "backup/" beside the
     * DEF. With `keepName` the documents keep the names they had (a backup
     * restored over the project). False only when the DEF can't be read;
     * the project then holds nothing.
     */
    bool fromFile(const QString &fileName, int codepage, bool backup, bool keepName);
    /**
     * "Save as": writes the DEF to `fileName`, then asks for a name for each
     * other document that has something to save. The names inside the DEF
     * don't change.
     */
    void toFile(const QString &fileName, bool asUtf8);
    /**
     * Saves every document under the name it has; a document that has none
     * yet asks for one. A DEF that was never saved isn't written: "Save as"
     * makes a DEF.
     */
    bool save();
    /** Saves one document under a name it asks for; `index` selects the state document. */
    void saveFile(QProjectFileType file, bool asUtf8, int index);
    /**
     * Writes a copy of the project for a test run into `directory` (ending
     * in "/"), with the base name `name`, and lists in `created` what to
     * delete afterwards. The project itself doesn't change. A document with
     * nothing in memory is copied from the project's folder.
     */
    bool saveForTest(const QString &directory, const QString &name, QStringList &created);
    /**
     * Copies the whole project, DEF, palettes, sprites, animations, sounds,
     * commands and states, into a new time-stamped folder under "backup/"
     * beside the DEF, each file under its path in the DEF, so the copy of
     * the DEF opens as the project. A document with unsaved changes (or
     * whose file is gone) is written as it stands in memory; any other is
     * copied byte for byte. A palette of the DEF that the sprites don't
     * have as group 1 is left out. Reports through progress(). False when
     * the project has no DEF file yet, or a folder or file can't be
     * written; `folder` receives the backup folder, ending in "/", once it
     * exists.
     */
    bool backup(QString *folder = nullptr);

    /**
     * Asks every state document whether its changes may be dropped (all of
     * them, even after a refusal), then, stopping at the first refusal, the
     * definitions, sprites, animations, commands and sounds.
     */
    bool canClose();
    /** True when no document holds anything and there are no state documents. */
    bool isBlank() const;

    /** A per-project setting; an absent key reads as empty and comes into being. */
    QString setting(const QString &key);
    /** Writes a per-project setting, and the same key in the configuration. */
    void setSetting(const QString &key, const QString &value);

    QMessageList &messages() { return m_messages; }

    // QProjectOwner
    int projectType() const override { return type(); }
    quint32 engineVersion() const override;
    int engineTarget() const override;
    QMessageList *messageList() override { return &m_messages; }
    void documentChanged(QProjectFile *document) override;

Q_SIGNALS:
    /** Which name to save `file` under, starting in `path`; empty when the user gave up. */
    QString saveFileName(QProjectFileType file, QString path);
    /** Which SFF version to save, offering `currentVersion`; 0 when the user gave up. */
    quint32 spritesVersionToSave(quint32 currentVersion);
    /**
     * Progress of a long operation. `max` counts only when `pos` is 0; a
     * receiver clears `allow` to ask for a stop.
     */
    void progress(uint pos, uint max, bool &allow);
    /** A document changed its content or its modified state. */
    void changed(QProjectFile *document);

private:
    void renumberStates(int from);

    QMap<QString, QString> m_settings;
    QMessageList m_messages;
    QDefinitions *m_definitions = nullptr;
    QSyntaxTextEditor *m_animationText = nullptr;
    QSprites *m_sprites = nullptr;
    QAnimations *m_animations = nullptr;
    QCommands *m_commands = nullptr;
    QSounds *m_sounds = nullptr;
    QList<QSyntaxTextEditor *> m_states;
};

/**
 * Registers, process-wide, every kind of line that the text documents of a
 * project recognise: animations, commands and name comments. A second call
 * does nothing. Documents must be gone before the release.
 */
void registerProjectElements();
void releaseProjectElements();
