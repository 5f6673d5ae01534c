#include "hive/hive_registry.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unordered_map>

#include "hive/hivex_handle.h"
#include "text/upper_case.h"
#include "text/utf8.h"

namespace regvex::hive {

namespace {

// What Windows answers for a key or value the hive cannot give.
constexpr RegStatus kRegistryCorrupt = 1015;

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Malloced = std::unique_ptr<T, FreeDeleter>;

// Text data is stored as UTF-16LE; a stray odd byte at its end is no part of any
// character and is dropped, as the wide-character registry calls drop it.
void TextDataToUtf8(const char* bytes, std::size_t size, std::vector<std::uint8_t>& out) {
    std::u16string units(size / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
    }
    const std::string utf8 = text::Utf16ToUtf8(units);
    out.assign(utf8.begin(), utf8.end());
}

std::string ErrorText() {
    return std::strerror(errno);
}

}  // namespace

struct HiveRegistry::Key {
    hive_node_h node = 0;
    KeyPtr parent;
    std::size_t depth = 0;
    std::string path;  // below the hive's root, for warnings

    bool subkeys_read = false;
    std::vector<hive_node_h> subkeys;
    std::vector<std::string> names;
    std::unordered_map<std::string, std::uint32_t> by_upper_name;

    bool values_read = false;
    std::vector<hive_value_h> values;
};

HiveRegistry::HiveRegistry(std::unique_ptr<HivexHandle> hive, std::string label, WarningSink warn,
                           const text::AnsiCodePage& ansi)
    : hive_(std::move(hive)), label_(std::move(label)), warn_(std::move(warn)), ansi_(ansi) {
    auto root = std::make_shared<Key>();
    root->node = hivex_root(hive_->get());
    path_keys_.push_back(std::move(root));
}

HiveRegistry::~HiveRegistry() = default;

void HiveRegistry::Warn(const Key& key, std::string_view what) {
    std::string message = label_ + ": ";
    message += key.path.empty() ? std::string("the root key") : "key \"" + key.path + "\"";
    message += ": ";
    message += what;
    // The walk opens a key more than once; one warning per damage is enough.
    if (warned_.insert(message).second && warn_) {
        warn_(message);
    }
}

void HiveRegistry::ReadSubkeys(Key& key) {
    if (key.subkeys_read) {
        return;
    }
    key.subkeys_read = true;
    hive_h* const h = hive_->get();
    const Malloced<hive_node_h> list(hivex_node_children(h, key.node));
    if (!list) {
        Warn(key, "its list of subkeys cannot be read (" + ErrorText() + "); they are skipped");
        return;
    }
    if (list.get()[0] != 0 && key.depth >= reg::kMaxKeyDepth) {
        Warn(key, "lies 512 levels deep; the keys below it are skipped");
        return;
    }
    for (const hive_node_h* child = list.get(); *child != 0; ++child) {
        // A subkey must name this key as its parent, and no key may come back to one
        // above it: either would make the walk visit keys twice or without end.
        bool loops = false;
        for (const Key* above = &key; above != nullptr && !loops; above = above->parent.get()) {
            loops = above->node == *child;
        }
        if (loops) {
            Warn(key, "a subkey leads back to a key above it; that subkey is skipped");
            continue;
        }
        if (hivex_node_parent(h, *child) != key.node ||
            std::find(key.subkeys.begin(), key.subkeys.end(), *child) != key.subkeys.end()) {
            Warn(key, "its list of subkeys holds a key that does not belong there; it is skipped");
            continue;
        }
        const Malloced<char> name(hivex_node_name(h, *child));
        if (!name) {
            Warn(key, "a subkey's name cannot be read (" + ErrorText() + "); it is skipped");
            continue;
        }
        std::string utf8(name.get(), hivex_node_name_len(h, *child));
        // A path cannot name a key without a name: its path would be its parent's, and a
        // walk would go round that parent without end.
        if (utf8.empty()) {
            Warn(key, "a subkey has no name; it is skipped");
            continue;
        }
        text::UpperCaseInto(utf8, upper_scratch_);
        key.by_upper_name.emplace(upper_scratch_, static_cast<std::uint32_t>(key.names.size()));
        key.subkeys.push_back(*child);
        key.names.push_back(std::move(utf8));
    }
}

void HiveRegistry::ReadValues(Key& key) {
    if (key.values_read) {
        return;
    }
    key.values_read = true;
    const Malloced<hive_value_h> list(hivex_node_values(hive_->get(), key.node));
    if (!list) {
        Warn(key, "its list of values cannot be read (" + ErrorText() + "); they are skipped");
        return;
    }
    for (const hive_value_h* value = list.get(); *value != 0; ++value) {
        key.values.push_back(*value);
    }
}

RegStatus HiveRegistry::Descend(std::string_view name) {
    Key& parent = *path_keys_.back();
    ReadSubkeys(parent);
    text::UpperCaseInto(name, upper_scratch_);
    const auto it = parent.by_upper_name.find(upper_scratch_);
    if (it == parent.by_upper_name.end()) {
        return reg::kFileNotFound;
    }
    auto child = std::make_shared<Key>();
    child->node = parent.subkeys[it->second];
    child->parent = path_keys_.back();
    child->depth = parent.depth + 1;
    child->path = parent.path.empty() ? parent.names[it->second]
                                      : parent.path + "\\" + parent.names[it->second];
    path_keys_.push_back(std::move(child));
    path_names_.emplace_back(name);
    return reg::kSuccess;
}

RegStatus HiveRegistry::Resolve(RootKeyHandle root, std::string_view path, KeyPtr& found) {
    if (root != kHkeyLocalMachine) {
        return reg::kInvalidHandle;
    }
    // Windows accepts one trailing separator but no empty name inside a path.
    if (!path.empty() && path.back() == '\\') {
        path.remove_suffix(1);
        if (!path.empty() && path.back() == '\\') {
            return reg::kFileNotFound;
        }
    }
    std::size_t level = 0;  // names of `path` resolved so far
    bool shared = true;     // and all of them as on the path resolved last
    for (std::size_t start = 0; !path.empty();) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        const std::string_view name = path.substr(start, end - start);
        if (name.empty()) {
            return reg::kFileNotFound;
        }
        if (shared && level < path_names_.size() && path_names_[level] == name) {
            ++level;
        } else {
            if (shared) {
                shared = false;
                path_keys_.resize(level + 1);
                path_names_.resize(level);
            }
            if (const RegStatus status = Descend(name); status != reg::kSuccess) {
                return status;
            }
            ++level;
        }
        if (end == path.size()) {
            break;
        }
        start = end + 1;
    }
    found = path_keys_[level];
    return reg::kSuccess;
}

