#include "cli/offline_repair.h"

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
#include "cli/offline_changes.h"
#include "cli/repair_commands.h"
#include "cli/scan_command.h"
#include "cli/visible_text.h"
#include "engine/run_time_error.h"
#include "text/upper_case.h"
#include "text/utf8.h"
#include "text/utf8_path.h"

namespace regvex::cli {

namespace fs = std::filesystem;

namespace {

struct RepairOptions {
    ScanOptions scan;
    std::string only;
    std::string backups_folder;
    bool dry_run = false;
};

// The backup of the values, as the Registry Editor exports them, under a name of the
// program's backups; its path, or empty after saying why not.
fs::path WriteBackup(const fs::path& folder, const std::vector<OfflineValue>& values,
                     CliPlatform& platform, std::ostream& err) {
    std::ostringstream text;
    backup::WriteExportHeader(text);
    for (std::size_t i = 0; i < values.size();) {
        std::vector<backup::ExportValue> same_key;
        std::size_t j = i;
        for (; j < values.size() && values[j].root == values[i].root &&
               values[j].key_path == values[i].key_path;
             ++j) {
            same_key.push_back(values[j].value);
        }
        backup::WriteExportKey(text, values[i].root, values[i].key_path, same_key);
        i = j;
    }
    std::error_code error;
    fs::create_directories(folder, error);
    fs::path path;
    // Two backups of one second would share a name: the later one waits for its own.
    for (int attempt = 0; attempt < 3; ++attempt) {
        path = folder / text::PathFromUtf8(backup::BackupFileName(platform.DateTextNow()));
        if (!fs::exists(path, error)) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    const std::string bytes = text.str();
    if (!file || !file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) ||
        !file.flush()) {
        err << "regvexlor-cli: the backup \"" << VisibleText(text::Utf8FromPath(path))
            << "\" cannot be written. Nothing was deleted.\n";
        return {};
    }
    return path;
}

bool ParseRepairOptions(std::vector<std::string> args, RepairOptions& options, std::string& error) {
    if (!TakeBackupsOption(args, options.backups_folder, error)) {
        return false;
    }
    std::vector<std::string> scan_args;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--dry-run") {
            options.dry_run = true;
        } else if (args[i] == "--only") {
            if (i + 1 >= args.size() || args[i + 1].empty()) {
                error = "--only needs a text";
                return false;
            }
            options.only = args[++i];
        } else {
            scan_args.push_back(args[i]);
        }
    }
    if (!ParseScanOptions(scan_args, options.scan, error) ||
        !FixTakesScanOptions(options.scan, error)) {
        return false;
    }
    if (!options.scan.help && !OnRegistryFiles(options.scan.sources)) {
        error =
            "fix --backups and --dry-run work on hive files (--hive or --windows) and Wine "
            "prefixes (--wine-prefix); --registry files cannot be written back";
        return false;
    }
    return true;
}

// The values found, once each, with what the --only text selects.
std::vector<FoundValue> Selected(std::vector<FoundValue> found, const std::string& only) {
    const std::string upper_only = text::UpperCase(only);
    std::set<std::tuple<std::string, std::string, std::string>> seen;
    std::erase_if(found, [&](const FoundValue& value) {
        const std::string shown = value.key_path + "\\" + value.value_name;
        if (!upper_only.empty() && text::UpperCase(shown).find(upper_only) == std::string::npos &&
            text::UpperCase(value.data_text).find(upper_only) == std::string::npos) {
            return true;
        }
        return !seen.emplace(value.root_key, text::UpperCase(value.key_path), value.value_name)
                    .second;
    });
    return found;
}

// The value whole, for the backup; false when the key or value is gone.
bool ReadWhole(Registry& registry, KeyHandle key, const std::string& name,
               backup::ExportValue& value) {
    std::string each;
    for (std::uint32_t index = 0;
         registry.ReadValue(key, index, each, value.type, value.data) == reg::kSuccess; ++index) {
        if (each == name) {
            value.name = name;
            value.position = index;
            return true;
        }
    }
    return false;
}

}  // namespace

bool IsOfflineRepair(const std::vector<std::string>& args) {
    return std::any_of(args.begin(), args.end(), [](const std::string& arg) {
        return arg == "--backups" || arg == "--dry-run" || arg == "--hive" || arg == "--windows" ||
               arg == "--wine-prefix";
    });
}

int RunOfflineFix(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                  CliPlatform& platform) {
    RepairOptions options;
    std::string error;
    if (!ParseRepairOptions(args, options, error)) {
        err << "regvexlor-cli: " << error << "\n";
        return kExitUsage;
    }
    if (options.scan.help) {
        out << UsageText();
        return kExitOk;
    }
    NotedChanges noted;
    RecordingPlatform recording(platform, noted);
    const auto source = OpenSource(options.scan.sources, err, recording);
    if (!source) {
        return kExitUsage;
    }
    std::vector<FoundValue> found;
    const int scanned = ScanValues(options.scan, *source, err, recording, found);
    if (scanned != kExitOk) {
        err << "regvexlor-cli: nothing was deleted\n";
        return scanned;
    }
    found = Selected(std::move(found), options.only);
    if (found.empty()) {
        err << "nothing to fix\n";
        return kExitOk;
    }
    Registry& registry = *source->registry;
    std::vector<OfflineValue> taken;
    for (const FoundValue& each : found) {
        OfflineValue value{RootKeyFromName(each.root_key), each.key_path, {}};
        ScopedKey key;
        if (ScopedKey::Open(registry, value.root, each.key_path, reg::kKeyAllAccess, key) !=
                reg::kSuccess ||
            !ReadWhole(registry, key.get(), each.value_name, value.value) ||
            registry.DeleteValue(key.get(), each.value_name) != reg::kSuccess) {
            err << "regvexlor-cli: the value \"" << VisibleText(each.value_name) << "\" of "
                << VisibleText(FullKey(value.root, each.key_path))
                << " cannot be read whole or belongs to no registry file. Nothing was deleted.\n";
            return kExitScanFailed;
        }
        taken.push_back(std::move(value));
    }
    if (!AllMayChange(noted, err, platform)) {
        err << "regvexlor-cli: nothing was deleted\n";
        return kExitUsage;
    }
    const char* const status = options.dry_run ? "Would delete\t" : "Deleted\t";
    std::ostringstream listed;
    for (const FoundValue& each : found) {
        listed << status << VisibleText(each.root_key) << '\t'
               << VisibleText(each.key_path + "\\" + each.value_name) << '\t'
               << VisibleText(each.data_text) << '\n';
    }
    if (options.dry_run) {
        out << listed.str();
        err << found.size() << " values would be deleted; nothing was written\n";
        return kExitOk;
    }
    const fs::path backup =
        WriteBackup(BackupsFolderOf(options.backups_folder, platform), taken, platform, err);
    if (backup.empty()) {
        return kExitScanFailed;
    }
    const int made = MakeChanges(noted, err, platform);
    if (made != kExitOk) {
        err << "regvexlor-cli: the backup of the values is \""
            << VisibleText(text::Utf8FromPath(backup)) << "\"\n";
        return made;
    }
    out << listed.str();
    // An offline edit is made whole or not at all: a refusal ended it before this point.
    err << FixSummary(found.size(), 0) << "; backup: " << VisibleText(text::Utf8FromPath(backup))
        << "\n";
    return kExitOk;
}

}  // namespace regvex::cli
