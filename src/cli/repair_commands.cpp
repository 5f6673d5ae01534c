#include "cli/repair_commands.h"

#include <charconv>

#include "backup/backup_catalogue.h"
#include "backup/backup_file.h"
#include "backup/registry_fix.h"
#include "cli/cli.h"
#include "cli/offline_repair.h"
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
    for (const backup::BackupRow& row : findings) {
        // Every finding came from a value of a key, so its path has a backslash.
        backup::DeleteRegistryValuePath(*registry, RootKeyFromName(row.root_key), row.sub_key,
                                        platform.KeyAccessMask());
        out << "Deleted\t" << VisibleText(row.root_key) << '\t' << VisibleText(row.sub_key) << '\t'
            << VisibleText(row.value) << '\n';
    }
    out.flush();
    err << findings.size() << " values deleted; backup: " << VisibleText(backup_path) << "\n";
    return kExitOk;
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
        const system::RedirectionOff redirection(repair->Redirection(), repair->Is64BitWindows());
        const std::uint32_t exit_code =
            repair->Processes().RunAndWait(backup::RestoreCommandLine(folder, entry.file_name));
        if (exit_code != 0) {
            err << "regvexlor-cli: the Registry Editor answered " << exit_code << " for "
                << VisibleText(entry.file_name) << "\n";
            return kExitScanFailed;
        }
        out << "Restored\t" << VisibleText(entry.number_text) << '\t'
            << VisibleText(entry.date_text) << '\n';
        return kExitOk;
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

}  // namespace regvex::cli
