#include "backup/registry_fix.h"

#include <utility>

#include "engine/run_time_error.h"
#include "text/concat.h"

namespace regvex::backup {

namespace {

// The key path and the value name of "key path\value name".
std::pair<std::string_view, std::string_view> SplitValuePath(std::string_view path) {
    const std::size_t p = path.rfind('\\');
    if (p == std::string_view::npos) {
        throw RunTimeError(kErrorInvalidProcedureCall,
                           text::Concat({"\"", path, "\" names no value of a key"}));
    }
    return {path.substr(0, p), path.substr(p + 1)};
}

}  // namespace

void DeleteRegistryValue(Registry& registry, RootKeyHandle root, std::string_view key_path,
                         std::string_view name, AccessMask access) {
    ScopedKey key;
    ScopedKey::Create(registry, root, key_path, access, key);
    if (key) {
        registry.DeleteValue(key.get(), name);
    }
}

void DeleteRegistryValuePath(Registry& registry, RootKeyHandle root, std::string_view path,
                             AccessMask access) {
    const auto [key_path, name] = SplitValuePath(path);
    DeleteRegistryValue(registry, root, key_path, name, access);
}

ValueDeletion DeleteExistingValuePath(Registry& registry, RootKeyHandle root, std::string_view path,
                                      AccessMask access) {
    const auto [key_path, name] = SplitValuePath(path);
    ScopedKey key;
    const RegStatus opened = ScopedKey::Open(registry, root, key_path, access, key);
    if (opened != reg::kSuccess) {
        return {opened, true, {}};
    }
    ValueDeletion deletion{registry.DeleteValue(key.get(), name), false, {}};
    if (!registry.StoredKeyName(key.get(), deletion.stored_key)) {
        deletion.stored_key.clear();
    }
    return deletion;
}

std::string RefusalReason(const ValueDeletion& deletion) {
    switch (deletion.status) {
        case reg::kAccessDenied:
            return "access denied";
        case reg::kFileNotFound:
            return deletion.at_key ? "key missing" : "already gone";
        case reg::kKeyDeleted:
            return "key missing";
        default:
            return "error " + std::to_string(deletion.status);
    }
}

}  // namespace regvex::backup
