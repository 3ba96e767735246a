#pragma once

#include <QString>

/**
 * The folder of the running executable, where every data folder of the
 * program stands (presets, syntax files, scripts...).
 */
QString applicationDir();

/**
 * Where a settings file of the program (config.xml, shortcuts.xml) lives.
 * Beside the executable, as the program has always kept them; when that
 * folder can't be written (a system-wide install), in the user's
 * configuration folder instead. The same answer serves reading and writing,
 * except that a file only found beside the executable is still read from
 * there until the first save moves it.
 */
QString settingsFileForWrite(const QString &name);
QString settingsFileForRead(const QString &name);
/** The same for a program that stands in `programDir` (the options of a copy in another folder, tests). */
QString settingsFileForWrite(const QString &name, const QString &programDir);

/**
 * The user's own copy of a data folder ("presets", "colorsets"...), in the
 * user's data folder. Such folders are read after the program's own, and
 * what the user makes goes there when the program's folder can't be written.
 * The folder may not exist.
 */
QString userDataFolder(const QString &name);
