#pragma once
// A change to one value of a registry kept in files (a hive, a Wine registry file), noted
// first and made later in one safe step.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace regvex {

// One value to delete, or to set (created or replaced). `key_path` is below the file's
// root key; data is in the registry's form (text types as UTF-8 with their NULs, as the
// offline backends give them).
struct ValueChange {
    std::string key_path;
    std::string name;
    bool remove = true;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    // Where a value that the key does not hold goes among its values; at the end when
    // there are fewer. Files that keep their values sorted ignore it.
    std::optional<std::size_t> position;
};

}  // namespace regvex
