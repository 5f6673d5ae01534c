#pragma once
// Building registries for tests in one line per value.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/memory_registry.h"

namespace regvex::testing {

inline std::vector<std::uint8_t> Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

// A REG_SZ as the registry stores it: the text and its terminator.
inline std::vector<std::uint8_t> SzBytes(std::string_view text) {
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

inline void PutValue(MemoryRegistry& registry, RootKeyHandle root, std::string_view path,
                     std::string_view name, std::uint32_t type,
                     const std::vector<std::uint8_t>& data) {
    KeyHandle key = 0;
    if (registry.CreateKey(root, path, reg::kKeyAllAccess, key) != reg::kSuccess) {
        throw std::logic_error("fixture key could not be created");
    }
    registry.SetValue(key, name, type, data);
    registry.CloseKey(key);
}

inline void PutString(MemoryRegistry& registry, RootKeyHandle root, std::string_view path,
                      std::string_view name, std::string_view text) {
    PutValue(registry, root, path, name, reg::kSz, SzBytes(text));
}

inline void PutKey(MemoryRegistry& registry, RootKeyHandle root, std::string_view path) {
    KeyHandle key = 0;
    registry.CreateKey(root, path, reg::kKeyAllAccess, key);
    registry.CloseKey(key);
}

}  // namespace regvex::testing
