#pragma once
// Answers the existence test from folders that stand in for drives ("C:" -> a folder),
// the way Windows would answer it: every component of a path is matched without regard
// to case, separators may repeat, "." and ".." are resolved by name, and trailing dots
// and blanks of the last component are ignored. Paths that are not absolute paths on a
// mapped drive do not exist.

#include <cstddef>
#include <filesystem>
#include <list>
#include <map>
#include <string>
#include <unordered_map>

#include "engine/path_exists.h"

namespace regvex {

class DriveMapFileExistence final : public FileExistence {
  public:
    // Directory listings are cached for speed; at most this many are kept, so memory
    // stays bounded however many paths are asked about.
    static constexpr std::size_t kCachedDirectories = 512;

    // `drive` is a letter, either case.
    void Map(char drive, std::filesystem::path folder);
    bool IsMapped(char drive) const;

    int Check(const std::string& path) override;

  private:
    struct Entry {
        std::string name;  // the name on disk
        bool is_directory = false;
    };
    using Listing = std::unordered_map<std::string, Entry>;  // by upper-cased name

    // The entry named `name` (any case) in `folder`, or null.
    const Entry* Find(const std::filesystem::path& folder, const std::string& name);
    const Listing& ListingOf(const std::filesystem::path& folder);

    std::map<char, std::filesystem::path> drives_;
    std::list<std::pair<std::string, Listing>> cache_;  // most recently used first
    std::unordered_map<std::string, std::list<std::pair<std::string, Listing>>::iterator>
        cache_index_;
};

}  // namespace regvex
