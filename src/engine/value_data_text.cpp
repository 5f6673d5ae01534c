#include "engine/value_data_text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "engine/registry.h"

namespace regvex {

namespace {

bool IsDigits(std::string_view text) {
    if (text.empty()) {
        return false;
    }
    for (const char c : text) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return true;
}

constexpr char kHexDigits[] = "0123456789ABCDEF";

void AppendHexByte(std::string& out, std::uint8_t byte) {
    out.push_back(kHexDigits[byte >> 4]);
    out.push_back(kHexDigits[byte & 0x0F]);
}

std::string HexWithoutLeadingZeros(std::uint32_t value) {
    std::string hex;
    do {
        hex.insert(hex.begin(), kHexDigits[value & 0x0F]);
        value >>= 4;
    } while (value != 0);
    return hex;
}

}  // namespace

std::string FormatHexWithZeroPattern(std::string_view hex) {
    std::string digits;
    if (IsDigits(hex)) {
        digits = std::string(hex);
    } else {
        // A hexadecimal text like 1E5 also reads as a number: 1 times ten to the fifth.
        const std::size_t e = hex.find('E');
        if (e == std::string_view::npos || !IsDigits(hex.substr(0, e)) ||
            !IsDigits(hex.substr(e + 1))) {
            return std::string(hex);
        }
        // Beyond the range of a double it is not a number, and stays text.
        if (!std::isfinite(std::strtod(std::string(hex).c_str(), nullptr))) {
            return std::string(hex);
        }
        digits = std::string(hex.substr(0, e));
        digits.append(static_cast<std::size_t>(std::atoi(std::string(hex.substr(e + 1)).c_str())),
                      '0');
    }
    const std::size_t first = digits.find_first_not_of('0');
    digits.erase(0, first == std::string::npos ? digits.size() : first);
    if (digits.size() < 8) {
        digits.insert(0, 8 - digits.size(), '0');
    }
    return digits;
}

std::string_view ValueTypeName(std::uint32_t type) {
    static constexpr std::string_view kNames[] = {"REG_NONE",
                                                  "REG_SZ",
                                                  "REG_EXPAND_SZ",
                                                  "REG_BINARY",
                                                  "REG_DWORD",
                                                  "REG_DWORD_BIG_ENDIAN",
                                                  "REG_LINK",
                                                  "REG_MULTI_SZ",
                                                  "REG_RESOURCE_LIST",
                                                  "REG_FULL_RESOURCE_DESCRIPTOR",
                                                  "REG_RESOURCE_REQUIREMENTS_LIST",
                                                  "REG_QWORD"};
    return type < std::size(kNames) ? kNames[type] : std::string_view();
}

ValueTextKind TextKindOf(std::uint32_t type) {
    switch (type) {
        case reg::kSz:
        case reg::kMultiSz:
            return ValueTextKind::kText;
        case reg::kBinary:
            return ValueTextKind::kBinary;
        case reg::kDword:
            return ValueTextKind::kDword;
        default:
            return ValueTextKind::kUnsupported;
    }
}

void ValueDataToText(std::uint32_t type, std::span<const std::uint8_t> data, std::string& out) {
    out.clear();
    switch (TextKindOf(type)) {
        case ValueTextKind::kText: {
            // Cut at the first NUL: of a multi-string only the first string is left.
            const auto* bytes = reinterpret_cast<const char*>(data.data());
            const void* nul = std::memchr(bytes, 0, data.size());
            out.assign(bytes, nul != nullptr
                                  ? static_cast<std::size_t>(static_cast<const char*>(nul) - bytes)
                                  : data.size());
            return;
        }
        case ValueTextKind::kBinary:
            out.reserve(data.size() * 3);
            for (std::size_t i = 0; i < data.size(); ++i) {
                if (i != 0) {
                    out.push_back(' ');
                }
                AppendHexByte(out, data[i]);
            }
            return;
        case ValueTextKind::kDword: {
            std::uint8_t bytes[4] = {0, 0, 0, 0};
            std::memcpy(bytes, data.data(), std::min<std::size_t>(4, data.size()));
            const std::uint32_t raw = static_cast<std::uint32_t>(bytes[0]) |
                                      static_cast<std::uint32_t>(bytes[1]) << 8 |
                                      static_cast<std::uint32_t>(bytes[2]) << 16 |
                                      static_cast<std::uint32_t>(bytes[3]) << 24;
            out = "0x";
            out += FormatHexWithZeroPattern(HexWithoutLeadingZeros(raw));
            out += '(';
            out += std::to_string(static_cast<std::int32_t>(raw));
            out += ')';
            return;
        }
        case ValueTextKind::kUnsupported:
            out.assign(kUnsupportedValueText);
            return;
    }
}

std::string ValueDataToText(std::uint32_t type, std::span<const std::uint8_t> data) {
    std::string out;
    ValueDataToText(type, data, out);
    return out;
}

}  // namespace regvex
