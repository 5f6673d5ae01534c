#pragma once
// The live Windows registry. A KeyHandle is the HKEY itself. Text crosses the W API as
// UTF-16 and reaches the engine as UTF-8; what the engine sees of sizes and of kMoreData
// is measured in UTF-8, so the scan's 4096-byte limit means the same as it did for the
// byte-string API the program was first written against.

#include <array>

#include "engine/registry.h"

namespace regvex {

class Win32Registry final : public Registry {
  public:
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

  private:
    // UTF-16 text takes at most two bytes per UTF-8 byte, so anything that fits the
    // engine's buffer once converted fits here; the extra unit holds an odd trailing byte.
    static constexpr std::size_t kWideDataUnits = reg::kDataBufferBytes + 1;

    // Reused across a walk's values, which the engine reads one at a time.
    std::array<wchar_t, reg::kNameBufferChars> name_buffer_{};
    std::array<wchar_t, kWideDataUnits> data_buffer_{};
};

}  // namespace regvex
