// The file algorithms of a project: open from a DEF, save, save as, and the
// copy written for a test run.

#include "qproject.h"

#include "qbackupfolder.h"

#include "../animation/qanimations.h"
#include "../base/filelookup.h"
#include "../sounds/qsounds.h"
#include "../sprites/qrgbpalette.h"
#include "../sprites/qsprites.h"
#include "../text/qcommands.h"
#include "../text/qdefinitions.h"
#include "../text/qsyntaxprocessor.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextDocument>

#include <functional>

namespace {

/**
 * Brackets the reading of the character's palette files: what a project
 * opens with is no change of its sprites, to undo or to save.
 */
class PaletteLoad
{
public:
    explicit PaletteLoad(QSprites *sprites)
        : m_sprites(sprites)
    {
        m_sprites->setUndoEnabled(false);
    }
    ~PaletteLoad()
    {
        m_sprites->setUndoEnabled(true);
        m_sprites->setModified(false);
    }
    PaletteLoad(const PaletteLoad &) = delete;
    PaletteLoad &operator=(const PaletteLoad &) = delete;

private:
    QSprites *m_sprites;
};

bool isFile(const QString &path)
{
    return QFileInfo(path).isFile();
}

void makeFolderOf(const QString &path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
}

} // namespace

bool QProject::fromFile(const QString &fileName, int codepage, bool backup, bool keepName)
{
    QBackupFolder copies;
    if (backup) {
        copies = QBackupFolder(fileName);
        copies.copy(fileName);
    }
    if (!m_definitions->load(fileName, codepage, keepName))
        return false;

    const QDefinitionsFiles files = m_definitions->files();
    // With keepName the definitions stay in the project's folder, but the
    // files come from the folder of the DEF read: a backup.
    const QString base = QFileInfo(fileName).absolutePath();
    const auto findFile = [keepName](const QString &directory, const QString &name) {
        // A backup keeps the files from above the project's folder in "(parent)" folders.
        if (keepName) {
            const QString inside = ::findFile(directory, QBackupFolder::inside(name));
            if (isFile(inside))
                return inside;
        }
        return ::findFile(directory, name);
    };
    // What a backup brings differs from the project's files until it is saved.
    const auto restored = [keepName](auto *document, bool loaded) {
        if (keepName && loaded)
            document->setModified(true);
    };
    restored(m_definitions->document(), true);
    const uint total = uint(files.palettes.size() + files.states.size() + 4);
    bool allow = true;
    Q_EMIT progress(0, total, allow);

    // A palette file that isn't there takes no number: numbers follow the files found.
    uint n = 1;
    {
        const PaletteLoad load(m_sprites);
        // The palettes read now replace those of a project read before.
        for (int i = m_sprites->paletteCount() - 1; keepName && i >= 0; --i)
            m_sprites->removePalette(i);
        for (const QString &name : files.palettes) {
            const QString path = findFile(base, name);
            if (!isFile(path))
                continue;
            copies.copy(path);
            // A file that can't be read keeps its number all the same.
            QRGBPal colors;
            if (QRGBPalette(&colors).fromFile(path))
                m_sprites->addPalette(colors, false, 1, int(n));
            Q_EMIT progress(n, total, allow);
            ++n;
            if (!allow)
                return true;
        }
    }

    // Every load from here on fails quietly and leaves its document empty.
    const QString sprites = findFile(base, files.sprites);
    copies.copy(sprites);
    restored(m_sprites, m_sprites->fromFile(sprites, keepName));
    Q_EMIT progress(n, total, allow);
    if (!allow)
        return true;

    if (type() == Character) {
        const QString animations = findFile(base, files.animations);
        copies.copy(animations);
        restored(m_animationText->document(), m_animations->fromFile(animations, codepage, keepName));
    } else if (type() != Font) {
        // Stages and storyboards keep their animations in the DEF.
        m_animations->setEditor(m_definitions);
    }
    Q_EMIT progress(n + 1, total, allow);
    if (!allow)
        return true;

    const QString sounds = findFile(base, files.sounds);
    copies.copy(sounds);
    restored(m_sounds, m_sounds->fromFile(sounds, keepName));
    Q_EMIT progress(n + 2, total, allow);
    if (!allow)
        return true;

    const QString commands = findFile(base, files.commands);
    copies.copy(commands);
    restored(m_commands->document(), m_commands->load(commands, codepage, keepName));
    Q_EMIT progress(n + 3, total, allow);
    if (!allow)
        return true;

    uint position = n + 4;
    for (const QString &name : files.states) {
        const QString path = findFile(base, name);
        if (!isFile(path))
            continue;
        copies.copy(path);
        // A backup goes into the document of the same file, or into a new
        // one that takes the name of the project's file.
        const QString own = QFileInfo(::findFile(files.directory, name)).absoluteFilePath();
        QSyntaxTextEditor *state = nullptr;
        for (QSyntaxTextEditor *candidate : std::as_const(m_states)) {
            if (keepName && !state && candidate->fileName() == own)
                state = candidate;
        }
        const bool known = state != nullptr;
        if (!known) {
            state = new QSyntaxTextEditor(this, FileStates, false, m_definitions->version(), true);
            state->setTarget(m_definitions->target());
            state->setFileIndex(int(m_states.size()));
            m_states.append(state);
        }
        const bool loaded = state->load(path, codepage, known);
        if (keepName && !known)
            state->setFileName(own);
        restored(state->document(), loaded);
        // Ikemen GO's states in its own script language are kept and shown,
        // not read as engine text.
        if (path.endsWith(QLatin1String(".zss"), Qt::CaseInsensitive)) {
            state->setLanguage(QSyntaxProcessor::NullKind);
            state->updateHierarchy();
        }
        Q_EMIT progress(position++, total, allow);
        if (!allow)
            return true;
    }
    return true;
}

