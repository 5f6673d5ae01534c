// Hives made bad from a real one: what cannot be read is refused with a message naming
// the file and the fault; damage inside a readable hive leaves out only the damaged keys,
// with a warning. Never a crash, never a walk without end.

#include <gtest/gtest.h>
#include <hivex.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "hive/hive_file.h"
#include "shared_hives.h"

namespace regvex::hive {
namespace {

using testing::ReadBytes;
using Bytes = std::vector<std::uint8_t>;

constexpr char kHive[] = "plaso-NTUSER.DAT";
constexpr std::size_t kAllKeys = 1127;  // as reglookup counts them

std::uint32_t U32(const Bytes& bytes, std::size_t at) {
    return static_cast<std::uint32_t>(bytes[at] | (bytes[at + 1] << 8) | (bytes[at + 2] << 16) |
                                      (bytes[at + 3] << 24));
}
void PutU32(Bytes& bytes, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        bytes[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

// The file offset of a key's record (hivex's node handles are those offsets).
std::size_t KeyOffset(const std::filesystem::path& file, const std::vector<const char*>& path) {
    hive_h* hive = hivex_open(file.c_str(), 0);
    hive_node_h node = hivex_root(hive);
    for (const char* name : path) {
        node = hivex_node_get_child(hive, node, name);
    }
    hivex_close(hive);
    return node;
}

// The file offset of a key's first value's record.
std::size_t FirstValueOffset(const std::filesystem::path& file, const char* key) {
    hive_h* hive = hivex_open(file.c_str(), 0);
    hive_value_h* values =
        hivex_node_values(hive, hivex_node_get_child(hive, hivex_root(hive), key));
    const std::size_t first = values[0];
    std::free(values);
    hivex_close(hive);
    return first;
}

// Offsets inside a key record: its cell's size comes first, then the "nk" record.
constexpr std::size_t kParentField = 4 + 16;
constexpr std::size_t kSubkeyListField = 4 + 28;
constexpr std::size_t kNameLengthField = 4 + 72;
constexpr std::size_t kValueTypeField = 4 + 12;  // in a value record
constexpr std::size_t kBins = 4096;

struct BadHive {
    const char* name;
    std::function<void(Bytes&, const std::filesystem::path&)> damage;
    const char* error;    // part of the message refusing the file, or nullptr
    const char* warning;  // part of a warning, when the hive is read
    std::size_t min_keys;
    std::size_t max_keys;
};

class BadHives : public ::testing::TestWithParam<BadHive> {};

TEST_P(BadHives, RefusedOrReadWithoutTheDamage) {
    REGVEX_REQUIRE_HIVE(original, kHive);
    const BadHive& bad = GetParam();
    Bytes bytes = ReadBytes(original);
    bad.damage(bytes, original);
    const std::filesystem::path file = testing::ScratchFolder("bad") / "NTUSER.DAT";
    testing::WriteBytes(file, bytes);

    std::vector<std::string> warnings;
    OpenedHive opened = OpenHiveFile(file, [&](std::string_view w) { warnings.emplace_back(w); });
    if (bad.error != nullptr) {
        ASSERT_FALSE(opened.registry);
        EXPECT_NE(opened.error.find(file.string() + ": "), std::string::npos) << opened.error;
        EXPECT_NE(opened.error.find(bad.error), std::string::npos) << opened.error;
        return;
    }
    ASSERT_TRUE(opened.registry) << opened.error;
    const std::size_t keys = testing::CountKeys(*opened.registry, "", 100'000);
    EXPECT_GE(keys, bad.min_keys);
    EXPECT_LE(keys, bad.max_keys);
    if (bad.warning == nullptr) {
        EXPECT_TRUE(warnings.empty()) << ::testing::PrintToString(warnings);
        return;
    }
    const bool warned = std::any_of(warnings.begin(), warnings.end(), [&](const std::string& w) {
        return w.starts_with(file.string() + ": ") && w.find(bad.warning) != std::string::npos;
    });
    EXPECT_TRUE(warned) << ::testing::PrintToString(warnings);
}

void Truncate(Bytes& bytes, std::size_t size) {
    bytes.resize(size);
}

INSTANTIATE_TEST_SUITE_P(
    FromARealHive, BadHives,
    ::testing::Values(
        BadHive{"Empty", [](Bytes& b, auto&) { b.clear(); }, "not a registry hive", nullptr, 0, 0},
        BadHive{"BadSignature", [](Bytes& b, auto&) { b[1] = 'E'; }, "not a registry hive", nullptr,
                0, 0},
        BadHive{"TruncatedBaseBlock", [](Bytes& b, auto&) { Truncate(b, 1000); }, "truncated",
                nullptr, 0, 0},
        BadHive{"TruncatedInTheBins", [](Bytes& b, auto&) { Truncate(b, b.size() / 2); },
                "truncated", nullptr, 0, 0},
        BadHive{"TransactionLog",
                [](Bytes& b, auto&) {
                    b[28] = 6;
                    b[508] ^= 6;  // keeps the checksum right
                },
                "a transaction log", nullptr, 0, 0},
        // The subkey list of Software no longer reads as one: Software is still listed,
        // nothing below it is.
        BadHive{"BrokenSubkeyList",
                [](Bytes& b, const std::filesystem::path& file) {
                    const std::size_t list =
                        kBins + U32(b, KeyOffset(file, {"Software"}) + kSubkeyListField);
                    b[list + 4] = 'z';
                    b[list + 5] = 'z';
                },
                nullptr, "key \"Software\": its list of subkeys cannot be read", 100, 700},
        // A subkey of AppEvents\EventLabels that is the root again, whose parent field
        // says so: only the walk's own guard stops it.
        BadHive{"LoopBackToTheRoot",
                [](Bytes& b, const std::filesystem::path& file) {
                    const std::size_t labels = KeyOffset(file, {"AppEvents", "EventLabels"});
                    const std::size_t list = kBins + U32(b, labels + kSubkeyListField);
                    const std::uint32_t root = U32(b, 36);
                    PutU32(b, list + 8, root);
                    PutU32(b, kBins + root + kParentField,
                           static_cast<std::uint32_t>(labels - kBins));
                },
                nullptr, "leads back to a key above it", 1000, kAllKeys},
        // A path cannot name it: it would name its parent again, without end.
        BadHive{"NamelessSubkey",
                [](Bytes& b, const std::filesystem::path& file) {
                    const std::size_t environment = KeyOffset(file, {"Environment"});
                    b[environment + kNameLengthField] = 0;
                    b[environment + kNameLengthField + 1] = 0;
                },
                nullptr, "a subkey has no name", 1000, kAllKeys - 1},
        // Not damage: a type is any 32-bit number, though hivex names only a few.
        BadHive{"TypeHivexDoesNotName",
                [](Bytes& b, const std::filesystem::path& file) {
                    PutU32(b, FirstValueOffset(file, "Environment") + kValueTypeField, 0x100);
                },
                nullptr, nullptr, kAllKeys, kAllKeys},
        BadHive{"GarbageInTheCells",
                [](Bytes& b, auto&) { std::fill_n(b.begin() + 9096, 4000, std::uint8_t{0x55}); },
                nullptr, "the hive is damaged", 500, kAllKeys},
        BadHive{
            "BrokenHiveBin",
            [](Bytes& b, auto&) { std::fill_n(b.begin() + kBins + 40960, 4, std::uint8_t{'X'}); },
            nullptr, "the hive bin at offset 40960 is damaged", 500, kAllKeys}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace regvex::hive
