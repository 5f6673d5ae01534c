#include <gtest/gtest.h>

#include "ui/main_window_fakes.h"

namespace regvex::ui {
namespace {

using namespace regvex::testing;

TEST(MainWindowLoad, SetsCaptionsColumnsFontsAndTheSafeOption) {
    const struct {
        system::OsVersion version;
        bool fonts_set;
    } cases[] = {{{6, 1}, true}, {{10, 0}, true}, {{5, 1}, false}};
    for (const auto& c : cases) {
        MainWindowRig rig;
        rig.system.version = c.version;
        rig.main.Form_Load();
        const bool fonts_set = std::find(rig.view.calls.begin(), rig.view.calls.end(),
                                         "font Segoe UI") != rig.view.calls.end();
        EXPECT_EQ(fonts_set, c.fonts_set);
        EXPECT_EQ(rig.form.Caption(), "Registry Vexlor 1.0");
        EXPECT_EQ(rig.label21.Caption(), "Registry Vexlor 1.0");
        EXPECT_TRUE(rig.option2.Value());
        EXPECT_TRUE(rig.main.SafeScan());
        EXPECT_EQ(rig.view.calls.front(), "icon");
    }
}

TEST_F(MainWindowTest, LoadCreatesTheListColumnsAndTheTaskPane) {
    std::vector<std::string> errors;
    for (const auto& column : rig.errors.columns) {
        errors.push_back(column.caption + "|" + column.key + "|" + column.tooltip);
    }
    EXPECT_EQ(errors,
              (std::vector<std::string>{"Status|STATUS|Status of the Registry Value",
                                        "RootKey|ROOT|The Root Registry Key",
                                        "SubKey|SUB|The key under the root key.",
                                        "Value|VALUE|The actual Value of the registry entry"}));
    ASSERT_EQ(rig.backups.columns.size(), 3u);
    EXPECT_EQ(rig.backups.columns[2].tooltip, "The size of the backup file");

    std::vector<std::string> keys;
    for (const auto& group : rig.view.pane) {
        keys.push_back(group.caption);
        for (const auto& item : group.items) {
            keys.emplace_back(item.key);
        }
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"&Tasks", "SCAN", "CHECKALL", "UNCHECK", "DELETE",
                                              "RESTORE", "IGNORE", "&Info", "", "&Details",
                                              "VERSION", "COPY", "COMPANY", "ABOUT", "FACEBOOK1"}));
    EXPECT_EQ(rig.view.pane[2].items[2].text, "Dunmarch Software");
}

TEST(MainWindowLoad, ScalesToTheScreenByItsRatios) {
    const struct {
        ScreenMetrics screen;
        bool scaled;
        double rx, ry;
    } cases[] = {
        {{15, 15, 1280, 1024}, true, 1.25, 1024.0 / 768},
        {{15, 15, 1024, 768}, false, 0, 0},    // at load only a wider screen scales
        {{8, 8, 2048, 1536}, true, 0.5, 0.5},  // fine pixels: design over screen
        {{15, 15, 800, 600}, false, 0, 0},
    };
    for (const auto& c : cases) {
        MainWindowRig rig;
        rig.screen.metrics = c.screen;
        rig.main.Form_Load();
        ASSERT_EQ(rig.view.scales.size(), c.scaled ? 1u : 0u) << c.screen.width_pixels;
        if (c.scaled) {
            EXPECT_DOUBLE_EQ(rig.view.scales[0].rx, c.rx);
            EXPECT_DOUBLE_EQ(rig.view.scales[0].ry, c.ry);
            EXPECT_TRUE(rig.view.scales[0].size_window);
        }
    }
    // Around a scan, a screen as wide as the design scales too, laying out only.
    LoadedMainWindowRig rig;
    rig.main.cmdStartStop_Click();
    ASSERT_EQ(rig.view.scales.size(), 2u);
    EXPECT_DOUBLE_EQ(rig.view.scales[0].rx, 1.0);
    EXPECT_FALSE(rig.view.scales[0].size_window);
}

TEST_F(MainWindowTest, EachTaskKeyDoesWhatTheTaskPaneSays) {
    rig.errors.AddRow({"Invalid Entry", "HKEY_CURRENT_USER", "K\\a", "C:\\a.exe"});
    rig.errors.AddRow({"Invalid Entry", "HKEY_CURRENT_USER", "K\\b", "C:\\b.exe"});
    rig.view.calls.clear();

    rig.main.TaskPane_ItemClick(kScanTask);
    rig.main.TaskPane_ItemClick(kRestoreTask);
    rig.main.TaskPane_ItemClick(kAboutTask);
    EXPECT_EQ(rig.view.calls, (std::vector<std::string>{"front scan", "front backups", "about"}));
    EXPECT_EQ(rig.pump.pumps, 0);  // the scan task never starts a scan
    // The backups task rebuilds the list first, which finds none here.
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_EQ(rig.dialogs.shown[0].prompt, "There are no backups available at this time.");
    rig.dialogs.shown.clear();

    rig.main.TaskPane_ItemClick(kCheckAllTask);
    EXPECT_TRUE(rig.errors.Checked(0) && rig.errors.Checked(1));
    rig.main.TaskPane_ItemClick(kUncheckTask);
    EXPECT_FALSE(rig.errors.Checked(0) || rig.errors.Checked(1));
    rig.main.TaskPane_ItemClick(kDeleteTask);  // the fix, backing up nothing
    EXPECT_EQ(rig.disk.files.size(), 1u);
    rig.dialogs.shown.clear();

    rig.main.TaskPane_ItemClick(kLikeTask);
    EXPECT_EQ(rig.shell.urls.size(), 1u);

    rig.main.TaskPane_ItemClick(kIgnoreTask);
    EXPECT_EQ(rig.ignore.shows, 1);
    rig.state.bScanning = true;
    rig.main.TaskPane_ItemClick(kIgnoreTask);
    EXPECT_EQ(rig.ignore.shows, 1);
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_EQ(rig.dialogs.shown[0].prompt, "The ignore list cannot be viewed during scanning!");
    EXPECT_EQ(rig.dialogs.shown[0].style, mb::kCritical);
    EXPECT_EQ(rig.dialogs.shown[0].title, "Registry Vexlor");

    for (const std::string_view nothing : {kVersionTask, kCopyrightTask, kCompanyTask, kTasksGroup,
                                           std::string_view("scan"), std::string_view()}) {
        rig.main.TaskPane_ItemClick(nothing);
    }
    EXPECT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_EQ(rig.view.calls.size(), 3u);
}

TEST_F(MainWindowTest, HelpOpensTheFileBesideTheProgramOrSaysWhyNot) {
    rig.main.Image1_Click();
    rig.main.Label3_Click();
    rig.main.mnuHelp2_Click();
    EXPECT_EQ(rig.shell.help, std::vector<std::string>(3, "C:\\App\\regvexlor.chm"));
    EXPECT_TRUE(rig.dialogs.shown.empty());

    rig.shell.help_available = false;
    rig.main.mnuHelp2_Click();
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_NE(rig.dialogs.shown[0].prompt.find("regvexlor.chm"), std::string::npos);
}

TEST_F(MainWindowTest, ResizeLaysOutUnlessMinimised) {
    rig.view.calls.clear();
    rig.main.Form_Resize();
    rig.form.minimized = true;
    rig.main.Form_Resize();
    EXPECT_EQ(rig.view.calls, std::vector<std::string>{"layout"});
}

}  // namespace
}  // namespace regvex::ui