bool QProject::save()
{
    // A DEF that was never saved isn't written here: "Save as" makes one.
    const QString def = m_definitions->fileName();
    if (!def.isEmpty() && isFile(def))
        m_definitions->save(def, false, false);

    bool allow = true;
    const uint total = uint(m_states.size() + 4);
    Q_EMIT progress(0, total, allow);

    const QString sprites = m_sprites->fileName();
    if (isFile(sprites)) {
        if (m_sprites->isModified() && m_sprites->checkSave(m_sprites->version()))
            m_sprites->toFile(sprites, 0, false);
    } else {
        saveFile(FileSprites, false, 0);
    }
    Q_EMIT progress(1, total, allow);
    if (type() != Character)
        return true;

    const QString animations = m_animationText->fileName();
    if (isFile(animations)) {
        if (m_animations->isModified() && m_animations->checkSave(0))
            m_animations->toFile(animations, false, false);
    } else {
        saveFile(FileAnimations, false, 0);
    }
    Q_EMIT progress(2, total, allow);

    const auto saveText = [this](QSyntaxTextEditor *document, QProjectFileType kind) {
        const QString name = document->fileName();
        if (isFile(name)) {
            if (document->isModified() && document->checkSave(0))
                document->save(name, false, false);
        } else if (!document->isEmpty() && document->checkSave(0)) {
            const QString chosen = Q_EMIT saveFileName(kind, setting(QStringLiteral("proj_path")));
            if (!chosen.isEmpty())
                document->save(chosen, false, false);
        }
    };
    saveText(m_commands, FileCommands);
    Q_EMIT progress(3, total, allow);

    uint position = 4;
    for (QSyntaxTextEditor *state : std::as_const(m_states)) {
        saveText(state, FileStates);
        Q_EMIT progress(position++, total, allow);
    }

    const QString sounds = m_sounds->fileName();
    if (isFile(sounds) && m_sounds->isModified() && m_sounds->checkSave(0)) {
        m_sounds->toFile(sounds, false);
    } else if (!isFile(sounds) && m_sounds->count() > 0 && m_sounds->checkSave(0)) {
        const QString chosen = Q_EMIT saveFileName(FileSounds, setting(QStringLiteral("proj_path")));
        if (!chosen.isEmpty())
            m_sounds->toFile(chosen, false);
    }
    Q_EMIT progress(position, total, allow);
    return true;
}

void QProject::saveFile(QProjectFileType file, bool asUtf8, int index)
{
    const QString folder = setting(QStringLiteral("proj_path"));
    switch (file) {
    case FileSprites: {
        if (m_sprites->count() == 0)
            return;
        // An answer of 0 (given up) passes or fails the check by the same rules.
        const quint32 version = Q_EMIT spritesVersionToSave(m_sprites->version());
        if (!m_sprites->checkSave(version))
            return;
        const QString name = Q_EMIT saveFileName(FileSprites, folder);
        if (!name.isEmpty())
            m_sprites->toFile(name, version, false);
        return;
    }
    case FileAnimations: {
        if (m_animations->count() == 0 || !m_animations->checkSave(0))
            return;
        const QString name = Q_EMIT saveFileName(FileAnimations, folder);
        if (!name.isEmpty())
            m_animations->toFile(name, asUtf8, false);
        return;
    }
    case FileCommands:
    case FileStates: {
        QSyntaxTextEditor *document = file == FileCommands ? m_commands : states(index);
        if (!document || document->isEmpty() || !document->checkSave(0))
            return;
        const QString name = Q_EMIT saveFileName(file, folder);
        if (!name.isEmpty())
            document->save(name, asUtf8, false);
        return;
    }
    case FileSounds: {
        if (m_sounds->count() == 0 || !m_sounds->checkSave(0))
            return;
        const QString name = Q_EMIT saveFileName(FileSounds, folder);
        if (!name.isEmpty())
            m_sounds->toFile(name, false);
        return;
    }
    case FileDefinitions:
        return;
    }
}

