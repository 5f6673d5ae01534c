#pragma once
// Renders a value's raw data as the text that the search matches, the results list shows
// and the backup file writes back.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace regvex {

inline constexpr std::string_view kUnsupportedValueText = "Temporarily unsupported";

// How a type is rendered.
enum class ValueTextKind {
    kText,         // the data's own text, up to its first NUL
    kBinary,       // hexadecimal bytes
    kDword,        // hexadecimal and decimal number
    kUnsupported,  // the fixed text above
};

ValueTextKind TextKindOf(std::uint32_t type);

// The type's name as the registry's tools write it ("REG_SZ"); empty for a number that
// no type is named by.
std::string_view ValueTypeName(std::uint32_t type);

// Every character that the upper-cased rendering of a binary or a number can hold. A
// search text with any other character can never occur in them, so such data need not
// be rendered to know that.
inline constexpr std::string_view kBinaryTextAlphabet = "0123456789ABCDEF ";
inline constexpr std::string_view kDwordTextAlphabet = "0123456789ABCDEFX()-";

// `data` holds at least one byte. Text types arrive as UTF-8 (see registry.h).
std::string ValueDataToText(std::uint32_t type, std::span<const std::uint8_t> data);

// The same into a caller's buffer, for the walk's hot path.
void ValueDataToText(std::uint32_t type, std::span<const std::uint8_t> data, std::string& out);

// The "00000000" number pattern applied to a hexadecimal text: a text that reads as a
// decimal number (digits, optionally an exponent letter E and more digits) is written as
// that number with at least eight digits; any other text stays as it is.
std::string FormatHexWithZeroPattern(std::string_view hex);

}  // namespace regvex
