#include "engine/memory_registry.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "engine/memory_registry_tree.h"
#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex {

namespace {

using memory_tree::NameHash;
using memory_tree::Value;

// A name fits the scan's buffer when it leaves room for the terminator.
bool FitsNameBuffer(std::string_view name) {
    return text::Utf16Length(name) < reg::kNameBufferChars;
}

// Rights that only reading keys never needs.
constexpr AccessMask kRightsBeyondReading =
    ~(reg::kKeyRead | reg::kKeyWow64_64Key | reg::kKeyWow64_32Key);

// Whether the keys of `rest` (names without a trailing separator) may be created below a
// key `depth` levels down.
RegStatus CheckNewKeys(std::size_t depth, std::string_view rest) {
    std::size_t start = 0;
    while (true) {
        const std::size_t end = std::min(rest.find('\\', start), rest.size());
        const std::string_view name = rest.substr(start, end - start);
        if (name.empty()) {
            return reg::kFileNotFound;
        }
        if (text::Utf16Length(name) > reg::kMaxKeyNameChars) {
            return reg::kInvalidParameter;
        }
        if (++depth > reg::kMaxKeyDepth) {
            return reg::kNoSystemResources;
        }
        if (end == rest.size()) {
            return reg::kSuccess;
        }
        start = end + 1;
    }
}

}  // namespace

struct MemoryRegistry::UndoRecord {
    enum class Kind : std::uint8_t {
        kNone,           // taken back already: a key created and deleted again
        kKeyCreated,     // `node` was created below an older key
        kKeyDeleted,     // `subtree` was deleted from below `node`
        kValueAdded,     // `node` got a new value at `position`
        kValueReplaced,  // the value at `position` of `node` was `before`
    };
    Kind kind = Kind::kNone;
    Node* node = nullptr;
    std::uint32_t position = 0;
    Value before;
    std::unique_ptr<Node> subtree;
};

MemoryRegistry::MemoryRegistry(const text::AnsiCodePage& ansi) : ansi_(ansi) {
    for (RootKeyHandle root = kHkeyClassesRoot; root <= kHkeyDynData; ++root) {
        const std::string name = RootKeyName(root);
        roots_.push_back(std::make_unique<Node>(name, NameHash(name), nullptr));
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
    bool creating = false;
    while (start < path.size()) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        const std::string_view name = path.substr(start, end - start);
        // An empty name: a leading separator or two in a row.
        if (name.empty()) {
            return reg::kFileNotFound;
        }
        text::UpperCaseInto(name, upper_scratch_);
        const std::uint32_t hash = NameHash(upper_scratch_);
        Node* child =
            creating ? nullptr : node->FindChild(name, upper_scratch_, hash, compare_scratch_);
        if (child == nullptr) {
            if (!create) {
                return reg::kFileNotFound;
            }
            // All or nothing: the rest of the path is checked before its first key is made.
            if (!creating) {
                if (const RegStatus status = CheckNewKeys(node->depth, path.substr(start));
                    status != reg::kSuccess) {
                    return status;
                }
                creating = true;
            }
            child = AddKey(node, name, hash);
        }
        node = child;
        start = end + 1;
    }
    last_.root = root;
    last_.path.assign(path);
    last_.node = node;
    return reg::kSuccess;
}

MemoryRegistry::Node* MemoryRegistry::AddKey(Node* parent, std::string_view name,
                                             std::uint32_t hash) {
    const bool record = recording_ && !Fresh(parent);
    if (record && undo_.size() == undo_.capacity()) {
        undo_.reserve(std::max<std::size_t>(16, 2 * undo_.capacity()));
    }
    auto fresh = std::make_unique<Node>(name, hash, parent);
    fresh->born = recording_ ? recording_serial_ : 0;
    Node* added = parent->AddChild(std::move(fresh), upper_scratch_, compare_scratch_);
    if (record) {
        Record(UndoRecord{UndoRecord::Kind::kKeyCreated, added, 0, {}, {}});
        added->undo_record = static_cast<std::uint32_t>(undo_.size());
    }
    return added;
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
    return OpenNode(root, path, access, false, key);
}

RegStatus MemoryRegistry::CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                    KeyHandle& key) {
    return OpenNode(root, path, access, true, key);
}

