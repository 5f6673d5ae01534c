#include "backup/registry_fix.h"

#include "engine/run_time_error.h"
#include "text/concat.h"

namespace regvex::backup {

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
    const std::size_t p = path.rfind('\\');
    if (p == std::string_view::npos) {
        throw RunTimeError(kErrorInvalidProcedureCall,
                           text::Concat({"\"", path, "\" names no value of a key"}));
    }
    DeleteRegistryValue(registry, root, path.substr(0, p), path.substr(p + 1), access);
}

}  // namespace regvex::backup
