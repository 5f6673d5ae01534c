#include "cli/scan_command.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "backup/backup_file.h"
#include "backup/reg_file_reader.h"
#include "cli/cli.h"
#include "cli/json_text.h"
#include "cli/progress_line.h"
#include "cli/unexamined_count.h"
#include "cli/visible_text.h"
#include "engine/caching_file_existence.h"
#include "engine/drive_map.h"
#include "engine/file_reference.h"
#include "engine/memory_registry.h"
#include "engine/reg_search.h"
#include "engine/value_data_text.h"
#include "ignore/ignore_list.h"
#include "scan/finding_explanation.h"
#include "scan/finding_verdict.h"
#include "text/utf8_path.h"

namespace regvex::cli {

namespace {

bool IsDriveLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

char UpperDrive(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// "C", "C:", "C:\" or "C:/", either case.
bool ParseDrive(const std::string& text, char& drive) {
    if (text.empty() || !IsDriveLetter(text[0]) || text.size() > 3) {
        return false;
    }
    if (text.size() >= 2 && text[1] != ':') {
        return false;
    }
    if (text.size() == 3 && text[2] != '\\' && text[2] != '/') {
        return false;
    }
    drive = UpperDrive(text[0]);
    return true;
}

// One finding as a JSON object. The key and the value name are parted at the last
// backslash, as Fix parts them; a key-name match has no value and no type.
std::string FindingJson(Registry& registry, std::string_view root, std::string_view key,
                        std::string_view data, FoundKind found, std::string_view scan_drive) {
    std::string_view subkey = key;
    std::string_view name;
    std::string type = "null";
    if (found != FoundKind::kKeyName) {
        const std::size_t slash = key.rfind('\\');
        subkey = slash == std::string_view::npos ? std::string_view() : key.substr(0, slash);
        name = slash == std::string_view::npos ? key : key.substr(slash + 1);
        ScopedKey opened;
        std::uint32_t number = 0;
        std::vector<std::uint8_t> bytes;
        if (ScopedKey::Open(registry, RootKeyFromName(root), subkey, reg::kKeyRead, opened) ==
                reg::kSuccess &&
            registry.QueryValue(opened.get(), name, number, bytes) == reg::kSuccess) {
            const std::string_view type_name = ValueTypeName(number);
            type = !type_name.empty() ? JsonString(type_name) : std::to_string(number);
        }
    }
    std::string line = "{\"root\":" + JsonString(root) + ",\"key\":" + JsonString(subkey);
    line += ",\"value\":" + (found == FoundKind::kKeyName ? "null" : JsonString(name));
    line += ",\"type\":" + type + ",\"data\":" + JsonString(data);
    line += ",\"file\":" + JsonString(ValidatePath(data, scan_drive)) + ",\"exists\":false}";
    return line;
}

class CliSearchHost final : public SearchHost {
  public:
    explicit CliSearchHost(ProgressLine& progress) : progress_(progress) {}
    void SetProgressMax(int) override {}
    int ProgressValue() const override { return progress_value_; }
    void SetProgressValue(int value) override { progress_value_ = value; }
    void SetCurrentKey(const std::string& full_key_name) override {
        progress_.KeyVisited(full_key_name);
    }
    void DoEvents() override {}
    void EndProcess() override { std::exit(kExitScanFailed); }

  private:
    ProgressLine& progress_;
    int progress_value_ = 0;
};

class CliScanEvents final : public SearchEvents {
  public:
    // `interactive`: the findings and the progress line share one terminal.
    // Findings are printed to `out` when there is one, and kept in `kept` when there is
    // one.
    CliScanEvents(const scan::FindingRules& rules, std::ostream* out,
                  std::vector<backup::BackupRow>* kept, ProgressLine& progress, bool interactive)
        : rules_(rules), out_(out), kept_(kept), progress_(progress), interactive_(interactive) {}

    // Findings as JSON objects; the registry tells each value's type.
    void WriteJson(Registry& registry) { json_registry_ = &registry; }

    // Findings explained in words instead of one line each.
    void Explain(Registry& registry, const scan::ExplainContext& context, AccessMask access) {
        explain_registry_ = &registry;
        explain_context_ = &context;
        explain_access_ = access;
    }

    // Values found are also kept, their key and name apart.
    void KeepValues(std::vector<FoundValue>& found) { found_ = &found; }

    // Once the findings cannot be written, scanning on would only lose more of them.
    void StopWhenOutputFails(cRegSearch& search) { search_ = &search; }

    void SearchFound(std::string_view sRootKey, std::string_view sKey, std::string_view sValue,
                     FoundKind lFound) override {
        if (!scan::IsListedFinding(rules_, sKey, sValue)) {
            return;
        }
        if (out_ != nullptr) {
            if (interactive_) {
                progress_.Clear();
            }
            if (explain_registry_ != nullptr) {
                WriteExplanation(sRootKey, sKey, sValue);
            } else if (json_registry_ != nullptr) {
                *out_ << FindingJson(*json_registry_, sRootKey, sKey, sValue, lFound,
                                     rules_.scan_drive)
                      << '\n';
            } else {
                *out_ << VisibleText(scan::FindingStatus(lFound)) << '\t' << VisibleText(sRootKey)
                      << '\t' << VisibleText(sKey) << '\t' << VisibleText(sValue) << '\n';
            }
            if (interactive_) {
                out_->flush();
            }
            if (out_->fail() && search_ != nullptr) {
                search_->StopSearch();
            }
        }
        if (kept_ != nullptr) {
            kept_->push_back({std::string(sRootKey), std::string(sKey), std::string(sValue)});
        }
        if (found_ != nullptr && lFound != FoundKind::kKeyName && search_ != nullptr) {
            const std::string& path = search_->FoundKeyPath();
            found_->push_back({std::string(sRootKey), path,
                               std::string(sKey.substr(path.size() + 1)), std::string(sValue)});
        }
        ++count_;
        progress_.FindingListed();
    }
    void SearchFinished(FinishReason lReason) override { reason_ = lReason; }

    std::size_t count() const { return count_; }
    FinishReason reason() const { return reason_; }

  private:
    void WriteExplanation(std::string_view sRootKey, std::string_view sKey,
                          std::string_view sValue) {
        std::string key;
        std::string name;
        scan::SplitFoundKey(sKey, search_ != nullptr ? search_->FoundKeyPath() : "", key, name);
        const scan::FindingExplanation explanation = scan::ExplainFinding(
            scan::ReadValueToExplain(*explain_registry_, explain_access_, std::string(sRootKey),
                                     std::move(key), std::move(name), std::string(sValue)),
            *explain_context_);
        *out_ << (count_ == 0 ? "" : "\n")
              << scan::ExplanationText(explanation,
                                       [](std::string_view text) { return VisibleText(text); });
    }

    const scan::FindingRules& rules_;
    std::ostream* out_;
    std::vector<backup::BackupRow>* kept_;
    ProgressLine& progress_;
    bool interactive_;
    cRegSearch* search_ = nullptr;
    std::vector<FoundValue>* found_ = nullptr;
    Registry* json_registry_ = nullptr;
    Registry* explain_registry_ = nullptr;
    const scan::ExplainContext* explain_context_ = nullptr;
    AccessMask explain_access_ = 0;
    std::size_t count_ = 0;
    FinishReason reason_ = FinishReason::kFinished;
};

// The system's existence test with its answers remembered for one scan.
class CachingSystemFiles final : public FileExistence {
  public:
    explicit CachingSystemFiles(std::unique_ptr<FileExistence> system)
        : system_(std::move(system)), answers_(*system_) {}
    int Check(const std::string& path) override { return answers_.Check(path); }

  private:
    std::unique_ptr<FileExistence> system_;
    CachingFileExistence answers_;
};

// `drive_note` tells what folder stands for the scanned drive, when one does.
std::unique_ptr<FileExistence> ChooseFiles(const ScanOptions& options, const OpenedSource* source,
                                           std::ostream& err, CliPlatform& platform,
                                           std::string& drive_note) {
    const char drive = options.scan_drive[0];
    auto map = std::make_unique<DriveMapFileExistence>();
    for (const auto& [letter, folder] : options.drive_folders) {
        std::error_code error;
        if (!std::filesystem::is_directory(text::PathFromUtf8(folder), error)) {
            err << "regvexlor-cli: --map " << letter << ": \"" << VisibleText(folder)
                << "\" is not a folder\n";
            return nullptr;
        }
        map->Map(letter, text::PathFromUtf8(folder));
        if (letter == drive) {
            drive_note = "the folder " + folder;
        }
    }
    // A partition or a prefix brings its own drives, unless a map says otherwise.
    if (source != nullptr) {
        for (const auto& [letter, folder] : source->drives) {
            if (!map->IsMapped(letter)) {
                map->Map(letter, folder);
                if (letter == drive) {
                    drive_note = "the folder " + text::Utf8FromPath(folder);
                }
            }
        }
    }
    if (map->IsMapped(drive)) {
        return map;
    }
    auto system = platform.SystemFiles();
    if (!system) {
        err << "regvexlor-cli: nothing here stands for drive " << drive
            << ": -- give the folder that does with --map " << drive << ":=DIR\n";
        return nullptr;
    }
    // The system's answer is worth remembering for the scan; the drive map above keeps
    // its own.
    return std::make_unique<CachingSystemFiles>(std::move(system));
}

// Two things the program reads in an ignore list as it always has, and that a user is
// unlikely to mean: an empty entry (it occurs in every text), and line ends of LF alone
// (only CR or CR LF ends a line, so the lines around such an end become one entry).
void WarnOfSurprisingEntries(const std::string& file, const std::vector<std::string>& entries,
                             std::ostream& err) {
    const auto holds = [&](auto test) { return std::any_of(entries.begin(), entries.end(), test); };
    if (holds([](const std::string& entry) { return entry.empty(); })) {
        err << "regvexlor-cli: warning: the ignore list \"" << VisibleText(file)
            << "\" holds an empty entry, which hides every finding\n";
    }
    if (holds([](const std::string& entry) { return entry.find('\n') != std::string::npos; })) {
        err << "regvexlor-cli: warning: the ignore list \"" << VisibleText(file)
            << "\" ends lines with LF alone, which does not end an entry: those lines are "
               "read as one\n";
    }
}

// The ignore list read as the program loads it. The command line never creates the file:
// a name that reads nothing is more likely a mistake than an empty list.
bool LoadIgnoreList(const ScanOptions& options, std::ostream& err, CliPlatform& platform,
                    std::vector<std::string>& entries) {
    if (options.ignore_file.empty()) {
        return true;
    }
    const std::filesystem::path path = text::PathFromUtf8(options.ignore_file);
    std::error_code error;
    // A folder opens as a stream on some systems and then reads nothing.
    std::ifstream in;
    if (std::filesystem::is_regular_file(path, error)) {
        in.open(path, std::ios::binary);
    }
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (!in.is_open() || in.bad()) {
        err << "regvexlor-cli: cannot read the ignore list \"" << VisibleText(options.ignore_file)
            << "\"\n";
        return false;
    }
    entries = ignore::LoadIgnoreEntries(bytes, platform.AnsiCodePage());
    WarnOfSurprisingEntries(options.ignore_file, entries, err);
    return true;
}

}  // namespace

bool ParseScanOptions(const std::vector<std::string>& args, ScanOptions& options,
                      std::string& error) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (IsHelpOption(option)) {
            options.help = true;
            return true;
        }
        if (option == "--explain") {
            options.explain = true;
            continue;
        }
        if (option != "--drive" && option != "--map" && option != "--ignore" &&
            option != "--format" && !IsSourceOption(option)) {
            error = "unknown option \"" + VisibleText(option) + "\"";
            return false;
        }
        if (i + 1 >= args.size()) {
            error = option + " needs a value";
            return false;
        }
        const std::string& value = args[++i];
        if (option == "--drive") {
            char drive = 0;
            if (!options.scan_drive.empty()) {
                error = "--drive can be given once";
                return false;
            }
            if (!ParseDrive(value, drive)) {
                error =
                    "--drive takes a drive letter such as C:, not \"" + VisibleText(value) + "\"";
                return false;
            }
            options.scan_drive = std::string(1, drive) + ":\\";
        } else if (IsSourceOption(option)) {
            if (!ParseSourceOption(option, value, options.sources, error)) {
                return false;
            }
        } else if (option == "--format") {
            if (value != "tsv" && value != "json") {
                error = "--format takes tsv or json, not \"" + VisibleText(value) + "\"";
                return false;
            }
            options.json = value == "json";
        } else if (option == "--ignore") {
            if (!options.ignore_file.empty()) {
                error = "--ignore can be given once";
                return false;
            }
            if (value.empty()) {
                error = "--ignore needs a file";
                return false;
            }
            options.ignore_file = value;
        } else {
            const std::size_t equals = value.find('=');
            char drive = 0;
            if (equals == std::string::npos || !ParseDrive(value.substr(0, equals), drive)) {
                error = "--map takes a drive and a folder such as C:=/mnt/windows, not \"" +
                        VisibleText(value) + "\"";
                return false;
            }
            if (equals + 1 == value.size()) {
                error = "--map " + std::string(1, drive) + ": needs a folder";
                return false;
            }
            options.drive_folders.emplace_back(drive, value.substr(equals + 1));
        }
    }
    if (options.scan_drive.empty()) {
        error = "scan needs --drive";
        return false;
    }
    if (options.explain && options.json) {
        error = "--explain writes text; it cannot be combined with --format json";
        return false;
    }
    return CheckSourceOptions(options.sources, error);
}