RegStatus MemoryRegistry::OpenNode(RootKeyHandle root, std::string_view path, AccessMask access,
                                   bool create, KeyHandle& key) {
    key = 0;
    Node* node = nullptr;
    if (const RegStatus status = Resolve(root, path, create, node); status != reg::kSuccess) {
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
    node->SortChildren();
    // No key name this registry holds passes 255 characters, so every one fits the buffer.
    name.assign(node->children[index]->name);
    return reg::kSuccess;
}

RegStatus MemoryRegistry::ValueAt(KeyHandle key, std::uint32_t index, const Value*& stored) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    // While recording, deleted values keep their places for the undoing.
    if (!recording_) {
        node->CompactValues();
    }
    stored = node->LiveValue(index);
    return stored == nullptr ? reg::kNoMoreItems : reg::kSuccess;
}

RegStatus MemoryRegistry::EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) {
    const Value* stored = nullptr;
    if (const RegStatus status = ValueAt(key, index, stored); status != reg::kSuccess) {
        return status;
    }
    const std::span<const std::uint8_t> data = stored->data();
    if (!stored->name_fits() || !stored->data_fits() || data.size() > value.data.size()) {
        return reg::kMoreData;
    }
    value.name.assign(stored->name());
    value.type = stored->type();
    value.size = static_cast<std::uint32_t>(data.size());
    std::copy(data.begin(), data.end(), value.data.begin());
    return reg::kSuccess;
}

RegStatus MemoryRegistry::ReadValue(KeyHandle key, std::uint32_t index, std::string& name,
                                    std::uint32_t& type, std::vector<std::uint8_t>& data) {
    const Value* stored = nullptr;
    if (const RegStatus status = ValueAt(key, index, stored); status != reg::kSuccess) {
        return status;
    }
    name.assign(stored->name());
    type = stored->type();
    data.assign(stored->data().begin(), stored->data().end());
    return reg::kSuccess;
}

RegStatus MemoryRegistry::QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                                     std::vector<std::uint8_t>& data) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    text::UpperCaseInto(name, upper_scratch_);
    const auto position =
        node->FindValue(name, upper_scratch_, NameHash(upper_scratch_), compare_scratch_);
    if (!position) {
        return reg::kFileNotFound;
    }
    const Value& value = node->values[*position];
    type = value.type();
    data.assign(value.data().begin(), value.data().end());
    return reg::kSuccess;
}

RegStatus MemoryRegistry::SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                                   std::span<const std::uint8_t> data) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    if (text::Utf16Length(name) > reg::kMaxValueNameChars ||
        data.size() > std::numeric_limits<std::uint32_t>::max()) {
        return reg::kInvalidParameter;
    }
    const std::size_t measured = reg::IsTextType(type)
                                     ? ansi_.AnsiLength(std::string_view(
                                           reinterpret_cast<const char*>(data.data()), data.size()))
                                     : data.size();
    const bool data_fits = measured <= reg::kDataBufferBytes;

    text::UpperCaseInto(name, upper_scratch_);
    const std::uint32_t hash = NameHash(upper_scratch_);
    const bool record = recording_ && !Fresh(node);
    if (record && undo_.size() == undo_.capacity()) {
        undo_.reserve(std::max<std::size_t>(16, 2 * undo_.capacity()));
    }
    const auto position = node->FindValue(name, upper_scratch_, hash, compare_scratch_);
    if (!position) {
        Value value(name, hash, FitsNameBuffer(name));
        value.SetData(type, data, data_fits);
        const std::uint32_t added = node->AddValue(std::move(value));
        if (record) {
            Record(UndoRecord{UndoRecord::Kind::kValueAdded, node, added, {}, {}});
        }
        return reg::kSuccess;
    }
    Value& stored = node->values[*position];
    if (!record) {
        stored.SetData(type, data, data_fits);
        return reg::kSuccess;
    }
    // The old value goes to the record whole; the name keeps the case it was created with.
    Value replacement(stored.name(), hash, stored.name_fits());
    replacement.SetData(type, data, data_fits);
    Record(UndoRecord{UndoRecord::Kind::kValueReplaced, node, *position, std::move(stored), {}});
    stored = std::move(replacement);
    return reg::kSuccess;
}

