// The manual backup of a project: every file the DEF names, into a
// time-stamped folder beside it.

#include "qproject.h"

#include "qbackupfolder.h"

#include "../animation/qanimations.h"
#include "../base/filelookup.h"
#include "../sounds/qsounds.h"
#include "../sprites/qspritepalette.h"
#include "../sprites/qsprites.h"
#include "../text/qcommands.h"
#include "../text/qdefinitions.h"

#include <QFileInfo>

#include <functional>

bool QProject::backup(QString *folder)
{
    const QDefinitionsFiles files = m_definitions->files();
    if (m_definitions->fileName().isEmpty() || files.directory.isEmpty() || !QFileInfo(files.directory).isDir())
        return false;
    const QBackupFolder copies(m_definitions->fileName());
    if (!copies.isValid())
        return false;
    if (folder)
        *folder = copies.folder();

    bool written = true;
    // A document that equals its file is copied, so its bytes stay as they
    // are; one with changes in memory, or whose file is gone, writes itself.
    // `write` answers true when it has nothing to write.
    const auto keep = [&](const QString &source, bool changed, const std::function<bool(const QString &)> &write) {
        const bool onDisk = QFileInfo(source).isFile();
        if (!changed && onDisk)
            written = copies.copy(source) && written;
        else
            written = write(copies.target(source)) && written;
    };
    const auto named = [&files](const QString &name) { return findFile(files.directory, name); };

    keep(m_definitions->fileName(), m_definitions->isModified(),
         [this](const QString &path) { return m_definitions->save(path, false, true); });

    bool allow = true;
    const uint total = uint(files.palettes.size() + files.states.size() + 4);
    uint position = 0;
    Q_EMIT progress(position++, total, allow);

    // Palette n of the DEF is the character's palette 1,n.
    for (int i = 0; i < files.palettes.size(); ++i) {
        if (const QSpritePalette *palette = m_sprites->palette(1, i + 1)) {
            keep(named(files.palettes.at(i)), m_sprites->isModified(),
                 [palette](const QString &path) { return palette->toFile(path); });
        }
        Q_EMIT progress(position++, total, allow);
    }

    if (!files.sprites.isEmpty()) {
        keep(named(files.sprites), m_sprites->isModified(), [this](const QString &path) {
            return m_sprites->count() == 0 || m_sprites->toFile(path, 0, true);
        });
    }
    Q_EMIT progress(position++, total, allow);

    const auto keepText = [&](const QString &name, QSyntaxTextEditor *document) {
        if (name.isEmpty())
            return;
        keep(named(name), document && document->isModified(), [document](const QString &path) {
            return !document || document->isEmpty() || document->save(path, false, true);
        });
    };
    // Stages and storyboards keep their animations in the DEF.
    if (type() == Character)
        keepText(files.animations, m_animationText);
    Q_EMIT progress(position++, total, allow);

    if (!files.sounds.isEmpty()) {
        keep(named(files.sounds), m_sounds->isModified(),
             [this](const QString &path) { return m_sounds->count() == 0 || m_sounds->toFile(path, true); });
    }
    Q_EMIT progress(position++, total, allow);

    keepText(files.commands, m_commands);
    Q_EMIT progress(position++, total, allow);

    for (const QString &state : files.states) {
        const QString path = QFileInfo(named(state)).absoluteFilePath();
        QSyntaxTextEditor *document = nullptr;
        for (QSyntaxTextEditor *candidate : std::as_const(m_states)) {
            if (!document && candidate->fileName() == path)
                document = candidate;
        }
        keepText(state, document);
        Q_EMIT progress(position++, total, allow);
    }
    return written;
}
