#pragma once
// Why a value is (or is not) a finding, in plain words: what the scan read, the path it
// cut out of the data and where from, how the file's existence was decided, and what the
// ignore list does with it. Every step is asked of the scan's own routines, so the
// explanation cannot disagree with the scan. The window and the command line show the
// same text.

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/file_reference.h"
#include "engine/path_exists.h"
#include "engine/registry.h"
#include "scan/finding_verdict.h"

namespace regvex::scan {

// A value listed by a scan, and what the registry holds for it now.
struct ValueToExplain {
    std::string root;         // "HKEY_CURRENT_USER"
    std::string key_path;     // below the root
    std::string value_name;   // empty for the default value
    std::string listed_text;  // the data as the results showed them
    // The value read again: its type and data when the status is success.
    RegStatus read_status = reg::kFileNotFound;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
};

// Reads the value again with `access`.
ValueToExplain ReadValueToExplain(Registry& registry, AccessMask access, std::string root,
                                  std::string key_path, std::string value_name,
                                  std::string listed_text);

// The key path and value name of a found value's "key\name", parted after `key_path`
// when the text starts with it and a backslash (a name may hold backslashes), else at
// the last backslash, as Fix parts it.
void SplitFoundKey(std::string_view found_key, std::string_view key_path, std::string& key,
                   std::string& name);

struct ExplainContext {
    std::string scan_drive;  // "C:\"
    FileExistence* files = nullptr;
    std::span<const std::string> ignore_entries;
    // What stands for the drive when it is not the system's own drive; empty otherwise.
    std::string drive_note;
};

struct FindingExplanation {
    ValueToExplain value;
    std::string drive;
    std::string drive_note;
    std::size_t ignore_entry_count = 0;
    std::string type_name;  // "REG_SZ", or the type's number
    // The text the scan reads: the data rendered, or the listed text when the value
    // could not be read again.
    std::string data_text;
    // The strings of a multi-string after the first, which the scan never reads.
    std::vector<std::string> unread_strings;
    PathExtraction extraction;
    FindingVerdict verdict;
    // For a missing file: the nearest folder of its path that exists ("C:\A\"); empty
    // when not even the drive does.
    std::string nearest_folder;
    // The ignore entry that covers the value now, whatever decided the verdict.
    std::string ignore_entry;
    bool ignore_entry_in_path = false;
    // What the results' two ignore commands would add, and whether that would hide it.
    std::string value_entry;
    bool value_entry_hides = false;
    std::string subkey_entry;
};

FindingExplanation ExplainFinding(ValueToExplain value, const ExplainContext& context);

// The explanation as lines ended by '\n', for a monospace font. Every text from outside
// (names, data, paths, entries) goes through `shown`, and the mark under the path's
// place in the data is counted in the characters that `shown` gives.
std::string ExplanationText(const FindingExplanation& explanation,
                            const std::function<std::string(std::string_view)>& shown);

// For a window: control characters as \xHH so that the data stay on their line; every
// other character as it is.
std::string ControlsMadeVisible(std::string_view text);

}  // namespace regvex::scan