KeyHandle HiveRegistry::NewHandle(KeyPtr key) {
    std::size_t slot = handles_.size();
    if (!free_slots_.empty()) {
        slot = free_slots_.back();
        free_slots_.pop_back();
    } else {
        handles_.emplace_back();
    }
    handles_[slot] = std::move(key);
    return slot + 1;
}

bool HiveRegistry::StoredKeyName(KeyHandle key, std::string& name) {
    const Key* found = Lookup(key);
    if (found == nullptr) {
        return false;
    }
    // The hive's root has the empty name, so that each key is its parent's name, a
    // backslash and its own.
    name.clear();
    if (!found->path.empty()) {
        name.push_back('\\');
        name.append(found->path);
    }
    return true;
}

HiveRegistry::Key* HiveRegistry::Lookup(KeyHandle key) const {
    if (key == 0 || key > handles_.size()) {
        return nullptr;
    }
    return handles_[key - 1].get();
}

RegStatus HiveRegistry::OpenKey(RootKeyHandle root, std::string_view path, AccessMask,
                                KeyHandle& key) {
    key = 0;
    KeyPtr found;
    if (const RegStatus status = Resolve(root, path, found); status != reg::kSuccess) {
        return status;
    }
    key = NewHandle(std::move(found));
    return reg::kSuccess;
}

RegStatus HiveRegistry::CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                  KeyHandle& key) {
    const RegStatus status = OpenKey(root, path, access, key);
    return status == reg::kFileNotFound ? reg::kAccessDenied : status;
}

RegStatus HiveRegistry::CloseKey(KeyHandle key) {
    if (Lookup(key) == nullptr) {
        return reg::kInvalidHandle;
    }
    handles_[key - 1].reset();
    free_slots_.push_back(key - 1);
    return reg::kSuccess;
}

RegStatus HiveRegistry::EnumKey(KeyHandle key, std::uint32_t index, std::string& name) {
    Key* const found = Lookup(key);
    if (found == nullptr) {
        return reg::kInvalidHandle;
    }
    ReadSubkeys(*found);
    if (index >= found->names.size()) {
        return reg::kNoMoreItems;
    }
    const std::string& stored = found->names[index];
    if (text::Utf16Length(stored) >= reg::kNameBufferChars) {
        return reg::kMoreData;
    }
    name.assign(stored);
    return reg::kSuccess;
}

