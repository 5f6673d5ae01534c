#pragma once
// Changes to the values of a hive file that is not in use, made so that nothing can be
// lost: the changes go to a new file beside it (written through hivex), which is flushed,
// read back and compared with the old one, and only then takes the old one's name. The
// old file stays beside it as FILE.regvexlor-previous until the next change.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace regvex::hive {

// One value to delete, or to set (created or replaced). `key_path` is below the hive's
// root key; data is in the registry's form (text types as UTF-8, as HiveRegistry gives
// them).
struct ValueChange {
    std::string key_path;
    std::string name;
    bool remove = true;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    // Where a value that the key does not hold goes among its values; at the end when
    // there are fewer.
    std::optional<std::size_t> position;
};

struct EditHooks {
    // Called after each step ("written", "flushed", "verified", "linked", "renamed"):
    // fault-injection tests end the process there.
    std::function<void(std::string_view step)> after_step;
    // Bytes free for a new file in `folder`; the file system's answer when empty.
    std::function<std::uint64_t(const std::filesystem::path& folder)> free_bytes;
};

enum class EditOutcome {
    kDone,
    kRefused,  // nothing was written: the file cannot or must not be changed
    kFailed,   // the new file was not right (or not written); the old one stays
};

struct EditResult {
    EditOutcome outcome = EditOutcome::kDone;
    std::string message;  // what was refused or went wrong, naming the file
};

// Why `file` must not be changed now, or empty: a dirty or damaged hive, a read-only file
// or mount, a hibernated partition, too little space for the new file.
std::string WhyHiveCannotChange(const std::filesystem::path& file, const EditHooks& hooks = {});

// Makes the changes as described above. Every change must find its key, and every
// deletion its value; otherwise nothing is replaced.
EditResult EditHiveFile(const std::filesystem::path& file, const std::vector<ValueChange>& changes,
                        const EditHooks& hooks = {});

// FILE.regvexlor-previous, where the file before the last change is kept.
inline std::filesystem::path PreviousFile(const std::filesystem::path& file) {
    std::filesystem::path previous = file;
    previous += ".regvexlor-previous";
    return previous;
}

}  // namespace regvex::hive
