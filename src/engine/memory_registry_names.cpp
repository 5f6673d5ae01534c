// How the in-memory registry names its stored keys: each root is its own tree, so a key
// is named by its root's name and the path of names from there.

#include "engine/memory_registry.h"
#include "engine/memory_registry_tree.h"

namespace regvex {

bool MemoryRegistry::StoredKeyName(KeyHandle key, std::string& name) {
    Node* node = nullptr;
    if (Lookup(key, node) != reg::kSuccess) {
        return false;
    }
    // A walk names a key after its parent: the names of the keys last named, from the
    // root down, are kept, so that most names are the parent's with one more appended.
    while (!named_path_.empty() && named_path_.back().node != node->parent) {
        named_path_.pop_back();
    }
    if (named_path_.empty()) {
        std::size_t size = 0;
        for (const Node* at = node; at != nullptr; at = at->parent) {
            size += at->name.size() + 1;
        }
        named_.resize(size);
        for (const Node* at = node; at != nullptr; at = at->parent) {
            size -= at->name.size() + 1;
            named_[size] = '\\';
            named_.replace(size + 1, at->name.size(), at->name);
        }
    } else {
        named_.resize(named_path_.back().length);
        named_.push_back('\\');
        named_.append(node->name);
    }
    named_path_.push_back(NamedKey{node, named_.size()});
    name.assign(named_);
    return true;
}

}  // namespace regvex
