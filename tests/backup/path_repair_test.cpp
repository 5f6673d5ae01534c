#include "backup/path_repair.h"

#include <gtest/gtest.h>

#include "backup/backup_file.h"
#include "backup/missing_file_search.h"
#include "engine/forwarding_registry.h"
#include "support/registry_fixtures.h"
#include "support/system_doubles.h"
#include "text/upper_case.h"

namespace regvex::backup {
namespace {

using namespace std::string_literals;
using testing::Bytes;
using testing::SzBytes;

std::vector<std::uint8_t> Data(std::string_view text) {
    return Bytes(text);
}

// Every data form the scan reads a path from: the path goes, everything around it stays,
// and the scan then reads exactly the new path.
TEST(PathRepair, ReplacesExactlyThePathTheScanRead) {
    const struct {
        std::uint32_t type;
        std::string data;
        std::string expected;  // with the path replaced by C:\New\X.exe
    } cases[] = {
        {reg::kSz, "C:\\Old\\app.exe\0"s, "C:\\New\\X.exe\0"s},
        {reg::kSz, "\"C:\\Old\\app.exe\" /start\0"s, "\"C:\\New\\X.exe\" /start\0"s},
        {reg::kSz, "C:\\Old\\app.exe,0\0"s, "C:\\New\\X.exe,0\0"s},
        {reg::kSz, "@C:\\Old\\res.dll,-101\0"s, "@C:\\New\\X.exe,-101\0"s},
        {reg::kSz, "\"C:\\Old\\v.exe\" \"%1\"\0"s, "\"C:\\New\\X.exe\" \"%1\"\0"s},
        {reg::kSz, "C:\\Old\\setup.exe %1\0"s, "C:\\New\\X.exe %1\0"s},
        {reg::kSz, "C:\\Old\\x.ini%1\0"s, "C:\\New\\X.exe%1\0"s},
        {reg::kSz, "rundll32.exe c:\\old\\Sh.DLL,Run\0"s, "rundll32.exe C:\\New\\X.exe,Run\0"s},
        {reg::kSz, "C:\\Old\\Sound.wav|2\0"s, "C:\\New\\X.exe|2\0"s},
        {reg::kSz, "C:\\Old\\app.exe"s, "C:\\New\\X.exe"s},  // no terminator, none added
        {reg::kSz, "C:\\Old\\a.exe\0junk after\0"s, "C:\\New\\X.exe\0junk after\0"s},
        // Letters that upper-case to fewer bytes, before and inside the path.
        {reg::kSz, "\xC4\xB1 C:\\\xC5\xBF\\a.exe\0"s, "\xC4\xB1 C:\\New\\X.exe\0"s},
        {reg::kSz, "\"C:\\\xC3\xA9t\xC3\xA9\\caf\xC3\xA9.exe\"\0"s, "\"C:\\New\\X.exe\"\0"s},
        {reg::kMultiSz, "C:\\Old\\a.dll\0C:\\Old\\b.dll\0\0"s,
         "C:\\New\\X.exe\0C:\\Old\\b.dll\0\0"s},
        {reg::kExpandSz, "C:\\Old\\a.dll,1\0"s, "C:\\New\\X.exe,1\0"s},
    };
    for (const auto& c : cases) {
        const std::optional<PathInData> found = FindPathInData(c.type, Data(c.data), "C:\\");
        ASSERT_TRUE(found) << c.data;
        const std::vector<std::uint8_t> replaced =
            ReplacePathInData(Data(c.data), found->span, "C:\\New\\X.exe");
        EXPECT_EQ(std::string(replaced.begin(), replaced.end()), c.expected) << c.data;
        const std::optional<PathInData> again = FindPathInData(c.type, replaced, "C:\\");
        ASSERT_TRUE(again) << c.data;
        EXPECT_EQ(again->path, "C:\\New\\X.exe") << c.data;
        EXPECT_EQ(text::UpperCase(found->path), ValidatePath(found->first_string, "C:\\"));
    }
}

TEST(PathRepair, FindsNoPathWhereTheScanReadsNone) {
    const struct {
        std::uint32_t type;
        std::string data;
    } cases[] = {
        {reg::kDword, "\x10\0\0\0"s},
        {reg::kBinary, "C:\\Old\\app.exe"s},
        {reg::kNone, "C:\\Old\\app.exe\0"s},
        {reg::kSz, "C:\\Old\\page.html\0"s},
        {reg::kSz, "D:\\Old\\app.exe\0"s},
        {reg::kSz, "C:\\Win\\rundll32.exe C:\\Win\\x.dll,Entry\0"s},
        {reg::kSz, "\0C:\\Old\\app.exe\0"s},  // only the first string is read
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(FindPathInData(c.type, Data(c.data), "C:\\")) << c.data;
    }
}

// Refuses the writes of one value.
class RefusingRegistry final : public ForwardingRegistry {
  public:
    using ForwardingRegistry::ForwardingRegistry;
    RegStatus SetValue(KeyHandle key, std::string_view name, std::uint32_t type,
                       std::span<const std::uint8_t> data) override {
        return refuse ? reg::kAccessDenied : ForwardingRegistry::SetValue(key, name, type, data);
    }
    bool refuse = false;
};

struct RepairRig {
    RepairRig() {
        testing::PutValue(memory, kHkeyCurrentUser, "Software\\App", "Run", reg::kMultiSz,
                          Bytes("\"C:\\Old\\app.exe\" /x\0second\0\0"s));
        disk.folders.insert("C:\\Prog");
    }
    PathRepairResult Repair() {
        const BackupTarget target{disk, "C:\\Prog", "6/3/2013 4:05:06 PM", code_page};
        return RepairFilePath(registry, reg::kKeyAllAccess, target, request);
    }
    std::string Data() {
        ScopedKey key;
        ScopedKey::Open(memory, kHkeyCurrentUser, "Software\\App", reg::kKeyQueryValue, key);
        std::uint32_t type = 0;
        std::vector<std::uint8_t> data;
        memory.QueryValue(key.get(), "Run", type, data);
        return std::to_string(type) + ":" + std::string(data.begin(), data.end());
    }