bool HiveRegistry::ReadData(const Key& key, std::size_t value, std::string_view name,
                            std::uint32_t& type, std::vector<std::uint8_t>& data) {
    hive_type stored_type{};
    std::size_t size = 0;
    const Malloced<char> bytes(
        hivex_value_value(hive_->get(), key.values[value], &stored_type, &size));
    if (!bytes) {
        Warn(key, "the data of value \"" + std::string(name) + "\" cannot be read (" + ErrorText() +
                      ")");
        return false;
    }
    type = TypeNumber(stored_type);
    if (reg::IsTextType(type)) {
        TextDataToUtf8(bytes.get(), size, data);
    } else {
        data.assign(bytes.get(), bytes.get() + size);
    }
    return true;
}

RegStatus HiveRegistry::ValueAt(KeyHandle key, std::uint32_t index, Key*& found,
                                std::string& name) {
    found = Lookup(key);
    if (found == nullptr) {
        return reg::kInvalidHandle;
    }
    ReadValues(*found);
    if (index >= found->values.size()) {
        return reg::kNoMoreItems;
    }
    hive_h* const h = hive_->get();
    const hive_value_h handle = found->values[index];
    const Malloced<char> raw_name(hivex_value_key(h, handle));
    if (!raw_name) {
        Warn(*found, "a value's name cannot be read (" + ErrorText() + ")");
        return kRegistryCorrupt;
    }
    name.assign(raw_name.get(), hivex_value_key_len(h, handle));
    return reg::kSuccess;
}

RegStatus HiveRegistry::ReadValue(KeyHandle key, std::uint32_t index, std::string& name,
                                  std::uint32_t& type, std::vector<std::uint8_t>& data) {
    Key* found = nullptr;
    if (const RegStatus status = ValueAt(key, index, found, name); status != reg::kSuccess) {
        return status;
    }
    return ReadData(*found, index, name, type, data) ? reg::kSuccess : kRegistryCorrupt;
}

RegStatus HiveRegistry::EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) {
    Key* found = nullptr;
    if (const RegStatus status = ValueAt(key, index, found, name_scratch_);
        status != reg::kSuccess) {
        return status;
    }
    hive_h* const h = hive_->get();
    const hive_value_h handle = found->values[index];
    const std::string_view name = name_scratch_;
    if (text::Utf16Length(name) >= reg::kNameBufferChars) {
        return reg::kMoreData;
    }
    hive_type stored_type{};
    std::size_t size = 0;
    if (hivex_value_type(h, handle, &stored_type, &size) != 0) {
        Warn(*found, "value \"" + std::string(name) + "\" cannot be read (" + ErrorText() + ")");
        return kRegistryCorrupt;
    }
    // Data that cannot fit is not read at all: text takes at least one ANSI byte per
    // UTF-16 unit.
    const bool text = reg::IsTextType(TypeNumber(stored_type));
    if ((text ? size / 2 : size) > reg::kDataBufferBytes) {
        return reg::kMoreData;
    }
    std::uint32_t type = 0;
    if (!ReadData(*found, index, name, type, data_scratch_)) {
        return kRegistryCorrupt;
    }
    if (data_scratch_.size() > value.data.size() ||
        (text &&
         ansi_.AnsiLength(std::string_view(reinterpret_cast<const char*>(data_scratch_.data()),
                                           data_scratch_.size())) > reg::kDataBufferBytes)) {
        return reg::kMoreData;
    }
    value.name.assign(name);
    value.type = type;
    value.size = static_cast<std::uint32_t>(data_scratch_.size());
    std::copy(data_scratch_.begin(), data_scratch_.end(), value.data.begin());
    return reg::kSuccess;
}

RegStatus HiveRegistry::QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                                   std::vector<std::uint8_t>& data) {
    Key* const found = Lookup(key);
    if (found == nullptr) {
        return reg::kInvalidHandle;
    }
    ReadValues(*found);
    const std::string wanted = text::UpperCase(name);
    hive_h* const h = hive_->get();
    for (std::size_t i = 0; i < found->values.size(); ++i) {
        const Malloced<char> raw_name(hivex_value_key(h, found->values[i]));
        if (!raw_name) {
            continue;
        }
        const std::string_view stored(raw_name.get(), hivex_value_key_len(h, found->values[i]));
        text::UpperCaseInto(stored, upper_scratch_);
        if (upper_scratch_ == wanted) {
            return ReadData(*found, i, stored, type, data) ? reg::kSuccess : kRegistryCorrupt;
        }
    }
    return reg::kFileNotFound;
}

RegStatus HiveRegistry::SetValue(KeyHandle key, std::string_view, std::uint32_t,
                                 std::span<const std::uint8_t>) {
    return Lookup(key) == nullptr ? reg::kInvalidHandle : reg::kAccessDenied;
}

RegStatus HiveRegistry::DeleteValue(KeyHandle key, std::string_view) {
    return Lookup(key) == nullptr ? reg::kInvalidHandle : reg::kAccessDenied;
}

}  // namespace regvex::hive
