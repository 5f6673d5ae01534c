#pragma once
// Reads one of Wine's registry files (system.reg, user.reg, userdef.reg) into the tree of
// a prefix's keys. Lines that Wine's server would not load are skipped as it skips them,
// and reported; a file that is not a Wine registry file is refused whole.

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "wine/wine_key_tree.h"

namespace regvex::wine {

struct WineBadLine {
    std::size_t line = 0;
    std::string message;
};

// Lines are counted from 1, as WineBadLine counts them; `end` is one past the last.
struct WineSectionLines {
    WineKey* key = nullptr;
    std::size_t key_line = 0;
    // Below the key line and the "#" lines right after it: where the first value goes.
    std::size_t values_line = 0;
};

struct WineValueLines {
    std::size_t section = 0;  // in WineFileContents::sections
    std::string name;
    std::size_t first = 0;
    std::size_t end = 0;  // past its continued lines
};

struct WineFileContents {
    // Where the file's keys went below \Registry: its ";; All keys relative to" line, else
    // the default given.
    std::string root;
    std::vector<WineBadLine> bad_lines;
    // Set before reading to have the lines of every key section and value that was read
    // recorded, so that an edit finds them exactly as the scan saw them.
    bool record_lines = false;
    std::vector<WineSectionLines> sections;
    std::vector<WineValueLines> values;  // in file order
};

// Adds the keys and values of `in` to `top` (\Registry). Answers why the file is not a Wine
// registry file, or nullopt. The tree still needs WineKey::Finish.
std::optional<std::string> ReadWineRegistryFile(std::istream& in, std::string_view default_root,
                                                WineKey& top, WineFileContents& contents);

// The same for a file's text held in memory.
std::optional<std::string> ReadWineRegistryText(std::string_view text,
                                                std::string_view default_root, WineKey& top,
                                                WineFileContents& contents);

}  // namespace regvex::wine
