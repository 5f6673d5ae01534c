#pragma once
// A Wine prefix's registry, read from its files, as Wine presents it to a 64-bit program
// run in that prefix: HKEY_LOCAL_MACHINE is \Registry\Machine, HKEY_USERS \Registry\User,
// HKEY_CURRENT_USER the user's key below it, HKEY_CLASSES_ROOT the machine's
// Software\Classes alone (Wine does not merge the user's classes into it) and
// HKEY_CURRENT_CONFIG System\CurrentControlSet\Hardware Profiles\Current;
// HKEY_PERFORMANCE_DATA and HKEY_DYN_DATA hold nothing. Keys and values enumerate in
// Wine's order, links are followed, and the scan's buffers answer kMoreData as the other
// backends do.
//
// Read-only: the prefix is never written. Opening an existing key with any rights
// succeeds, as it does for Wine's user; creating a key or changing a value answers
// kAccessDenied.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/registry.h"
#include "text/ansi_code_page.h"
#include "wine/wine_key_tree.h"

namespace regvex::wine {

class WineRegistry final : public Registry {
  public:
    // `top` is \Registry, finished; `user_path` the current user's key below it
    // ("User\S-1-5-21-0-0-0-1000").
    WineRegistry(std::unique_ptr<WineKey> top, std::string user_path,
                 const text::AnsiCodePage& ansi = text::DefaultAnsiCodePage());

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

    // The path below \Registry of the stored key that an open key is, links followed
    // ("Machine\System\ControlSet001" for HKLM\System\CurrentControlSet); nullopt for a
    // handle that is not open.
    std::optional<std::string> StoredPath(KeyHandle key) const;
    bool StoredKeyName(KeyHandle key, std::string& name) override;

  private:
    const WineKey* Lookup(KeyHandle key) const;

    std::unique_ptr<WineKey> top_;
    std::string user_path_;
    const text::AnsiCodePage& ansi_;
    WinePathResolver resolver_;
    std::vector<const WineKey*> handles_;  // handle i + 1; null when closed
    std::vector<std::size_t> free_slots_;
    std::string path_scratch_;
};

}  // namespace regvex::wine
