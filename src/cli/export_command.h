#pragma once
// "export": writes a registry, or one key and all below it, as a "Windows Registry Editor
// Version 5.00" file with every value's exact type and bytes.

#include <ostream>
#include <string>
#include <vector>

#include "cli/cli_platform.h"

namespace regvex::cli {

int RunExport(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
              CliPlatform& platform);

}  // namespace regvex::cli