bool FixTakesScanOptions(const ScanOptions& options, std::string& error) {
    if (options.explain) {
        error = "--explain belongs to scan: fix deletes, it does not explain";
        return false;
    }
    return true;
}

namespace {

const char* Plural(std::uint64_t count, const char* one, const char* many) {
    return count == 1 ? one : many;
}

void ReportUnexamined(const UnexaminedCount& counted, std::ostream& err) {
    if (counted.values() != 0) {
        err << counted.values() << Plural(counted.values(), " value", " values")
            << " not examined: a value too large for the scan, or with too long a name, ends "
               "its key's values\n";
    }
    if (counted.keys() != 0) {
        err << counted.keys() << Plural(counted.keys(), " key", " keys")
            << " not examined, nor anything below them: a key name too long for the scan ends "
               "its parent's subkeys\n";
    }
}

int Search(const ScanOptions& options, Registry& registry, const OpenedSource* source,
           std::ostream* out, std::vector<backup::BackupRow>* kept, std::ostream& err,
           CliPlatform& platform, std::vector<FoundValue>* found = nullptr) {
    std::string drive_note;
    auto files = ChooseFiles(options, source, err, platform, drive_note);
    if (!files) {
        return kExitUsage;
    }
    std::vector<std::string> ignore_entries;
    if (!LoadIgnoreList(options, err, platform, ignore_entries)) {
        return kExitUsage;
    }

    // The scan as the program runs it: every root, value names and data, the extension
    // filter off.
    const scan::FindingRules rules{options.scan_drive, files.get(),
                                   scan::FixedIgnoreEntries(ignore_entries), false};
    const bool progress_shown = platform.StderrIsTerminal();
    ProgressLine progress(err, progress_shown);
    CliSearchHost host(progress);
    CliScanEvents events(rules, out, kept, progress, progress_shown && platform.StdoutIsTerminal());
    UnexaminedCount counted(registry);
    cRegSearch search(counted, host, events, platform.KeyAccessMask());
    events.StopWhenOutputFails(search);
    if (found != nullptr) {
        events.KeepValues(*found);
    }
    if (options.json) {
        events.WriteJson(registry);
    }
    const scan::ExplainContext explain{options.scan_drive, files.get(), ignore_entries, drive_note};
    if (options.explain) {
        events.Explain(registry, explain, platform.KeyAccessMask());
    }
    search.RootKey(kHkeyAll);
    search.SubKey("");
    search.SearchFlags(search_flags::kValueNames | search_flags::kValueData);
    search.SearchString(options.scan_drive);
    search.DoSearch();
    progress.Clear();
    if (options.json && out != nullptr) {
        const std::int32_t reason = static_cast<std::int32_t>(events.reason());
        *out << "{\"count\":" << events.count() << ",\"stop\":"
             << (events.reason() == FinishReason::kFinished ? "\"finished\""
                 : events.reason() == FinishReason::kStopped
                     ? "\"stopped\""
                     : "\"error " + std::to_string(reason) + "\"")
             << "}\n";
    }
    // The command line as a whole reports output that could not be written.
    if (out != nullptr && !out->flush()) {
        return kExitScanFailed;
    }

    err << events.count() << " errors found\n";
    ReportUnexamined(counted, err);
    if (events.reason() != FinishReason::kFinished) {
        err << "regvexlor-cli: the scan ended early with error "
            << static_cast<std::int32_t>(events.reason()) << "\n";
        return kExitScanFailed;
    }
    return kExitOk;
}

}  // namespace

int RunScan(const ScanOptions& options, std::ostream& out, std::ostream& err,
            CliPlatform& platform) {
    const auto source = OpenSource(options.sources, err, platform);
    if (!source) {
        return kExitUsage;
    }
    return Search(options, *source->registry, source.get(), &out, nullptr, err, platform);
}

int ScanInto(const ScanOptions& options, Registry& registry, std::ostream& err,
             CliPlatform& platform, std::vector<backup::BackupRow>& findings) {
    return Search(options, registry, nullptr, nullptr, &findings, err, platform);
}

int ScanValues(const ScanOptions& options, const OpenedSource& source, std::ostream& err,
               CliPlatform& platform, std::vector<FoundValue>& found) {
    return Search(options, *source.registry, &source, nullptr, nullptr, err, platform, &found);
}

}  // namespace regvex::cli
