#pragma once
// Putting a file that was found elsewhere in the place of the missing one that a finding's
// value names: the value is backed up as the Fix command backs up its findings, then
// written again with the new path where the scan read the old one, every other byte of
// its data and its type kept.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/file_reference.h"
#include "engine/registry.h"
#include "system/file_system.h"
#include "text/ansi_code_page.h"

namespace regvex::backup {

// The path that a value's data name, as a scan reads it: only the text types hold one,
// and of them only the text before the first NUL is read (the first string of a list).
struct PathInData {
    std::string first_string;
    // The path's bytes, within `first_string` and so within the data.
    TextSpan span;
    // Those bytes as they stand.
    std::string path;
};
std::optional<PathInData> FindPathInData(std::uint32_t type, std::span<const std::uint8_t> data,
                                         std::string_view scan_drive);

// The data with the bytes of `span` replaced by `new_path`; quotes, arguments, an icon
// index, the terminator and the later strings of a list stay as they were.
std::vector<std::uint8_t> ReplacePathInData(std::span<const std::uint8_t> data, TextSpan span,
                                            std::string_view new_path);

// One finding as the results list shows it, and the file chosen for it.
struct PathRepairRequest {
    std::string root_key;
    // "key path\value name"; a trailing backslash names the default value.
    std::string sub_key;
    // The scanned drive's root, "C:\".
    std::string scan_drive;
    // The missing path as the scan read it (upper case).
    std::string old_path;
    std::string new_path;
};

enum class PathRepairOutcome {
    kRepaired,
    kValueUnreadable,  // the key or the value is gone, or may not be read
    kPathChanged,      // the value no longer names the missing file
    kNotWritable,      // the key may not be written
    kBackupNameTaken,  // a backup of the same second exists
    kBackupFailed,
    kWriteFailed,
};

struct PathRepairResult {
    PathRepairOutcome outcome = PathRepairOutcome::kValueUnreadable;
    // The registry's answer where it refused.
    RegStatus status = reg::kSuccess;
    // What the results list shows of the value now (its first string).
    std::string value_text;
    // What went wrong with the backup file.
    std::string detail;
};

// Where the backup goes.
struct BackupTarget {
    system::FileSystem& files;
    std::string program_folder;
    std::string date_text;
    const text::AnsiCodePage& code_page;
};

// The missing path as it stands in the value now, or the outcome that stops a repair
// before anything is written (kRepaired: nothing does).
struct ValuePath {
    PathRepairOutcome outcome = PathRepairOutcome::kValueUnreadable;
    RegStatus status = reg::kSuccess;
    std::optional<PathInData> found;
};
ValuePath ReadValuePath(Registry& registry, AccessMask access, const PathRepairRequest& request);

// Opens the key for writing before anything else, so that a value that may not be
// written leaves no backup behind; writes the backup; writes the value. When the write
// itself is refused after the backup was made, the backup is removed again: restored, it
// would turn the untouched value into a string value.
PathRepairResult RepairFilePath(Registry& registry, AccessMask access, const BackupTarget& backup,
                                const PathRepairRequest& request);

// What the user is told when a repair did not happen; empty for kRepaired.
std::string PathRepairRefusal(const PathRepairResult& result);

}  // namespace regvex::backup
