#pragma once
// "--wine-prefix DIR": the registry and drives of a Wine prefix, read from its files.

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/cli_platform.h"
#include "engine/registry.h"

namespace regvex::cli {

// The prefix's registry, with its warnings written to `err`; null, after a message, when
// the prefix cannot be read. `drives` gets the prefix's drives, to be mapped before any
// --map.
std::unique_ptr<Registry> OpenWinePrefix(const std::string& prefix, std::ostream& err,
                                         std::vector<std::pair<char, std::string>>& drives,
                                         CliPlatform& platform);

}  // namespace regvex::cli
