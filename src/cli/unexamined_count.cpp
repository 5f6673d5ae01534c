#include "cli/unexamined_count.h"

namespace regvex::cli {

namespace {

// How many items answer from `index` on, the one at `index` (known to be there) included.
// Any answer but success or kMoreData is the end: kNoMoreItems, or a key that went away.
template <typename Enumerate>
std::uint64_t ItemsFrom(std::uint32_t index, Enumerate enumerate) {
    std::uint64_t count = 1;
    for (std::uint32_t next = index + 1; next != 0; ++next) {
        const RegStatus status = enumerate(next);
        if (status != reg::kSuccess && status != reg::kMoreData) {
            break;
        }
        ++count;
    }
    return count;
}

}  // namespace

UnexaminedCount::UnexaminedCount(Registry& inner)
    : inner_(inner), slot_(std::make_unique<ValueSlot>()) {}

RegStatus UnexaminedCount::OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                   KeyHandle& key) {
    return inner_.OpenKey(root, path, access, key);
}

RegStatus UnexaminedCount::CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                     KeyHandle& key) {
    return inner_.CreateKey(root, path, access, key);
}

RegStatus UnexaminedCount::CloseKey(KeyHandle key) {
    return inner_.CloseKey(key);
}

RegStatus UnexaminedCount::EnumKey(KeyHandle key, std::uint32_t index, std::string& name) {
    const RegStatus status = inner_.EnumKey(key, index, name);
    if (status == reg::kMoreData) {
        keys_ += ItemsFrom(index, [&](std::uint32_t i) { return inner_.EnumKey(key, i, name_); });
    }
    return status;
}

RegStatus UnexaminedCount::EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) {
    const RegStatus status = inner_.EnumValue(key, index, value);
    if (status == reg::kMoreData) {
        values_ +=
            ItemsFrom(index, [&](std::uint32_t i) { return inner_.EnumValue(key, i, *slot_); });
    }
    return status;
}

RegStatus UnexaminedCount::QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                                      std::vector<std::uint8_t>& data) {
    return inner_.QueryValue(key, name, type, data);
}

RegStatus UnexaminedCount::SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                                    std::span<const std::uint8_t> data) {
    return inner_.SetValue(key, name, type, data);
}

RegStatus UnexaminedCount::DeleteValue(KeyHandle key, std::string_view name) {
    return inner_.DeleteValue(key, name);
}

}  // namespace regvex::cli
