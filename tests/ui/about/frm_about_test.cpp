#include "ui/about/frm_about.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "about_doubles.h"
#include "support/memory_controls.h"
#include "support/registry_fixtures.h"
#include "support/scripted_services.h"
#include "ui/base/program_version.h"

namespace regvex::ui::about {
namespace {

using testing::PutString;

constexpr AccessMask kAllAccess64 = reg::kKeyAllAccess | reg::kKeyWow64_64Key;
constexpr ColorRef kTheme = Rgb(212, 212, 212);
const std::string kRecordedPath =
    "C:\\Program Files\\Common Files\\Microsoft Shared\\MSInfo\\msinfo32.exe";

struct Rig {
    MemoryRegistry registry;
    testing::AccessRecordingRegistry recorded{registry};
    testing::SetOfFiles files;
    testing::RecordingProcesses launcher;
    testing::ScriptedDialogs dialogs;
    testing::RecordingShell shell;
    testing::RecordingAboutView view;
    testing::MemoryWindow window{"About MyApp"};
    testing::MemoryCaption lblTitle;
    testing::MemoryCaption lblVersion{"Version"};
    int main_window_calls = 0;
    frmAbout form{{window, lblTitle, lblVersion},
                  {view, recorded, kAllAccess64, files, launcher, dialogs, kTheme, shell,
                   [this] { ++main_window_calls; }}};

    void RecordPath(std::string_view path) {
        PutString(registry, kHkeyLocalMachine, kSysInfoKey, kSysInfoValue, path);
    }
    void RecordFolder(std::string_view folder) {
        PutString(registry, kHkeyLocalMachine, kSysInfoLocationKey, kSysInfoLocationValue, folder);
    }
};

TEST(frmAbout, LoadFillsTheCaptionsAndLaysTheBoxOut) {
    Rig rig;
    rig.form.Form_Load();
    EXPECT_EQ(rig.window.Caption(), "About Registry Vexlor");
    EXPECT_EQ(rig.lblTitle.Caption(), "Registry Vexlor");
    EXPECT_EQ(rig.lblVersion.Caption(),
              "Version " + std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor));
    // The link takes the labels' size only once the resizer has set it.
    EXPECT_EQ(rig.view.calls, (std::vector<std::string>{"icon", "resize", "link font"}));
}

struct SysInfoCase {
    const char* name;
    std::function<void(Rig&)> arrange;
    std::vector<std::string> started;
    bool unavailable;
};

class StartSysInfoTest : public ::testing::TestWithParam<SysInfoCase> {};

TEST_P(StartSysInfoTest, StartsTheToolOrSaysItIsUnavailable) {
    const SysInfoCase& c = GetParam();
    Rig rig;
    c.arrange(rig);
    rig.form.StartSysInfo();
    EXPECT_EQ(rig.launcher.started, c.started);
    EXPECT_TRUE(rig.launcher.waited.empty());
    if (!c.unavailable) {
        EXPECT_TRUE(rig.dialogs.shown.empty());
        return;
    }
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    const auto& shown = rig.dialogs.shown[0];
    EXPECT_EQ(shown.prompt, "System Information Is Unavailable At This Time");
    EXPECT_EQ(shown.style, mb::kOkOnly);
    EXPECT_EQ(shown.title, "Registry Vexlor");
    EXPECT_TRUE(shown.coloured);
    EXPECT_EQ(rig.dialogs.last_colors[1].color, kTheme);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, StartSysInfoTest,
    ::testing::Values(
        SysInfoCase{
            "RecordedPath", [](Rig& r) { r.RecordPath(kRecordedPath); }, {kRecordedPath}, false},
        SysInfoCase{"RecordedPathBeforeFolder",
                    [](Rig& r) {
                        r.RecordPath(kRecordedPath);
                        r.RecordFolder("C:\\Tools");
                        r.files.present.insert("C:\\Tools\\MSINFO32.EXE");
                    },
                    {kRecordedPath},
                    false},
        SysInfoCase{"FolderWithTheProgram",
                    [](Rig& r) {
                        r.RecordFolder("C:\\Tools");
                        r.files.present.insert("C:\\Tools\\MSINFO32.EXE");
                    },
                    {"C:\\Tools\\MSINFO32.EXE"},
                    false},
        SysInfoCase{
            "FolderWithoutTheProgram", [](Rig& r) { r.RecordFolder("C:\\Tools"); }, {}, true},
        SysInfoCase{"NothingRecorded", [](Rig&) {}, {}, true},
        // An ordinary user may not open the machine's keys with full rights.
        SysInfoCase{"RecordedPathLockedFallsBackToFolder",
                    [](Rig& r) {
                        r.RecordPath(kRecordedPath);
                        r.registry.DenyFullAccess(kHkeyLocalMachine, kSysInfoKey);
                        r.RecordFolder("C:\\Tools");
                        r.files.present.insert("C:\\Tools\\MSINFO32.EXE");
                    },
                    {"C:\\Tools\\MSINFO32.EXE"},
                    false},
        SysInfoCase{"BothLocked",
                    [](Rig& r) {
                        r.RecordPath(kRecordedPath);
                        r.RecordFolder("C:\\Tools");
                        r.files.present.insert("C:\\Tools\\MSINFO32.EXE");
                        r.registry.DenyFullAccess(kHkeyLocalMachine, kSysInfoKey);
                        r.registry.DenyFullAccess(kHkeyLocalMachine, kSysInfoLocationKey);
                    },
                    {},
                    true},
        // An error while reading ends the attempt: the folder is not tried.
        SysInfoCase{"UnreadablePathEndsTheAttempt",
                    [](Rig& r) {
                        testing::PutValue(r.registry, kHkeyLocalMachine, kSysInfoKey, kSysInfoValue,
                                          reg::kDword, std::vector<std::uint8_t>(8, 0xFF));
                        r.RecordFolder("C:\\Tools");
                        r.files.present.insert("C:\\Tools\\MSINFO32.EXE");
                    },
                    {},
                    true},
        SysInfoCase{"StartFails",
                    [](Rig& r) {
                        r.RecordPath(kRecordedPath);
                        r.launcher.can_start = false;
                    },
                    {kRecordedPath},
                    true}),
    [](const ::testing::TestParamInfo<SysInfoCase>& param_info) {
        return std::string(param_info.param.name);
    });

TEST(frmAbout, SysInfoButtonStartsTheToolWithTheProgramsFullRights) {
    Rig rig;
    rig.RecordFolder("C:\\Tools");
    rig.files.present.insert("C:\\Tools\\MSINFO32.EXE");
    rig.form.cmdSysInfo_Click();
    EXPECT_EQ(rig.launcher.started, std::vector<std::string>{"C:\\Tools\\MSINFO32.EXE"});
    EXPECT_EQ(rig.recorded.opened_with, (std::vector<AccessMask>{kAllAccess64, kAllAccess64}));
    EXPECT_EQ(rig.registry.OpenHandleCount(), 0u);
}

}  // namespace
}  // namespace regvex::ui::about
