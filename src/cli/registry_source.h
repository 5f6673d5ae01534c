#pragma once
// Where a command's registry comes from: the live one, export files, hive files mounted
// by hand, or a whole Windows partition mounted as Windows would.

#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/cli_platform.h"
#include "engine/registry.h"
#include "offline/windows_layout.h"

namespace regvex::cli {

struct SourceOptions {
    std::vector<std::string> registry_files;
    struct HiveMount {
        RootKeyHandle root = kHkeyAll;
        std::string path;
        std::string file;
    };
    std::vector<HiveMount> hives;
    std::string windows_dir;
    std::string user;  // with --windows: the profile that is HKEY_CURRENT_USER
    std::string wine_prefix;
};

// The usage lines of the source options.
extern const char* const kSourceUsage;

// Whether `option` is one of the source options (each takes a value).
bool IsSourceOption(std::string_view option);

// Takes one source option and its value; false with `error` set when the value is bad or
// the option clashes with one given before (sources are not mixed).
bool ParseSourceOption(const std::string& option, const std::string& value, SourceOptions& sources,
                       std::string& error);

// What the options say, checked once all are read.
bool CheckSourceOptions(const SourceOptions& sources, std::string& error);

struct OpenedSource {
    OpenedSource() = default;
    OpenedSource(const OpenedSource&) = delete;
    OpenedSource& operator=(const OpenedSource&) = delete;
    // An assembled registry goes before the registries it is assembled from.
    ~OpenedSource() {
        windows.reset();
        while (!owned.empty()) {
            owned.pop_back();
        }
    }

    Registry* registry = nullptr;                  // the registry to walk; owned below
    std::vector<std::unique_ptr<Registry>> owned;  // parts first, what joins them last
    std::unique_ptr<offline::WindowsSystem> windows;
    // Drives that the source brings with it: a Windows partition is drive C:, a Wine
    // prefix has those of its dosdevices folder.
    std::vector<std::pair<char, std::filesystem::path>> drives;
};

// Opens the registry the options name; null with the message written to `err` when it
// cannot be read.
std::unique_ptr<OpenedSource> OpenSource(const SourceOptions& sources, std::ostream& err,
                                         CliPlatform& platform);

}  // namespace regvex::cli
