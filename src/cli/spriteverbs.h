#pragma once

class QString;

namespace Cli {

struct Command;

/**
 * Whether --kind, if given, names a kind of project a sprite file can be
 * read as: character, stage, storyboard, font or other. Says what is wrong
 * under `verb` when not.
 */
bool kindOptionValid(const Command &command, const QString &verb);

/** Registers the sprite file (.sff) with the generic verbs: info, check, save. */
void registerSpriteFormat();
/** Registers "sff extract". */
void registerSpriteVerbs();

} // namespace Cli
