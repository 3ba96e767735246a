#pragma once

#include <QtGlobal>

namespace Cli {

struct Command;

/** AIR, DEF and the other text files: information, checks and saving. */
void registerTextFormats();

/**
 * The engine version of --mugen-version, or of --target mugen-X.Y, packed
 * one byte a part: "1.0", "1.1", "1.0.0.1". A dotted number too large for
 * the packing, such as "2002.04.14", is an engine before 1.0: version 0,
 * the oldest. Without either, `fallback`. False for anything else.
 */
bool engineVersion(const Command &command, quint32 *version, quint32 fallback);

/**
 * The engine of --target, a QEngineTarget value: "ikemen" for Ikemen GO,
 * "mugen" or "mugen-X.Y" for M.U.G.E.N. (engineVersion() takes the
 * version). Without the option, `fallback`. False for anything else.
 */
bool engineTarget(const Command &command, int *target, int fallback);

} // namespace Cli
