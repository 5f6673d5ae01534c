#include "backup/backup_catalogue.h"

#include <gtest/gtest.h>

#include "engine/run_time_error.h"
#include "support/system_doubles.h"
#include "text/concat.h"

namespace regvex::backup {
namespace {

TEST(BackupCatalogue, DateTextUndoesTheFileNaming) {
    const struct {
        std::string_view name;
        std::string_view date;
    } cases[] = {
        {"Backup (6-3-2013 4.05.06 PM).reg", "6/3/2013 4:05:06 PM"},
        {"Backup (12-31-2013 11.59.59 PM).reg", "12/31/2013 11:59:59 PM"},
        // A locale with dots in its dates comes back with colons.
        {"Backup (31.12.2013 23.59.59).reg", "31:12:2013 23:59:59"},
        // Put there by hand: no "(" keeps the whole name, less its last five characters.
        {"my-notes.v2.reg", "my/notes:v"},
        {"x.reg", ""},
        {"Backup (\xC3\xA9t\xC3\xA9).reg", "\xC3\xA9t\xC3\xA9"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(BackupDateText(c.name), c.date) << c.name;
    }
    EXPECT_THROW(BackupDateText(".reg"), RunTimeError);
}

TEST(BackupCatalogue, SizesBelowAKilobyteInBytesAboveInKilobytesWithTheLonePoint) {
    const struct {
        std::uint64_t size;
        std::string_view text;
    } cases[] = {
        {0, "0 Bytes"},    {512, "512 Bytes"}, {1023, "1023 Bytes"},  {1024, "1. KB"},
        {1536, "1.5 KB"},  {1100, "1.07 KB"},  {10240, "10. KB"},     {1029, "1. KB"},
        {1030, "1.01 KB"}, {2047, "2. KB"},    {1048576, "1024. KB"}, {12345678, "12056.33 KB"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(BackupSizeText(c.size), c.text) << c.size;
    }
}

TEST(BackupCatalogue, ListsOnlyRegFilesInCaseInsensitiveAlphabeticalOrder) {
    testing::MemoryFileSystem disk;
    const std::string folder = "C:\\App\\RegBackups";
    for (const char* name : {"Backup (9-30-2013 1.00.00 PM).reg", "notes.txt",
                             "Backup (10-1-2013 1.00.00 PM).reg", "b.REG", "a.reg.bak"}) {
        disk.files[text::Concat({folder, "\\", name})] = std::string(1536, 'x');
    }
    disk.files.emplace("C:\\App\\elsewhere.reg", "x");
    EXPECT_EQ(BackupFileNames(disk, folder),
              (std::vector<std::string>{"b.REG", "Backup (10-1-2013 1.00.00 PM).reg",
                                        "Backup (9-30-2013 1.00.00 PM).reg"}));
    std::vector<BackupEntry> entries;
    ListBackups(disk, folder, entries);
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[1].number_text, "Backup #2");
    EXPECT_EQ(entries[1].date_text, "10/1/2013 1:00:00 PM");
    EXPECT_EQ(entries[1].size_text, "1.5 KB");
    EXPECT_EQ(entries[1].file_name, "Backup (10-1-2013 1.00.00 PM).reg");
}

TEST(BackupCatalogue, AnUnreadableFileEndsTheListingAfterTheEntriesBeforeIt) {
    testing::MemoryFileSystem disk;
    disk.files.emplace("F\\a.reg", "1");
    disk.files.emplace("F\\b.reg", "2");
    disk.locked.insert("F\\b.reg");
    std::vector<BackupEntry> entries;
    EXPECT_THROW(ListBackups(disk, "F", entries), RunTimeError);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].size_text, "1 Bytes");
}

}  // namespace
}  // namespace regvex::backup
