#pragma once

namespace Cli {

/** AIR, DEF and the other text files: information and saving. */
void registerTextFormats();

} // namespace Cli
