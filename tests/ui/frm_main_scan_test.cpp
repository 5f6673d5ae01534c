#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "backup/reg_file_reader.h"
#include "cli/visible_text.h"
#include "ignore/ignore_list.h"
#include "support/cli_platform.h"
#include "support/registry_fixtures.h"
#include "ui/main_window_fakes.h"

namespace regvex::ui {
namespace {

using namespace regvex::testing;

using mb::kNo;
using mb::kYes;

class MainScanTest : public MainWindowTest {
  protected:
    void SetUp() override {
        // Each key below HKEY_CURRENT_USER\Software is one pump of the scan.
        PutString(rig.registry, kHkeyCurrentUser, "Software\\A", "app", "C:\\A\\app.exe");
        PutString(rig.registry, kHkeyCurrentUser, "Software\\B", "data", "C:\\B\\data.ini");
        PutString(rig.registry, kHkeyCurrentUser, "Software\\C", "there", "C:\\C\\there.dll");
        PutString(rig.registry, kHkeyCurrentUser, "Software\\D", "old", "c:\\OldApp\\x.dll");
        rig.files.present.insert("C:\\C\\THERE.DLL");
    }
};

TEST_F(MainScanTest, AFinishedScanListsTheMissingFilesAndReturnsToIdle) {
    rig.main.cmdStartStop_Click();

    EXPECT_EQ(rig.Rows(),
              (std::vector<std::vector<std::string>>{
                  {"Invalid Entry", "HKEY_CURRENT_USER", "Software\\A\\app", "C:\\A\\app.exe"},
                  {"Invalid Entry", "HKEY_CURRENT_USER", "Software\\B\\data", "C:\\B\\data.ini"},
                  {"Invalid Entry", "HKEY_CURRENT_USER", "Software\\D\\old", "c:\\OldApp\\x.dll"},
              }));
    EXPECT_EQ(rig.start_stop.Caption(), "Begin Scan");
    EXPECT_EQ(rig.form.Caption(), "Scan Complete (3 errors found)");
    EXPECT_EQ(rig.status.Caption(), "Search result:");
    EXPECT_EQ(rig.current_key.Caption(),
              "Registry Vexlor has finished searching and found the following errors below:");
    EXPECT_FALSE(rig.state.bScanning);
    EXPECT_EQ(rig.state.ScanDrive, "C:\\");
    // The ignore list was loaded for the scan and unloaded after it; the window came back.
    EXPECT_EQ(rig.ignore.loads, 1);
    EXPECT_FALSE(rig.ignore.loaded);
    EXPECT_EQ(rig.form.activations, 1);
    // The window drew at every pause and, last, showed what it had held back.
    EXPECT_EQ(rig.view.pauses, rig.pump.pumps);
    EXPECT_EQ(rig.view.calls.back(), "show held back");
}

TEST_F(MainScanTest, EveryStateShowsItsCaptionsWhileTheScanRuns) {
    struct Seen {
        std::string button, caption;
        bool scanning;
    };
    std::vector<Seen> seen;
    auto look = [&] {
        seen.push_back({rig.start_stop.Caption(), rig.form.Caption(), rig.state.bScanning});
    };
    rig.pump.at_pump[1] = look;  // the first key: nothing found yet
    rig.pump.at_pump[8] = look;  // later: findings listed
    look();                      // idle, after loading
    rig.main.cmdStartStop_Click();
    look();

    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[0].button, "Begin Scan");
    EXPECT_EQ(seen[0].caption, "Registry Vexlor 1.0");
    EXPECT_FALSE(seen[0].scanning);
    EXPECT_EQ(seen[1].button, "Stop Scan");
    EXPECT_EQ(seen[1].caption, "Scanning...");
    EXPECT_TRUE(seen[1].scanning);
    EXPECT_EQ(seen[2].button, "Stop Scan");
    EXPECT_EQ(seen[2].caption, "Registry Vexlor 1.0 (2 errors found)");
    EXPECT_TRUE(seen[2].scanning);
    EXPECT_EQ(seen[3].caption, "Scan Complete (3 errors found)");
}

TEST_F(MainScanTest, AStopClickedDuringTheScanEndsItAndKeepsTheRowsFound) {
    std::vector<bool> scanning_after_stop;
    std::string caption_after_stop;
    std::vector<std::string> view_calls_at_stop;
    rig.pump.at_pump[8] = [&] {
        rig.main.cmdStartStop_Click();  // handled inside the running click, as Windows would
        caption_after_stop = rig.form.Caption();
        view_calls_at_stop = rig.view.calls;
        scanning_after_stop.push_back(rig.state.bScanning);
    };
    rig.pump.at_pump[9] = [&] {
        scanning_after_stop.push_back(rig.state.bScanning);
        EXPECT_EQ(rig.start_stop.Caption(), "Stop Scan");  // until the search ends
    };
    rig.main.cmdStartStop_Click();

    EXPECT_EQ(caption_after_stop, "Exiting...");
    // "Exiting..." is drawn at once, not at the next pause of the scan.
    EXPECT_NE(std::find(view_calls_at_stop.begin(), view_calls_at_stop.end(), "show held back"),
              view_calls_at_stop.end());
    // The stop click clears the flag while the outer click still winds the scan down.
    EXPECT_EQ(scanning_after_stop, (std::vector<bool>{false, false}));
    EXPECT_EQ(rig.current_key.Caption(), "Scan proccess stopped by user.");
    EXPECT_EQ(rig.start_stop.Caption(), "Begin Scan");
    EXPECT_EQ(rig.form.Caption(), "Scan Complete (2 errors found)");
    EXPECT_EQ(rig.errors.RowCount(), 2);
    // Both the stop and the outer click unloaded the ignore list.
    EXPECT_EQ(rig.ignore.unloads, 2);
}

TEST_F(MainScanTest, TheMenuRunsTwoWholeScansAndEndsReadingStart) {
    rig.main.mnuStartStop_Click();
    int completed = 0;
    for (const std::string& text : rig.status.history) {
        completed += text == "Search result:" ? 1 : 0;
    }
    EXPECT_EQ(completed, 2);
    EXPECT_EQ(rig.menu_start_stop.Caption(), "&Start Scan");
    EXPECT_EQ(rig.menu_start_stop.history, (std::vector<std::string>{"&Stop Scan", "&Start Scan"}));
}

TEST_F(MainScanTest, DeepAndSafeScansListTheSameRows) {
    rig.option1.SetValue(true);
    rig.option2.SetValue(false);
    rig.main.cmdStartStop_Click();
    const auto deep = rig.Rows();
    EXPECT_FALSE(rig.main.SafeScan());

    rig.option1.SetValue(false);
    rig.option2.SetValue(true);
    rig.main.cmdStartStop_Click();
    EXPECT_EQ(rig.Rows(), deep);
    EXPECT_FALSE(rig.main.SafeScan());
    // data.ini is listed although its extension is not among the known ones.
    EXPECT_EQ(deep.size(), 3u);
}

TEST_F(MainScanTest, OnSixtyFourBitWindowsTheRedirectionIsOffForTheScan) {
    rig.system.architecture = system::kProcessorArchitectureAmd64;
    rig.pump.at_pump[8] = [&] { rig.main.cmdStartStop_Click(); };
    rig.main.cmdStartStop_Click();
    // The stop click switches it off again and leaves it to the outer click to revert.
    EXPECT_EQ(rig.redirection.calls,
              (std::vector<std::string>{"disable", "disable", "revert 171"}));

    rig.redirection.calls.clear();
    rig.system.version = {10, 0};  // compares as text below "5.1": taken for 32-bit
    rig.main.cmdStartStop_Click();
    EXPECT_TRUE(rig.redirection.calls.empty());
}

TEST_F(MainScanTest, ClosingFromTheTitleBarDuringAScanEndsTheProcessAtTheNextPause) {
    bool cancelled = true;
    rig.pump.at_pump[3] = [&] { cancelled = rig.main.Form_QueryUnload(kUnloadFromTitleBar); };
    EXPECT_THROW(rig.main.cmdStartStop_Click(), ProcessEnded);
    EXPECT_FALSE(cancelled);
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_EQ(rig.dialogs.shown[0].prompt, "Are you sure you want to quit?");
    EXPECT_EQ(rig.dialogs.shown[0].style, mb::kYesNo | mb::kQuestion);
    EXPECT_TRUE(rig.dialogs.shown[0].coloured);
    EXPECT_EQ(rig.pump.pumps, 3);
}

TEST_F(MainScanTest, QuittingAsksOnlyFromTheTitleBar) {
    rig.dialogs.answers = {kNo, kYes};
    EXPECT_TRUE(rig.main.Form_QueryUnload(kUnloadFromTitleBar));
    EXPECT_FALSE(rig.main.Form_QueryUnload(kUnloadFromTitleBar));
    EXPECT_FALSE(rig.main.Form_QueryUnload(kUnloadFromCode));
    EXPECT_EQ(rig.dialogs.shown.size(), 2u);
    rig.main.mnuExit_Click();
    EXPECT_EQ(rig.view.calls.back(), "close");
}

TEST_F(MainScanTest, AnErrorEndingTheSearchShowsItsNumber) {
    rig.main.cReg_SearchFinished(FinishReason{13});
    EXPECT_EQ(rig.current_key.Caption(), "An Error occured! Err number = 13");
    EXPECT_EQ(rig.start_stop.Caption(), "Begin Scan");
    EXPECT_EQ(rig.status.Caption(), "Search result:");
}

TEST_F(MainScanTest, AFindingOfAnotherKindIsListedWithoutAStatus) {
    rig.state.ScanDrive = "C:\\";
    rig.main.cReg_SearchFound("HKEY_CURRENT_USER", "K\\v", "C:\\gone.exe", FoundKind{7});
    ASSERT_EQ(rig.errors.RowCount(), 1);
    EXPECT_EQ(rig.errors.Text(0, 0), "");
    EXPECT_EQ(rig.errors.autosized, (std::vector<int>{1, 2, 3}));
}

TEST(OneVerdict, TheWindowListsWhatTheCommandLinePrints) {
    const std::string fixtures = std::string(REGVEX_FIXTURES_DIR) + "/cli";
    const std::string reg = fixtures + "/scan_examples.reg";
    const std::string ignore_file = fixtures + "/scan_examples.ignore";
    for (const bool with_ignore_list : {false, true}) {
        MainWindowRig rig;
        ASSERT_FALSE(backup::ImportRegFile(reg, rig.registry, rig.code_page));
        rig.files.present = {"C:\\PRESENT\\HERE.EXE", "C:\\PROGRAM FILES\\APP\\PRESENT.DLL"};
        std::vector<std::string> args{"scan", "--drive", "C:", "--registry", reg};
        if (with_ignore_list) {
            std::ifstream in(ignore_file, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(in), {}};
            rig.ignore.file_entries = regvex::ignore::LoadIgnoreEntries(bytes, rig.code_page);
            args.insert(args.end(), {"--ignore", ignore_file});
        }
        rig.main.Form_Load();
        rig.main.cmdStartStop_Click();
        std::string window;
        for (const auto& row : rig.Rows()) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                window += cli::VisibleText(row[i]) + (i + 1 < row.size() ? "\t" : "\n");
            }
        }

