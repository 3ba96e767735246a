#pragma once

namespace Cli {

/** Registers "run": a test run of a project in an engine. */
void registerRunVerb();

} // namespace Cli
