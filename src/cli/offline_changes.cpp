#include "cli/offline_changes.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <thread>
#include <tuple>

#include "backup/backup_catalogue.h"
#include "backup/backup_file.h"
#include "backup/reg_file_reader.h"
#include "backup/registry_export.h"
#include "cli/change_recorder.h"
#include "cli/cli.h"
#include "cli/scan_command.h"
#include "cli/visible_text.h"
#include "engine/run_time_error.h"
#include "system/general_date.h"
#include "text/upper_case.h"
#include "text/utf8.h"
#include "text/utf8_path.h"

namespace regvex::cli {

namespace fs = std::filesystem;

std::string FullKey(RootKeyHandle root, const std::string& path) {
    return path.empty() ? RootKeyName(root) : RootKeyName(root) + "\\" + path;
}

fs::path BackupsFolderOf(const std::string& chosen, CliPlatform& platform) {
    return chosen.empty() ? platform.ProgramFolderPath() / "RegBackups"
                          : text::PathFromUtf8(chosen);
}

// Takes `--backups DIR` out of the arguments.
bool TakeBackupsOption(std::vector<std::string>& args, std::string& folder, std::string& error) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] != "--backups") {
            continue;
        }
        if (i + 1 >= args.size() || args[i + 1].empty() || !folder.empty()) {
            error = "--backups takes one folder";
            return false;
        }
        folder = args[i + 1];
        args.erase(args.begin() + static_cast<std::ptrdiff_t>(i),
                   args.begin() + static_cast<std::ptrdiff_t>(i + 2));
        --i;
    }
    return true;
}

// Refuses, before anything is written, every file that must not change now.
bool AllMayChange(const NotedChanges& noted, std::ostream& err, CliPlatform& platform) {
    bool all = true;
    for (const auto& [file, noted_file] : noted) {
        if (noted_file.changes.empty()) {
            continue;
        }
        const std::string why_not = platform.WhyFileCannotChange(file, noted_file.kind);
        if (!why_not.empty()) {
            err << "regvexlor-cli: " << VisibleText(why_not) << "\n";
            all = false;
        }
    }
    return all;
}

// Makes the noted changes file by file; the exit code.
int MakeChanges(const NotedChanges& noted, std::ostream& err, CliPlatform& platform) {
    for (const auto& [file, noted_file] : noted) {
        const auto& changes = noted_file.changes;
        if (changes.empty()) {
            continue;
        }
        const system::ReplaceResult result = platform.ChangeFile(file, noted_file.kind, changes);
        if (result.outcome != system::ReplaceOutcome::kDone) {
            err << "regvexlor-cli: " << VisibleText(result.message) << "\n";
            return result.outcome == system::ReplaceOutcome::kRefused ? kExitUsage
                                                                      : kExitScanFailed;
        }
        err << changes.size() << " changes written to " << VisibleText(text::Utf8FromPath(file))
            << " (the file before them: "
            << VisibleText(text::Utf8FromPath(system::PreviousFile(file))) << ")\n";
    }
    return kExitOk;
}

}  // namespace regvex::cli
