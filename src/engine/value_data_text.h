#pragma once
// Renders a value's raw data as the text that the search matches, the results list shows
// and the backup file writes back.

#include <cstdint>
#include <span>
#include <string>

namespace regvex {

inline constexpr std::string_view kUnsupportedValueText = "Temporarily unsupported";

// `data` holds at least one byte. Text types arrive as UTF-8 (see registry.h).
std::string ValueDataToText(std::uint32_t type, std::span<const std::uint8_t> data);

// The same into a caller's buffer, for the walk's hot path.
void ValueDataToText(std::uint32_t type, std::span<const std::uint8_t> data, std::string& out);

// The "00000000" number pattern applied to a hexadecimal text: a text that reads as a
// decimal number (digits, optionally an exponent letter E and more digits) is written as
// that number with at least eight digits; any other text stays as it is.
std::string FormatHexWithZeroPattern(std::string_view hex);

}  // namespace regvex
