#include "cli/cli.h"

#include "cli/scan_command.h"

namespace regvex::cli {

namespace {

constexpr const char* kUsage =
    "usage: regvexlor-cli scan --drive C: [--registry FILE.reg]... [--map C:=DIR]...\n"
    "                          [--ignore FILE]\n"
    "\n"
    "  scan   lists registry values that name a missing file on the drive, one line each:\n"
    "         status, root key, subkey and value name, value (tab-separated)\n"
    "\n"
    "  --drive C:            the drive whose files are checked\n"
    "  --registry FILE.reg   scan this registry export instead of the live registry\n"
    "                        (repeatable: the files are read into one registry)\n"
    "  --map C:=DIR          answer the existence test for drive C: from folder DIR\n"
    "  --ignore FILE         leave out findings whose file path or subkey contains an\n"
    "                        entry of this ignore list (the program's Ignore.txt)\n";

}  // namespace

int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           CliPlatform& platform) {
    if (args.empty()) {
        err << kUsage;
        return kExitUsage;
    }
    const std::string& command = args.front();
    if (command == "--help" || command == "-h" || command == "help") {
        out << kUsage;
        return kExitOk;
    }
    if (command == "scan") {
        ScanOptions options;
        std::string error;
        if (!ParseScanOptions({args.begin() + 1, args.end()}, options, error)) {
            err << "regvexlor-cli: " << error << "\n" << kUsage;
            return kExitUsage;
        }
        return RunScan(options, out, err, platform);
    }
    err << "regvexlor-cli: unknown command \"" << command << "\"\n" << kUsage;
    return kExitUsage;
}

}  // namespace regvex::cli
