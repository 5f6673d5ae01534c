#include "cli/export_command.h"

#include <fstream>

#include "backup/registry_export.h"
#include "cli/cli.h"
#include "cli/registry_source.h"
#include "cli/visible_text.h"
#include "text/utf8_path.h"

namespace regvex::cli {

namespace {

// The Registry Editor's order of the roots in a full export.
constexpr RootKeyHandle kExportOrder[] = {kHkeyLocalMachine, kHkeyCurrentUser, kHkeyClassesRoot,
                                          kHkeyUsers, kHkeyCurrentConfig};

struct ExportOptions {
    SourceOptions sources;
    std::string key;  // "ROOT\path"; empty for everything
    std::string out_file;
    bool help = false;
};

bool ParseExportOptions(const std::vector<std::string>& args, ExportOptions& options,
                        std::string& error) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (IsHelpOption(option)) {
            options.help = true;
            return true;
        }
        if (option != "--key" && option != "--out" && !IsSourceOption(option)) {
            error = "unknown option \"" + VisibleText(option) + "\"";
            return false;
        }
        if (i + 1 >= args.size() || args[i + 1].empty()) {
            error = option + " needs a value";
            return false;
        }
        const std::string& value = args[++i];
        if (IsSourceOption(option)) {
            if (!ParseSourceOption(option, value, options.sources, error)) {
                return false;
            }
        } else {
            std::string& slot = option == "--key" ? options.key : options.out_file;
            if (!slot.empty()) {
                error = option + " can be given once";
                return false;
            }
            slot = value;
        }
    }
    return CheckSourceOptions(options.sources, error);
}

}  // namespace

int RunExport(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
              CliPlatform& platform) {
    ExportOptions options;
    std::string error;
    if (!ParseExportOptions(args, options, error)) {
        err << "regvexlor-cli: " << error << "\n" << UsageText();
        return kExitUsage;
    }
    if (options.help) {
        out << UsageText();
        return kExitOk;
    }
    RootKeyHandle root = kHkeyAll;
    std::string path;
    if (!options.key.empty()) {
        const std::size_t slash = options.key.find('\\');
        root = RootKeyFromName(options.key.substr(0, slash));
        path = slash == std::string::npos ? "" : options.key.substr(slash + 1);
        if (root == kHkeyAll) {
            err << "regvexlor-cli: --key starts with a root such as HKEY_LOCAL_MACHINE, not \""
                << VisibleText(options.key) << "\"\n";
            return kExitUsage;
        }
    }
    const auto source = OpenSource(options.sources, err, platform);
    if (!source) {
        return kExitUsage;
    }
    if (root != kHkeyAll) {
        ScopedKey key;
        if (ScopedKey::Open(*source->registry, root, path, reg::kKeyRead, key) != reg::kSuccess) {
            err << "regvexlor-cli: there is no key \"" << VisibleText(options.key) << "\"\n";
            return kExitUsage;
        }
    }
    std::ofstream file;
    if (!options.out_file.empty()) {
        file.open(text::PathFromUtf8(options.out_file), std::ios::binary | std::ios::trunc);
        if (!file) {
            err << "regvexlor-cli: cannot write \"" << VisibleText(options.out_file) << "\"\n";
            return kExitUsage;
        }
    }
    std::ostream& target = options.out_file.empty() ? out : file;
    backup::WriteExportHeader(target);
    backup::ExportCount total;
    for (const RootKeyHandle each : kExportOrder) {
        if (root != kHkeyAll && each != root) {
            continue;
        }
        const backup::ExportCount count =
            backup::WriteExportTree(*source->registry, each, root == kHkeyAll ? "" : path, target);
        total.keys += count.keys;
        total.values += count.values;
        total.values_missed += count.values_missed;
        total.keys_missed += count.keys_missed;
    }
    if (!target.flush()) {
        err << "regvexlor-cli: could not write the whole export\n";
        return kExitScanFailed;
    }
    err << total.keys << " keys and " << total.values << " values exported\n";
    if (total.values_missed != 0 || total.keys_missed != 0) {
        err << "regvexlor-cli: " << total.values_missed << " values and " << total.keys_missed
            << " keys could not be read whole and are missing from the export\n";
        return kExitScanFailed;
    }
    return kExitOk;
}

}  // namespace regvex::cli
