#include "ui/search/frm_search.h"

#include <gtest/gtest.h>

#include "support/registry_fixtures.h"
#include "ui/main_window_fakes.h"

namespace regvex::ui {
namespace {

using namespace regvex::testing;
using namespace std::string_literals;

// The search window's controls in memory over a small drive.
struct SearchRig {
    SearchRig() {
        for (const char* folder : {"C:\\Apps", "C:\\Apps\\New", "C:\\Zed"}) {
            disk.folders.insert(folder);
        }
        disk.files["C:\\Apps\\New\\tool.exe"] = std::string(1536, 'x');
        disk.files["C:\\Zed\\TOOL.EXE"] = "x";
        disk.modified["C:\\Apps\\New\\tool.exe"] = 86400;
        form.Form_Load();
    }

    MemoryWindow window;
    MemoryCaption missing, path, progress, stop, use, cancel;
    MemoryListView found;
    MemoryFileSystem disk;
    ScriptedPump pump;
    ScriptedDialogs dialogs;
    int closes = 0;
    std::vector<std::string> used;
    bool use_answer = true;
    search::frmSearch form{
        {window, missing, path, found, progress, stop, use, cancel},
        {disk, pump, dialogs, Rgb(1, 2, 3),
         [](std::int64_t t) { return "day " + std::to_string(t / 86400); }, [this] { ++closes; }},
        {"C:\\Apps\\Old\\tool.exe", [this](const std::string& p) {
             used.push_back(p);
             return use_answer;
         }}};
};

TEST(SearchWindow, ListsWhatItFindsAndStopsWhenAsked) {
    SearchRig rig;
    rig.form.RunSearch();
    EXPECT_EQ(rig.path.Caption(), "C:\\Apps\\Old\\tool.exe");
    ASSERT_EQ(rig.found.RowCount(), 2);
    EXPECT_EQ(rig.found.rows[0].texts,
              (std::vector<std::string>{"C:\\Apps\\New\\tool.exe", "1.5 KB", "day 1"}));
    EXPECT_EQ(rig.found.rows[1].texts,
              (std::vector<std::string>{"C:\\Zed\\TOOL.EXE", "1 Bytes", ""}));
    EXPECT_EQ(rig.progress.Caption(), "Search finished: 2 files found in 8 folders.");

    SearchRig stopped;
    stopped.pump.at_pump[2] = [&] { stopped.form.cmdStop_Click(); };
    stopped.form.RunSearch();
    EXPECT_EQ(stopped.found.RowCount(), 0);
    EXPECT_EQ(stopped.progress.Caption(), "Search stopped: 0 files found in 2 folders.");
}

TEST(SearchWindow, UsesThePickedFileAndClosesOnlyWhenItWasWritten) {
    SearchRig rig;
    rig.pump.at_pump[6] = [&] {
        rig.form.cmdUse_Click();  // nothing picked yet
        rig.found.selected = 0;
        rig.use_answer = false;
        rig.form.cmdUse_Click();  // refused: the window stays
        rig.use_answer = true;
        rig.form.cmdUse_Click();
    };
    rig.form.RunSearch();
    EXPECT_EQ(rig.dialogs.Prompts(),
              std::vector<std::string>{std::string(search::kPickFileMessage)});
    EXPECT_EQ(rig.used,
              (std::vector<std::string>{"C:\\Apps\\New\\tool.exe", "C:\\Apps\\New\\tool.exe"}));
    EXPECT_EQ(rig.closes, 1);
    EXPECT_FALSE(rig.form.searching());
    EXPECT_EQ(rig.pump.pumps, 6);  // the search ended with the choice
}

TEST(SearchFromResults, RefusesWhatCannotBeRepairedBeforeSearching) {
    const struct {
        const char* name;
        int selected;
        bool scanning;
        std::string value;
        const char* message;
    } cases[] = {
        {"nothing selected", -1, false, "C:\\Gone\\tool.exe",
         "Please select the item whose missing file you would like to search for."},
        {"scanning", 0, true, "C:\\Gone\\tool.exe",
         "The search for a missing file cannot be used during scanning!"},
        {"no path", 0, false, "C:\\Gone\\",
         "No file path can be read from the value of this item."},
        {"value gone", 1, false, "C:\\Gone\\tool.exe",
         "The value cannot be read (not found); it may have been removed since the scan. "
         "Nothing was changed."},
    };
    for (const auto& c : cases) {
        LoadedMainWindowRig rig;
        rig.state.ScanDrive = "C:\\";
        rig.state.bScanning = c.scanning;
        PutString(rig.registry, kHkeyCurrentUser, "Software\\App", "Run", c.value);
        rig.AddFinding("HKEY_CURRENT_USER", "Software\\App\\Run", c.value, false);
        rig.AddFinding("HKEY_CURRENT_USER", "Software\\App\\Gone", c.value, false);
        rig.errors.selected = c.selected;
        rig.main.mnuSearch_Click();
        EXPECT_EQ(rig.dialogs.Prompts(), std::vector<std::string>{c.message}) << c.name;
        EXPECT_TRUE(rig.view.searches.empty()) << c.name;
    }
}

TEST(SearchFromResults, ThePickedFileIsWrittenBackedUpAndTheRowMarked) {
    LoadedMainWindowRig rig;
    rig.state.ScanDrive = "C:\\";
    const std::string value = "\"c:\\gone\\Tool.exe\" /run,2";
    PutValue(rig.registry, kHkeyCurrentUser, "Software\\App", "Run", reg::kExpandSz,
             SzBytes(value));
    rig.AddFinding("HKEY_CURRENT_USER", "Software\\App\\Run", value, false);
    rig.errors.selected = 0;
    rig.main.mnuSearch_Click();
    ASSERT_EQ(rig.view.searches.size(), 1u);
    EXPECT_EQ(rig.view.searches[0].path, "c:\\gone\\Tool.exe");

    ASSERT_TRUE(rig.view.searches[0].use_file("C:\\Found\\tool.exe"));
    EXPECT_EQ(rig.Rows()[0],
              (std::vector<std::string>{"Repaired", "HKEY_CURRENT_USER", "Software\\App\\Run",
                                        "\"C:\\Found\\tool.exe\" /run,2"}));
    ScopedKey key;
    ScopedKey::Open(rig.registry, kHkeyCurrentUser, "Software\\App", reg::kKeyRead, key);
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    rig.registry.QueryValue(key.get(), "Run", type, data);
    EXPECT_EQ(type, reg::kExpandSz);
    EXPECT_EQ(std::string(data.begin(), data.end()), "\"C:\\Found\\tool.exe\" /run,2\0"s);
    rig.dialogs.answers = {};
    rig.main.LoadBackupList();
    ASSERT_EQ(rig.backups.RowCount(), 1);
    EXPECT_EQ(rig.disk.files.at("C:\\App\\RegBackups\\" + rig.backups.Tag(0)),
              "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\App]\r\n"
              "\"Run\"=\"\\\"c:\\\\gone\\\\Tool.exe\\\" /run,2\"\r\n");

    // The value names the found file now, no longer the missing one: refused.
    ASSERT_FALSE(rig.view.searches[0].use_file("C:\\Other\\tool.exe"));
    EXPECT_EQ(rig.Rows()[0][0], "Repaired");
}

}  // namespace
}  // namespace regvex::ui
