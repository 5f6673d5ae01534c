// Every real hive, exported and read back by our own reader, is the same registry.

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "backup/reg_file_reader.h"
#include "backup/registry_export.h"
#include "engine/memory_registry.h"
#include "hive/hive_file.h"
#include "shared_hives.h"

namespace regvex::hive {
namespace {

// Every key and every value whole, in enumeration order, as one text.
std::string Listing(Registry& registry, RootKeyHandle root) {
    std::string out;
    std::vector<std::string> pending{""};
    std::string name;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    while (!pending.empty()) {
        const std::string path = std::move(pending.back());
        pending.pop_back();
        ScopedKey key;
        if (ScopedKey::Open(registry, root, path, reg::kKeyRead, key) != reg::kSuccess) {
            out += "[" + path + "] cannot be opened\n";
            continue;
        }
        out.append("[").append(path).append("]\n");
        for (std::uint32_t i = 0;
             registry.ReadValue(key.get(), i, name, type, data) == reg::kSuccess; ++i) {
            out += name + "=" + std::to_string(type) + ":" + std::string(data.begin(), data.end()) +
                   "\n";
        }
        std::vector<std::string> children;
        for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
            children.push_back(path.empty() ? name : path + "\\" + name);
        }
        pending.insert(pending.end(), children.rbegin(), children.rend());
    }
    return out;
}

TEST(HiveExport, EveryRealHiveReadsBackAsTheSameRegistry) {
    // hivex-special is left out: its names hold NULs, which no export file can carry
    // (the export counts them as missed).
    const char* const hives[] = {
        "hivex-minimal",    "plaso-NTUSER-CCLEANER.DAT", "plaso-NTUSER-WIN7.DAT",
        "plaso-NTUSER.DAT", "plaso-regf_UsrClass.dat",   "regipy-NTUSER_with_winscp.DAT",
        "regipy-SYSTEM",    "regipy-UsrClass.dat",       "regipy-ntuser_software_partial"};
    for (const char* name : hives) {
        REGVEX_REQUIRE_HIVE(file, name);
        OpenedHive hive = OpenHiveFile(file, [](std::string_view) {});
        ASSERT_TRUE(hive.registry) << hive.error;
        const std::filesystem::path exported = testing::ScratchFolder("export") / "hive.reg";
        {
            std::ofstream out(exported, std::ios::binary);
            backup::WriteExportHeader(out);
            const backup::ExportCount count =
                backup::WriteExportTree(*hive.registry, kHkeyLocalMachine, "", out);
            EXPECT_EQ(count.values_missed + count.keys_missed, 0u) << name;
        }
        MemoryRegistry read_back;
        const auto error = backup::ImportRegFile(exported, read_back, text::DefaultAnsiCodePage());
        ASSERT_FALSE(error) << name << ": line " << error->line << ": " << error->message;
        EXPECT_EQ(Listing(read_back, kHkeyLocalMachine), Listing(*hive.registry, kHkeyLocalMachine))
            << name;
    }
}

}  // namespace
}  // namespace regvex::hive
