// Fix and restore with the real system under Wine: the program's code scans a tree of
// hard texts, backs up and deletes its findings, and the real Registry Editor imports the
// backups again. Every value must come back exactly as it was, also when its texts are
// far longer than a list cell is usually read with, in the program's real window.

#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "backup/backup_file.h"
#include "engine/file_existence_win32.h"
#include "engine/win32_registry_win32.h"
#include "round_trip/round_trip_tree.h"
#include "system/process_win32.h"
#include "system/system_info_win32.h"
#include "text/ansi_code_page_win32.h"
#include "text/upper_case.h"
#include "ui/base/disk_text_files.h"
#include "ui/base/platform_services_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/ignore/frm_ignore.h"
#include "ui/ignore/frm_ignore_win32.h"
#include "ui/main_menus_win32.h"
#include "ui/main_window_fakes.h"
#include "ui/main_window_win32.h"
#include "win32/test_support_win32.h"

namespace regvex::testing {
namespace {

void DeleteTree(std::string_view path) {
    RegDeleteTreeW(HKEY_CURRENT_USER, text::ToWide(path).c_str());
    RegDeleteKeyW(HKEY_CURRENT_USER, text::ToWide(path).c_str());
}

// The main window's code in memory controls over the real registry, files and processes.
struct RealProgramRig : MainWindowControls {
    ScriptedDialogs dialogs;
    ui::Win32Clock clock;
    ScriptedPump pump;
    RecordingShell shell;
    FixedScreen screen;
    system::Win32SystemInfo system;
    Win32Registry registry;
    Win32FileExistence files;
    system::Win32FileSystemRedirection redirection;
    system::DiskFileSystem disk;
    system::Win32ProcessLauncher processes;
    text::SystemAnsiCodePage code_page;
    FakeIgnoreWindow ignore;
    RecordingView view;
    ui::ProgramState state;

    ui::frmMain main{Controls(), ServicesOf(*this), state};

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

// The program's real main window and ignore-list window over the real system; only the
// message boxes are answered by the test, and the Registry Editor is not shown.
struct RealWindowRig {
    RealWindowRig() {
        ui::InitCommonControlsSafe();
        state.masks = system::KeyMasksFor(system::Is64BitWindows(system));
        processes.on_run = [this](const std::string& command_line) {
            system_processes.RunAndWait(command_line);
        };
        window = std::make_unique<ui::MainWindow>(
            ui::MainWindowServices{
                dialogs, clock, pump, shell, screen, system, registry, files, redirection, disk,
                processes, code_page, ignore,
                [this] { ui::ignore::AddToIgnore_Click(window->results(), ignore, state); },
                [this] { ui::ignore::AddSubkeyToIgnore_Click(window->results(), ignore, state); }},
            state);
    }
    ~RealWindowRig() { window.reset(); }

    void Command(UINT id) const { SendMessageW(window->hwnd(), WM_COMMAND, id, 0); }

    ScriptedDialogs dialogs;
    ui::Win32Clock clock;
    ui::Win32MessagePump pump;
    RecordingShell shell;
    ui::Win32Screen screen;
    system::Win32SystemInfo system;
    Win32Registry registry;
    Win32FileExistence files;
    system::Win32FileSystemRedirection redirection;
    system::DiskFileSystem disk;
    system::Win32ProcessLauncher system_processes;
    RecordingProcesses processes;
    text::SystemAnsiCodePage code_page;
    ui::DiskTextFiles text_files;
    ui::ProgramState state;
    ui::ignore::Win32IgnoreWindow ignore{{dialogs, text_files, code_page, state,
                                          [this] { return window ? window->hwnd() : nullptr; },
                                          [] {}}};
    std::unique_ptr<ui::MainWindow> window;
};

std::string Below255(char level) {
    std::string name = std::string("Level ") + level + " ";
    while (name.size() < 240) {
        name += "of a deep key - ";
    }
    return name.substr(0, 240);
}

std::string ReadFileBytes(const std::string& path) {
    std::string bytes;
    if (FILE* file = _wfopen(text::ToWide(path).c_str(), L"rb")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof(buffer), file)) > 0;) {
            bytes.append(buffer, n);
        }
        std::fclose(file);
    }
    return bytes;
}

