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
#include "cli/scan_command.h"
#include "cli/visible_text.h"
#include "engine/run_time_error.h"
#include "system/general_date.h"
#include "text/upper_case.h"
#include "text/utf8.h"
#include "text/utf8_path.h"

namespace regvex::cli {

namespace fs = std::filesystem;

namespace {

// The catalogue joins names with backslashes, as Windows does; here they are folders.
class NativeFiles final : public system::FileSystem {
  public:
    bool Exists(const std::string& path) override { return disk_.Exists(Native(path)); }
    bool CreateFolder(const std::string& path) override { return disk_.CreateFolder(Native(path)); }
    std::vector<std::string> FileNames(const std::string& folder) override {
        return disk_.FileNames(Native(folder));
    }
    std::optional<std::uint64_t> FileSize(const std::string& path) override {
        return disk_.FileSize(Native(path));
    }
    bool WriteFile(const std::string& path, std::string_view bytes) override {
        return disk_.WriteFile(Native(path), bytes);
    }
    bool RemoveFile(const std::string& path) override { return disk_.RemoveFile(Native(path)); }

  private:
    static std::string Native(std::string path) {
        std::replace(path.begin(), path.end(), '\\',
                     static_cast<char>(fs::path::preferred_separator));
        return path;
    }
    system::DiskFileSystem disk_;
};

// A value to take out or put back, whole.
struct OfflineValue {
    RootKeyHandle root = kHkeyAll;
    std::string key_path;
    backup::ExportValue value;
};

struct RepairOptions {
    ScanOptions scan;
    std::string only;
    std::string backups_folder;
    bool dry_run = false;
};

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
    for (const auto& [file, changes] : noted) {
        if (changes.empty()) {
            continue;
        }
        const std::string why_not = platform.WhyHiveCannotChange(file);
        if (!why_not.empty()) {
            err << "regvexlor-cli: " << VisibleText(why_not) << "\n";
            all = false;
        }
    }
    return all;
}

// Makes the noted changes file by file; the exit code.
int MakeChanges(const NotedChanges& noted, std::ostream& err, CliPlatform& platform) {
    for (const auto& [file, changes] : noted) {
        if (changes.empty()) {
            continue;
        }
        const hive::EditResult result = platform.EditHive(file, changes);
        if (result.outcome != hive::EditOutcome::kDone) {
            err << "regvexlor-cli: " << VisibleText(result.message) << "\n";
            return result.outcome == hive::EditOutcome::kRefused ? kExitUsage : kExitScanFailed;
        }
        err << changes.size() << " changes written to " << VisibleText(text::Utf8FromPath(file))
            << " (the file before them: "
            << VisibleText(text::Utf8FromPath(hive::PreviousFile(file))) << ")\n";
    }
    return kExitOk;
}

// The backup of the values, as the Registry Editor exports them, under a name of the
// program's backups; its path, or empty after saying why not.
fs::path WriteBackup(const fs::path& folder, const std::vector<OfflineValue>& values,
                     std::ostream& err) {
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
        path = folder / text::PathFromUtf8(backup::BackupFileName(system::GeneralDateTextNow()));
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
    if (!ParseScanOptions(scan_args, options.scan, error)) {
        return false;
    }
    const SourceOptions& sources = options.scan.sources;
    if (!options.scan.help && (!sources.registry_files.empty() || sources.Live())) {
        error =
            "fix --backups and --dry-run work on hive files (--hive or --windows); "
            "--registry files cannot be written back";
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
        return arg == "--backups" || arg == "--dry-run" || arg == "--hive" || arg == "--windows";
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
                << " cannot be read whole or belongs to no hive file. Nothing was deleted.\n";
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
        WriteBackup(BackupsFolderOf(options.backups_folder, platform), taken, err);
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
    err << found.size() << " values deleted; backup: " << VisibleText(text::Utf8FromPath(backup))
        << "\n";
    return kExitOk;
}

namespace {

// The places that our backups keep in comments, by key line ("HKEY_...\\path"), in the
// order of the values of that key.
std::map<std::string, std::vector<std::size_t>> PositionComments(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (bytes.size() >= 2 && bytes[0] == '\xFF' && bytes[1] == '\xFE') {
        std::u16string units((bytes.size() - 2) / 2, u'\0');
        for (std::size_t i = 0; i < units.size(); ++i) {
            units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 + 2 * i]) |
                                             static_cast<unsigned char>(bytes[3 + 2 * i]) << 8);
        }
        bytes = text::Utf16ToUtf8(units);
    }
    std::map<std::string, std::vector<std::size_t>> positions;
    std::string key;
    std::istringstream lines(bytes);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
            key = line.substr(1, line.size() - 2);
        } else if (line.starts_with(backup::kPositionComment)) {
            std::size_t position = 0;
            const char* const digits = line.data() + backup::kPositionComment.size();
            if (std::from_chars(digits, line.data() + line.size(), position).ec == std::errc()) {
                positions[key].push_back(position);
            }
        }
    }
    return positions;
}

