#pragma once
// The live Windows registry. A KeyHandle is the HKEY itself. Text crosses the W API as
// UTF-16 and reaches the engine as UTF-8; kMoreData for text data is decided on its
// length in the system's ANSI code page, so the scan's 4096-byte limit means the same as
// it did for the byte-string API the program was first written against.
//
// Every call is a round trip to the registry's owner (the kernel, or Wine's server), and
// the scan opens each key twice in a row: once for its values, once for its subkeys. The
// key closed last is therefore kept open, and handed out again when the very same key is
// asked for with the same rights. And instead of finding the end of a key's values and
// of its subkeys by a call that fails, both counts are asked for once per opened key;
// what is added to a key after that is not seen through that handle (a plain
// enumeration promises no more), except that changes made through this object make the
// counts be asked for again.

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "engine/registry.h"

namespace regvex {

class Win32Registry final : public Registry {
  public:
    Win32Registry() = default;
    ~Win32Registry() override;
    Win32Registry(const Win32Registry&) = delete;
    Win32Registry& operator=(const Win32Registry&) = delete;

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
    // The key's full name in the kernel (\REGISTRY\MACHINE\SOFTWARE\...), which names
    // the key reached through links and merged views; false where ntdll cannot tell.
    bool StoredKeyName(KeyHandle key, std::string& name) override;

  private:
    struct OpenedKey {
        KeyHandle handle = 0;
        RootKeyHandle root = 0;
        std::string path;
        AccessMask access = 0;
        enum class Counts { kNotAsked, kKnown, kUnavailable } counts = Counts::kNotAsked;
        std::uint32_t subkeys = 0;
        std::uint32_t values = 0;
    };

    // True when `index` lies past the key's last value (or subkey), as far as its counts
    // tell; false when they do not tell (keys not opened by OpenKey, counts unavailable).
    bool KnownToBePastTheEnd(KeyHandle key, std::uint32_t index, bool of_values);
    void ForgetCounts();

    std::vector<OpenedKey> opened_;    // handed out by OpenKey and not closed yet
    std::optional<OpenedKey> parked_;  // closed by the caller, still open here

    // Every UTF-16 unit takes at least one ANSI byte, so any text that fits the engine's
    // buffer once converted fits here; the extra unit holds an odd trailing byte.
    static constexpr std::size_t kWideDataUnits = reg::kDataBufferBytes + 1;

    // Reused across a walk's values, which the engine reads one at a time.
    std::array<wchar_t, reg::kNameBufferChars> name_buffer_{};
    std::array<wchar_t, kWideDataUnits> data_buffer_{};
    std::vector<unsigned char> key_name_buffer_;
};

}  // namespace regvex