RegStatus MemoryRegistry::DeleteValue(KeyHandle key, std::string_view name) {
    Node* node = nullptr;
    if (const RegStatus status = Lookup(key, node); status != reg::kSuccess) {
        return status;
    }
    if (node->deny_value_deletion) {
        return reg::kAccessDenied;
    }
    text::UpperCaseInto(name, upper_scratch_);
    const auto position =
        node->FindValue(name, upper_scratch_, NameHash(upper_scratch_), compare_scratch_);
    if (!position) {
        return reg::kFileNotFound;
    }
    const bool record = recording_ && !Fresh(node);
    if (record && undo_.size() == undo_.capacity()) {
        undo_.reserve(std::max<std::size_t>(16, 2 * undo_.capacity()));
    }
    Value removed = node->RemoveValue(*position);
    if (record) {
        Record(
            UndoRecord{UndoRecord::Kind::kValueReplaced, node, *position, std::move(removed), {}});
    }
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
    const bool keep = recording_ && !Fresh(node);
    if (keep && undo_.size() == undo_.capacity()) {
        undo_.reserve(std::max<std::size_t>(16, 2 * undo_.capacity()));
    }
    ForgetHandlesBelow(node);
    last_ = LastResolved{};
    Node* const parent = node->parent;
    std::unique_ptr<Node> removed = parent->RemoveChild(node);
    if (keep) {
        Record(UndoRecord{UndoRecord::Kind::kKeyDeleted, parent, 0, {}, std::move(removed)});
    } else if (recording_ && node->undo_record != 0) {
        // Created and deleted while recording: there is nothing left to take back.
        undo_[node->undo_record - 1].kind = UndoRecord::Kind::kNone;
    }
    return reg::kSuccess;
}

RegStatus MemoryRegistry::Deny(RootKeyHandle root, std::string_view path, bool value_deletion) {
    Node* node = nullptr;
    if (const RegStatus status = Resolve(root, path, false, node); status != reg::kSuccess) {
        return status;
    }
    (value_deletion ? node->deny_value_deletion : node->deny_full_access) = true;
    return reg::kSuccess;
}

std::size_t MemoryRegistry::OpenHandleCount() const {
    return static_cast<std::size_t>(std::count_if(
        handles_.begin(), handles_.end(), [](const HandleSlot& slot) { return slot.open; }));
}

bool MemoryRegistry::Fresh(const Node* node) const {
    return recording_ && node->born == recording_serial_;
}

// Room was made before the change, so recording it allocates nothing.
void MemoryRegistry::Record(UndoRecord record) {
    undo_.push_back(std::move(record));
}

// Newest first, so that each record meets the registry as its change left it. Nothing
// here allocates: every key and value goes back into room it had.
void MemoryRegistry::UndoAll() {
    for (auto it = undo_.rbegin(); it != undo_.rend(); ++it) {
        switch (it->kind) {
            case UndoRecord::Kind::kNone:
                break;
            case UndoRecord::Kind::kKeyCreated:
                ForgetHandlesBelow(it->node);
                it->node->parent->RemoveChild(it->node);
                break;
            case UndoRecord::Kind::kKeyDeleted:
                it->node->ReattachChild(std::move(it->subtree));
                break;
            case UndoRecord::Kind::kValueAdded:
                it->node->RemoveValue(it->position);
                break;
            case UndoRecord::Kind::kValueReplaced:
                it->node->RestoreValue(it->position, std::move(it->before));
                break;
        }
    }
    undo_.clear();
    last_ = LastResolved{};
    recording_ = false;
}

MemoryRegistry::UndoScope::UndoScope(MemoryRegistry& registry) : registry_(&registry) {
    if (registry.recording_) {
        throw std::logic_error("MemoryRegistry: one undo scope at a time");
    }
    registry.recording_ = true;
    ++registry.recording_serial_;
}

MemoryRegistry::UndoScope::~UndoScope() {
    if (registry_ != nullptr) {
        registry_->UndoAll();
    }
}

void MemoryRegistry::UndoScope::Keep() {
    if (registry_ != nullptr) {
        registry_->recording_ = false;
        std::vector<UndoRecord>().swap(registry_->undo_);
        registry_ = nullptr;
    }
}

}  // namespace regvex