// Every value of the backup file, in its order.
bool ReadBackupValues(const fs::path& file, CliPlatform& platform,
                      std::vector<OfflineValue>& values, std::ostream& err) {
    MemoryRegistry registry(platform.AnsiCodePage());
    if (const auto failure = backup::ImportRegFile(file, registry, platform.AnsiCodePage())) {
        err << "regvexlor-cli: " << VisibleText(text::Utf8FromPath(file)) << ":" << failure->line
            << ": " << VisibleText(failure->message) << "\n";
        return false;
    }
    const auto positions = PositionComments(file);
    for (const RootKeyHandle root :
         {kHkeyLocalMachine, kHkeyCurrentUser, kHkeyClassesRoot, kHkeyUsers, kHkeyCurrentConfig}) {
        std::vector<std::string> pending{std::string()};
        while (!pending.empty()) {
            const std::string path = std::move(pending.back());
            pending.pop_back();
            ScopedKey key;
            if (ScopedKey::Open(registry, root, path, reg::kKeyRead, key) != reg::kSuccess) {
                continue;
            }
            OfflineValue value{root, path, {}};
            const std::size_t first = values.size();
            for (std::uint32_t i = 0;
                 registry.ReadValue(key.get(), i, value.value.name, value.value.type,
                                    value.value.data) == reg::kSuccess;
                 ++i) {
                values.push_back(value);
            }
            // A file changed by hand may have lost the places; then they are not used.
            const auto kept = positions.find(backup::LineBreaksEscaped(FullKey(root, path)));
            if (kept != positions.end() && kept->second.size() == values.size() - first) {
                for (std::size_t i = first; i < values.size(); ++i) {
                    values[i].value.position = kept->second[i - first];
                }
            }
            std::vector<std::string> children;
            std::string name;
            for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
                children.push_back(path.empty() ? name : path + "\\" + name);
            }
            pending.insert(pending.end(), children.rbegin(), children.rend());
        }
    }
    return true;
}

int RestoreOffline(const fs::path& file, const SourceOptions& sources, std::ostream& out,
                   std::ostream& err, CliPlatform& platform) {
    std::vector<OfflineValue> values;
    if (!ReadBackupValues(file, platform, values, err)) {
        return kExitUsage;
    }
    NotedChanges noted;
    RecordingPlatform recording(platform, noted);
    const auto source = OpenSource(sources, err, recording);
    if (!source) {
        return kExitUsage;
    }
    for (const OfflineValue& each : values) {
        ScopedKey key;
        const auto& data = each.value.data;
        recording.PlaceNextValueAt(each.value.position);
        if (ScopedKey::Open(*source->registry, each.root, each.key_path, reg::kKeyAllAccess, key) !=
                reg::kSuccess ||
            source->registry->SetValue(key.get(), each.value.name, each.value.type, data) !=
                reg::kSuccess) {
            err << "regvexlor-cli: " << VisibleText(FullKey(each.root, each.key_path))
                << " is not a key of a hive file here; nothing was restored\n";
            return kExitUsage;
        }
    }
    if (!AllMayChange(noted, err, platform)) {
        err << "regvexlor-cli: nothing was restored\n";
        return kExitUsage;
    }
    const int made = MakeChanges(noted, err, platform);
    if (made == kExitOk) {
        out << "Restored\t" << values.size() << " values\t" << VisibleText(text::Utf8FromPath(file))
            << '\n';
    }
    return made;
}

}  // namespace

