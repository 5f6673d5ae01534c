#pragma once
// "scan": runs the program's scan over the live registry or export files and prints
// one line per finding.

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "backup/backup_file.h"
#include "cli/cli_platform.h"
#include "cli/registry_source.h"

namespace regvex::cli {

struct ScanOptions {
    std::string scan_drive;  // "C:\"
    SourceOptions sources;
    std::vector<std::pair<char, std::string>> drive_folders;  // drive letter, folder
    std::string ignore_file;  // an ignore list, as the program keeps it; empty for none
    bool json = false;        // --format json: one object per finding
    bool explain = false;     // --explain: why each finding is one, in words
    bool help = false;        // the usage was asked for; nothing else was read
};

// A value the scan found, its key path and name apart as the walk had them.
struct FoundValue {
    std::string root_key;
    std::string key_path;
    std::string value_name;
    std::string data_text;
};

bool ParseScanOptions(const std::vector<std::string>& args, ScanOptions& options,
                      std::string& error);

// False, with the reason, for the scan's options that fix has no use for.
bool FixTakesScanOptions(const ScanOptions& options, std::string& error);

int RunScan(const ScanOptions& options, std::ostream& out, std::ostream& err,
            CliPlatform& platform);

// The same scan of `registry` (the options' registry files are not read), keeping the
// findings as rows of a backup instead of printing them. Answers the exit code.
int ScanInto(const ScanOptions& options, Registry& registry, std::ostream& err,
             CliPlatform& platform, std::vector<backup::BackupRow>& findings);

// The same scan of an opened source (with the drive it brings), keeping the values found.
int ScanValues(const ScanOptions& options, const OpenedSource& source, std::ostream& err,
               CliPlatform& platform, std::vector<FoundValue>& found);

}  // namespace regvex::cli
