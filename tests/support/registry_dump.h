#pragma once
// A registry written out as text, to compare whole registries in one expectation: one
// line per key below a root (roots only when they hold values), keys in enumeration
// order, then one line per value in enumeration order with its type and exact bytes.

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/memory_registry.h"

namespace regvex::testing {

// Printable ASCII as it stands, every other byte as \xNN.
inline std::string RenderBytes(std::string_view text) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F) {
            out += c;
        } else {
            out += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return out;
}

inline void DumpKey(Registry& registry, RootKeyHandle root, const std::string& path,
                    std::string& out) {
    ScopedKey key;
    if (ScopedKey::Open(registry, root, path, reg::kKeyRead, key) != reg::kSuccess) {
        out += RootKeyName(root) + "\\" + RenderBytes(path) + " cannot be opened\n";
        return;
    }
    ValueSlot slot;
    std::string values;
    for (std::uint32_t i = 0; registry.EnumValue(key.get(), i, slot) == reg::kSuccess; ++i) {
        const std::string_view data(reinterpret_cast<const char*>(slot.data.data()), slot.size);
        values += "  " + RenderBytes(slot.name) + "=" + std::to_string(slot.type) + ":" +
                  RenderBytes(data) + "\n";
    }
    if (!path.empty() || !values.empty()) {
        out += RootKeyName(root) + RenderBytes(path.empty() ? "" : "\\" + path) + "\n" + values;
    }
    std::string name;
    for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
        DumpKey(registry, root, path.empty() ? name : path + "\\" + name, out);
    }
}

inline std::string DumpRegistry(Registry& registry) {
    std::string out;
    for (RootKeyHandle root = kHkeyClassesRoot; root <= kHkeyDynData; ++root) {
        DumpKey(registry, root, "", out);
    }
    return out;
}

}  // namespace regvex::testing