    MemoryRegistry memory;
    RefusingRegistry registry{memory};
    testing::MemoryFileSystem disk;
    text::Windows1252CodePage code_page;
    PathRepairRequest request{"HKEY_CURRENT_USER", "Software\\App\\Run", "C:\\", "C:\\OLD\\APP.EXE",
                              "C:\\New Place\\App.exe"};
    const std::string backup = "C:\\Prog\\RegBackups\\Backup (6-3-2013 4.05.06 PM).reg";
};

TEST(PathRepair, BacksUpThenWritesWithTheTypeKept) {
    RepairRig rig;
    const PathRepairResult result = rig.Repair();
    EXPECT_EQ(result.outcome, PathRepairOutcome::kRepaired);
    EXPECT_EQ(result.value_text, "\"C:\\New Place\\App.exe\" /x");
    EXPECT_EQ(rig.Data(), "7:\"C:\\New Place\\App.exe\" /x\0second\0\0"s);
    EXPECT_EQ(rig.disk.files.at(rig.backup),
              "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\App]\r\n"
              "\"Run\"=\"\\\"C:\\\\Old\\\\app.exe\\\" /x\"\r\n");
}

TEST(PathRepair, ARefusedRepairChangesNothingAndLeavesNoBackup) {
    const struct {
        const char* name;
        std::function<void(RepairRig&)> arrange;
        PathRepairOutcome outcome;
        bool backup_left;  // the one that was there before
    } cases[] = {
        {"value gone", [](RepairRig& r) { r.request.sub_key = "Software\\App\\Gone"; },
         PathRepairOutcome::kValueUnreadable, false},
        {"key gone", [](RepairRig& r) { r.request.sub_key = "Software\\Nope\\Run"; },
         PathRepairOutcome::kValueUnreadable, false},
        {"data changed", [](RepairRig& r) { r.request.old_path = "C:\\OLD\\OTHER.EXE"; },
         PathRepairOutcome::kPathChanged, false},
        {"key read-only",
         [](RepairRig& r) { r.memory.DenyFullAccess(kHkeyCurrentUser, "Software\\App"); },
         PathRepairOutcome::kNotWritable, false},
        {"write refused", [](RepairRig& r) { r.registry.refuse = true; },
         PathRepairOutcome::kWriteFailed, false},
        {"no backup folder", [](RepairRig& r) { r.disk.can_create_folders = false; },
         PathRepairOutcome::kBackupFailed, false},
        {"backup of the same second",
         [](RepairRig& r) {
             r.disk.folders.insert("C:\\Prog\\RegBackups");
             r.disk.files[r.backup] = "REGEDIT4\r\n";
         },
         PathRepairOutcome::kBackupNameTaken, true},
    };
    for (const auto& c : cases) {
        RepairRig rig;
        const std::string before = rig.Data();
        c.arrange(rig);
        const PathRepairResult result = rig.Repair();
        EXPECT_EQ(result.outcome, c.outcome) << c.name;
        EXPECT_FALSE(PathRepairRefusal(result).empty()) << c.name;
        EXPECT_EQ(rig.Data(), before) << c.name;
        EXPECT_EQ(rig.disk.files.count(rig.backup), c.backup_left ? 1u : 0u) << c.name;
        EXPECT_EQ(rig.memory.OpenHandleCount(), 0u) << c.name;
    }
}

TEST(MissingFileSearch, LooksUpThePathThenWalksTheDriveOneFolderAStep) {
    testing::MemoryFileSystem disk;
    for (const char* folder : {"C:\\A", "C:\\A\\B", "C:\\A\\Z", "C:\\Other", "C:\\Other\\Deep"}) {
        disk.folders.insert(folder);
    }
    for (const char* file : {"C:\\A\\TOOL.exe", "C:\\tool.exe", "C:\\Other\\Deep\\Tool.EXE",
                             "C:\\Other\\tool.exe.bak", "C:\\A\\Z\\tool.exe"}) {
        disk.files[file] = "1234";
    }
    disk.modified["C:\\A\\TOOL.exe"] = 1370275506;
    MissingFileSearch search(disk, "C:\\A\\B\\Gone\\tool.exe");
    std::vector<std::string> looked_in;
    while (search.Step()) {
        looked_in.push_back(search.folder());
    }
    EXPECT_EQ(looked_in,
              (std::vector<std::string>{"C:\\A\\B\\Gone", "C:\\A\\B", "C:\\A", "C:\\",
                                        // Then the drive, from the nearest folder outwards.
                                        "C:\\A\\B\\Gone", "C:\\A\\B", "C:\\A", "C:\\A\\Z", "C:\\",
                                        "C:\\Other", "C:\\Other\\Deep"}));
    std::vector<std::string> found;
    for (const FoundFile& file : search.found()) {
        found.push_back(file.path);
    }
    EXPECT_EQ(found, (std::vector<std::string>{"C:\\A\\TOOL.exe", "C:\\tool.exe",
                                               "C:\\A\\Z\\tool.exe", "C:\\Other\\Deep\\Tool.EXE"}));
    EXPECT_EQ(search.found()[0].size, 4u);
    EXPECT_EQ(search.found()[0].modified, 1370275506);
    EXPECT_EQ(search.phase(), MissingFileSearch::Phase::kDone);
}

}  // namespace
}  // namespace regvex::backup
