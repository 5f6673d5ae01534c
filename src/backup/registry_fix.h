#pragma once
// Deleting the values of checked findings. The key is opened with open-or-create, so a
// key that vanished since the scan comes back as an empty key; that is how the Fix
// command has always behaved. Registry answers are not looked at.

#include <string_view>

#include "engine/registry.h"

namespace regvex::backup {

// Deletes the value `name` of `key_path` below `root`.
void DeleteRegistryValue(Registry& registry, RootKeyHandle root, std::string_view key_path,
                         std::string_view name, AccessMask access);

// Splits "key path\value name" at its last backslash (nothing after it: the default
// value) and deletes that value. Throws a run-time error when the path has no backslash
// at all.
void DeleteRegistryValuePath(Registry& registry, RootKeyHandle root, std::string_view path,
                             AccessMask access);

}  // namespace regvex::backup
