// Dirty hives: one made dirty here from a real hive, with the change that Windows had
// only written to its log, in both log formats; and the same hive without a usable log.

#include <gtest/gtest.h>
#include <hivex.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hive/base_block.h"
#include "hive/hive_file.h"
#include "hive/marvin32.h"
#include "shared_hives.h"

namespace regvex::hive {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Marvin32, KnownAnswers) {
    struct Case {
        Bytes data;
        std::uint64_t seed;
        std::uint64_t hash;
    };
    const Case cases[] = {
        {{}, 0x004FB61A001BDBCC, 0x30ED35C100CD3C7D},
        {{0xAF}, 0x004FB61A001BDBCC, 0x48E73FC77D75DDC1},
        {{0x37, 0xF4, 0x95}, 0x004FB61A001BDBCC, 0xF0B07C789B8CF7E8},
        {{0x86, 0x42, 0xDC, 0x59}, 0x004FB61A001BDBCC, 0x7008F2E87E9CF556},
        {{0xAB, 0x42, 0x7E, 0xA8, 0xD1, 0x0F, 0xC7}, 0x004FB61A001BDBCC, 0xE11847E4F0678C41},
        {{}, 0x804FB61A001BDBCC, 0x10A9D5D3996FD65D},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Marvin32(c.data, c.seed), c.hash) << c.data.size() << " bytes";
    }
}

constexpr char kHive[] = "plaso-NTUSER.DAT";
constexpr char kKey[] = "AppEvents\\EventLabels\\.Default";
constexpr std::size_t kPage = 4096;

