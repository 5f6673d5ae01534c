#include "cli/repair_commands.h"

#include <charconv>
#include <optional>
#include <set>

#include "backup/backup_catalogue.h"
#include "backup/backup_file.h"
#include "backup/registry_fix.h"
#include "cli/cli.h"
#include "cli/offline_repair.h"
#include "cli/restore_read_back.h"
#include "cli/scan_command.h"
#include "cli/visible_text.h"
#include "engine/run_time_error.h"
#include "text/upper_case.h"

namespace regvex::cli {

namespace {

RepairPlatform* RepairOrSayWhyNot(CliPlatform& platform, std::ostream& err) {
    std::string why_not;
    RepairPlatform* repair = platform.Repair(why_not);
    if (repair == nullptr) {
        err << "regvexlor-cli: " << VisibleText(why_not) << "\n";
    }
    return repair;
}

bool Selected(const backup::BackupRow& row, const std::string& upper_only) {
    return upper_only.empty() ||
           text::UpperCase(row.sub_key).find(upper_only) != std::string::npos ||
           text::UpperCase(row.value).find(upper_only) != std::string::npos;
}

// The backups as the catalogue lists them, or nothing after saying why.
bool ListedBackups(RepairPlatform& repair, std::ostream& err,
                   std::vector<backup::BackupEntry>& entries) {
    const std::string folder = backup::BackupsFolder(repair.ProgramFolder());
    try {
        backup::ListBackups(repair.Disk(), folder, entries);
    } catch (const RunTimeError& error) {
        err << "regvexlor-cli: " << VisibleText(error.what()) << "\n";
        return false;
    }
    return true;
}

// Deletes each finding's value, saying for each whether it went; the number refused.
std::size_t DeleteFindings(Registry& registry, AccessMask access,
                           const std::vector<backup::BackupRow>& findings, std::ostream& out) {
    std::size_t refused = 0;
    // The stored values deleted so far: a scan finds a value once through every root that
    // reaches it (HKEY_CURRENT_USER is a key of HKEY_USERS), and only the first deletes it.
    std::set<std::string> deleted;
    for (const backup::BackupRow& row : findings) {
        // Every finding came from a value of a key, so its path has a backslash.
        const backup::ValueDeletion deletion = backup::DeleteExistingValuePath(
            registry, RootKeyFromName(row.root_key), row.sub_key, access);
        const std::string stored =
            deletion.stored_key.empty()
                ? std::string()
                : text::UpperCase(deletion.stored_key +
                                  row.sub_key.substr(row.sub_key.rfind('\\')));
        if (deletion.Deleted() && !stored.empty()) {
            deleted.insert(stored);
        }
        if (deletion.Deleted() || (deletion.status == reg::kFileNotFound && !deletion.at_key &&
                                   deleted.count(stored) != 0)) {
            out << "Deleted\t";
        } else {
            out << "Refused (" << backup::RefusalReason(deletion) << ")\t";
            ++refused;
        }
        out << VisibleText(row.root_key) << '\t' << VisibleText(row.sub_key) << '\t'
            << VisibleText(row.value) << '\n';
    }
    return refused;
}

// Imports the backup with the Registry Editor, then reads back every value it holds. The
// editor's exit code says little: Wine's answers 0 to a missing file, to a file that is
// no registry file and to an unknown root alike, Windows documents none for a silent
// import, and a program that could not be started answers 0 as well. So the read-back
// decides, and it sees only the registry afterwards: a value that already held the
// backed-up data reads back as restored whatever the editor did, and one changed since
// by another program reads back as not restored.
int RestoreLive(const backup::BackupEntry& entry, std::ostream& out, std::ostream& err,
                CliPlatform& platform, RepairPlatform& repair) {
    const std::string folder = repair.ProgramFolder();
    const std::optional<std::string> bytes =
        repair.Disk().ReadFile(backup::BackupsFolder(folder) + "\\" + entry.file_name);
    std::vector<OfflineValue> values;
    if (!bytes) {
        err << "regvexlor-cli: " << VisibleText(entry.file_name)
            << " cannot be read; nothing was restored\n";
        return kExitUsage;
    }
    if (const auto bad = ValuesOfBackup(*bytes, platform.AnsiCodePage(), values)) {
        err << "regvexlor-cli: " << VisibleText(entry.file_name) << ":" << bad->line << ": "
            << VisibleText(bad->message) << "; nothing was restored\n";
        return kExitUsage;
    }
    std::string why_not;
    const auto registry = platform.OpenLiveRegistry(why_not);
    if (!registry) {
        err << "regvexlor-cli: " << VisibleText(why_not) << "\n";
        return kExitUsage;
    }
    std::uint32_t exit_code = 0;
    {
        const system::RedirectionOff redirection(repair.Redirection(), repair.Is64BitWindows());
        exit_code =
            repair.Processes().RunAndWait(backup::RestoreCommandLine(folder, entry.file_name));
    }
    if (exit_code != 0) {
        err << "regvexlor-cli: the Registry Editor answered " << exit_code << " for "
            << VisibleText(entry.file_name) << "\n";
    }
    // The view the Registry Editor wrote: the 64-bit one on 64-bit Windows.
    const AccessMask read_access =
        reg::kKeyQueryValue | (platform.KeyAccessMask() & reg::kKeyWow64_64Key);
    const std::vector<NotReadBack> missing = ValuesNotReadBack(*registry, read_access, values);
    for (const NotReadBack& each : missing) {
        out << "Not restored (" << each.reason << ")\t"
            << VisibleText(RootKeyName(each.value->root)) << '\t'
            << VisibleText(each.value->key_path + "\\" + each.value->value.name) << '\n';
    }
    if (exit_code == 0 && missing.empty()) {
        out << "Restored\t" << VisibleText(entry.number_text) << '\t'
            << VisibleText(entry.date_text) << '\n';
    }
    out.flush();
    err << values.size() - missing.size() << " of " << values.size()
        << " values read back as restored\n";
    return exit_code == 0 && missing.empty() ? kExitOk : kExitNotAllDone;
}

}  // namespace

int RunFix(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           CliPlatform& platform) {
    if (IsOfflineRepair(args)) {
        return RunOfflineFix(args, out, err, platform);
    }
    std::vector<std::string> scan_args;
    std::string only;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--only") {
            if (i + 1 >= args.size() || args[i + 1].empty()) {
                err << "regvexlor-cli: --only needs a text\n";
                return kExitUsage;
            }
            only = args[++i];
        } else if (args[i] == "--registry") {
            err << "regvexlor-cli: fix works on the live registry only; --registry files "
                   "cannot be written back\n";
            return kExitUsage;
        } else {
            scan_args.push_back(args[i]);
        }
    }
    ScanOptions options;
    std::string error;
    if (!ParseScanOptions(scan_args, options, error) || !FixTakesScanOptions(options, error)) {
        err << "regvexlor-cli: " << error << "\n";
        return kExitUsage;
    }
    if (options.help) {
        out << UsageText();
        return kExitOk;
    }
    RepairPlatform* repair = RepairOrSayWhyNot(platform, err);
    if (repair == nullptr) {
        return kExitUsage;
    }
    std::string why_not;
    const auto registry = platform.OpenLiveRegistry(why_not);
    if (!registry) {
        err << "regvexlor-cli: " << VisibleText(why_not) << "\n";
        return kExitUsage;
    }

    std::vector<backup::BackupRow> findings;
    const int scanned = ScanInto(options, *registry, err, platform, findings);
    if (scanned != kExitOk) {
        err << "regvexlor-cli: nothing was deleted\n";
        return scanned;
    }
    const std::string upper_only = text::UpperCase(only);
    std::erase_if(findings, [&](const auto& row) { return !Selected(row, upper_only); });
    if (findings.empty()) {
        err << "nothing to fix\n";
        return kExitOk;
    }

    std::string backup_path;
    try {
        backup_path =
            backup::CreateBackupFile(repair->Disk(), repair->ProgramFolder(),
                                     repair->GeneralDateText(), findings, platform.AnsiCodePage());
    } catch (const RunTimeError& failure) {
        err << "regvexlor-cli: " << VisibleText(failure.what()) << " Nothing was deleted.\n";
        return kExitScanFailed;
    }
    const std::size_t refused = DeleteFindings(*registry, platform.KeyAccessMask(), findings, out);
    out.flush();
    err << FixSummary(findings.size() - refused, refused)
        << "; backup: " << VisibleText(backup_path) << "\n";
    return refused == 0 ? kExitOk : kExitNotAllDone;
}

