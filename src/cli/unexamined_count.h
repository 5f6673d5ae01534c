#pragma once
// What a scan cannot see. The search ends a key's values at the first one whose name or
// data do not fit its buffers, and a key's subkeys at the first name that does not fit;
// it says nothing about what it left. This registry passes every call on and, when an
// enumeration answers kMoreData, counts the items left from that index on, so that the
// command line can say how much went unexamined. The walk itself is not changed.

#include <cstdint>
#include <memory>
#include <string>

#include "engine/registry.h"

namespace regvex::cli {

class UnexaminedCount final : public Registry {
  public:
    explicit UnexaminedCount(Registry& inner);

    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override;
    RegStatus CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                        KeyHandle& key) override;
    RegStatus CloseKey(KeyHandle key) override;
    RegStatus EnumKey(KeyHandle key, std::uint32_t index, std::string& name) override;
    RegStatus EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) override;
    RegStatus QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                         std::vector<std::uint8_t>& data) override;
    RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) override;
    RegStatus DeleteValue(KeyHandle key, std::string_view name) override;
    bool StoredKeyName(KeyHandle key, std::string& name) override {
        return inner_.StoredKeyName(key, name);
    }

    // Values at and after an oversized one, in the keys enumerated so far.
    std::uint64_t values() const { return values_; }
    // Subkeys at and after an oversized name; what lies below them is not counted.
    std::uint64_t keys() const { return keys_; }

  private:
    Registry& inner_;
    std::uint64_t values_ = 0;
    std::uint64_t keys_ = 0;
    // Scratch for the counting calls, so that the caller's buffers keep what it was given.
    std::string name_;
    std::unique_ptr<ValueSlot> slot_;
};

}  // namespace regvex::cli
