#include "backup/backup_file.h"

#include <gtest/gtest.h>

#include "engine/run_time_error.h"
#include "support/system_doubles.h"
#include "text/utf8.h"

namespace regvex::backup {
namespace {

const text::Windows1252CodePage kAnsi;

std::string Lines(const std::vector<std::string_view>& lines) {
    std::string bytes;
    for (const std::string_view line : lines) {
        bytes.append(line).append("\r\n");
    }
    return bytes;
}

TEST(BackupFile, GroupsNeighbouringRowsOfOneKeyInTheAnsiCodePage) {
    const struct {
        std::vector<BackupRow> rows;
        std::vector<std::string_view> lines;
    } cases[] = {
        // A default value is written with an at.
        {{{"HKEY_CURRENT_USER", "Software\\Foo\\A", "C:\\a.exe"},
          {"HKEY_CURRENT_USER", "Software\\Foo\\B", "C:\\b.exe"},
          {"HKEY_CLASSES_ROOT", "foo\\shell\\open\\command\\", "\"C:\\foo.exe\" \"%1\""}},
         {"REGEDIT4", "", "[HKEY_CURRENT_USER\\Software\\Foo]", R"("A"="C:\\a.exe")",
          R"("B"="C:\\b.exe")", "", "[HKEY_CLASSES_ROOT\\foo\\shell\\open\\command]",
          R"(@="\"C:\\foo.exe\" \"%1\"")"}},
        // A key that comes back after another gets a second key line.
        {{{"HKEY_LOCAL_MACHINE", "A\\x", "1"},
          {"HKEY_LOCAL_MACHINE", "B\\y", "2"},
          {"HKEY_LOCAL_MACHINE", "A\\z", "3"}},
         {"REGEDIT4", "", "[HKEY_LOCAL_MACHINE\\A]", R"("x"="1")", "", "[HKEY_LOCAL_MACHINE\\B]",
          R"("y"="2")", "", "[HKEY_LOCAL_MACHINE\\A]", R"("z"="3")"}},
        {{}, {"REGEDIT4"}},
        // Key names are written as they stand.
        {{{"HKEY_USERS", "a\"b\\c\\d", "x"}},
         {"REGEDIT4", "", "[HKEY_USERS\\a\"b\\c]", R"("d"="x")"}},
        {{{"HKEY_CURRENT_USER", "Caf\xC3\xA9\\n\xC3\xA4me", "C:\\\xC3\xBC.exe"}},
         {"REGEDIT4", "", "[HKEY_CURRENT_USER\\Caf\xE9]", "\"n\xE4me\"=\"C:\\\\\xFC.exe\""}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(BackupFileBytes(c.rows, kAnsi), Lines(c.lines));
    }
}

TEST(BackupFile, EscapesBackslashesBeforeQuotesInNamesAndData) {
    EXPECT_EQ(BackupLines({{"HKEY_USERS", "K\\a\"b", "x"}}).back(), R"("a\"b"="x")");
    const struct {
        std::string_view text;
        std::string_view escaped;
    } cases[] = {
        {R"(a"b)", R"(a\"b)"},
        {R"(a\b)", R"(a\\b)"},
        {R"(\")", R"(\\\")"},
        {"", ""},
        {R"(\\server\share)", R"(\\\\server\\share)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(EscapeRegText(c.text), c.escaped) << c.text;
        EXPECT_EQ(BackupLines({{"HKEY_USERS", "K\\v", std::string(c.text)}}).back(),
                  std::string("\"v\"=\"").append(c.escaped).append("\""));
    }
}

TEST(BackupFile, LineBreaksNeverSplitALine) {
    const std::vector<BackupRow> rows = {
        {"HKEY_CURRENT_USER", "K\\v", "C:\\a.exe\r\n[HKEY_LOCAL_MACHINE\\Run]"},
        {"HKEY_CURRENT_USER", "K\r\n\\a\nme", "x"},
    };
    EXPECT_EQ(BackupLines(rows),
              (std::vector<std::string>{
                  "", "[HKEY_CURRENT_USER\\K]",
                  "\"v\"=hex(1):43,00,3a,00,5c,00,61,00,2e,00,65,00,78,00,65,00,0d,00,0a,00,5b,00,"
                  "48,00,4b,00,45,00,59,00,5f,00,4c,00,4f,00,43,00,41,00,4c,00,5f,00,4d,00,41,00,"
                  "43,00,48,00,49,00,4e,00,45,00,5c,00,52,00,75,00,6e,00,5d,00,00,00",
                  "", "[HKEY_CURRENT_USER\\K\\r\\n]", R"("a\nme"="x")"}));
    // Hex data is UTF-16: the file is written in the Unicode format.
    EXPECT_EQ(BackupFileBytes(rows, kAnsi).substr(0, 2), "\xFF\xFE");
}

TEST(BackupFile, TextOutsideTheCodePageMakesTheWholeFileUnicode) {
    const std::vector<BackupRow> rows = {
        {"HKEY_CURRENT_USER", "Software\\A\\x", "C:\\plain.exe"},
        {"HKEY_CURRENT_USER", "Software\\B\\\xE6\x97\xA5", "C:\\\xE6\x97\xA5\\\xC3\xA9.exe"},
    };
    const std::string bytes = BackupFileBytes(rows, kAnsi);
    ASSERT_GE(bytes.size(), 2u);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    std::u16string utf16;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        utf16.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                              static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    EXPECT_EQ(text::Utf16ToUtf8(utf16),
              Lines({"Windows Registry Editor Version 5.00", "", "[HKEY_CURRENT_USER\\Software\\A]",
                     R"("x"="C:\\plain.exe")", "", "[HKEY_CURRENT_USER\\Software\\B]",
                     "\"\xE6\x97\xA5\"=\"C:\\\\\xE6\x97\xA5\\\\\xC3\xA9.exe\""}));
}

TEST(BackupFile, NamesComeFromTheDateTextWithSlashesAndColonsReplaced) {
    EXPECT_EQ(BackupFileName("12/31/2013 11:59:59 PM"), "Backup (12-31-2013 11.59.59 PM).reg");
    EXPECT_EQ(BackupFileName("31.12.2013 23:59:59"), "Backup (31.12.2013 23.59.59).reg");
    EXPECT_EQ(BackupFileName("6/3/2013"), "Backup (6-3-2013).reg");
}

TEST(BackupFile, CreatesTheFolderOnceAndReplacesAFileOfTheSameName) {
    testing::MemoryFileSystem disk;
    disk.folders.insert("C:\\App");
    const std::vector<BackupRow> rows = {{"HKEY_USERS", "K\\v", "C:\\x"}};
    const std::string path = CreateBackupFile(disk, "C:\\App", "6/3/2013 4:05:06 PM", rows, kAnsi);
    EXPECT_EQ(path, "C:\\App\\RegBackups\\Backup (6-3-2013 4.05.06 PM).reg");
    EXPECT_TRUE(disk.folders.count("C:\\App\\RegBackups"));
    CreateBackupFile(disk, "C:\\App", "6/3/2013 4:05:06 PM", {}, kAnsi);
    EXPECT_EQ(disk.files.size(), 1u);
    EXPECT_EQ(disk.files[path], "REGEDIT4\r\n");
}

TEST(BackupFile, AFolderOrFileThatCannotBeWrittenIsARunTimeError) {
    testing::MemoryFileSystem disk;
    disk.can_create_folders = false;
    EXPECT_THROW(CreateBackupFile(disk, "C:\\App", "1/1/2020", {}, kAnsi), RunTimeError);
    EXPECT_TRUE(disk.files.empty());
    disk.can_create_folders = true;
    disk.folders.insert("C:\\App\\RegBackups");
    disk.locked.insert("C:\\App\\RegBackups\\Backup (1-1-2020).reg");
    EXPECT_THROW(CreateBackupFile(disk, "C:\\App", "1/1/2020", {}, kAnsi), RunTimeError);
}

TEST(BackupFile, CommandLinesQuoteThePathOnlyForTheRegistryEditor) {
    EXPECT_EQ(RestoreCommandLine("C:\\My App", "Backup (1).reg"),
              "regedit.exe /s \"C:\\My App\\RegBackups\\Backup (1).reg\"");
    EXPECT_EQ(ViewCommandLine("C:\\My App", "Backup (1).reg"),
              "notepad.exe C:\\My App\\RegBackups\\Backup (1).reg");
}

}  // namespace
}  // namespace regvex::backup
