#pragma once
// The files of drive C: that the registry's values point into, and their making on disk.

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "registry_generator.h"

namespace regvex::bench_generator {

class Random;

enum class FileKind { kSystem, kDriver, kFont, kApp, kData, kHelp, kPicture, kDotNet };

class DriveBuilder {
  public:
    DriveBuilder(Random& rng, std::vector<RegistryGenerator::DriveFile>& existing,
                 std::vector<RegistryGenerator::DriveFile>& missing);

    // False when the folder is already known under any letter case.
    bool AddFolder(const std::string& dir);

    void AddFiles(const std::string& dir, FileKind kind, std::size_t existing_count,
                  std::size_t missing_count, std::string_view product = {});

  private:
    void Add(const std::string& dir, FileKind kind, std::size_t count,
             std::vector<RegistryGenerator::DriveFile>& into, std::string_view product);

    Random& rng_;
    std::vector<RegistryGenerator::DriveFile>& existing_;
    std::vector<RegistryGenerator::DriveFile>& missing_;
    std::unordered_set<std::string> folders_;
    std::unordered_set<std::string> names_;
};

// Folders of the drive on disk, matched without regard to case as Windows matches them.
class DiskFolders {
  public:
    explicit DiskFolders(std::filesystem::path root);

    // The on-disk folder for a folder of the registry's text, created where missing.
    std::filesystem::path Resolve(const std::string& dir);

    // True when a file was made; false when one of that name, in any case, was there.
    bool CreateFile(const std::filesystem::path& folder, const std::string& name);

  private:
    using Listing = std::unordered_map<std::string, std::string>;

    Listing& ListingOf(const std::filesystem::path& folder);

    std::filesystem::path root_;
    std::unordered_map<std::string, Listing> listings_;
};

}  // namespace regvex::bench_generator
