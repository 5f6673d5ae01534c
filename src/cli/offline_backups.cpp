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
#include "cli/restore_read_back.h"
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
    values = ValuesHeld(registry);
    // A file changed by hand may have lost the places; then they are not used.
    const auto positions = PositionComments(file);
    for (std::size_t first = 0; first < values.size();) {
        std::size_t end = first;
        while (end < values.size() && values[end].root == values[first].root &&
               values[end].key_path == values[first].key_path) {
            ++end;
        }
        const auto kept = positions.find(
            backup::LineBreaksEscaped(FullKey(values[first].root, values[first].key_path)));
        if (kept != positions.end() && kept->second.size() == end - first) {
            for (std::size_t i = first; i < end; ++i) {
                values[i].value.position = kept->second[i - first];
            }
        }
        first = end;
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
                << " is not a key of a registry file here; nothing was restored\n";
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
        err << "regvexlor-cli: "
            << (error.empty() ? "a backup is restored to registry files" : error) << "\n";
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
        PrintBackupList(entries, out, err);
        return kExitOk;
    }
    if (!IsListedBackup(number, entries, err)) {
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
    if (!OnRegistryFiles(sources)) {
        err << "regvexlor-cli: restore a backup to hive files with --hive or --windows, or to "
               "a Wine prefix with --wine-prefix\n";
        return kExitUsage;
    }
    return RestoreOffline(file, sources, out, err, platform);
}

}  // namespace regvex::cli
