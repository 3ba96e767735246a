#pragma once

namespace Cli {

/** Registers the sprite file (.sff) with the generic verbs: info, check, save. */
void registerSpriteFormat();
/** Registers "sff extract". */
void registerSpriteVerbs();

} // namespace Cli
