#pragma once
// A registry that passes every call on to another one: wrappers that watch, note or
// count override only the calls they care about. ReadValue is left to the base, which
// reads through EnumValue; a wrapper over a backend that reads whole values passes it on
// itself.

#include "engine/registry.h"

namespace regvex {

class ForwardingRegistry : public Registry {
  public:
    explicit ForwardingRegistry(Registry& inner) : inner_(inner) {}
    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override {
        return inner_.OpenKey(root, path, access, key);
    }
    RegStatus CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                        KeyHandle& key) override {
        return inner_.CreateKey(root, path, access, key);
    }
    RegStatus CloseKey(KeyHandle key) override { return inner_.CloseKey(key); }
    RegStatus EnumKey(KeyHandle key, std::uint32_t index, std::string& name) override {
        return inner_.EnumKey(key, index, name);
    }
    RegStatus EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) override {
        return inner_.EnumValue(key, index, value);
    }
    RegStatus QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                         std::vector<std::uint8_t>& data) override {
        return inner_.QueryValue(key, name, type, data);
    }
    RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) override {
        return inner_.SetValue(key, name, type, data);
    }
    RegStatus DeleteValue(KeyHandle key, std::string_view name) override {
        return inner_.DeleteValue(key, name);
    }
    bool StoredKeyName(KeyHandle key, std::string& name) override {
        return inner_.StoredKeyName(key, name);
    }

  protected:
    Registry& inner() { return inner_; }

  private:
    Registry& inner_;
};

}  // namespace regvex
