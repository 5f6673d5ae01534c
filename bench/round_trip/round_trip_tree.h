#pragma once
// A registry tree for the fix-and-restore round trip: string values that each name a
// missing file on C:, with the texts that are hard to get back through a backup file
// (quotes, backslashes, characters beyond ASCII, default values, long paths).

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "engine/registry.h"

namespace regvex::bench {

// Below HKEY_CURRENT_USER. Its subkey "Ansi" holds only texts of the Western code page,
// "Unicode" texts beyond it, so that each kind of backup file can be fixed on its own.
inline constexpr std::string_view kRoundTripKey = "Software\\Vexlor Round Trip";
inline constexpr std::string_view kAnsiPart = "Ansi";
inline constexpr std::string_view kUnicodePart = "Unicode";

struct TreeValue {
    std::string key;  // below HKEY_CURRENT_USER
    std::string name;
    std::string data;
};

// `count` values, half in each part, spread over keys of up to ten values.
std::vector<TreeValue> RoundTripTree(std::size_t count);

// Writes the values as REG_SZ; false when a key or value could not be written.
bool WriteTree(Registry& registry, const std::vector<TreeValue>& values);

// Every value below `path` of HKEY_CURRENT_USER, keyed "key path\t value name", with its
// type and data as "type:data" (text types as text, others in hex).
std::map<std::string, std::string> Snapshot(Registry& registry, std::string_view path);

}  // namespace regvex::bench
