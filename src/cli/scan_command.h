#pragma once
// "scan": runs the program's scan over the live registry or export files and prints
// one line per finding.

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "backup/backup_file.h"
#include "cli/cli_platform.h"

namespace regvex::cli {

struct ScanOptions {
    std::string scan_drive;  // "C:\"
    std::vector<std::string> registry_files;
    std::string wine_prefix;  // a Wine prefix's folder, read from its files; empty for none
    std::vector<std::pair<char, std::string>> drive_folders;  // drive letter, folder
    std::string ignore_file;  // an ignore list, as the program keeps it; empty for none
    bool help = false;        // the usage was asked for; nothing else was read
};

bool ParseScanOptions(const std::vector<std::string>& args, ScanOptions& options,
                      std::string& error);

int RunScan(const ScanOptions& options, std::ostream& out, std::ostream& err,
            CliPlatform& platform);

// The same scan of `registry` (the options' registry files are not read), keeping the
// findings as rows of a backup instead of printing them. Answers the exit code.
int ScanInto(const ScanOptions& options, Registry& registry, std::ostream& err,
             CliPlatform& platform, std::vector<backup::BackupRow>& findings);

}  // namespace regvex::cli
