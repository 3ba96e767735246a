#pragma once

#include <QString>

/**
 * Finds the file that a DEF names, as the engine on Windows would.
 *
 * Content comes from Windows, where names are not case-sensitive and "\"
 * separates folders: "Sprites\KFM.SFF" must find "sprites/kfm.sff" on a
 * case-sensitive file system. `name` is taken relative to `directory`
 * unless it is absolute. Where the name exists as written, that is the
 * answer; otherwise each folder and the file are matched without regard to
 * case, one level at a time. Returns the path found, or, when nothing
 * matches, the path as written (with "/" separators), which doesn't exist.
 */
QString findFile(const QString &directory, const QString &name);
