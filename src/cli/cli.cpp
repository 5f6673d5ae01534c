#include "cli/cli.h"

#include "cli/repair_commands.h"
#include "cli/scan_command.h"
#include "cli/visible_text.h"

namespace regvex::cli {

namespace {

constexpr const char* kUsage =
    "usage: regvexlor-cli scan --drive C: [--registry FILE.reg]... [--map C:=DIR]...\n"
    "                          [--wine-prefix DIR] [--ignore FILE]\n"
    "       regvexlor-cli fix --drive C: [--only TEXT] [--ignore FILE] [--map C:=DIR]...\n"
    "       regvexlor-cli backups [restore N | delete N]\n"
    "       regvexlor-cli [scan | fix | backups] --help\n"
    "\n"
    "  scan   lists registry values that name a missing file on the drive, one line each:\n"
    "         status, root key, subkey and value name, value (tab-separated); in them a\n"
    "         backslash reads \\\\ and a control character or stray byte \\xHH\n"
    "\n"
    "  --drive C:            the drive whose files are checked\n"
    "  --registry FILE.reg   scan this registry export instead of the live registry\n"
    "                        (repeatable: the files are read into one registry)\n"
    "  --wine-prefix DIR     scan the Wine prefix DIR from its registry files, as a program\n"
    "                        run in it would; its drives are those of DIR/dosdevices\n"
    "  --map C:=DIR          answer the existence test for drive C: from folder DIR\n"
    "  --ignore FILE         leave out findings whose file path or subkey contains an\n"
    "                        entry of this ignore list (the program's Ignore.txt)\n"
    "\n"
    "  fix    scans the live registry as scan does, writes the findings to a backup in\n"
    "         RegBackups beside the program, then deletes them from the registry\n"
    "  --only TEXT           fix only findings whose subkey or value contains TEXT\n"
    "                        (case-insensitive)\n"
    "\n"
    "  backups               lists the backups: number, date, size, file\n"
    "  backups restore N     imports backup N with the Registry Editor\n"
    "  backups delete N      deletes backup N\n"
    "\n"
    "  fix and backups need the live registry of Windows or Wine.\n";

int Dispatch(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
             CliPlatform& platform) {
    if (args.empty()) {
        err << kUsage;
        return kExitUsage;
    }
    const std::string& command = args.front();
    if (IsHelpOption(command) || command == "help") {
        out << kUsage;
        return kExitOk;
    }
    const std::vector<std::string> options(args.begin() + 1, args.end());
    if (command == "scan") {
        ScanOptions scan;
        std::string error;
        if (!ParseScanOptions(options, scan, error)) {
            err << "regvexlor-cli: " << error << "\n" << kUsage;
            return kExitUsage;
        }
        if (scan.help) {
            out << kUsage;
            return kExitOk;
        }
        return RunScan(scan, out, err, platform);
    }
    if (command == "fix") {
        return RunFix(options, out, err, platform);
    }
    if (command == "backups") {
        return RunBackups(options, out, err, platform);
    }
    err << "regvexlor-cli: unknown command \"" << VisibleText(command) << "\"\n" << kUsage;
    return kExitUsage;
}

}  // namespace

bool IsHelpOption(std::string_view arg) {
    return arg == "--help" || arg == "-h";
}

std::string_view UsageText() {
    return kUsage;
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
