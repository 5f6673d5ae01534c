// Fix and restore with the real system under Wine: the program's code scans a tree of
// hard texts, backs up and deletes its findings, and the real Registry Editor imports the
// backups again. Every value must come back exactly as it was.

#include <windows.h>

#include <gtest/gtest.h>

#include "backup/backup_file.h"
#include "engine/file_existence_win32.h"
#include "engine/win32_registry_win32.h"
#include "round_trip/round_trip_tree.h"
#include "system/process_win32.h"
#include "system/system_info_win32.h"
#include "test_support_win32.h"
#include "text/ansi_code_page_win32.h"
#include "ui/main_window_fakes.h"
#include "ui/platform_services_win32.h"

namespace regvex::testing {
namespace {

void DeleteTree(std::string_view path) {
    RegDeleteTreeW(HKEY_CURRENT_USER, text::ToWide(path).c_str());
    RegDeleteKeyW(HKEY_CURRENT_USER, text::ToWide(path).c_str());
}

struct RealProgramRig {
    MemoryWindow form;
    MemoryCaption frame1, frame2, start_stop, status, current_key, label21, menu_start_stop;
    MemoryOption option1, option2;
    MemoryDriveList drive{"c: [SYSTEM]"};
    MemoryListView errors, backups;
    MemoryProgressBar progress;

    ScriptedDialogs dialogs;
    ui::Win32Clock clock;
    ScriptedPump pump;
    RecordingShell shell;
    FixedScreen screen;
    Win32SystemInfo system;
    Win32Registry registry;
    Win32FileExistence files;
    Win32FileSystemRedirection redirection;
    DiskFileSystem disk;
    Win32ProcessLauncher processes;
    text::SystemAnsiCodePage code_page;
    FakeIgnoreWindow ignore;
    RecordingView view;
    ui::ProgramState state;

    ui::frmMain main{
        ui::MainControls{form, frame1, frame2, option1, option2, drive, start_stop, status,
                         current_key, errors, backups, progress, label21, menu_start_stop},
        ui::MainServices{dialogs, clock, pump, shell, screen, system, registry, files, redirection,
                         disk, processes, code_page, ignore, view},
        state};

    // Checks exactly the findings of HKEY_CURRENT_USER below `path`; answers how many.
    int CheckFindingsBelow(const std::string& path) {
        int checked = 0;
        for (int row = 0; row < errors.RowCount(); ++row) {
            const bool mine = errors.Text(row, 1) == "HKEY_CURRENT_USER" &&
                              errors.Text(row, 2).rfind(path + "\\", 0) == 0;
            errors.SetChecked(row, mine);
            checked += mine ? 1 : 0;
        }
        return checked;
    }
};

TEST(RoundTrip, FixedValuesComeBackExactlyThroughTheRegistryEditor) {
    constexpr std::size_t kValues = 140;
    const std::string root(bench::kRoundTripKey);
    DeleteTree(root);
    TempFolder folder;
    RealProgramRig rig;
    rig.state.program_folder = folder.path();
    const std::vector<bench::TreeValue> tree = bench::RoundTripTree(kValues);
    ASSERT_TRUE(bench::WriteTree(rig.registry, tree));
    const auto before = bench::Snapshot(rig.registry, root);
    ASSERT_EQ(before.size(), kValues);

    rig.main.Form_Load();
    rig.main.cmdStartStop_Click();
    const std::string backups = backup::BackupsFolder(folder.path());
    std::vector<std::string> written;
    // One backup of each kind: the Western texts as "REGEDIT4", the others in Unicode.
    for (const std::string_view part : {bench::kAnsiPart, bench::kUnicodePart}) {
        const std::string below = root + "\\" + std::string(part);
        EXPECT_EQ(rig.CheckFindingsBelow(below), static_cast<int>(kValues / 2)) << part;
        rig.main.mnuFix_Click();
        EXPECT_TRUE(bench::Snapshot(rig.registry, below).empty()) << part;
        // Backups are named to the second.
        Sleep(1100);
    }
    rig.main.LoadBackupList();
    ASSERT_EQ(rig.backups.RowCount(), 2);
    for (int row = 0; row < 2; ++row) {
        const std::string path = backups + "\\" + rig.backups.Tag(row);
        written.push_back(path);
        rig.backups.SetChecked(row, true);
    }
    std::string kinds;
    for (const std::string& path : written) {
        FILE* file = _wfopen(text::ToWide(path).c_str(), L"rb");
        ASSERT_NE(file, nullptr) << path;
        char head[2] = {};
        EXPECT_EQ(std::fread(head, 1, 2, file), 2u);
        std::fclose(file);
        kinds += head[0] == 'R' ? "ansi " : head[0] == '\xFF' ? "unicode " : "other ";
    }
    EXPECT_NE(kinds.find("ansi"), std::string::npos) << kinds;
    EXPECT_NE(kinds.find("unicode"), std::string::npos) << kinds;

    rig.dialogs.answers = {ui::mb::kYes, ui::mb::kOk, ui::mb::kYes, ui::mb::kOk};
    rig.main.Command1_Click();
    EXPECT_EQ(bench::Snapshot(rig.registry, root), before);

    for (const std::string& path : written) {
        DeleteFileW(text::ToWide(path).c_str());
    }
    RemoveDirectoryW(text::ToWide(backups).c_str());
    DeleteTree(root);
}

}  // namespace
}  // namespace regvex::testing
