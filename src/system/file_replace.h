#pragma once
// Replacing a file that holds a registry (a hive, a Wine registry file) so that nothing
// can be lost: the new contents go to a file beside it, which is flushed, read back and
// checked, and only then takes the old one's name. The old file stays beside it as
// FILE.regvexlor-previous until the next change. A power loss at any moment leaves the
// old file or the new one under the name, each whole.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace regvex::system {

struct ReplaceHooks {
    // Called after each step ("written", "flushed", "verified", "linked", "renamed"):
    // fault-injection tests end the process there.
    std::function<void(std::string_view step)> after_step;
    // Bytes free for a new file in `folder`; the file system's answer when empty.
    std::function<std::uint64_t(const std::filesystem::path& folder)> free_bytes;
};

enum class ReplaceOutcome {
    kDone,
    kRefused,  // nothing was written: the file cannot or must not be changed
    kFailed,   // the new file was not right (or not written); the old one stays
};

struct ReplaceResult {
    ReplaceOutcome outcome = ReplaceOutcome::kDone;
    std::string message;  // what was refused or went wrong, naming the file
};

// A file's name as messages show it, in quotes.
std::string QuotedName(const std::filesystem::path& file);

// Why `file` cannot be replaced now, or empty: it cannot be read, it or its folder is
// read-only, its file system is mounted read-only, or its folder has no room for a copy
// `spare_bytes` larger than it.
std::string WhyFileCannotBeReplaced(const std::filesystem::path& file, std::uint64_t spare_bytes,
                                    const ReplaceHooks& hooks = {});

// Writes the new file with `write` (given its path; it is created with the old file's
// permissions when `write` does not make it), flushes it, checks it with `verify`, then
// keeps the old file as PreviousFile and gives the new one its name. `write` and
// `verify` answer what went wrong, or empty. On failure the new file is removed and the
// old one is untouched.
ReplaceResult ReplaceFile(const std::filesystem::path& file,
                          const std::function<std::string(const std::filesystem::path&)>& write,
                          const std::function<std::string(const std::filesystem::path&)>& verify,
                          const ReplaceHooks& hooks = {});

// Writes `bytes` to a file that must not exist yet, with `mode_of`'s permissions.
std::string WriteNewFile(const std::filesystem::path& file, std::string_view bytes,
                         const std::filesystem::path& mode_of);

// FILE.regvexlor-previous, where the file before the last change is kept.
inline std::filesystem::path PreviousFile(const std::filesystem::path& file) {
    std::filesystem::path previous = file;
    previous += ".regvexlor-previous";
    return previous;
}

}  // namespace regvex::system
