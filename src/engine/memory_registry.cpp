#include "engine/memory_registry.h"

#include <algorithm>
#include <cstring>

#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex {

namespace {

// A name fits the scan's buffer when it leaves room for the terminator.
bool FitsNameBuffer(std::string_view name) {
    return text::Utf16Length(name) < reg::kNameBufferChars;
}

// Rights that only reading keys never needs.
constexpr AccessMask kRightsBeyondReading =
    ~(reg::kKeyRead | reg::kKeyWow64_64Key | reg::kKeyWow64_32Key);

}  // namespace

struct MemoryRegistry::Node {
    struct Value {
        std::string name;
        std::string upper;
        bool name_fits = true;
        bool data_fits = true;
        std::uint32_t type = reg::kNone;
        std::vector<std::uint8_t> data;
    };

    std::string name;
    std::string upper;
    bool name_fits = true;
    bool deny_full_access = false;
    Node* parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;  // by text::CompareUtf16Order of `upper`
    std::vector<Value> values;                    // in creation order

    // The child whose upper-cased name is `upper`, or where it would be inserted.
    std::vector<std::unique_ptr<Node>>::iterator LowerBound(std::string_view upper_name) {
        return std::lower_bound(children.begin(), children.end(), upper_name,
                                [](const std::unique_ptr<Node>& child, std::string_view key) {
                                    return text::CompareUtf16Order(child->upper, key) < 0;
                                });
    }

    Node* FindChild(std::string_view upper_name) {
        auto it = LowerBound(upper_name);
        return it != children.end() && (*it)->upper == upper_name ? it->get() : nullptr;
    }

    Value* FindValue(std::string_view upper_name) {
        for (Value& value : values) {
            if (value.upper == upper_name) {
                return &value;
            }
        }
        return nullptr;
    }
};

MemoryRegistry::MemoryRegistry(const text::AnsiCodePage& ansi) : ansi_(ansi) {
    for (RootKeyHandle root = kHkeyClassesRoot; root <= kHkeyDynData; ++root) {
        auto node = std::make_unique<Node>();
        node->name = RootKeyName(root);
        node->upper = node->name;
        roots_.push_back(std::move(node));
    }
}

MemoryRegistry::~MemoryRegistry() = default;

MemoryRegistry::Node* MemoryRegistry::RootNode(RootKeyHandle root) const {
    if (root < kHkeyClassesRoot || root > kHkeyDynData) {
        return nullptr;
    }
    return roots_[root - kHkeyClassesRoot].get();
}

MemoryRegistry::Node* MemoryRegistry::StartFromLast(RootKeyHandle root, std::string_view path,
                                                    std::size_t& covered) const {
    covered = 0;
    if (last_.node == nullptr || last_.root != root) {
        return nullptr;
    }
    const std::string& last = last_.path;
    // The usual cases first: the same key again, or one of its subkeys.
    if (path.size() >= last.size() && path.compare(0, last.size(), last) == 0 &&
        (path.size() == last.size() || last.empty() || path[last.size()] == '\\')) {
        covered = last.size();
        return last_.node;
    }
    std::size_t same = text::CommonPrefixLength(last, path);
    // Back to a place where both texts end a name.
    const auto ends_a_name = [&](std::size_t at) {
        return (at == last.size() || last[at] == '\\') && (at == path.size() || path[at] == '\\');
    };
    while (same > 0 && !ends_a_name(same)) {
        --same;
    }
    // Up from the last node by the names of its path beyond the shared part.
    Node* node = last_.node;
    if (same < last.size()) {
        std::size_t names_beyond = same == 0 ? 1 : 0;
        for (std::size_t i = same; i < last.size(); ++i) {
            names_beyond += last[i] == '\\' ? 1 : 0;
        }
        while (names_beyond-- > 0) {
            node = node->parent;
        }
    }
    covered = same;
    return node;
}

RegStatus MemoryRegistry::Resolve(RootKeyHandle root, std::string_view path, bool create,
                                  Node*& node) {
    node = RootNode(root);
    if (node == nullptr) {
        return reg::kInvalidHandle;
    }
    // Windows accepts one trailing separator but no empty name inside a path.
    if (!path.empty() && path.back() == '\\') {
        path.remove_suffix(1);
        if (!path.empty() && path.back() == '\\') {
            return reg::kFileNotFound;
        }
    }
    std::size_t start = 0;
    if (Node* known = StartFromLast(root, path, start)) {
        node = known;
        if (start > 0 && start < path.size()) {
            ++start;  // the separator after the shared part
        }
    }
    while (start < path.size()) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        const std::string_view name = path.substr(start, end - start);
        // An empty name: a leading separator or two in a row.
        if (name.empty()) {
            return reg::kFileNotFound;
        }
        text::UpperCaseInto(name, upper_scratch_);
        Node* child = node->FindChild(upper_scratch_);
        if (child == nullptr) {
            if (!create) {
                return reg::kFileNotFound;
            }
            auto fresh = std::make_unique<Node>();
            fresh->name = std::string(name);
            fresh->upper = upper_scratch_;
            fresh->name_fits = FitsNameBuffer(name);
            fresh->parent = node;
            child = fresh.get();
            node->children.insert(node->LowerBound(upper_scratch_), std::move(fresh));
        }
        node = child;
        start = end + 1;
    }
    last_.root = root;
    last_.path.assign(path);
    last_.node = node;
    return reg::kSuccess;
}

KeyHandle MemoryRegistry::NewHandle(Node* node) {
    std::size_t slot = handles_.size();
    if (!free_slots_.empty()) {
        slot = free_slots_.back();
        free_slots_.pop_back();
    } else {
        handles_.emplace_back();
    }
    handles_[slot] = HandleSlot{node, true};
    return slot + 1;
}

