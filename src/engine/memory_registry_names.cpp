// How the in-memory registry names its stored keys: each root is its own tree, so a key
// is named by its root's name and the path of names from there.

#include <vector>

#include "engine/memory_registry.h"
#include "engine/memory_registry_tree.h"

namespace regvex {

bool MemoryRegistry::StoredKeyName(KeyHandle key, std::string& name) {
    Node* node = nullptr;
    if (Lookup(key, node) != reg::kSuccess) {
        return false;
    }
    std::size_t size = 0;
    for (const Node* at = node; at != nullptr; at = at->parent) {
        size += at->name.size() + 1;
    }
    name.resize(size);
    for (const Node* at = node; at != nullptr; at = at->parent) {
        size -= at->name.size() + 1;
        name[size] = '\\';
        name.replace(size + 1, at->name.size(), at->name);
    }
    return true;
}

}  // namespace regvex