        // The command line on a system whose files are the window's.
        FakeCliPlatform platform;
        platform.files = &rig.files;
        const auto run = platform.Cli(args);
        ASSERT_EQ(run.exit_code, cli::kExitOk) << run.err;
        EXPECT_EQ(window, run.out) << "with the ignore list: " << with_ignore_list;
        EXPECT_EQ(rig.errors.RowCount(), with_ignore_list ? 4 : 12);
    }
}

TEST_F(MainScanTest, TheCurrentKeyIsRepaintedTenTimesASecondAndNotAfterMidnight) {
    const struct {
        float now;
        bool minimised;
        bool repainted;
    } steps[] = {
        {100.00f, false, true},   {100.05f, false, false}, {100.20f, false, true},
        {100.40f, true, false},   {100.45f, false, false},  // the minimised step moved it on
        {86399.95f, false, true}, {0.50f, false, false},   {3600.0f, false, false},
    };
    int step = 0;
    for (const auto& s : steps) {
        rig.clock.now = s.now;
        rig.form.minimized = s.minimised;
        const std::string text = "HKEY_CURRENT_USER\\K" + std::to_string(step++);
        rig.main.cReg_SearchKeyChanged(text);
        EXPECT_EQ(rig.current_key.Caption() == text, s.repainted) << s.now;
    }
}

