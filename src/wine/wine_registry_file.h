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

struct WineFileContents {
    // Where the file's keys went below \Registry: its ";; All keys relative to" line, else
    // the default given.
    std::string root;
    std::vector<WineBadLine> bad_lines;
};

// Adds the keys and values of `in` to `top` (\Registry). Answers why the file is not a Wine
// registry file, or nullopt. The tree still needs WineKey::Finish.
std::optional<std::string> ReadWineRegistryFile(std::istream& in, std::string_view default_root,
                                                WineKey& top, WineFileContents& contents);

}  // namespace regvex::wine
