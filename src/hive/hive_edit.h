#pragma once
// Changes to the values of a hive file that is not in use, made so that nothing can be
// lost: the changes are written through hivex to a copy, which our reader must find equal
// to the old hive except for exactly the changes before it replaces the old one (see
// system/file_replace.h).

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/value_change.h"
#include "system/file_replace.h"

namespace regvex::hive {

using regvex::ValueChange;

using EditHooks = system::ReplaceHooks;
using EditOutcome = system::ReplaceOutcome;
using EditResult = system::ReplaceResult;
using system::PreviousFile;

// Why `file` must not be changed now, or empty: a dirty or damaged hive, a read-only file
// or mount, a hibernated partition, too little space for the new file.
std::string WhyHiveCannotChange(const std::filesystem::path& file, const EditHooks& hooks = {});

// Makes the changes as described above. Every change must find its key, and every
// deletion its value; otherwise nothing is replaced.
EditResult EditHiveFile(const std::filesystem::path& file, const std::vector<ValueChange>& changes,
                        const EditHooks& hooks = {});

}  // namespace regvex::hive