TEST_F(MainScanTest, InfoExplainsTheSelectedRowAndAsksForARowWithoutOne) {
    // A value name may hold a backslash: the row remembers where its key ends.
    PutString(rig.registry, kHkeyCurrentUser, "Software\\E", "x\\y", "C:\\E\\e.exe");
    rig.files.present.insert("C:\\");
    rig.main.mnuInfo_Click();
    rig.main.cmdStartStop_Click();
    ASSERT_EQ(rig.errors.RowCount(), 4);
    rig.errors.selected = 0;
    rig.main.mnuInfo_Click();
    rig.errors.selected = 3;
    rig.main.lvwRegErrors_DblClick();

    EXPECT_EQ(rig.dialogs.Prompts(),
              (std::vector<std::string>{"Please select an item in the list of results first, then "
                                        "choose \"Info On This Item\" again."}));
    ASSERT_EQ(rig.view.infos.size(), 2u);
    const struct {
        const std::string& text;
        std::vector<std::string> lines;
    } cases[] = {
        {rig.view.infos[0],
         {"Key:         Software\\A\nValue:       app\nType:        REG_SZ\n",
          "C:\\A\\APP.EXE was not found;\n             the nearest folder that exists is C:\\\n"}},
        {rig.view.infos[1], {"Key:         Software\\E\nValue:       x\\y\nType:        REG_SZ\n"}},
    };
    for (const auto& c : cases) {
        for (const std::string& line : c.lines) {
            EXPECT_NE(c.text.find(line), std::string::npos) << line << "\n" << c.text;
        }
    }
    // The ignore list was read as the scan reads it, and put away again.
    EXPECT_FALSE(rig.ignore.loaded);
}

}  // namespace
}  // namespace regvex::ui
