#pragma once
// "fix" and "backups restore" on a registry that is not running (hive files, a Windows
// partition): the values go from, or back to, the files themselves, each file changed
// in one verified step, with a backup that keeps every deleted value exactly.

#include <ostream>
#include <string>
#include <vector>

#include "cli/cli_platform.h"

namespace regvex::cli {

// Whether the arguments ask for the offline form of fix or backups.
bool IsOfflineRepair(const std::vector<std::string>& args);

// fix --drive C: SOURCE [--only TEXT] [--ignore FILE] [--backups DIR] [--dry-run]
int RunOfflineFix(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                  CliPlatform& platform);

// backups [--backups DIR] [restore N SOURCE | delete N]
int RunOfflineBackups(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                      CliPlatform& platform);

}  // namespace regvex::cli
