#include "wine/wine_prefix.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/registry_dump.h"
#include "support/temp_folder.h"
#include "support/walk_comparison.h"

namespace regvex::wine {
namespace {

namespace fs = std::filesystem;

void WriteFile(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// "\Registry\Machine\Software\Classes\Wow6432Node" as Wine writes a link's target.
std::string LinkData(std::string_view target) {
    std::string out;
    for (const char c : target) {
        char digits[8];
        std::snprintf(digits, sizeof digits, "%s%02x,00", out.empty() ? "" : ",",
                      static_cast<unsigned char>(c));
        out += digits;
    }
    return out;
}

class WinePrefixTest : public ::testing::Test {
  protected:
    void SetUp() override {
        WriteFile(prefix_.path() / "system.reg",
                  "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\Machine\n\n"
                  "#arch=win64\n\n"
                  "[Software\\\\Classes\\\\.txt] 1\n@=\"txtfile\"\n\n"
                  "[Software\\\\Classes\\\\Wow6432Node\\\\CLSID\\\\x] 1\n\"v\"=\"in wow\"\n\n"
                  "[Software\\\\Wow6432Node\\\\Classes] 1\n#link\n"
                  "\"SymbolicLinkValue\"=hex(6):" +
                      LinkData("\\Registry\\Machine\\Software\\Classes\\Wow6432Node") +
                      "\n\n"
                      "[Software\\\\Dangling] 1\n#link\n\"SymbolicLinkValue\"=hex(6):" +
                      LinkData("\\Elsewhere\\x") +
                      "\n\n"
                      "[System\\\\CurrentControlSet\\\\Hardware Profiles\\\\Current\\\\Software\\\\"
                      "Fonts] 1\n\"LogPixels\"=dword:00000060\n"
                      "bad line\n");
        WriteFile(prefix_.path() / "user.reg",
                  "WINE REGISTRY Version 2\n;; All keys relative to "
                  "REGISTRY\\\\User\\\\S-1-5-21-0-0-0-1000\n\n"
                  "[Software\\\\Classes\\\\mine] 1\n@=\"user class\"\n");
        WriteFile(
            prefix_.path() / "userdef.reg",
            "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\User\\\\.Default\n\n"
            "[Control Panel] 1\n\"x\"=\"1\"\n");
    }

    std::string Dump(Registry& registry, RootKeyHandle root) {
        std::string out;
        testing::DumpKey(registry, root, "", out);
        return out;
    }

    testing::TempFolder prefix_;
};

TEST_F(WinePrefixTest, PresentsTheRootsAsWineDoes) {
    const WinePrefixRegistry read = ReadWinePrefixRegistry(prefix_.path());
    ASSERT_TRUE(read.registry) << read.error;
    ASSERT_EQ(read.warnings.size(), 1u);
    EXPECT_NE(read.warnings[0].find("system.reg:22: neither a key"), std::string::npos)
        << read.warnings[0];
    Registry& registry = *read.registry;

    // The machine's classes alone; the dangling link is listed but does not open.
    EXPECT_EQ(Dump(registry, kHkeyClassesRoot),
              "HKEY_CLASSES_ROOT\\.txt\n  =1:txtfile\\x00\n"
              "HKEY_CLASSES_ROOT\\Wow6432Node\nHKEY_CLASSES_ROOT\\Wow6432Node\\CLSID\n"
              "HKEY_CLASSES_ROOT\\Wow6432Node\\CLSID\\x\n  v=1:in wow\\x00\n");
    EXPECT_EQ(Dump(registry, kHkeyCurrentUser),
              "HKEY_CURRENT_USER\\Software\nHKEY_CURRENT_USER\\Software\\Classes\n"
              "HKEY_CURRENT_USER\\Software\\Classes\\mine\n  =1:user class\\x00\n");
    EXPECT_EQ(Dump(registry, kHkeyCurrentConfig),
              "HKEY_CURRENT_CONFIG\\Software\nHKEY_CURRENT_CONFIG\\Software\\Fonts\n"
              "  LogPixels=4:`\\x00\\x00\\x00\n");
    const std::string users = Dump(registry, kHkeyUsers);
    EXPECT_EQ(
        users.rfind("HKEY_USERS\\.Default\nHKEY_USERS\\.Default\\Control Panel\n  x=1:1\\x00\n", 0),
        0u);
    EXPECT_NE(users.find("HKEY_USERS\\S-1-5-21-0-0-0-1000\\Software\\Classes\\mine\n"),
              std::string::npos);
    const std::string machine = Dump(registry, kHkeyLocalMachine);
    EXPECT_NE(machine.find("HKEY_LOCAL_MACHINE\\Software\\Dangling cannot be opened\n"),
              std::string::npos);
    EXPECT_NE(machine.find("HKEY_LOCAL_MACHINE\\Software\\Wow6432Node\\Classes\\CLSID\\x\n"
                           "  v=1:in wow\\x00\n"),
              std::string::npos);
    for (const RootKeyHandle root : {kHkeyPerformanceData, kHkeyDynData}) {
        ScopedKey key;
        EXPECT_NE(ScopedKey::Open(registry, root, "", reg::kKeyAllAccess, key), reg::kSuccess);
    }
    ScopedKey key;
    ASSERT_EQ(ScopedKey::Open(registry, kHkeyCurrentUser, "Software", reg::kKeyAllAccess, key),
              reg::kSuccess);
    const std::uint8_t data[] = {1};
    EXPECT_EQ(registry.SetValue(key.get(), "x", reg::kBinary, data), reg::kAccessDenied);
}

// The prefix's classes and current user are each reached through two roots, and a link
// leads into the classes: a search reading their values once shows what a full walk shows.
TEST_F(WinePrefixTest, ReadingEachStoredKeyOnceShowsWhatAFullWalkShows) {
    const WinePrefixRegistry read = ReadWinePrefixRegistry(prefix_.path());
    ASSERT_TRUE(read.registry) << read.error;
    const struct {
        testing::WalkRequest request;
        bool saves;
    } cases[] = {
        {{kHkeyAll, "", 3, "i"}, true},
        {{kHkeyAll, "", 2 | 4, "in wow"}, true},
        {{kHkeyLocalMachine, "Software", 1, "v"}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.request.text);
        const auto saving = testing::WalkOnce(*read.registry, c.request, true);
        const auto full = testing::WalkOnce(*read.registry, c.request, false);
        EXPECT_EQ(saving.lines, full.lines);
        EXPECT_EQ(saving.value_reads < full.value_reads, c.saves);
    }
}

TEST_F(WinePrefixTest, NeedsSystemRegAndReadsMissingUserFilesAsEmpty) {
    fs::remove(prefix_.path() / "user.reg");
    const WinePrefixRegistry read = ReadWinePrefixRegistry(prefix_.path());
    ASSERT_TRUE(read.registry);
    EXPECT_NE(read.warnings.back().find("user.reg: missing"), std::string::npos);
    EXPECT_EQ(Dump(*read.registry, kHkeyCurrentUser), "");

    WriteFile(prefix_.path() / "system.reg", "REGEDIT4\n");
    EXPECT_NE(ReadWinePrefixRegistry(prefix_.path()).error.find("not a Wine registry file"),
              std::string::npos);
    fs::remove(prefix_.path() / "system.reg");
    EXPECT_NE(ReadWinePrefixRegistry(prefix_.path()).error.find("is not a Wine prefix"),
              std::string::npos);
}

}  // namespace
}  // namespace regvex::wine
