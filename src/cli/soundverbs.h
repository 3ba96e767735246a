#pragma once

namespace Cli {

/** Registers the sound file (.snd) with the generic verbs: info, check, save. */
void registerSoundFormat();
/** Registers "snd extract". */
void registerSoundVerbs();

} // namespace Cli
