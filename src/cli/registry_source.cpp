#include "cli/registry_source.h"

#include <algorithm>
#include <system_error>

#include "backup/reg_file_reader.h"
#include "cli/visible_text.h"
#include "cli/wine_source.h"
#include "engine/memory_registry.h"
#include "engine/mounted_registry.h"
#include "offline/windows_layout.h"
#include "text/utf8_path.h"

namespace regvex::cli {

const char* const kSourceUsage =
    "  --registry FILE.reg   scan this registry export instead of the live registry\n"
    "                        (repeatable: the files are read into one registry)\n"
    "  --hive ROOT[\\PATH]=FILE\n"
    "                        mount a Windows hive file at that key, for example\n"
    "                        HKLM\\SOFTWARE=SOFTWARE or HKCU=NTUSER.DAT (repeatable;\n"
    "                        roots with nothing mounted are empty)\n"
    "  --windows DIR         the registry of the Windows partition whose root is DIR,\n"
    "                        mounted as Windows does; its drive C: is DIR\n"
    "  --user NAME           with --windows: the profile that is HKEY_CURRENT_USER\n"
    "  --wine-prefix DIR     the Wine prefix DIR, read from its registry files as a program\n"
    "                        run in it would see it; its drives are those of DIR/dosdevices\n";

namespace {

constexpr std::pair<std::string_view, RootKeyHandle> kShortRoots[] = {
    {"HKCR", kHkeyClassesRoot}, {"HKCU", kHkeyCurrentUser},   {"HKLM", kHkeyLocalMachine},
    {"HKU", kHkeyUsers},        {"HKCC", kHkeyCurrentConfig},
};

bool ParsePlace(std::string_view text, RootKeyHandle& root, std::string& path) {
    const std::size_t slash = text.find('\\');
    const std::string_view name = text.substr(0, slash);
    root = RootKeyFromName(name);
    for (const auto& [short_name, handle] : kShortRoots) {
        if (name == short_name) {
            root = handle;
        }
    }
    if (root == kHkeyAll || root == kHkeyPerformanceData || root == kHkeyDynData) {
        return false;
    }
    path.assign(slash == std::string_view::npos ? std::string_view() : text.substr(slash + 1));
    while (!path.empty() && path.back() == '\\') {
        path.pop_back();
    }
    return path.find("\\\\") == std::string::npos && (path.empty() || path.front() != '\\');
}

// Which kind of source an option names; sources of two kinds do not mix.
std::string_view KindOf(std::string_view option) {
    return option == "--user" ? "--windows" : option;
}

std::string_view KindGiven(const SourceOptions& sources) {
    if (!sources.registry_files.empty()) {
        return "--registry";
    }
    if (!sources.hives.empty()) {
        return "--hive";
    }
    if (!sources.windows_dir.empty() || !sources.user.empty()) {
        return "--windows";
    }
    if (!sources.wine_prefix.empty()) {
        return "--wine-prefix";
    }
    return {};
}

}  // namespace

bool IsSourceOption(std::string_view option) {
    return option == "--registry" || option == "--hive" || option == "--windows" ||
           option == "--user" || option == "--wine-prefix";
}

bool ParseSourceOption(const std::string& option, const std::string& value, SourceOptions& sources,
                       std::string& error) {
    const std::string_view given = KindGiven(sources);
    if (!given.empty() && given != KindOf(option)) {
        error = option + " and " + std::string(given) +
                " name two different registries; give one kind of source";
        return false;
    }
    if (value.empty()) {
        error = option + (option == "--windows" || option == "--wine-prefix" ? " needs a folder"
                          : option == "--user" ? " needs a profile name"
                                               : " needs a file");
        return false;
    }
    if (option == "--registry") {
        sources.registry_files.push_back(value);
    } else if (option == "--hive") {
        const std::size_t equals = value.find('=');
        SourceOptions::HiveMount mount;
        if (equals == std::string::npos || equals + 1 == value.size() ||
            !ParsePlace(std::string_view(value).substr(0, equals), mount.root, mount.path)) {
            error =
                "--hive takes a key and a hive file such as HKLM\\SOFTWARE=SOFTWARE or "
                "HKCU=NTUSER.DAT, not \"" +
                VisibleText(value) + "\"";
            return false;
        }
        mount.file = value.substr(equals + 1);
        sources.hives.push_back(std::move(mount));
    } else {
        std::string& slot = option == "--windows" ? sources.windows_dir
                            : option == "--user"  ? sources.user
                                                  : sources.wine_prefix;
        if (!slot.empty()) {
            error = option + " can be given once";
            return false;
        }
        slot = value;
    }
    return true;
}

bool CheckSourceOptions(const SourceOptions& sources, std::string& error) {
    if (!sources.user.empty() && sources.windows_dir.empty()) {
        error = "--user chooses a profile of the partition that --windows names";
        return false;
    }
    return true;
}

std::unique_ptr<OpenedSource> OpenSource(const SourceOptions& sources, std::ostream& err,
                                         CliPlatform& platform) {
    auto opened = std::make_unique<OpenedSource>();
    std::string error;
    const offline::HiveOpener open_hive = [&](const std::filesystem::path& file,
                                              std::string& why_not) {
        return platform.OpenHive(file, why_not, err);
    };
    if (!sources.registry_files.empty()) {
        auto registry = std::make_unique<MemoryRegistry>(platform.AnsiCodePage());
        for (const std::string& file : sources.registry_files) {
            const auto failure =
                backup::ImportRegFile(text::PathFromUtf8(file), *registry, platform.AnsiCodePage());
            if (failure) {
                err << "regvexlor-cli: " << VisibleText(file);
                if (failure->line != 0) {
                    err << ":" << failure->line;
                }
                err << ": " << VisibleText(failure->message) << "\n";
                return nullptr;
            }
        }
        opened->registry = registry.get();
        opened->owned.push_back(std::move(registry));
    } else if (!sources.hives.empty()) {
        auto mounted = std::make_unique<MountedRegistry>();
        for (const SourceOptions::HiveMount& mount : sources.hives) {
            auto hive = open_hive(text::PathFromUtf8(mount.file), error);
            if (!hive) {
                err << "regvexlor-cli: " << VisibleText(error) << "\n";
                return nullptr;
            }
            mounted->Mount({mount.root, mount.path}, *hive, {kHkeyLocalMachine, ""});
            opened->owned.push_back(std::move(hive));
        }
        opened->registry = mounted.get();
        opened->owned.push_back(std::move(mounted));
    } else if (!sources.windows_dir.empty()) {
        const std::filesystem::path root = text::PathFromUtf8(sources.windows_dir);
        std::error_code failure;
        if (!std::filesystem::is_directory(root, failure)) {
            err << "regvexlor-cli: --windows \"" << VisibleText(sources.windows_dir)
                << "\" is not a folder\n";
            return nullptr;
        }
        auto system = std::make_unique<offline::WindowsSystem>();
        if (!offline::MountWindows(root, sources.user, open_hive, *system, error)) {
            err << "regvexlor-cli: " << VisibleText(error) << "\n";
            return nullptr;
        }
        opened->registry = &system->registry;
        opened->drives.emplace_back('C', root);
        for (auto& hive : system->hives) {
            opened->owned.push_back(std::move(hive));
        }
        system->hives.clear();
        opened->windows = std::move(system);
    } else if (!sources.wine_prefix.empty()) {
        std::vector<std::pair<char, std::string>> drives;
        auto registry = OpenWinePrefix(sources.wine_prefix, err, drives, platform);
        if (!registry) {
            return nullptr;
        }
        for (const auto& [letter, folder] : drives) {
            opened->drives.emplace_back(letter, text::PathFromUtf8(folder));
        }
        opened->registry = registry.get();
        opened->owned.push_back(std::move(registry));
    } else {
        auto live = platform.OpenLiveRegistry(error);
        if (!live) {
            err << "regvexlor-cli: " << VisibleText(error) << "\n";
            return nullptr;
        }
        opened->registry = live.get();
        opened->owned.push_back(std::move(live));
    }
    return opened;
}

}  // namespace regvex::cli
