#pragma once
// A registry assembled from others, as Windows assembles the running registry from hive
// files: a mount shows a key of a backend, with everything below it, at a place; a link
// makes one place open another (CurrentControlSet, HKEY_CURRENT_USER); a merged place
// shows one place over another (HKEY_CLASSES_ROOT: the user's classes over the
// machine's).
//
// Places that nothing provides but that lie above a mount or link exist as empty keys, so
// that a walk from a root reaches every mount; a root with nothing below it is empty.
// A key lists its backend's subkeys in the backend's order, with the names of the mounts
// and links directly below it placed among them as Windows sorts key names (ordinal order
// of the upper-cased names); a merged key lists the subkeys of both sides, sorted so, each
// name once. Its values are those of the upper side where that key exists, else the lower.
//
// Result codes are the backends' own; a write to a place no backend provides answers
// kAccessDenied. Backends are not owned and must outlive this registry.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/registry.h"

namespace regvex {

struct RegistryPlace {
    RootKeyHandle root = kHkeyAll;
    std::string path;  // "" is the root itself; no leading or trailing backslash
};

class MountedRegistry final : public Registry {
  public:
    MountedRegistry();
    ~MountedRegistry() override;
    MountedRegistry(const MountedRegistry&) = delete;
    MountedRegistry& operator=(const MountedRegistry&) = delete;

    // `backend`'s key `from` (and all below it) appears at `at`.
    void Mount(const RegistryPlace& at, Registry& backend, const RegistryPlace& from);
    // Opening `at`, or anything below it, opens the same path below `target` (a place of
    // this registry, itself possibly mounted, linked or merged). Links are followed at
    // most 16 deep; deeper, or in a circle, the open answers kFileNotFound.
    void Link(const RegistryPlace& at, const RegistryPlace& target);
    // `at` shows `over` where a key exists there, else `under`; subkeys of both.
    void Merge(const RegistryPlace& at, const RegistryPlace& over, const RegistryPlace& under);

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
    // The key that answers for the values: the name its backend gives it, or else its
    // path in that backend, marked with the backend; false for a key that only lies on
    // the way to a mount.
    bool StoredKeyName(KeyHandle key, std::string& name) override;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace regvex
