#pragma once
// The file system and process start in memory: files kept by path, programs recorded by
// command line, and the one question a scan asks of files.

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "engine/path_exists.h"
#include "system/file_system.h"
#include "system/process.h"

namespace regvex::testing {

class MemoryFileSystem final : public system::FileSystem {
  public:
    bool Exists(const std::string& path) override {
        return files.count(path) != 0 || folders.count(path) != 0;
    }
    bool CreateFolder(const std::string& path) override {
        if (!can_create_folders) {
            return false;
        }
        folders.insert(path);
        return true;
    }
    std::vector<std::string> FileNames(const std::string& folder) override {
        std::vector<std::string> names;
        const std::string prefix = folder + "\\";
        for (const auto& [path, bytes] : files) {
            if (path.compare(0, prefix.size(), prefix) == 0 &&
                path.find('\\', prefix.size()) == std::string::npos) {
                names.push_back(path.substr(prefix.size()));
            }
        }
        // A directory listing promises no order.
        std::reverse(names.begin(), names.end());
        return names;
    }
    std::optional<std::uint64_t> FileSize(const std::string& path) override {
        const auto it = files.find(path);
        if (it == files.end() || locked.count(path) != 0) {
            return std::nullopt;
        }
        return it->second.size();
    }
    bool WriteFile(const std::string& path, std::string_view bytes) override {
        if (folders.count(path.substr(0, path.rfind('\\'))) == 0 || locked.count(path) != 0) {
            return false;
        }
        files[path] = std::string(bytes);
        return true;
    }
    std::optional<std::string> ReadFile(const std::string& path) override {
        const auto it = files.find(path);
        if (it == files.end() || locked.count(path) != 0) {
            return std::nullopt;
        }
        return it->second;
    }
    bool RemoveFile(const std::string& path) override {
        if (locked.count(path) != 0) {
            return false;
        }
        return files.erase(path) != 0;
    }

    // Folders are listed as named in `folders`; the drive's root is "C:\".
    Listing ListFolder(const std::string& folder) override {
        Listing listing;
        const std::string prefix = folder.ends_with('\\') ? folder : folder + "\\";
        const auto direct = [&](const std::string& path) {
            return path.size() > prefix.size() && path.compare(0, prefix.size(), prefix) == 0 &&
                   path.find('\\', prefix.size()) == std::string::npos;
        };
        for (const auto& [path, bytes] : files) {
            if (direct(path)) {
                listing.files.push_back(path.substr(prefix.size()));
            }
        }
        for (const std::string& path : folders) {
            if (direct(path)) {
                listing.folders.push_back(path.substr(prefix.size()));
            }
        }
        return listing;
    }
    std::optional<std::int64_t> ModifiedTime(const std::string& path) override {
        const auto it = modified.find(path);
        return it != modified.end() ? std::optional<std::int64_t>(it->second) : std::nullopt;
    }

    std::map<std::string, std::string> files;
    std::map<std::string, std::int64_t> modified;
    std::set<std::string> folders;
    std::set<std::string> locked;
    bool can_create_folders = true;
};

class RecordingProcesses final : public system::ProcessLauncher {
  public:
    std::uint32_t RunAndWait(const std::string& command_line) override {
        waited.push_back(command_line);
        if (on_run) {
            on_run(command_line);
        }
        return exit_code;
    }
    bool Start(const std::string& command_line) override {
        started.push_back(command_line);
        return can_start;
    }

    std::vector<std::string> waited;
    std::vector<std::string> started;
    bool can_start = true;
    std::uint32_t exit_code = 0;
    std::function<void(const std::string&)> on_run;
};

// Files exist when listed, compared exactly; every question is written down.
class SetOfFiles final : public FileExistence {
  public:
    int Check(const std::string& path) override {
        asked.push_back(path);
        return present.count(path) != 0 ? 1 : 0;
    }
    std::set<std::string> present;
    std::vector<std::string> asked;
};

}  // namespace regvex::testing
