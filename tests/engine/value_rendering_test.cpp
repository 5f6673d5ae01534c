#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "engine/root_keys.h"
#include "engine/value_data_text.h"

namespace regvex {
namespace {

std::vector<std::uint8_t> Dword(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

TEST(ValueDataToText, RendersTheFourKnownTypesAndNothingElse) {
    const struct {
        const char* name;
        std::uint32_t type;
        std::vector<std::uint8_t> data;
        std::string text;
    } cases[] = {
        {"dword 16", 4, Dword(16), "0x00000010(16)"},
        {"dword 255", 4, Dword(255), "0xFF(255)"},
        {"dword -1", 4, Dword(0xFFFFFFFF), "0xFFFFFFFF(-1)"},
        {"dword 0", 4, Dword(0), "0x00000000(0)"},
        // 1E5 reads as a decimal number in exponent notation: 100000.
        {"dword 485", 4, Dword(485), "0x00100000(485)"},
        {"dword 0x2E10", 4, Dword(0x2E10), "0x20000000000(11792)"},
        {"dword all digits", 4, Dword(0x12345678), "0x12345678(305419896)"},
        {"dword min", 4, Dword(0x80000000), "0x80000000(-2147483648)"},
        {"dword 0x1E", 4, Dword(0x1E), "0x1E(30)"},
        {"dword 0xE5", 4, Dword(0xE5), "0xE5(229)"},
        {"dword short data", 4, {0x10}, "0x00000010(16)"},
        {"binary", 3, {0x01, 0xAB, 0x00}, "01 AB 00"},
        {"binary one byte", 3, {0x00}, "00"},
        {"sz", 1, {'C', ':', '\\', 'a', 0, 'x'}, "C:\\a"},
        {"sz without terminator", 1, {'a', 'b', 'c'}, "abc"},
        {"sz utf-8", 1, {0xC3, 0xA9, 0}, "\xC3\xA9"},
        {"multi-sz keeps the first",
         7,
         {'C', ':', '\\', 'a', 0, 'C', ':', '\\', 'b', 0, 0},
         "C:\\a"},
        {"expand-sz", 2, {'%', 'S', '%', 0}, "Temporarily unsupported"},
        {"none", 0, {0}, "Temporarily unsupported"},
        {"qword", 11, Dword(1), "Temporarily unsupported"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ValueDataToText(c.type, c.data), c.text) << c.name;
    }
}

TEST(ValueDataToText, ZeroPatternReadsOnlyDecimalLookingTexts) {
    const struct {
        const char* hex;
        const char* text;
    } cases[] = {
        {"0", "00000000"},
        {"10", "00000010"},
        {"1E5", "00100000"},
        {"1E05", "00100000"},
        {"9E9", "9000000000"},
        {"FF", "FF"},
        {"1E", "1E"},
        {"E5", "E5"},
        {"1EE5", "1EE5"},
        {"1D5", "1D5"},
        {"1E999999", "1E999999"},  // beyond a double: stays text
    };
    for (const auto& c : cases) {
        EXPECT_EQ(FormatHexWithZeroPattern(c.hex), c.text) << c.hex;
    }
}

TEST(RootKeys, NamesAndHandlesMapBothWaysExactly) {
    const struct {
        const char* name;
        RootKeyHandle handle;
    } roots[] = {
        {"HKEY_CLASSES_ROOT", 0x80000000},     {"HKEY_CURRENT_USER", 0x80000001},
        {"HKEY_LOCAL_MACHINE", 0x80000002},    {"HKEY_USERS", 0x80000003},
        {"HKEY_PERFORMANCE_DATA", 0x80000004}, {"HKEY_CURRENT_CONFIG", 0x80000005},
        {"HKEY_DYN_DATA", 0x80000006},
    };
    for (const auto& r : roots) {
        EXPECT_EQ(RootKeyFromName(r.name), r.handle) << r.name;
        EXPECT_EQ(RootKeyName(r.handle), r.name) << r.name;
    }
    for (const char* unknown : {"HKEY_ALL", "hkey_local_machine", "HKLM", "", "HKEY_USERS "}) {
        EXPECT_EQ(RootKeyFromName(unknown), 0u) << unknown;
    }
    for (const RootKeyHandle unknown : {0u, 0x80000007u, 1u}) {
        EXPECT_EQ(RootKeyName(unknown), "") << unknown;
    }
}

}  // namespace
}  // namespace regvex
