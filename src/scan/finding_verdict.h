#pragma once
// What the scan makes of one match of the search: whether it becomes a row of the
// results, and with which status text. The program and the command line both ask here.

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "engine/path_exists.h"
#include "engine/reg_search.h"

namespace regvex::scan {

inline constexpr std::string_view kInvalidEntry = "Invalid Entry";

// "Invalid Entry" for a key-name, value-name or value-data match; empty otherwise.
std::string FindingStatus(FoundKind lFound);

// True when a path ends in one of the extensions that the restricted scan lists.
bool HasKnownFileExtension(std::string_view path);

// True when an ignore entry occurs, as it stands, in the upper-cased path or key.
bool IsIgnored(std::span<const std::string> ignore_entries, std::string_view path,
               std::string_view key);

// The first entry that does so, or null.
const std::string* FindIgnoreEntry(std::span<const std::string> ignore_entries,
                                   std::string_view path, std::string_view key);

// The ignore entries, asked for once for each match whose file is missing, at the moment
// the verdict needs them: the program reads them from its ignore window's list each time.
using IgnoreEntries = std::function<std::span<const std::string>()>;

// Entries loaded once, the same for every match. They must outlive the answer.
IgnoreEntries FixedIgnoreEntries(std::span<const std::string> entries);

struct FindingRules {
    std::string scan_drive;  // "C:\"
    FileExistence* files = nullptr;
    IgnoreEntries ignore_entries;  // none when empty
    bool safe_scan = false;
};

// The decision and each step of it. Steps after the one that decided were not taken.
struct FindingVerdict {
    std::string path;  // ValidatePath's answer
    bool exists = false;
    bool ignored = false;
    std::string ignore_entry;        // the entry that covers it, when ignored
    bool unknown_extension = false;  // the restricted scan drops it
    bool listed = false;
};

FindingVerdict JudgeFinding(const FindingRules& rules, std::string_view sKey,
                            std::string_view sValue);

// Cuts the path out of the value's text and decides: a path that exists is not listed,
// nor one that an ignore entry covers, nor (in the restricted scan) one without a known
// extension, nor a text that names no plain path.
bool IsListedFinding(const FindingRules& rules, std::string_view sKey, std::string_view sValue);

}  // namespace regvex::scan
