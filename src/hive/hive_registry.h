#pragma once
// A read-only registry over one Windows hive file, read through hivex. The hive's root
// key is HKEY_LOCAL_MACHINE's own key ("" below it); the other roots answer
// kInvalidHandle, and whoever mounts the hive places it where Windows would.
//
// It answers as the live registry would on the system the hive comes from: names as
// Windows decodes them, text data as UTF-8 with the NULs stored in it, subkeys in the
// order of the hive's index, values in the order of the key's value list, big data
// whole, and the scan's buffer rules (names of 260 characters or more, data over 4,096
// bytes, text measured in the ANSI code page) answering kMoreData. Any write answers
// kAccessDenied; opening an existing key succeeds whatever rights are asked for.
//
// A damaged part of the hive (a subkey or value list that cannot be read, a subkey that
// does not name its key as parent, a loop back to a key above, keys more than 512 levels
// deep) is left out with one warning naming the key; the rest reads as usual.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "engine/registry.h"
#include "text/ansi_code_page.h"

namespace regvex::hive {

// Receives what could not be read but did not stop the reading, one message per call.
using WarningSink = std::function<void(std::string_view)>;

class HivexHandle;

class HiveRegistry final : public Registry {
  public:
    // `label` names the hive in warnings (its file name).
    HiveRegistry(std::unique_ptr<HivexHandle> hive, std::string label, WarningSink warn,
                 const text::AnsiCodePage& ansi);
    ~HiveRegistry() override;
    HiveRegistry(const HiveRegistry&) = delete;
    HiveRegistry& operator=(const HiveRegistry&) = delete;

    RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                      KeyHandle& key) override;
    RegStatus CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                        KeyHandle& key) override;
    RegStatus CloseKey(KeyHandle key) override;
    RegStatus EnumKey(KeyHandle key, std::uint32_t index, std::string& name) override;
    RegStatus EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) override;
    RegStatus QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                         std::vector<std::uint8_t>& data) override;
    RegStatus ReadValue(KeyHandle key, std::uint32_t index, std::string& name, std::uint32_t& type,
                        std::vector<std::uint8_t>& data) override;
    RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) override;
    RegStatus DeleteValue(KeyHandle key, std::string_view name) override;
    // The key's path inside the hive; a hive knows nothing of where it is mounted.
    bool StoredKeyName(KeyHandle key, std::string& name) override;

  private:
    struct Key;
    using KeyPtr = std::shared_ptr<Key>;

    RegStatus Resolve(RootKeyHandle root, std::string_view path, KeyPtr& found);
    // Adds the subkey `name` of the last key of the path resolved to that path.
    RegStatus Descend(std::string_view name);
    Key* Lookup(KeyHandle key) const;
    KeyHandle NewHandle(KeyPtr key);
    void ReadSubkeys(Key& key);
    void ReadValues(Key& key);
    // The key and name of value `index` of an open key.
    RegStatus ValueAt(KeyHandle key, std::uint32_t index, Key*& found, std::string& name);
    // The value's data as the registry gives it: text as UTF-8. False when it is damaged.
    bool ReadData(const Key& key, std::size_t value, std::string_view name, std::uint32_t& type,
                  std::vector<std::uint8_t>& data);
    void Warn(const Key& key, std::string_view what);

    std::unique_ptr<HivexHandle> hive_;
    std::string name_scratch_;
    std::string label_;
    WarningSink warn_;
    const text::AnsiCodePage& ansi_;

    // The keys of the path resolved last, from the root down, with their names: opens
    // come in walk order, so the next path mostly shares all but its last name.
    std::vector<KeyPtr> path_keys_;
    std::vector<std::string> path_names_;

    std::vector<KeyPtr> handles_;  // handle i + 1; empty when closed
    std::vector<std::size_t> free_slots_;
    std::unordered_set<std::string> warned_;
    std::string upper_scratch_;
    std::vector<std::uint8_t> data_scratch_;
};

}  // namespace regvex::hive
