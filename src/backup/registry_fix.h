#pragma once
// Deleting the values of checked findings. The window's Fix opens the key with
// open-or-create, so a key that vanished since the scan comes back as an empty key, and
// does not look at the registry's answers; that is how the Fix command has always
// behaved. The command line's fix says what became of each value instead, so it opens
// only keys that exist and keeps the answer.

#include <string>
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

// The registry's answer to deleting one value: kSuccess, or what refused it and where.
struct ValueDeletion {
    RegStatus status = reg::kSuccess;
    bool at_key = false;  // the key itself could not be opened
    // Which stored key was opened, when the registry can tell (Registry::StoredKeyName):
    // one value reached through two roots is deleted through the first.
    std::string stored_key;

    bool Deleted() const { return status == reg::kSuccess; }
};

// As DeleteRegistryValuePath, but a missing key is left missing and the answer is kept.
ValueDeletion DeleteExistingValuePath(Registry& registry, RootKeyHandle root, std::string_view path,
                                      AccessMask access);

// Why a deletion was refused, in a few words: "access denied", "already gone" (the key is
// there, the value is not), "key missing", or "error N" for any other answer.
std::string RefusalReason(const ValueDeletion& deletion);

}  // namespace regvex::backup