void PutU32(Bytes& bytes, std::size_t at, std::uint32_t value) {
    WriteU32(bytes, at, value);
}
void PutU64(Bytes& bytes, std::size_t at, std::uint64_t value) {
    PutU32(bytes, at, static_cast<std::uint32_t>(value));
    PutU32(bytes, at + 4, static_cast<std::uint32_t>(value >> 32));
}
void Append(Bytes& to, const Bytes& bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

// The first sector of a log: the hive's base block as the log keeps it.
Bytes LogHeader(const Bytes& hive, std::uint32_t file_type) {
    Bytes header(hive.begin(), hive.begin() + kLogSectorSize);
    const std::uint32_t sequence = BaseBlock(hive).PrimarySequence();
    PutU32(header, 4, sequence);
    PutU32(header, 8, sequence);
    PutU32(header, 28, file_type);
    PutU32(header, kChecksummedSize, BaseBlockChecksum(header));
    return header;
}

Bytes NewFormatLog(const Bytes& hive, std::size_t page_offset, const Bytes& page) {
    Bytes log = LogHeader(hive, kNewLogFile);
    Bytes entry(40, 0);
    std::copy_n("HvLE", 4, entry.begin());
    PutU32(entry, 12, BaseBlock(hive).PrimarySequence());
    PutU32(entry, 16, BaseBlock(hive).HiveBinsSize());
    PutU32(entry, 20, 1);
    Bytes reference(8);
    PutU32(reference, 0, static_cast<std::uint32_t>(page_offset - kBaseBlockSize));
    PutU32(reference, 4, static_cast<std::uint32_t>(page.size()));
    Append(entry, reference);
    Append(entry, page);
    entry.resize((entry.size() + 511) / 512 * 512);
    PutU32(entry, 4, static_cast<std::uint32_t>(entry.size()));
    PutU64(entry, 24, Marvin32(std::span(entry).subspan(40), kLogEntrySeed));
    PutU64(entry, 32, Marvin32(std::span(entry).first(32), kLogEntrySeed));
    Append(log, entry);
    return log;
}

Bytes OldFormatLog(const Bytes& hive, std::size_t page_offset, const Bytes& page) {
    Bytes log = LogHeader(hive, kOldLogFile);
    const std::size_t bits = BaseBlock(hive).HiveBinsSize() / 512;
    Bytes vector(4 + (bits + 7) / 8, 0);
    std::copy_n("DIRT", 4, vector.begin());
    // Eight 512-byte pages of one 4096-byte page: one whole byte of the bitmap.
    vector[4 + (page_offset - kBaseBlockSize) / 512 / 8] = 0xFF;
    Append(log, vector);
    log.resize((log.size() + 511) / 512 * 512);
    Append(log, page);
    return log;
}

struct DirtyHive {
    const char* name;
    const char* log_name;  // "" for none
    bool new_format;
    const char* expected;  // the data read
    const char* warning;   // part of a warning, or ""
};

class DirtyHives : public ::testing::TestWithParam<DirtyHive> {};

TEST_P(DirtyHives, ReadAsWindowsWouldAfterItsLogs) {
    REGVEX_REQUIRE_HIVE(original, kHive);
    const DirtyHive& dirty = GetParam();
    Bytes hive = testing::ReadBytes(original);

    // Where the default value of the key keeps its text, "Default Beep".
    hive_h* reader = hivex_open(original.c_str(), 0);
    hive_node_h node = hivex_root(reader);
    for (const char* name : {"AppEvents", "EventLabels", ".Default"}) {
        node = hivex_node_get_child(reader, node, name);
    }
    std::size_t cell_size = 0;
    const std::size_t cell =
        hivex_value_data_cell_offset(reader, hivex_node_get_value(reader, node, ""), &cell_size);
    hivex_close(reader);
    ASSERT_NE(cell, 0u);

    // The change that reached the log but not the hive: "Default" becomes "Dafault".
    const std::size_t page_offset = cell / kPage * kPage;
    Bytes page(hive.begin() + static_cast<std::ptrdiff_t>(page_offset),
               hive.begin() + static_cast<std::ptrdiff_t>(page_offset + kPage));
    page[cell + 4 + 2 - page_offset] = 'a';
    // Windows had begun writing: the first sequence number is one ahead.
    PutU32(hive, 4, BaseBlock(hive).SecondarySequence() + 1);
    PutU32(hive, kChecksummedSize, BaseBlockChecksum(hive));

    const std::filesystem::path folder = testing::ScratchFolder("dirty");
    const std::filesystem::path file = folder / "NTUSER.DAT";
    testing::WriteBytes(file, hive);
    Bytes log;
    if (*dirty.log_name != '\0') {
        log = dirty.new_format ? NewFormatLog(hive, page_offset, page)
                               : OldFormatLog(hive, page_offset, page);
        testing::WriteBytes(folder / dirty.log_name, log);
    }

    std::vector<std::string> warnings;
    OpenedHive opened = OpenHiveFile(file, [&](std::string_view w) { warnings.emplace_back(w); });
    ASSERT_TRUE(opened.registry) << opened.error;
    ScopedKey key;
    ASSERT_EQ(ScopedKey::Open(*opened.registry, kHkeyLocalMachine, kKey, reg::kKeyRead, key),
              reg::kSuccess);
    ValueSlot slot;
    ASSERT_EQ(opened.registry->EnumValue(key.get(), 0, slot), reg::kSuccess);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(slot.data.data()), slot.size),
              std::string(dirty.expected, 13));
    if (*dirty.warning == '\0') {
        EXPECT_TRUE(warnings.empty()) << ::testing::PrintToString(warnings);
    } else {
        ASSERT_EQ(warnings.size(), 1u) << ::testing::PrintToString(warnings);
        EXPECT_NE(warnings[0].find(dirty.warning), std::string::npos) << warnings[0];
    }
    // Recovery happens in memory only.
    EXPECT_EQ(testing::ReadBytes(file), hive);
    if (!log.empty()) {
        EXPECT_EQ(testing::ReadBytes(folder / dirty.log_name), log);
    }
}

INSTANTIATE_TEST_SUITE_P(
    MadeFromARealHive, DirtyHives,
    ::testing::Values(DirtyHive{"NewFormatLog", "ntuser.dat.LOG1", true, "Dafault Beep", ""},
                      DirtyHive{"OldFormatLog", "NTUSER.DAT.log2", false, "Dafault Beep", ""},
                      DirtyHive{"NoLog", "", true, "Default Beep", "recent changes may be missing"},
                      DirtyHive{"LogOfAnotherHive", "OTHER.DAT.LOG1", true, "Default Beep",
                                "has no transaction log"}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace regvex::hive
