// The program itself under Wine: its real main window scans a test tree and lists
// exactly the test tree's missing files; a Stop clicked while the scan runs ends it.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "engine/win32_registry_win32.h"
#include "ui/base/win32_controls_win32.h"
#include "ui/main_menus_win32.h"
#include "ui/program_win32.h"
#include "win32/test_support_win32.h"

namespace regvex::ui {
namespace {

using namespace std::string_literals;

class ProgramTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        program_ = new Program();
        ASSERT_TRUE(program_->Start(SW_SHOWNORMAL));
    }
    static void TearDownTestSuite() {
        delete program_;
        program_ = nullptr;
    }

    HWND Window() const { return program_->main_window().hwnd(); }
    HWND Item(int id) const { return GetDlgItem(Window(), id); }

    // The rows of the results that lie under this test's key.
    std::vector<std::vector<std::string>> RowsOfTestKey() {
        CheckListView& results = program_->main_window().results();
        std::vector<std::vector<std::string>> rows;
        for (int row = 0; row < results.RowCount(); ++row) {
            if (results.Text(row, 1) == "HKEY_CURRENT_USER" &&
                results.Text(row, 2).rfind(key_.path() + "\\", 0) == 0) {
                rows.push_back({results.Text(row, 0), results.Text(row, 2), results.Text(row, 3)});
            }
        }
        return rows;
    }

    void Put(const std::string& subkey, const std::string& name, const std::string& data) {
        ScopedKey key;
        ASSERT_EQ(ScopedKey::Create(registry_, kHkeyCurrentUser, key_.Below(subkey),
                                    reg::kKeyAllAccess, key),
                  reg::kSuccess);
        ASSERT_EQ(registry_.SetValue(key.get(), name, reg::kSz,
                                     std::vector<std::uint8_t>(data.begin(), data.end())),
                  reg::kSuccess);
    }

    void ExpectStoppedTexts() {
        EXPECT_EQ(WindowTextOf(Item(kCurrentKeyLabel)), "Scan proccess stopped by user.");
        EXPECT_EQ(WindowTextOf(Item(kStartStopButton)), "Begin Scan");
        const int rows = program_->main_window().results().RowCount();
        EXPECT_EQ(WindowTextOf(Window()),
                  "Scan Complete (" + std::to_string(rows) + " errors found)");
        EXPECT_FALSE(program_->state().bScanning);
    }

    static Program* program_;
    testing::TestKey key_;
    testing::TempFolder folder_;
    Win32Registry registry_;
};

Program* ProgramTest::program_ = nullptr;

TEST_F(ProgramTest, TheWindowListsExactlyTheMissingFilesOfTheTestTree) {
    const std::string f = folder_.path();
    folder_.MakeFile("present.exe");
    Put("App", "a-gone", "\"" + f + "\\gone.exe\" /run\0"s);
    Put("App", "b-present", f + "\\present.exe\0"s);
    Put("App", "c-page", f + "\\page.html\0"s);
    Put("App\\Deeper", "d-missing", f + "\\missing.dll,0\0"s);

    // The scan holds its texts back while it runs; they are all shown by the time the
    // click is done.
    program_->main_window().form().cmdStartStop_Click();

    const std::string k = key_.path();
    EXPECT_EQ(RowsOfTestKey(),
              (std::vector<std::vector<std::string>>{
                  {"Invalid Entry", k + "\\App\\a-gone", "\"" + f + "\\gone.exe\" /run"},
                  {"Invalid Entry", k + "\\App\\Deeper\\d-missing", f + "\\missing.dll,0"},
              }));
    const int rows = program_->main_window().results().RowCount();
    EXPECT_EQ(WindowTextOf(Window()), "Scan Complete (" + std::to_string(rows) + " errors found)");
    EXPECT_EQ(WindowTextOf(Item(kStartStopButton)), "Begin Scan");
    EXPECT_EQ(WindowTextOf(Item(kStatusLabel)), "Search result:");
    EXPECT_EQ(WindowTextOf(Item(kCurrentKeyLabel)),
              "Registry Vexlor has finished searching and found the following errors below:");
    EXPECT_FALSE(program_->state().bScanning);
}

TEST_F(ProgramTest, AStopClickedWhileTheScanRunsEndsItWithTheStopTexts) {
    // Clicked before the scan starts and while it walks: the pump looks at the queue only
    // every few milliseconds, yet the click is handled within the walk.
    for (const DWORD delay_ms : {0, 30}) {
        SCOPED_TRACE(delay_ms);
        const HWND button = Item(kStartStopButton);
        std::thread clicker([button, delay_ms] {
            Sleep(delay_ms);
            PostMessageW(button, BM_CLICK, 0, 0);
        });
        if (delay_ms == 0) {
            clicker.join();
        }
        program_->main_window().form().cmdStartStop_Click();
        if (clicker.joinable()) {
            clicker.join();
        }
        ExpectStoppedTexts();
    }
}

}  // namespace
}  // namespace regvex::ui
