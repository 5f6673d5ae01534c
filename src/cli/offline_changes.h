#pragma once
// What the offline fix and the offline restore share: the backups folder, the values
// taken out or put back, and the changes to hive files made file by file.

#include <algorithm>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "backup/registry_export.h"
#include "cli/change_recorder.h"
#include "cli/cli_platform.h"
#include "cli/registry_source.h"
#include "system/file_system.h"

namespace regvex::cli {

// The catalogue joins names with backslashes, as Windows does; here they are folders.
class NativeFiles final : public system::FileSystem {
  public:
    bool Exists(const std::string& path) override { return disk_.Exists(Native(path)); }
    bool CreateFolder(const std::string& path) override { return disk_.CreateFolder(Native(path)); }
    std::vector<std::string> FileNames(const std::string& folder) override {
        return disk_.FileNames(Native(folder));
    }
    std::optional<std::uint64_t> FileSize(const std::string& path) override {
        return disk_.FileSize(Native(path));
    }
    bool WriteFile(const std::string& path, std::string_view bytes) override {
        return disk_.WriteFile(Native(path), bytes);
    }
    std::optional<std::string> ReadFile(const std::string& path) override {
        return disk_.ReadFile(Native(path));
    }
    bool RemoveFile(const std::string& path) override { return disk_.RemoveFile(Native(path)); }

  private:
    static std::string Native(std::string path) {
        std::replace(path.begin(), path.end(), '\\',
                     static_cast<char>(std::filesystem::path::preferred_separator));
        return path;
    }
    system::DiskFileSystem disk_;
};

// A value to take out or put back, whole.
struct OfflineValue {
    RootKeyHandle root = kHkeyAll;
    std::string key_path;
    backup::ExportValue value;
};

std::string FullKey(RootKeyHandle root, const std::string& path);

// Whether the source options name registry files that can be changed: hive files
// (--hive or --windows) or a Wine prefix.
inline bool OnRegistryFiles(const SourceOptions& sources) {
    return !sources.hives.empty() || !sources.windows_dir.empty() || !sources.wine_prefix.empty();
}

// The folder chosen with --backups, else RegBackups beside the program.
std::filesystem::path BackupsFolderOf(const std::string& chosen, CliPlatform& platform);

// Takes `--backups DIR` out of the arguments.
bool TakeBackupsOption(std::vector<std::string>& args, std::string& folder, std::string& error);

// Refuses, before anything is written, every file that must not change now.
bool AllMayChange(const NotedChanges& noted, std::ostream& err, CliPlatform& platform);

// Makes the noted changes file by file; the exit code.
int MakeChanges(const NotedChanges& noted, std::ostream& err, CliPlatform& platform);

}  // namespace regvex::cli
