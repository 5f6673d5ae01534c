#include "cli/cli.h"

#include "cli/export_command.h"
#include "cli/registry_source.h"
#include "cli/repair_commands.h"
#include "cli/scan_command.h"
#include "cli/visible_text.h"
#include "system/program_version.h"

namespace regvex::cli {

namespace {

constexpr const char* kUsageTemplate =
    "usage: regvexlor-cli scan --drive C: [SOURCE] [--map C:=DIR]... [--ignore FILE]\n"
    "                          [--format tsv|json | --explain]\n"
    "       regvexlor-cli export [SOURCE] [--key ROOT\\PATH] [--out FILE]\n"
    "       regvexlor-cli fix --drive C: [SOURCE] [--only TEXT] [--ignore FILE] [--map C:=DIR]...\n"
    "                         [--backups DIR] [--dry-run]\n"
    "       regvexlor-cli backups [--backups DIR] [restore N [SOURCE] | delete N]\n"
    "       regvexlor-cli [scan | export | fix | backups] --help\n"
    "       regvexlor-cli --version\n"
    "\n"
    "  scan   lists registry values that name a missing file on the drive, one line each:\n"
    "         status, root key, subkey and value name, value (tab-separated); in them a\n"
    "         backslash reads \\\\ and a control character or stray byte \\xHH\n"
    "\n"
    "  --drive C:            the drive whose files are checked\n"
    "  --map C:=DIR          answer the existence test for drive C: from folder DIR\n"
    "  --ignore FILE         leave out findings whose file path or subkey contains an\n"
    "                        entry of this ignore list (the program's Ignore.txt)\n"
    "\n"
    "  --format json         one JSON object per finding (root, key, value, type, data,\n"
    "                        file, exists), then one with the count and why it stopped\n"
    "  --explain             for each finding, why it is one: its type and data, the file\n"
    "                        path read from the data and where from, how the file was\n"
    "                        looked for, and what the ignore list does with it\n"
    "\n"
    "  SOURCE, without which the live registry is scanned, is one kind of:\n"
    "%SOURCES%"
    "\n"
    "  export writes the registry (or the key given with --key and all below it) as a\n"
    "         \"Windows Registry Editor Version 5.00\" file, every value with its exact\n"
    "         type and bytes, to FILE or standard output\n"
    "\n"
    "  fix    scans the live registry as scan does, writes the findings to a backup in\n"
    "         RegBackups beside the program, then deletes them from the registry; a\n"
    "         value the registry would not delete is printed as \"Refused (REASON)\"\n"
    "         and makes the exit code 1\n"
    "  --only TEXT           fix only findings whose subkey or value contains TEXT\n"
    "                        (case-insensitive)\n"
    "\n"
    "  backups               lists the backups: number, date, size, file\n"
    "  backups restore N     imports backup N with the Registry Editor, then reads its\n"
    "                        values back and prints those not there (exit code 1)\n"
    "  backups delete N      deletes backup N\n"
    "\n"
    "  Without SOURCE, fix and backups need the live registry of Windows or Wine. With\n"
    "  --hive, --windows or --wine-prefix (on Linux) they change the registry's files:\n"
    "  each through a copy that is verified before it replaces the file, kept as\n"
    "  FILE.regvexlor-previous; backups keep every deleted value's type and bytes. A\n"
    "  Wine prefix is changed only while its wineserver is not running.\n"
    "  --backups DIR         keep and look for backups in DIR instead of RegBackups\n"
    "  --dry-run             print what fix would delete; write nothing\n";

// The usage with the source options put in their place.
const std::string& Usage() {
    static const std::string usage = [] {
        std::string text = kUsageTemplate;
        const std::string_view mark = "%SOURCES%";
        text.replace(text.find(mark), mark.size(), kSourceUsage);
        return text;
    }();
    return usage;
}

int Dispatch(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
             CliPlatform& platform) {
    if (args.empty()) {
        err << Usage();
        return kExitUsage;
    }
    const std::string& command = args.front();
    if (command == "--version") {
        out << system::ProgramTitleAndVersion() << "." << system::kVersionPatch << "\n";
        return kExitOk;
    }
    if (IsHelpOption(command) || command == "help") {
        out << Usage();
        return kExitOk;
    }
    const std::vector<std::string> options(args.begin() + 1, args.end());
    if (command == "scan") {
        ScanOptions scan;
        std::string error;
        if (!ParseScanOptions(options, scan, error)) {
            err << "regvexlor-cli: " << error << "\n" << Usage();
            return kExitUsage;
        }
        if (scan.help) {
            out << Usage();
            return kExitOk;
        }
        return RunScan(scan, out, err, platform);
    }
    if (command == "export") {
        return RunExport(options, out, err, platform);
    }
    if (command == "fix") {
        return RunFix(options, out, err, platform);
    }
    if (command == "backups") {
        return RunBackups(options, out, err, platform);
    }
    err << "regvexlor-cli: unknown command \"" << VisibleText(command) << "\"\n" << Usage();
    return kExitUsage;
}

}  // namespace

bool IsHelpOption(std::string_view arg) {
    return arg == "--help" || arg == "-h";
}

std::string_view UsageText() {
    return Usage();
}

int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           CliPlatform& platform) {
    const int exit_code = Dispatch(args, out, err, platform);
    // Whatever the command, output that did not arrive is not a success: `scan > /dev/full`
    // must not pass for a clean registry.
    if (!out.flush()) {
        err << "regvexlor-cli: could not write to standard output; what it shows is "
               "incomplete\n";
        return kExitScanFailed;
    }
    return exit_code;
}

}  // namespace regvex::cli
