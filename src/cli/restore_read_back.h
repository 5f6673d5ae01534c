#pragma once
// What a restore can check afterwards: the values a backup file holds, and which of them
// the registry does not hold as the file has them.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "backup/reg_file_reader.h"
#include "cli/offline_changes.h"
#include "engine/memory_registry.h"

namespace regvex::cli {

// Every value `registry` holds, key by key (each root, depth first), each key's values in
// their order.
std::vector<OfflineValue> ValuesHeld(MemoryRegistry& registry);

// The values of a backup file's text; nothing when it is malformed, and then the answer
// names the line.
std::optional<backup::RegFileError> ValuesOfBackup(std::string_view bytes,
                                                   const text::AnsiCodePage& ansi,
                                                   std::vector<OfflineValue>& values);

struct NotReadBack {
    const OfflineValue* value = nullptr;
    // "key missing", "value missing", "different data", "access denied" or "error N".
    std::string reason;
};

// The values that `registry`, its keys opened with `access`, does not hold with the type
// and data given. Text compares without the NULs that end it: whether the terminator was
// stored depends on who wrote the value.
std::vector<NotReadBack> ValuesNotReadBack(Registry& registry, AccessMask access,
                                           const std::vector<OfflineValue>& values);

}  // namespace regvex::cli