int RunBackups(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
               CliPlatform& platform) {
    if (IsOfflineRepair(args)) {
        return RunOfflineBackups(args, out, err, platform);
    }
    std::string action;
    int number = 0;
    if (args.size() == 1 && IsHelpOption(args[0])) {
        out << UsageText();
        return kExitOk;
    }
    if (!args.empty()) {
        action = args[0];
        const std::string number_text = args.size() == 2 ? args[1] : std::string();
        const auto [end, failure] =
            std::from_chars(number_text.data(), number_text.data() + number_text.size(), number);
        if ((action != "restore" && action != "delete") || args.size() != 2 ||
            failure != std::errc() || end != number_text.data() + number_text.size()) {
            err << "regvexlor-cli: backups takes nothing, \"restore N\" or \"delete N\"\n";
            return kExitUsage;
        }
    }
    RepairPlatform* repair = RepairOrSayWhyNot(platform, err);
    if (repair == nullptr) {
        return kExitUsage;
    }
    std::vector<backup::BackupEntry> entries;
    if (!ListedBackups(*repair, err, entries)) {
        return kExitScanFailed;
    }
    if (action.empty()) {
        PrintBackupList(entries, out, err);
        return kExitOk;
    }
    if (!IsListedBackup(number, entries, err)) {
        return kExitUsage;
    }
    const backup::BackupEntry& entry = entries[static_cast<std::size_t>(number - 1)];
    const std::string folder = repair->ProgramFolder();
    if (action == "restore") {
        return RestoreLive(entry, out, err, platform, *repair);
    }
    if (!repair->Disk().RemoveFile(backup::BackupsFolder(folder) + "\\" + entry.file_name)) {
        err << "regvexlor-cli: " << VisibleText(entry.file_name) << " could not be deleted\n";
        return kExitScanFailed;
    }
    out << "Deleted\t" << VisibleText(entry.number_text) << '\t' << VisibleText(entry.date_text)
        << '\n';
    return kExitOk;
}

void PrintBackupList(const std::vector<backup::BackupEntry>& entries, std::ostream& out,
                     std::ostream& err) {
    for (const backup::BackupEntry& entry : entries) {
        out << VisibleText(entry.number_text) << '\t' << VisibleText(entry.date_text) << '\t'
            << VisibleText(entry.size_text) << '\t' << VisibleText(entry.file_name) << '\n';
    }
    if (entries.empty()) {
        err << "There are no backups available at this time.\n";
    }
}

bool IsListedBackup(int number, const std::vector<backup::BackupEntry>& entries,
                    std::ostream& err) {
    if (number < 1 || static_cast<std::size_t>(number) > entries.size()) {
        err << "regvexlor-cli: there is no Backup #" << number << " (" << entries.size()
            << " backups)\n";
        return false;
    }
    return true;
}

std::string FixSummary(std::size_t deleted, std::size_t refused) {
    return std::to_string(deleted) + " values deleted, " + std::to_string(refused) + " refused";
}

}  // namespace regvex::cli
