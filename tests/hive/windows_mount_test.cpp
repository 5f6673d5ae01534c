// A Windows partition assembled from real hives, mounted as Windows mounts it.

#include <gtest/gtest.h>
#include <hivex.h>

#include <string>
#include <vector>

#include "hive/hive_file.h"
#include "offline/windows_layout.h"
#include "shared_hives.h"
#include "support/walk_comparison.h"
#include "text/utf8.h"

namespace regvex::offline {
namespace {

namespace fs = std::filesystem;

// A SOFTWARE hive of our own, written with hivex from the smallest real one: the profile
// list and one class.
void WriteSoftwareHive(const fs::path& from, const fs::path& to) {
    hive_h* h = hivex_open(from.c_str(), HIVEX_OPEN_WRITE);
    ASSERT_NE(h, nullptr);
    const auto child = [h](hive_node_h parent, const char* name) {
        return hivex_node_add_child(h, parent, name);
    };
    const auto set_text = [h](hive_node_h node, const char* name, hive_type type,
                              const std::string& text) {
        std::u16string units = text::Utf8ToUtf16(text);
        units.push_back(u'\0');
        std::string bytes;
        for (const char16_t unit : units) {
            bytes.push_back(static_cast<char>(unit & 0xFF));
            bytes.push_back(static_cast<char>(unit >> 8));
        }
        hive_set_value value{const_cast<char*>(name), type, bytes.size(), bytes.data()};
        hivex_node_set_value(h, node, &value, 0);
    };
    const hive_node_h root = hivex_root(h);
    hive_node_h list = child(child(child(child(root, "Microsoft"), "Windows NT"), "CurrentVersion"),
                             "ProfileList");
    const struct {
        const char* sid;
        const char* image_path;
    } profiles[] = {{"S-1-5-18", "%systemroot%\\system32\\config\\systemprofile"},
                    {"S-1-5-21-7-1000", "%SystemDrive%\\Users\\Ann"},
                    {"S-1-5-21-7-1001", "C:\\Users\\Bob"},
                    {"S-1-5-21-7-1002", "C:\\Users\\Gone"}};
    for (const auto& profile : profiles) {
        set_text(child(list, profile.sid), "ProfileImagePath", hive_t_REG_EXPAND_SZ,
                 profile.image_path);
    }
    set_text(child(child(root, "Classes"), ".vex"), "", hive_t_REG_SZ, "vexfile");
    ASSERT_EQ(hivex_commit(h, to.c_str(), 0), 0);
    hivex_close(h);
}

std::vector<std::string> Subkeys(Registry& registry, RootKeyHandle root, const std::string& path) {
    std::vector<std::string> names;
    ScopedKey key;
    if (ScopedKey::Open(registry, root, path, reg::kKeyRead, key) != reg::kSuccess) {
        return {"(cannot be opened)"};
    }
    std::string name;
    for (std::uint32_t i = 0; registry.EnumKey(key.get(), i, name) == reg::kSuccess; ++i) {
        names.push_back(name);
    }
    return names;
}

class WindowsMount : public ::testing::Test {
  protected:
    void SetUp() override {
        const fs::path minimal = testing::SharedHive("hivex-minimal");
        const fs::path system = testing::SharedHive("regipy-SYSTEM");
        const fs::path ann = testing::SharedHive("plaso-NTUSER.DAT");
        const fs::path ann_classes = testing::SharedHive("regipy-UsrClass.dat");
        const fs::path bob = testing::SharedHive("plaso-NTUSER-WIN7.DAT");
        if (minimal.empty() || system.empty() || ann.empty() || ann_classes.empty() ||
            bob.empty()) {
            GTEST_SKIP() << "the shared hives are missing (set REGVEX_SHARED_HIVES)";
        }
        // Names in other cases than Windows writes them, as a copy to Linux may leave them.
        root_ = testing::ScratchFolder("partition");
        const fs::path config = root_ / "windows" / "System32" / "CONFIG";
        fs::create_directories(config);
        fs::create_directories(root_ / "Users" / "Ann" / "AppData" / "Local" / "Microsoft" /
                               "Windows");
        fs::create_directories(root_ / "Users" / "bob");
        fs::copy_file(system, config / "SYSTEM");
        WriteSoftwareHive(minimal, config / "software");
        fs::copy_file(minimal, config / "DEFAULT");
        fs::copy_file(ann, root_ / "Users" / "Ann" / "NTUSER.DAT");
        fs::copy_file(ann_classes, root_ / "Users" / "Ann" / "AppData" / "Local" / "Microsoft" /
                                       "Windows" / "UsrClass.dat");
        fs::copy_file(bob, root_ / "Users" / "bob" / "ntuser.dat");
    }

