#pragma once

#include <QString>

/**
 * One time-stamped backup folder of a project: its DEF's folder + "backup/"
 * + the time as "dd-MM-yyyy h-m-s ap" + "/". Files go in under their paths
 * relative to the project's folder, so the DEF in the backup opens like the
 * project itself. Two backups in one second share the folder; the second
 * writes over the first.
 */
class QBackupFolder
{
public:
    /** No folder: copy() and target() do nothing. */
    QBackupFolder() = default;
    /** Makes a new backup folder for the project of the DEF `defFile`; see isValid(). */
    explicit QBackupFolder(const QString &defFile);

    /** Whether the folder exists: false when the DEF's folder doesn't or can't be written. */
    bool isValid() const { return !m_folder.isEmpty(); }
    /** The backup folder, ending in "/"; empty when not valid. */
    QString folder() const { return m_folder; }

    /**
     * Where the project's file `path` (absolute, or relative to the project's
     * folder) goes in the backup, with its folder made; empty when not valid.
     */
    QString target(const QString &path) const;
    /** Copies the project's file `path` to its target(). False when it isn't a file or can't be copied. */
    bool copy(const QString &path) const;

    /**
     * A path relative to the project's folder made into one below the
     * backup folder. A DEF may name files above its folder ("../common.cns"):
     * each step up becomes a folder "(parent)", so a copy neither lands
     * beside the backup folder nor overwrites a file of the project. A
     * drive letter (another drive on Windows) loses its colon; "\" is a
     * folder separator, as the engine reads it.
     */
    static QString inside(const QString &relative);

private:
    QString m_projectDir;
    QString m_folder;
};
