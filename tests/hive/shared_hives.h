#pragma once
// The real hives of the shared folder, decompressed on first use into a temporary folder
// that lives as long as the test program. REGVEX_SHARED_HIVES in the environment names
// another folder than the one configured.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "engine/registry.h"

namespace regvex::testing {

// The decompressed hive (say "plaso-NTUSER.DAT"), or an empty path when the shared
// folder or the file is missing.
std::filesystem::path SharedHive(std::string_view name);

std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& file);
void WriteBytes(const std::filesystem::path& file, const std::vector<std::uint8_t>& bytes);

// A folder of the test program's temporary folder, made empty.
std::filesystem::path ScratchFolder(std::string_view name);

// Counts the keys below and including `path`, stopping at `limit`.
std::size_t CountKeys(Registry& registry, const std::string& path, std::size_t limit);

}  // namespace regvex::testing

// Skips the test when the hive is not there.
#define REGVEX_REQUIRE_HIVE(variable, name)                                                \
    const std::filesystem::path variable = ::regvex::testing::SharedHive(name);            \
    if (variable.empty()) {                                                                \
        GTEST_SKIP() << "no shared hive " << (name) << " (set REGVEX_SHARED_HIVES to the " \
                     << "folder of the xz-compressed hives)";                              \
    }
