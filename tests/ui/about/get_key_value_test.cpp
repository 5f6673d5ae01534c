#include "ui/about/get_key_value.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "engine/memory_registry.h"
#include "engine/run_time_error.h"
#include "support/registry_fixtures.h"

namespace regvex::ui::about {
namespace {

using testing::Bytes;
using testing::PutValue;
using testing::SzBytes;

constexpr std::string_view kKey = "SOFTWARE\\Vendor\\Tool";
constexpr AccessMask kAllAccess64 = reg::kKeyAllAccess | reg::kKeyWow64_64Key;

struct ReadCase {
    const char* name;
    std::uint32_t type;
    std::vector<std::uint8_t> data;
    std::string before;  // what KeyVal holds before the call
    bool read;
    std::string after;
};

class GetKeyValueTest : public ::testing::TestWithParam<ReadCase> {};

TEST_P(GetKeyValueTest, ReadsTheValueAsText) {
    const ReadCase& c = GetParam();
    MemoryRegistry registry;
    PutValue(registry, kHkeyLocalMachine, kKey, "Value", c.type, c.data);
    std::string KeyVal = c.before;
    EXPECT_EQ(GetKeyValue(registry, kAllAccess64, kHkeyLocalMachine, kKey, "Value", KeyVal),
              c.read);
    EXPECT_EQ(KeyVal, c.after);
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
}

std::vector<std::uint8_t> Concat(std::string_view text, std::string_view tail) {
    std::vector<std::uint8_t> bytes = Bytes(text);
    bytes.insert(bytes.end(), tail.begin(), tail.end());
    return bytes;
}

const std::string k1023(1023, 'a');
const std::string k1024(1024, 'a');

INSTANTIATE_TEST_SUITE_P(
    Values, GetKeyValueTest,
    ::testing::Values(
        ReadCase{"SzWithTerminator", reg::kSz, SzBytes("C:\\Tools"), "old", true, "C:\\Tools"},
        ReadCase{"SzWithoutTerminator", reg::kSz, Bytes("C:\\Tools"), "", true, "C:\\Tools"},
        ReadCase{"OnlyOneTerminatorGoes", reg::kSz, Concat("ab", std::string_view("\0\0", 2)), "",
                 true, std::string("ab\0", 3)},
        ReadCase{"EmptySz", reg::kSz, {}, "old", true, ""},
        ReadCase{"FullBufferWithoutTerminatorKeptWhole", reg::kSz, Bytes(k1024), "", true, k1024},
        ReadCase{"FullBufferWithTerminator", reg::kSz, SzBytes(k1023), "", true, k1023},
        ReadCase{"TerminatorBeyondTheBuffer", reg::kSz, SzBytes(k1024), "old", false, ""},
        // Characters, not bytes: "é" is two bytes but one character.
        ReadCase{"TwoByteCharacterCountsOnce", reg::kSz, Concat(k1023, "\xC3\xA9"), "", true,
                 k1023 + "\xC3\xA9"},
        // A character beyond the basic plane takes two places, as in UTF-16.
        ReadCase{"AstralCharacterCountsTwice", reg::kSz, Concat(k1023, "\xF0\x9F\x98\x80"), "",
                 false, ""},
        ReadCase{"Dword16", reg::kDword, {0x10, 0, 0, 0}, "", true, "16"},
        ReadCase{"DwordZero", reg::kDword, {0, 0, 0, 0}, "", true, "0"},
        ReadCase{"DwordBytesLoseLeadingZeros", reg::kDword, {0x01, 0x02, 0, 0}, "", true, "33"},
        ReadCase{"DwordFullBytes", reg::kDword, {0x78, 0x56, 0x34, 0x12}, "", true, "305419896"},
        ReadCase{"DwordLargest", reg::kDword, {0xFF, 0xFF, 0xFF, 0xFF}, "", true, "4294967295"},
        ReadCase{"DwordDigitsFollowWhatWasThere", reg::kDword, {0, 0, 0, 0}, "1", true, "65536"},
        ReadCase{"ExpandSzLeavesTextAlone", reg::kExpandSz, SzBytes("%x%"), "kept", true, "kept"},
        ReadCase{"BinaryLeavesTextAlone", reg::kBinary, {1, 2}, "kept", true, "kept"},
        ReadCase{"BinaryBeyondTheBuffer", reg::kBinary, std::vector<std::uint8_t>(1025), "kept",
                 false, ""}),
    [](const ::testing::TestParamInfo<ReadCase>& param_info) {
        return std::string(param_info.param.name);
    });

TEST(GetKeyValue, FailsAndEmptiesTheTextWhenNothingCanBeRead) {
    MemoryRegistry registry;
    testing::PutString(registry, kHkeyLocalMachine, kKey, "Value", "text");
    testing::PutString(registry, kHkeyLocalMachine, "SOFTWARE\\Locked", "Value", "text");
    registry.DenyFullAccess(kHkeyLocalMachine, "SOFTWARE\\Locked");
    struct {
        std::string_view key;
        std::string_view value;
    } const failing[] = {
        {"SOFTWARE\\Missing", "Value"}, {kKey, "Missing"}, {"SOFTWARE\\Locked", "Value"}};
    for (const auto& f : failing) {
        std::string KeyVal = "old";
        EXPECT_FALSE(GetKeyValue(registry, kAllAccess64, kHkeyLocalMachine, f.key, f.value, KeyVal))
            << f.key << " " << f.value;
        EXPECT_EQ(KeyVal, "") << f.key;
    }
    // The locked key opens for reading: only the full rights asked for are refused.
    std::string KeyVal;
    EXPECT_TRUE(GetKeyValue(registry, reg::kKeyRead, kHkeyLocalMachine, "SOFTWARE\\Locked", "Value",
                            KeyVal));
    EXPECT_EQ(registry.OpenHandleCount(), 0u);
}

TEST(GetKeyValue, DwordDigitsThatMakeNoNumberRaiseAnError) {
    struct {
        std::vector<std::uint8_t> data;
        std::string before;
        int error;
    } const cases[] = {
        {{}, "", 13},                                      // "&h" alone
        {{0, 0, 0, 0}, "x", 13},                           // not hexadecimal
        {std::vector<std::uint8_t>(5, 0x11), "", 6},       // ten digits
        {{0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, "", 0},  // leading zeros do not count
    };
    for (const auto& c : cases) {
        MemoryRegistry registry;
        PutValue(registry, kHkeyLocalMachine, kKey, "Value", reg::kDword, c.data);
        std::string KeyVal = c.before;
        try {
            GetKeyValue(registry, kAllAccess64, kHkeyLocalMachine, kKey, "Value", KeyVal);
            EXPECT_EQ(c.error, 0) << "no error for " << c.data.size() << " bytes";
            EXPECT_EQ(KeyVal, "1");
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.number(), c.error) << c.data.size() << " bytes";
            EXPECT_EQ(KeyVal, c.before);
        }
        EXPECT_EQ(registry.OpenHandleCount(), 0u);
    }
}

}  // namespace
}  // namespace regvex::ui::about
