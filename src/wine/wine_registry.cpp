#include "wine/wine_registry.h"

#include <cstring>

#include "text/utf8.h"

namespace regvex::wine {

namespace {

// A name fits the scan's buffer when it leaves room for the terminator.
bool FitsNameBuffer(std::string_view name) {
    return text::Utf16Length(name) < reg::kNameBufferChars;
}

// Measured once, not at every enumeration. Text data is measured as the byte-string
// call that the scan was designed around measures it: in the ANSI code page.
void MeasureForTheScan(WineKey& key, const text::AnsiCodePage& ansi) {
    key.name_fits = FitsNameBuffer(key.name);
    for (WineValue& value : key.values) {
        const std::size_t measured =
            reg::IsTextType(value.type)
                ? ansi.AnsiLength(std::string_view(reinterpret_cast<const char*>(value.data.data()),
                                                   value.data.size()))
                : value.data.size();
        value.fits = FitsNameBuffer(value.name) && measured <= reg::kDataBufferBytes &&
                     value.data.size() <= reg::kDataSlotBytes;
    }
    for (WineKey* child : key.ordered) {
        MeasureForTheScan(*child, ansi);
    }
}

}  // namespace

WineRegistry::WineRegistry(std::unique_ptr<WineKey> top, std::string user_path,
                           const text::AnsiCodePage& ansi)
    : top_(std::move(top)), user_path_(std::move(user_path)), ansi_(ansi), resolver_(*top_) {
    MeasureForTheScan(*top_, ansi_);
}

RegStatus WineRegistry::OpenKey(RootKeyHandle root, std::string_view path, AccessMask,
                                KeyHandle& key) {
    key = 0;
    switch (root) {
        case kHkeyLocalMachine:
            path_scratch_ = "Machine";
            break;
        case kHkeyUsers:
            path_scratch_ = "User";
            break;
        case kHkeyCurrentUser:
            path_scratch_ = user_path_;
            break;
        case kHkeyClassesRoot:
            path_scratch_ = "Machine\\Software\\Classes";
            break;
        case kHkeyCurrentConfig:
            path_scratch_ = "Machine\\System\\CurrentControlSet\\Hardware Profiles\\Current";
            break;
        case kHkeyPerformanceData:
        case kHkeyDynData:
            return reg::kFileNotFound;
        default:
            return reg::kInvalidHandle;
    }
    if (!path.empty()) {
        path_scratch_.push_back('\\');
        path_scratch_.append(path);
    }
    const WineKey* found = resolver_.Resolve(path_scratch_);
    if (found == nullptr) {
        return reg::kFileNotFound;
    }
    if (free_slots_.empty()) {
        handles_.push_back(found);
        key = handles_.size();
    } else {
        const std::size_t slot = free_slots_.back();
        free_slots_.pop_back();
        handles_[slot] = found;
        key = slot + 1;
    }
    return reg::kSuccess;
}

RegStatus WineRegistry::CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                  KeyHandle& key) {
    const RegStatus status = OpenKey(root, path, access, key);
    return status == reg::kFileNotFound ? reg::kAccessDenied : status;
}

RegStatus WineRegistry::CloseKey(KeyHandle key) {
    if (Lookup(key) == nullptr) {
        return reg::kInvalidHandle;
    }
    handles_[key - 1] = nullptr;
    free_slots_.push_back(key - 1);
    return reg::kSuccess;
}

const WineKey* WineRegistry::Lookup(KeyHandle key) const {
    return key == 0 || key > handles_.size() ? nullptr : handles_[key - 1];
}

std::optional<std::string> WineRegistry::StoredPath(KeyHandle key) const {
    const WineKey* node = Lookup(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    return node->Path();
}

bool WineRegistry::StoredKeyName(KeyHandle key, std::string& name) {
    const WineKey* node = Lookup(key);
    if (node == nullptr) {
        return false;
    }
    name = node->Path();
    return true;
}

RegStatus WineRegistry::EnumKey(KeyHandle key, std::uint32_t index, std::string& name) {
    const WineKey* node = Lookup(key);
    if (node == nullptr) {
        return reg::kInvalidHandle;
    }
    if (index >= node->ordered.size()) {
        return reg::kNoMoreItems;
    }
    const WineKey& found = *node->ordered[index];
    if (!found.name_fits) {
        return reg::kMoreData;
    }
    name.assign(found.name);
    return reg::kSuccess;
}

RegStatus WineRegistry::EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) {
    const WineKey* node = Lookup(key);
    if (node == nullptr) {
        return reg::kInvalidHandle;
    }
    if (index >= node->values.size()) {
        return reg::kNoMoreItems;
    }
    const WineValue& stored = node->values[index];
    if (!stored.fits) {
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

RegStatus WineRegistry::QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                                   std::vector<std::uint8_t>& data) {
    const WineKey* node = Lookup(key);
    if (node == nullptr) {
        return reg::kInvalidHandle;
    }
    const WineValue* found = node->FindValue(name);
    if (found == nullptr) {
        return reg::kFileNotFound;
    }
    type = found->type;
    data = found->data;
    return reg::kSuccess;
}

RegStatus WineRegistry::SetValue(KeyHandle key, std::string_view, std::uint32_t,
                                 std::span<const std::uint8_t>) {
    return Lookup(key) == nullptr ? reg::kInvalidHandle : reg::kAccessDenied;
}

RegStatus WineRegistry::DeleteValue(KeyHandle key, std::string_view) {
    return Lookup(key) == nullptr ? reg::kInvalidHandle : reg::kAccessDenied;
}

}  // namespace regvex::wine
