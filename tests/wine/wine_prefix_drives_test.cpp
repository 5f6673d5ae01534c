#include <gtest/gtest.h>

#include "support/temp_folder.h"
#include "wine/wine_prefix.h"

namespace regvex::wine {
namespace {

namespace fs = std::filesystem;

TEST(WinePrefixDrives, AreTheLinksOfDosdevicesThatLeadToFolders) {
    testing::TempFolder prefix;
    fs::create_directories(prefix.path() / "drive_c" / "windows");
    fs::create_directories(prefix.path() / "dosdevices");
    fs::create_directory_symlink("../drive_c", prefix.path() / "dosdevices" / "c:");
    fs::create_directory_symlink("/", prefix.path() / "dosdevices" / "Z:");
    fs::create_directory_symlink("/no/such/folder", prefix.path() / "dosdevices" / "e:");
    fs::create_symlink("/dev/null", prefix.path() / "dosdevices" / "d::");
    fs::create_symlink("/dev/ttyS0", prefix.path() / "dosdevices" / "com1");

    const auto drives = WinePrefixDrives(prefix.path());
    ASSERT_EQ(drives.size(), 2u);
    EXPECT_EQ(drives[0].first, 'C');
    EXPECT_TRUE(fs::is_directory(drives[0].second / "windows"));
    EXPECT_EQ(drives[1].first, 'Z');
    EXPECT_EQ(fs::canonical(drives[1].second), fs::path("/"));
}

}  // namespace
}  // namespace regvex::wine
