#pragma once
// The files beside the program (backups) as the windows and the command line reach
// them. Paths are UTF-8. The disk implementation serves every platform; tests keep
// files in memory.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace regvex::system {

class FileSystem {
  public:
    virtual ~FileSystem() = default;
    // True for a file or a folder.
    virtual bool Exists(const std::string& path) = 0;
    // Creates one folder (its parent must exist); false when it could not.
    virtual bool CreateFolder(const std::string& path) = 0;
    // The names, without folder, of the files (not folders) in `folder`, in no order.
    virtual std::vector<std::string> FileNames(const std::string& folder) = 0;
    // The size in bytes, or nothing when the file cannot be opened.
    virtual std::optional<std::uint64_t> FileSize(const std::string& path) = 0;
    // Creates or truncates the file; false when it could not be written whole.
    virtual bool WriteFile(const std::string& path, std::string_view bytes) = 0;
    // The whole file, or nothing when it cannot be read.
    virtual std::optional<std::string> ReadFile(const std::string& path) = 0;
    virtual bool RemoveFile(const std::string& path) = 0;

    // The names, without folder, of the files and of the folders in `folder`, in no
    // order. A folder that only links to another place is left out, so that a walk of
    // a drive sees each folder once and ends.
    struct Listing {
        std::vector<std::string> files;
        std::vector<std::string> folders;
    };
    virtual Listing ListFolder(const std::string& folder) { return {FileNames(folder), {}}; }
    // When the file was last written, in seconds since 1 January 1970 (UTC).
    virtual std::optional<std::int64_t> ModifiedTime(const std::string& path) {
        (void)path;
        return std::nullopt;
    }
};

class DiskFileSystem final : public FileSystem {
  public:
    bool Exists(const std::string& path) override;
    bool CreateFolder(const std::string& path) override;
    std::vector<std::string> FileNames(const std::string& folder) override;
    std::optional<std::uint64_t> FileSize(const std::string& path) override;
    bool WriteFile(const std::string& path, std::string_view bytes) override;
    std::optional<std::string> ReadFile(const std::string& path) override;
    bool RemoveFile(const std::string& path) override;
    Listing ListFolder(const std::string& folder) override;
    std::optional<std::int64_t> ModifiedTime(const std::string& path) override;
};

}  // namespace regvex::system
