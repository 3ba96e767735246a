#pragma once

namespace Cli {

/** Registers "backup": a manual backup of a project, or the list of its backups. */
void registerBackupVerb();

} // namespace Cli
