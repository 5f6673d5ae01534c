#pragma once
// "fix" and "backups": the program's Fix command and its backups page, on the live
// registry.

#include <ostream>
#include <string>
#include <vector>

#include "cli/cli_platform.h"

namespace regvex::cli {

// fix --drive C: [--only TEXT] [--ignore FILE]
int RunFix(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           CliPlatform& platform);

// backups [restore N | delete N]
int RunBackups(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
               CliPlatform& platform);

}  // namespace regvex::cli