TEST(RoundTrip, LongTextsGoThroughTheRealWindowWhole) {
    TestKey root;
    TempFolder folder;
    // Five levels of 240 characters: a subkey path of over 1,200 characters.
    std::string key = root.path();
    for (const char level : {'1', '2', '3', '4', '5'}) {
        key += "\\" + Below255(level);
    }
    std::string data = "\"C:\\Gone";
    while (data.size() < 3986) {
        data += "\\folder \"quoted\" \\\\ twice";
    }
    data = data.substr(0, 3986) + "\\app.exe\" /run";
    ASSERT_EQ(data.size(), 4000u);
    const std::string subkey = key + "\\long value";
    ASSERT_GT(subkey.size(), 1100u);

    RealWindowRig rig;
    rig.state.program_folder = folder.path();
    {
        ScopedKey made;
        ASSERT_EQ(ScopedKey::Create(rig.registry, kHkeyCurrentUser, key, reg::kKeyAllAccess, made),
                  reg::kSuccess);
        ASSERT_EQ(rig.registry.SetValue(made.get(), "long value", reg::kSz, Bytes(data + '\0')),
                  reg::kSuccess);
    }
    const auto before = bench::Snapshot(rig.registry, root.path());
    ASSERT_EQ(before.size(), 1u);
    const std::string regedit_key =
        "Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit";
    {
        // The Registry Editor's own key, as it leaves it once it has run.
        UniqueHkey made;
        RegCreateKeyW(HKEY_CURRENT_USER, text::ToWide(regedit_key).c_str(), made.put());
    }

    ASSERT_TRUE(rig.window->Create(SW_SHOWNORMAL));
    rig.window->form().cmdStartStop_Click();
    ui::CheckListView& results = rig.window->results();
    int mine = -1;
    for (int row = 0; row < results.RowCount(); ++row) {
        if (results.Text(row, 2).rfind(root.path() + "\\", 0) == 0) {
            ASSERT_EQ(mine, -1) << "listed twice";
            mine = row;
        }
    }
    ASSERT_GE(mine, 0);
    EXPECT_EQ((std::vector<std::string>{results.Text(mine, 0), results.Text(mine, 1),
                                        results.Text(mine, 2), results.Text(mine, 3)}),
              (std::vector<std::string>{"Invalid Entry", "HKEY_CURRENT_USER", subkey, data}));

    // The context menu's commands read the selected row.
    const HWND list = GetDlgItem(rig.window->hwnd(), ui::kErrorsList);
    ListView_SetItemState(list, mine, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    rig.Command(ui::kMenuAddSubkeyToIgnore);
    rig.Command(ui::kMenuAddToIgnore);
    const std::string ignore_file = folder.path() + "\\Ignore.txt";
    EXPECT_EQ(ReadFileBytes(ignore_file),
              text::UpperCase(subkey) + "\r\n" + text::UpperCase(data) + "\r\n");
    rig.ignore.Unload();
    DeleteFileW(text::ToWide(ignore_file).c_str());
    rig.Command(ui::kMenuRegeditView);
    wchar_t last_key[4096] = {};
    DWORD size = sizeof(last_key);
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, text::ToWide(regedit_key).c_str(), L"LastKey",
                           RRF_RT_REG_SZ, nullptr, last_key, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(text::FromWide(last_key), "Computer\\HKEY_CURRENT_USER\\" + key);

    for (int row = 0; row < results.RowCount(); ++row) {
        results.SetChecked(row, row == mine);
    }
    rig.window->form().mnuFix_Click();
    EXPECT_EQ(results.Text(mine, 0), "Deleted");
    EXPECT_TRUE(bench::Snapshot(rig.registry, root.path()).empty());

    rig.window->form().LoadBackupList();
    ui::CheckListView& backups = rig.window->backups();
    ASSERT_EQ(backups.RowCount(), 1);
    backups.SetChecked(0, true);
    rig.window->form().Command1_Click();
    EXPECT_EQ(bench::Snapshot(rig.registry, root.path()), before);
    EXPECT_EQ(rig.processes.waited.size(), 1u);

    const std::string backups_folder = backup::BackupsFolder(folder.path());
    DeleteFileW(text::ToWide(backups_folder + "\\" + backups.Tag(0)).c_str());
    RemoveDirectoryW(text::ToWide(backups_folder).c_str());
}

}  // namespace
}  // namespace regvex::testing