RegStatus MemoryRegistry::Lookup(KeyHandle key, Node*& node) const {
    node = nullptr;
    if (key == 0 || key > handles_.size() || !handles_[key - 1].open) {
        return reg::kInvalidHandle;
    }
    node = handles_[key - 1].node;
    return node == nullptr ? reg::kKeyDeleted : reg::kSuccess;
}

RegStatus MemoryRegistry::OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                  KeyHandle& key) {
    key = 0;
    Node* node = nullptr;
    if (const RegStatus status = Resolve(root, path, false, node); status != reg::kSuccess) {
        return status;
    }
    if (node->deny_full_access && (access & kRightsBeyondReading) != 0) {
        return reg::kAccessDenied;
    }
    key = NewHandle(node);
    return reg::kSuccess;
}

RegStatus MemoryRegistry::CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                    KeyHandle& key) {
    key = 0;
    Node* node = nullptr;
    if (const RegStatus status = Resolve(root, path, true, node); status != reg::kSuccess) {
        return status;
    }
    if (node->deny_full_access && (access & kRightsBeyondReading) != 0) {
        return reg::kAccessDenied;
    }
    key = NewHandle(node);
    return reg::kSuccess;
}

RegStatus MemoryRegistry::CloseKey(KeyHandle key) {
    if (key == 0 || key > handles_.size() || !handles_[key - 1].open) {
        return reg::kInvalidHandle;
    }
    handles_[key - 1] = HandleSlot{};
    free_slots_.push_back(key - 1);
    return reg::kSuccess;
}

RegStatus MemoryRegistry::EnumKey(KeyHandle key, std::uint32_t index, std::string& name) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    if (index >= node->children.size()) {
        return reg::kNoMoreItems;
    }
    const Node& child = *node->children[index];
    if (!child.name_fits) {
        return reg::kMoreData;
    }
    name.assign(child.name);
    return reg::kSuccess;
}

RegStatus MemoryRegistry::EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    if (index >= node->values.size()) {
        return reg::kNoMoreItems;
    }
    const Node::Value& stored = node->values[index];
    if (!stored.name_fits || !stored.data_fits || stored.data.size() > value.data.size()) {
        return reg::kMoreData;
    }
    value.name.assign(stored.name);
    value.type = stored.type;
    value.size = static_cast<std::uint32_t>(stored.data.size());
    if (!stored.data.empty()) {
        std::memcpy(value.data.data(), stored.data.data(), stored.data.size());
    }
    return reg::kSuccess;
}

RegStatus MemoryRegistry::QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                                     std::vector<std::uint8_t>& data) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    const Node::Value* value = node->FindValue(text::UpperCase(name));
    if (value == nullptr) {
        return reg::kFileNotFound;
    }
    type = value->type;
    data = value->data;
    return reg::kSuccess;
}

RegStatus MemoryRegistry::SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                                   std::span<const std::uint8_t> data) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    std::string upper = text::UpperCase(name);
    Node::Value* value = node->FindValue(upper);
    if (value == nullptr) {
        value = &node->values.emplace_back();
        value->name = std::string(name);
        value->upper = std::move(upper);
        value->name_fits = FitsNameBuffer(name);
    }
    value->type = type;
    value->data.assign(data.begin(), data.end());
    const std::size_t measured = reg::IsTextType(type)
                                     ? ansi_.AnsiLength(std::string_view(
                                           reinterpret_cast<const char*>(data.data()), data.size()))
                                     : data.size();
    value->data_fits = measured <= reg::kDataBufferBytes;
    return reg::kSuccess;
}

RegStatus MemoryRegistry::DeleteValue(KeyHandle key, std::string_view name) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    const std::string upper = text::UpperCase(name);
    auto it = std::find_if(node->values.begin(), node->values.end(),
                           [&](const Node::Value& value) { return value.upper == upper; });
    if (it == node->values.end()) {
        return reg::kFileNotFound;
    }
    node->values.erase(it);
    return reg::kSuccess;
}

void MemoryRegistry::ForgetHandlesBelow(const Node* node) {
    for (HandleSlot& slot : handles_) {
        for (const Node* n = slot.node; n != nullptr; n = n->parent) {
            if (n == node) {
                slot.node = nullptr;
                break;
            }
        }
    }
}

RegStatus MemoryRegistry::DeleteKeyTree(RootKeyHandle root, std::string_view path) {
    Node* node = nullptr;
    if (const RegStatus status = Resolve(root, path, false, node); status != reg::kSuccess) {
        return status;
    }
    if (node->parent == nullptr) {
        return reg::kAccessDenied;  // a root cannot be deleted
    }
    ForgetHandlesBelow(node);
    last_ = LastResolved{};
    auto& siblings = node->parent->children;
    siblings.erase(
        std::find_if(siblings.begin(), siblings.end(),
                     [&](const std::unique_ptr<Node>& child) { return child.get() == node; }));
    return reg::kSuccess;
}

RegStatus MemoryRegistry::DenyFullAccess(RootKeyHandle root, std::string_view path) {
    Node* node = nullptr;
    if (const RegStatus status = Resolve(root, path, false, node); status != reg::kSuccess) {
        return status;
    }
    node->deny_full_access = true;
    return reg::kSuccess;
}

std::size_t MemoryRegistry::OpenHandleCount() const {
    return static_cast<std::size_t>(std::count_if(
        handles_.begin(), handles_.end(), [](const HandleSlot& slot) { return slot.open; }));
}

}  // namespace regvex
