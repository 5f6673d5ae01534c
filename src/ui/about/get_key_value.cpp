#include "ui/about/get_key_value.h"

#include <cstdint>
#include <vector>

#include "engine/run_time_error.h"
#include "text/hex_digit.h"
#include "text/utf8.h"

namespace regvex::ui::about {

namespace {

inline constexpr int kErrorTypeMismatch = 13;

std::string_view AsText(const std::vector<std::uint8_t>& data) {
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

std::size_t CharacterCount(std::uint32_t type, const std::vector<std::uint8_t>& data) {
    return reg::IsTextType(type) ? text::Utf16Length(AsText(data)) : data.size();
}

// Upper case and without leading zeros: 0x0A is "A", 0 is "0".
void AppendHex(std::string& out, std::uint8_t code) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    if (code >= 16) {
        out += kDigits[code >> 4];
    }
    out += kDigits[code & 15];
}

// The decimal text of a hexadecimal number; leading zeros do not count towards its size.
std::string DecimalFromHex(std::string_view digits) {
    if (digits.empty()) {
        throw RunTimeError(kErrorTypeMismatch, "Type mismatch");
    }
    std::uint64_t value = 0;
    for (const char c : digits) {
        const int digit = text::HexDigitValue(c);
        if (digit < 0) {
            throw RunTimeError(kErrorTypeMismatch, "Type mismatch");
        }
        value = value * 16 + static_cast<std::uint64_t>(digit);
        if (value > 0xFFFFFFFFu) {
            throw RunTimeError(kErrorOverflow, "Overflow");
        }
    }
    return std::to_string(value);
}

}  // namespace

bool GetKeyValue(Registry& registry, AccessMask access, RootKeyHandle KeyRoot,
                 std::string_view KeyName, std::string_view SubKeyRef, std::string& KeyVal) {
    ScopedKey key;
    if (ScopedKey::Open(registry, KeyRoot, KeyName, access, key) != reg::kSuccess) {
        KeyVal.clear();
        return false;
    }
    std::uint32_t type = reg::kNone;
    std::vector<std::uint8_t> data;
    // Data larger than the buffer fails as the query into a fixed buffer does.
    if (registry.QueryValue(key.get(), SubKeyRef, type, data) != reg::kSuccess ||
        CharacterCount(type, data) > kKeyValueBufferChars) {
        KeyVal.clear();
        return false;
    }

    // A NUL in the last place is the stored terminator. As text, that last character is
    // also its last byte, so the cut never splits a character.
    const bool terminated = !data.empty() && data.back() == 0;
    switch (type) {
        case reg::kSz:
            KeyVal.assign(AsText(data).substr(0, data.size() - (terminated ? 1 : 0)));
            break;
        case reg::kDword: {
            // Every byte counts here, the terminator rule notwithstanding.
            std::string digits = KeyVal;
            for (auto it = data.rbegin(); it != data.rend(); ++it) {
                AppendHex(digits, *it);
            }
            KeyVal = DecimalFromHex(digits);
            break;
        }
        default:
            break;
    }
    return true;
}

}  // namespace regvex::ui::about
