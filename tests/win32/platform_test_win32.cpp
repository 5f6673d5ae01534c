// The smaller platform services under Wine: text conversion, the ANSI code page, file
// existence, the system's version and the starting of programs.

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

#include "engine/file_existence_win32.h"
#include "system/process_win32.h"
#include "system/system_info_win32.h"
#include "text/ansi_code_page_win32.h"
#include "text/wide_text_win32.h"
#include "win32/test_support_win32.h"

namespace regvex {
namespace {

using namespace std::string_literals;

TEST(WideText, ConvertsBothWaysKeepingNulsAndSurrogatePairs) {
    const struct {
        std::string utf8;
        std::wstring wide;
    } cases[] = {
        {"", L""},
        {"C:\\Windows", L"C:\\Windows"},
        {"\xC3\xA9\xE2\x82\xAC\xE4\xB8\xAD\xF0\x9F\x98\x80", L"\u00E9\u20AC\u4E2D\U0001F600"},
        {"one\0two\0\0"s, L"one\0two\0\0"s},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(text::ToWide(c.utf8), c.wide) << c.utf8;
        EXPECT_EQ(text::FromWide(c.wide), c.utf8) << c.utf8;
    }
    // What neither side can carry becomes U+FFFD rather than vanishing.
    EXPECT_EQ(text::ToWide("a\xFF"), L"a\uFFFD");
    EXPECT_EQ(text::FromWide(L"a\xD800"s), "a\xEF\xBF\xBD");
}

class SystemAnsiCodePageTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (GetACP() != 1252) {
            GTEST_SKIP() << "the expectations are those of code page 1252, not " << GetACP();
        }
    }
    text::SystemAnsiCodePage code_page_;
};

TEST_F(SystemAnsiCodePageTest, ConvertsWesternTextBothWays) {
    const struct {
        std::string ansi;
        std::string utf8;
    } cases[] = {
        {"", ""},
        {"plain", "plain"},
        {"caf\xE9", "caf\xC3\xA9"},        // é
        {"\x80 5", "\xE2\x82\xAC 5"},      // €, which Latin-1 does not have
        {"\x9C\xFF", "\xC5\x93\xC3\xBF"},  // œÿ
    };
    for (const auto& c : cases) {
        EXPECT_EQ(code_page_.ToUtf8(c.ansi), c.utf8) << c.utf8;
        std::string ansi;
        EXPECT_TRUE(code_page_.FromUtf8(c.utf8, ansi)) << c.utf8;
        EXPECT_EQ(ansi, c.ansi) << c.utf8;
    }
}

TEST_F(SystemAnsiCodePageTest, ReportsCharactersWithoutAnAnsiForm) {
    const struct {
        std::string utf8;
        std::string ansi;
    } cases[] = {
        {"a\xE4\xB8\xADz", "a?z"},          // 中
        {"\xC3\xA9\xE4\xB8\xAD", "\xE9?"},  // é中: what has a form keeps it
        {"\xC4\x81", "?"},                  // ā: best fit would have made it "a"
    };
    for (const auto& c : cases) {
        std::string ansi;
        EXPECT_FALSE(code_page_.FromUtf8(c.utf8, ansi)) << c.utf8;
        EXPECT_EQ(ansi, c.ansi) << c.utf8;
    }
    // Outside the first plane the system writes a question mark per UTF-16 unit, unlike the
    // portable code page's one per character; only the loss itself is certain.
    std::string ansi;
    EXPECT_FALSE(code_page_.FromUtf8("\xF0\x9F\x98\x80", ansi));  // 😀
    EXPECT_EQ(ansi.find_first_not_of('?'), std::string::npos) << ansi;
    EXPECT_FALSE(ansi.empty());
}

TEST_F(SystemAnsiCodePageTest, AgreesWithThePortableCodePageOnEveryByte) {
    const text::Windows1252CodePage portable;
    for (int byte = 1; byte < 256; ++byte) {
        const std::string ansi(1, static_cast<char>(byte));
        EXPECT_EQ(code_page_.ToUtf8(ansi), portable.ToUtf8(ansi)) << byte;
    }
}

