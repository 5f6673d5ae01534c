#pragma once
// What the scan makes of one match of the search: whether it becomes a row of the
// results, and with which status text.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/path_exists.h"

namespace regvex::scan {

inline constexpr std::string_view kInvalidEntry = "Invalid Entry";

// "Invalid Entry" for a key-name, value-name or value-data match; empty otherwise.
std::string FindingStatus(std::int32_t lFound);

// True when a path ends in one of the extensions that the restricted scan lists.
bool HasKnownFileExtension(std::string_view path);

// True when an ignore entry occurs, as it stands, in the upper-cased path or key.
bool IsIgnored(std::span<const std::string> ignore_entries, std::string_view path,
               std::string_view key);

struct FindingRules {
    std::string scan_drive;  // "C:\"
    FileExistence* files = nullptr;
    std::span<const std::string> ignore_entries;
    bool safe_scan = false;
};

// Cuts the path out of the value's text and decides: a path that exists is not listed,
// nor one that an ignore entry covers, nor (in the restricted scan) one without a known
// extension, nor a text that names no plain path.
bool IsListedFinding(const FindingRules& rules, std::string_view sKey, std::string_view sValue);

}  // namespace regvex::scan
