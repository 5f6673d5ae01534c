#pragma once
// The one registry interface of the program. Every backend (the live Windows registry,
// the in-memory registry of tests and imported files) answers with the same result
// codes, which are Win32 error numbers:
//
//   0    kSuccess        the call did what was asked
//   2    kFileNotFound   no key or value of that name
//   5    kAccessDenied   the key exists but may not be opened with the rights asked for
//   6    kInvalidHandle  not an open key, or a root the registry does not have
//   87   kInvalidParameter  a key name of more than 255 characters or a value name of
//                        more than 16,383 characters to be created
//   234  kMoreData       a name or the data did not fit the caller's buffer
//   259  kNoMoreItems    an enumeration index past the last item
//   1018 kKeyDeleted     the key was deleted while it was open
//   1450 kNoSystemResources  a key to be created more than 512 levels below its root
//
// The Windows backend passes on any other Win32 error number unchanged; callers treat
// every non-zero answer as failure, as the scan does.
//
// Text is UTF-8 throughout: key and value names, and the data of the text types
// (REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ) including the terminating NULs stored with it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/root_keys.h"

namespace regvex {

using RegStatus = std::int32_t;
using AccessMask = std::uint32_t;
using KeyHandle = std::uintptr_t;  // 0 never names an open key

namespace reg {

inline constexpr RegStatus kSuccess = 0;
inline constexpr RegStatus kFileNotFound = 2;
inline constexpr RegStatus kAccessDenied = 5;
inline constexpr RegStatus kInvalidHandle = 6;
inline constexpr RegStatus kInvalidParameter = 87;
inline constexpr RegStatus kMoreData = 234;
inline constexpr RegStatus kNoMoreItems = 259;
inline constexpr RegStatus kKeyDeleted = 1018;
inline constexpr RegStatus kNoSystemResources = 1450;

inline constexpr std::uint32_t kNone = 0;
inline constexpr std::uint32_t kSz = 1;
inline constexpr std::uint32_t kExpandSz = 2;
inline constexpr std::uint32_t kBinary = 3;
inline constexpr std::uint32_t kDword = 4;
inline constexpr std::uint32_t kMultiSz = 7;
inline constexpr std::uint32_t kQword = 11;

constexpr bool IsTextType(std::uint32_t type) {
    return type == kSz || type == kExpandSz || type == kMultiSz;
}

// Access rights.
inline constexpr AccessMask kKeyQueryValue = 0x0001;
inline constexpr AccessMask kKeySetValue = 0x0002;
inline constexpr AccessMask kKeyRead = 0x20019;
inline constexpr AccessMask kKeyAllAccess = 0xF003F;
inline constexpr AccessMask kKeyWow64_64Key = 0x0100;
inline constexpr AccessMask kKeyWow64_32Key = 0x0200;

// What Windows allows: characters (UTF-16 units) of one key name and of a value name,
// and levels of keys below a root.
inline constexpr std::size_t kMaxKeyNameChars = 255;
inline constexpr std::size_t kMaxValueNameChars = 16383;
inline constexpr std::size_t kMaxKeyDepth = 512;

// The scan's buffers: names of up to 259 characters plus the terminator, data of up to
// 4096 bytes. Anything larger answers kMoreData. Text data is measured as the
// byte-string call that the scan was designed around measures it: its length in the
// system's ANSI code page, terminator included where the value stores one.
inline constexpr std::size_t kNameBufferChars = 260;
inline constexpr std::size_t kDataBufferBytes = 4096;
// Text that fits the ANSI buffer takes up to three UTF-8 bytes per ANSI byte.
inline constexpr std::size_t kDataSlotBytes = 3 * kDataBufferBytes;

}  // namespace reg

// What one value enumeration fills in. One slot is reused for a whole walk.
struct ValueSlot {
    std::string name;
    std::uint32_t type = 0;
    std::uint32_t size = 0;  // bytes of `data` that the call wrote
    std::array<std::uint8_t, reg::kDataSlotBytes> data{};
};

class Registry {
  public:
    virtual ~Registry() = default;