TEST(Win32FileExistence, AnswersForFilesAndFoldersInAnyCase) {
    testing::TempFolder folder;
    folder.MakeFolder("Dossier \xC3\xA9\xE4\xB8\xAD");
    const std::string present = folder.MakeFile("Dossier \xC3\xA9\xE4\xB8\xAD\\pr\xC3\xA9sent.txt");

    const struct {
        std::string path;
        bool exists;
    } cases[] = {
        {"C:\\WiNdOwS\\SyStEm32\\KERNEL32.dll", true},
        {"c:\\windows\\system32\\kernel32.dll", true},
        {"C:\\Windows\\System32\\regvexlor-missing.dll", false},
        {"C:\\Windows", true},
        {"C:\\Windows\\", true},
        {present, true},
        {folder.path() + "\\Dossier \xC3\xA9\xE4\xB8\xAD", true},
        {folder.path() + "\\Dossier \xC3\xA9\xE4\xB8\xAD\\absent.txt", false},
        {"", false},
    };
    Win32FileExistence files;
    for (const auto& c : cases) {
        EXPECT_EQ(files.Check(c.path), c.exists ? 1 : 0) << c.path;
        EXPECT_EQ(PathExists(files, c.path), c.exists) << c.path;
    }
}

TEST(Win32SystemInfo, VersionAndArchitectureAgreeWithTheVersionTests) {
    system::Win32SystemInfo system;
    const system::OsVersion version = system.Version();
    EXPECT_GE(version.major, 5u);
    const bool xp_or_later = version.major > 5 || (version.major == 5 && version.minor >= 1);
    // Single-digit major versions compare the same as text and as numbers.
    if (version.major < 10) {
        EXPECT_EQ(system::IsWindowsXPOrLater(system), xp_or_later);
    }
    const std::uint16_t architecture = system.NativeProcessorArchitecture();
    const bool wide_architecture = architecture == system::kProcessorArchitectureAmd64 ||
                                   architecture == system::kProcessorArchitectureIa64;
    EXPECT_EQ(system::Is64BitWindows(system),
              system::IsWindowsXPOrLater(system) && wide_architecture);
#ifdef _WIN64
    // A 64-bit program can only run on a 64-bit system.
    EXPECT_TRUE(wide_architecture) << architecture;
    EXPECT_TRUE(system::Is64BitWindows(system));
    EXPECT_EQ(system::KeyMasksFor(system::Is64BitWindows(system)).KeyAccessMask,
              reg::kKeyAllAccess | reg::kKeyWow64_64Key);
#endif
}

// The handle values that are open in this process. Wine's GetProcessHandleCount answers
// 0 whatever is open, so the handles are probed one by one.
std::set<std::uintptr_t> OpenHandles() {
    std::set<std::uintptr_t> open;
    for (std::uintptr_t value = 4; value < 16 * 1024; value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) {
            open.insert(value);
        }
    }
    return open;
}

TEST(Win32ProcessLauncher, AnswersTheExitCodeOrZeroWhenNothingStarted) {
    const struct {
        std::string command_line;
        std::uint32_t exit_code;
    } cases[] = {
        {"cmd.exe /c exit 7", 7},
        {"cmd /c exit 0", 0},
        {"C:\\windows\\system32\\cmd.exe /c exit 300", 300},
        {"regvexlor-no-such-program.exe /c exit 7", 0},
        {"", 0},
    };
    system::Win32ProcessLauncher launcher;
    // The first start may leave the system's own handles behind (loaded libraries and the
    // like); only what the launcher leaves behind from then on counts.
    launcher.RunAndWait("cmd.exe /c exit 0");
    const std::set<std::uintptr_t> handles_before = OpenHandles();
    for (const auto& c : cases) {
        EXPECT_EQ(launcher.RunAndWait(c.command_line), c.exit_code) << c.command_line;
    }
    EXPECT_EQ(OpenHandles(), handles_before);
}

TEST(Win32ProcessLauncher, StartsWithoutWaitingAndKeepsNoHandle) {
    system::Win32ProcessLauncher launcher;
    launcher.Start("cmd.exe /c exit 0");
    const std::set<std::uintptr_t> handles_before = OpenHandles();
    EXPECT_TRUE(launcher.Start("cmd.exe /c exit 0"));
    EXPECT_FALSE(launcher.Start("regvexlor-no-such-program.exe"));
    EXPECT_EQ(OpenHandles(), handles_before);
}

}  // namespace
}  // namespace regvex