void QProject::toFile(const QString &fileName, bool asUtf8)
{
    m_definitions->save(fileName, asUtf8, false);
    bool allow = true;
    const uint total = uint(m_states.size() + 4);
    Q_EMIT progress(0, total, allow);
    saveFile(FileSprites, asUtf8, 0);
    Q_EMIT progress(1, total, allow);
    if (type() != Character)
        return;
    saveFile(FileAnimations, asUtf8, 0);
    Q_EMIT progress(2, total, allow);
    saveFile(FileCommands, asUtf8, 0);
    Q_EMIT progress(3, total, allow);
    uint position = 4;
    for (int i = 0; i < m_states.size(); ++i) {
        saveFile(FileStates, asUtf8, i);
        Q_EMIT progress(position++, total, allow);
    }
    saveFile(FileSounds, asUtf8, 0);
    Q_EMIT progress(position, total, allow);
}

bool QProject::saveForTest(const QString &directory, const QString &name, QStringList &created)
{
    const QDefinitionsFiles files = m_definitions->files();
    const QString projectDir = files.directory;
    const QString def = directory + name + QLatin1String(".def");
    makeFolderOf(def);

    // Where a file the DEF names goes in the copy. The engine reads a
    // backslash as a folder separator. A name that climbs out of the copy's
    // folder ("../kfm/kfm.air") would overwrite another project's file in
    // the engine's folders, and nothing would remove it: such a file isn't
    // written, and the engine reports it missing.
    const QString root = QDir::cleanPath(directory) + QLatin1Char('/');
    const auto target = [&root](QString relative) {
        relative.replace(QLatin1Char('\\'), QLatin1Char('/'));
        const QString path = QDir::cleanPath(root + relative);
        return path.startsWith(root) ? path : QString();
    };

    QString spriteFile = files.sprites;
    if (type() == Stage) {
        // The engine finds a stage's sprites by the name in its DEF: point
        // every spr line at the copy.
        QString text = m_definitions->text();
        static const QRegularExpression spr(QStringLiteral("spr\\s*=\\s*[^\\r\\n]*"),
                                            QRegularExpression::CaseInsensitiveOption);
        text.replace(spr, QStringLiteral("spr = ") + name + QLatin1String(".sff"));
        text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
        QFile file(def);
        if (file.open(QIODevice::WriteOnly))
            file.write(m_definitions->encode(text));
        spriteFile = name + QLatin1String(".sff");
        created.append(def);
        created.append(directory + spriteFile);
    } else {
        m_definitions->save(def, false, true);
    }

    bool allow = true;
    const uint total = uint(files.palettes.size() + files.states.size() + 4);
    Q_EMIT progress(0, total, allow);

    // A document with something in memory writes itself as a copy; one
    // without, or whose write says it failed, falls back on the project's
    // own file, if there is one.
    const auto writeOrCopy = [&](const QString &name, const QString &source, bool inMemory,
                                 const std::function<bool(const QString &)> &write) {
        const QString path = target(name);
        if (path.isEmpty())
            return;
        makeFolderOf(path);
        if (inMemory && write(path))
            return;
        const QString original = findFile(projectDir, source);
        if (isFile(original)) {
            QFile::remove(path);
            QFile::copy(original, path);
        }
    };

    writeOrCopy(spriteFile, files.sprites, m_sprites->count() > 0, [this](const QString &path) {
        m_sprites->toFile(path, 0, true);
        return true;
    });
    // From here the dialog shows a busy bar; the positions after this mean nothing.
    Q_EMIT progress(0, 0, allow);
    if (type() != Character)
        return true;

    // Palette n of the DEF is the character's palette 1,n, as it stands in memory.
    for (int i = 0; i < files.palettes.size(); ++i) {
        const QSpritePalette *palette = m_sprites->palette(1, i + 1);
        writeOrCopy(files.palettes.at(i), files.palettes.at(i), palette != nullptr,
                    [palette](const QString &path) { return palette->toFile(path); });
    }
    writeOrCopy(files.animations, files.animations, !m_animations->isEmpty(), [this](const QString &path) {
        m_animations->toFile(path, false, true);
        return true;
    });
    writeOrCopy(files.sounds, files.sounds, m_sounds->count() > 0, [this](const QString &path) {
        m_sounds->toFile(path, true);
        return true;
    });
    writeOrCopy(files.commands, files.commands, !m_commands->isEmpty(), [this](const QString &path) {
        m_commands->save(path, false, true);
        return true;
    });

    for (const QString &state : files.states) {
        const QString suffix = QLatin1Char('/') + state;
        QSyntaxTextEditor *document = nullptr;
        for (QSyntaxTextEditor *candidate : std::as_const(m_states)) {
            if (candidate->fileName().endsWith(suffix, Qt::CaseInsensitive)) {
                document = candidate;
                break;
            }
        }
        writeOrCopy(state, state, document != nullptr, [document](const QString &path) {
            document->save(path, false, true);
            return true;
        });
    }
    return true;
}