    // Opens `path` below `root` ("" is the root itself) with the rights of `access`.
    virtual RegStatus OpenKey(RootKeyHandle root, std::string_view path, AccessMask access,
                              KeyHandle& key) = 0;
    // Opens the key, creating it and any missing parent when it does not exist.
    virtual RegStatus CreateKey(RootKeyHandle root, std::string_view path, AccessMask access,
                                KeyHandle& key) = 0;
    virtual RegStatus CloseKey(KeyHandle key) = 0;

    // Subkey `index` in the registry's order; a name longer than the buffer answers
    // kMoreData.
    virtual RegStatus EnumKey(KeyHandle key, std::uint32_t index, std::string& name) = 0;
    // Value `index` in the registry's order, into the scan's buffers (see reg::).
    virtual RegStatus EnumValue(KeyHandle key, std::uint32_t index, ValueSlot& value) = 0;

    virtual RegStatus QueryValue(KeyHandle key, std::string_view name, std::uint32_t& type,
                                 std::vector<std::uint8_t>& data) = 0;
    // Value `index` whole, however long its name and data, as exports need it. A backend
    // that can only fill the scan's buffers answers as EnumValue does (kMoreData for a
    // value that does not fit).
    virtual RegStatus ReadValue(KeyHandle key, std::uint32_t index, std::string& name,
                                std::uint32_t& type, std::vector<std::uint8_t>& data) {
        auto slot = std::make_unique<ValueSlot>();
        const RegStatus status = EnumValue(key, index, *slot);
        if (status == reg::kSuccess) {
            name = std::move(slot->name);
            type = slot->type;
            data.assign(slot->data.begin(), slot->data.begin() + slot->size);
        }
        return status;
    }
    virtual RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                               std::span<const std::uint8_t> data) = 0;
    virtual RegStatus DeleteValue(KeyHandle key, std::string_view name) = 0;

    // Which stored key an open key is: two keys with equal names are the same stored key,
    // whichever root, link or merged view they were reached through, and a subkey that is
    // stored below its parent is named as the parent's name, a backslash and its own
    // name. False when the backend cannot say (the default); then nothing may be assumed.
    // A wrapper that does not pass this on silently turns off what depends on it.
    virtual bool StoredKeyName(KeyHandle key, std::string& name) {
        (void)key;
        (void)name;
        return false;
    }
};

// Owns one open key and closes it when it goes.
class ScopedKey {
  public:
    ScopedKey() = default;
    ScopedKey(Registry& registry, KeyHandle key) : registry_(&registry), key_(key) {}
    ~ScopedKey() { Close(); }

    ScopedKey(ScopedKey&& other) noexcept : registry_(other.registry_), key_(other.Release()) {}
    ScopedKey& operator=(ScopedKey&& other) noexcept {
        if (this != &other) {
            Close();
            registry_ = other.registry_;
            key_ = other.Release();
        }
        return *this;
    }
    ScopedKey(const ScopedKey&) = delete;
    ScopedKey& operator=(const ScopedKey&) = delete;

    static RegStatus Open(Registry& registry, RootKeyHandle root, std::string_view path,
                          AccessMask access, ScopedKey& out) {
        return Acquire(registry, out, registry.OpenKey(root, path, access, out.Adopt()));
    }
    static RegStatus Create(Registry& registry, RootKeyHandle root, std::string_view path,
                            AccessMask access, ScopedKey& out) {
        return Acquire(registry, out, registry.CreateKey(root, path, access, out.Adopt()));
    }

    KeyHandle get() const { return key_; }
    explicit operator bool() const { return key_ != 0; }

    void Close() {
        if (key_ != 0) {
            registry_->CloseKey(key_);
            key_ = 0;
        }
    }

    // Gives up ownership without closing.
    KeyHandle Release() {
        const KeyHandle key = key_;
        key_ = 0;
        return key;
    }

  private:
    KeyHandle& Adopt() {
        Close();
        return key_;
    }
    static RegStatus Acquire(Registry& registry, ScopedKey& out, RegStatus status) {
        out.registry_ = &registry;
        if (status != reg::kSuccess) {
            out.key_ = 0;
        }
        return status;
    }

    Registry* registry_ = nullptr;
    KeyHandle key_ = 0;
};

}  // namespace regvex
