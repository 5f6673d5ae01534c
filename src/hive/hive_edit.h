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

#include "engine/value_change.h"

namespace regvex::hive {

using regvex::ValueChange;

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
