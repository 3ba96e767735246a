#pragma once

namespace Cli {

/** Registers every file format the command-line tool reads. */
void registerFormats();
/** Registers the verbs; the generic ones take the options of the formats registered before. */
void registerVerbs();

} // namespace Cli
