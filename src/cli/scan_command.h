#pragma once
// "scan": runs the program's scan over the live registry or export files and prints
// one line per finding.

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/cli_platform.h"

namespace regvex::cli {

struct ScanOptions {
    std::string scan_drive;  // "C:\"
    std::vector<std::string> registry_files;
    std::vector<std::pair<char, std::string>> drive_folders;  // drive letter, folder
    std::string ignore_file;  // an ignore list, as the program keeps it; empty for none
};

bool ParseScanOptions(const std::vector<std::string>& args, ScanOptions& options,
                      std::string& error);

int RunScan(const ScanOptions& options, std::ostream& out, std::ostream& err,
            CliPlatform& platform);

}  // namespace regvex::cli
