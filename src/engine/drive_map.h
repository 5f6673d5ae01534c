#pragma once
// Answers the existence test from folders that stand in for drives ("C:" -> a folder),
// the way Windows would answer it: every name of a path is matched without regard to
// case, separators may repeat, "." and ".." are resolved by name, and trailing dots and
// blanks of the last name are ignored. Paths that are not absolute paths on a mapped
// drive do not exist.
//
// Folder listings are read once and kept for the life of the object, which is meant to
// last one scan: files created or removed meanwhile may go unnoticed.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/path_exists.h"

namespace regvex {

class DriveMapFileExistence final : public FileExistence {
  public:
    // At most this many folder listings are kept; beyond that they are read afresh, so
    // memory stays bounded however many paths are asked about.
    static constexpr std::size_t kCachedFolders = 4096;

    // `drive` is a letter, either case.
    void Map(char drive, std::filesystem::path folder);
    bool IsMapped(char drive) const;

    int Check(const std::string& path) override;

  private:
    // One upper-cased name can stand for a file and a folder at once on Linux ("sub" and
    // "SUB"): a path that goes on through the name needs the folder, one that ends there
    // is answered by either.
    struct Entry {
        bool has_file = false;
        bool has_folder = false;
        std::string folder_name;  // as on disk: the only kind of entry gone into
    };
    int Answer(const std::string& path);

    // Looked up by string_view without making a string of it first.
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>{}(text);
        }
    };
    template <typename T>
    using TextMap = std::unordered_map<std::string, T, TextHash, std::equal_to<>>;

    struct Folder {
        std::filesystem::path real;
        TextMap<Entry> entries;  // by upper-cased name
    };

    // The folder that a normalised, upper-cased Windows folder path such as
    // "C:\PROGRAM FILES" stands for, or null when there is none.
    const Folder* FolderAt(std::string_view upper_path);
    const Folder* Remember(const std::string& upper_path, std::filesystem::path real);

    std::map<char, std::filesystem::path> drives_;
    TextMap<Folder> folders_;
    std::string raw_;
    std::string normal_;
    // A missing file is asked about twice in a row; the second answer is the first.
    std::string last_path_;
    int last_answer_ = -1;
};

}  // namespace regvex
