#pragma once

#include <QtGlobal>

namespace Cli {

struct Command;

/** AIR, DEF and the other text files: information, checks and saving. */
void registerTextFormats();

/**
 * The engine version of --mugen-version, packed one byte a part: "1.0",
 * "1.1", "1.0.0.1". A dotted number too large for the packing, such as
 * "2002.04.14", is an engine before 1.0: version 0, the oldest. Without the
 * option, `fallback`. False for anything else.
 */
bool engineVersion(const Command &command, quint32 *version, quint32 fallback);

} // namespace Cli
