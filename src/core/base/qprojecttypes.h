#pragma once

#include <QString>
#include <QtGlobal>

/**
 * Kind of a project. Bit values, so that an editor can declare the kinds it
 * serves as a mask.
 */
enum QProjectType {
    Character = 1,
    Storyboard = 2,
    Stage = 4,
    Font = 8
};

/** The document kinds of a project, as used in signals and in navigation. */
enum QProjectFileType {
    FileDefinitions = 0,
    FileSprites = 1,
    FileAnimations = 2,
    FileCommands = 3,
    FileStates = 4,
    FileSounds = 5
};

/** "Character", "Storyboard", "Stage" or "Font"; empty for anything else. Translated. */
QString projectTypeText(int type);

/** The filter of the save dialog for a document kind, such as "Sprites (*.sff)". Translated. */
QString projectFileFilter(QProjectFileType file);

/** The default engine version: 1.1.0.0, one byte per part, highest part first. */
constexpr quint32 DefaultEngineVersion = 0x1010000;

/**
 * The engine a project is made for. Ikemen GO runs M.U.G.E.N. content and
 * adds to it: checked for Ikemen GO, all that M.U.G.E.N. 1.1 reads is valid,
 * and Ikemen GO's additions too.
 */
enum QEngineTarget {
    TargetMugen = 0,
    TargetIkemen = 1
};

/** "M.U.G.E.N." or "Ikemen GO". */
QString engineTargetText(int target);