int RunOfflineBackups(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                      CliPlatform& platform) {
    std::vector<std::string> rest = args;
    std::string folder_option;
    std::string error;
    SourceOptions sources;
    std::vector<std::string> words;
    if (!TakeBackupsOption(rest, folder_option, error)) {
        err << "regvexlor-cli: " << error << "\n";
        return kExitUsage;
    }
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (IsSourceOption(rest[i])) {
            if (i + 1 >= rest.size() || !ParseSourceOption(rest[i], rest[i + 1], sources, error)) {
                err << "regvexlor-cli: " << (error.empty() ? rest[i] + " needs a value" : error)
                    << "\n";
                return kExitUsage;
            }
            ++i;
        } else {
            words.push_back(rest[i]);
        }
    }
    int number = 0;
    const std::string number_text = words.size() == 2 ? words[1] : std::string();
    const auto [end, failure] =
        std::from_chars(number_text.data(), number_text.data() + number_text.size(), number);
    if (!words.empty() &&
        ((words[0] != "restore" && words[0] != "delete") || words.size() != 2 ||
         failure != std::errc() || end != number_text.data() + number_text.size())) {
        err << "regvexlor-cli: backups takes nothing, \"restore N\" or \"delete N\"\n";
        return kExitUsage;
    }
    if (!CheckSourceOptions(sources, error) || !sources.registry_files.empty()) {
        err << "regvexlor-cli: " << (error.empty() ? "a backup is restored to hive files" : error)
            << "\n";
        return kExitUsage;
    }
    const fs::path folder = BackupsFolderOf(folder_option, platform);
    NativeFiles files;
    std::vector<backup::BackupEntry> entries;
    try {
        backup::ListBackups(files, text::Utf8FromPath(folder), entries);
    } catch (const RunTimeError& listing) {
        err << "regvexlor-cli: " << VisibleText(listing.what()) << "\n";
        return kExitScanFailed;
    }
    if (words.empty()) {
        for (const backup::BackupEntry& entry : entries) {
            out << VisibleText(entry.number_text) << '\t' << VisibleText(entry.date_text) << '\t'
                << VisibleText(entry.size_text) << '\t' << VisibleText(entry.file_name) << '\n';
        }
        if (entries.empty()) {
            err << "There are no backups available at this time.\n";
        }
        return kExitOk;
    }
    if (number < 1 || static_cast<std::size_t>(number) > entries.size()) {
        err << "regvexlor-cli: there is no Backup #" << number << " (" << entries.size()
            << " backups)\n";
        return kExitUsage;
    }
    const fs::path file = folder / text::PathFromUtf8(entries[number - 1].file_name);
    if (words[0] == "delete") {
        std::error_code removed;
        if (!fs::remove(file, removed)) {
            err << "regvexlor-cli: " << VisibleText(text::Utf8FromPath(file))
                << " could not be deleted\n";
            return kExitScanFailed;
        }
        out << "Deleted\t" << VisibleText(entries[number - 1].number_text) << '\n';
        return kExitOk;
    }
    if (sources.Live()) {
        err << "regvexlor-cli: restore a backup to hive files with --hive or --windows\n";
        return kExitUsage;
    }
    return RestoreOffline(file, sources, out, err, platform);
}

}  // namespace regvex::cli