    bool Mount(const std::string& user, WindowsSystem& system, std::string& error) {
        const HiveOpener open = [](const fs::path& file, std::string& why_not) {
            hive::OpenedHive opened = hive::OpenHiveFile(file, [](std::string_view) {});
            why_not = opened.error;
            return std::unique_ptr<Registry>(std::move(opened.registry));
        };
        return MountWindows(root_, user, open, system, error);
    }

    fs::path root_;
};

TEST_F(WindowsMount, PlacesEveryHiveWhereWindowsDoes) {
    WindowsSystem system;
    std::string error;
    ASSERT_TRUE(Mount("ANN", system, error)) << error;
    Registry& registry = system.registry;
    EXPECT_EQ(Subkeys(registry, kHkeyLocalMachine, ""),
              (std::vector<std::string>{"SOFTWARE", "SYSTEM"}));
    EXPECT_EQ(Subkeys(registry, kHkeyUsers, ""),
              (std::vector<std::string>{".DEFAULT", "S-1-5-21-7-1000", "S-1-5-21-7-1000_Classes",
                                        "S-1-5-21-7-1001"}));
    EXPECT_EQ(system.current_user, "Ann");
    // The current user is Ann's hive, the current control set the one Select names, the
    // classes Ann's over the machine's.
    EXPECT_EQ(Subkeys(registry, kHkeyCurrentUser, ""),
              Subkeys(registry, kHkeyUsers, "S-1-5-21-7-1000"));
    const std::vector<std::string> services =
        Subkeys(registry, kHkeyLocalMachine, "SYSTEM\\CurrentControlSet\\Services");
    EXPECT_GT(services.size(), 100u);
    EXPECT_EQ(services, Subkeys(registry, kHkeyLocalMachine, "SYSTEM\\ControlSet001\\Services"));
    const std::vector<std::string> classes = Subkeys(registry, kHkeyClassesRoot, "");
    EXPECT_NE(std::find(classes.begin(), classes.end(), ".vex"), classes.end());
    EXPECT_EQ(classes.size(), Subkeys(registry, kHkeyUsers, "S-1-5-21-7-1000_Classes").size() + 1);
    EXPECT_NE(Subkeys(registry, kHkeyCurrentConfig, ""),
              std::vector<std::string>{"(cannot be opened)"});
}

// The current user, the classes and the current control set are each reached through two
// roots or places: a search reading their values once shows what a full walk shows.
TEST_F(WindowsMount, ReadingEachStoredKeyOnceShowsWhatAFullWalkShows) {
    WindowsSystem system;
    std::string error;
    ASSERT_TRUE(Mount("ANN", system, error)) << error;
    // One request: the control set alone takes most of a minute in the checked build.
    const testing::WalkRequest request{kHkeyAll, "", 3, "C:\\"};
    const auto saving = testing::WalkOnce(system.registry, request, true, reg::kKeyRead);
    const auto full = testing::WalkOnce(system.registry, request, false, reg::kKeyRead);
    EXPECT_EQ(saving.lines, full.lines);
    EXPECT_LT(saving.value_reads, full.value_reads);
}

TEST_F(WindowsMount, AsksWhichUserWhenThereIsAChoiceAndNamesTheProfiles) {
    const struct {
        const char* user;
        const char* error;
    } cases[] = {
        {"", "Choose with --user NAME among: Ann, Bob"},
        {"Carol", "no profile \"Carol\""},
        {"bob", ""},
    };
    for (const auto& c : cases) {
        WindowsSystem system;
        std::string error;
        EXPECT_EQ(Mount(c.user, system, error), std::string(c.error).empty()) << c.user;
        EXPECT_NE(error.find(c.error), std::string::npos) << error;
    }
}

}  // namespace
}  // namespace regvex::offline
