#pragma once
// "fix" and "backups": the program's Fix command and its backups page, on the live
// registry.

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "backup/backup_catalogue.h"
#include "cli/cli_platform.h"

namespace regvex::cli {

// fix --drive C: [--only TEXT] [--ignore FILE]
int RunFix(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           CliPlatform& platform);

// backups [restore N | delete N]
int RunBackups(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
               CliPlatform& platform);

// What both kinds of "backups" share: the listing as the backups page shows it, and the
// check of a backup's number against it (false after saying why).
void PrintBackupList(const std::vector<backup::BackupEntry>& entries, std::ostream& out,
                     std::ostream& err);
bool IsListedBackup(int number, const std::vector<backup::BackupEntry>& entries, std::ostream& err);

// The count that every fix ends with: "N values deleted, M refused".
std::string FixSummary(std::size_t deleted, std::size_t refused);

}  // namespace regvex::cli
