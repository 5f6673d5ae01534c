// The search for a missing file with the real system under Wine: from a finding of the
// program's real window, the search window walks the real drive, the file it finds is
// used, and the value is written again with its type, after a backup that the backups
// page lists. Cancel changes nothing.

#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backup/backup_file.h"
#include "engine/file_existence_win32.h"
#include "engine/win32_registry_win32.h"
#include "system/process_win32.h"
#include "system/system_info_win32.h"
#include "text/ansi_code_page_win32.h"
#include "ui/base/platform_services_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/main_menus_win32.h"
#include "ui/main_window_fakes.h"
#include "ui/main_window_win32.h"
#include "ui/search/frm_search_win32.h"
#include "win32/test_support_win32.h"

namespace regvex::testing {
namespace {

using namespace std::string_literals;

// The real pump, and what the test does whenever the search lets messages through.
class ActingPump final : public ui::MessagePump {
  public:
    void DoEvents() override {
        ++pumps;
        if (act && act()) {
            act = nullptr;
        }
        real.DoEvents();
    }
    void EndProcess() override { real.EndProcess(); }
    // Answers true when done.
    std::function<bool()> act;
    int pumps = 0;
    ui::Win32MessagePump real;
};

// The program's real main window over the real system; the message boxes are answered
// by the test.
struct SearchRig {
    SearchRig() {
        ui::InitCommonControlsSafe();
        state.masks = system::KeyMasksFor(system::Is64BitWindows(system));
        state.program_folder = program.path();
        state.ScanDrive = "C:\\";
        window = std::make_unique<ui::MainWindow>(ui::MainWindowServices{dialogs,
                                                                         clock,
                                                                         pump,
                                                                         shell,
                                                                         screen,
                                                                         system,
                                                                         registry,
                                                                         files,
                                                                         redirection,
                                                                         disk,
                                                                         processes,
                                                                         code_page,
                                                                         ignore,
                                                                         {},
                                                                         {}},
                                                  state);
        EXPECT_TRUE(window->Create(SW_SHOWNORMAL));
    }
    ~SearchRig() { window.reset(); }

    static HWND SearchWindow() { return FindWindowW(ui::search::kSearchWindowClass, nullptr); }
    static void Click(int id) {
        const HWND search = SearchWindow();
        SendMessageW(search, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(search, id)));
    }
    std::string Data(std::uint32_t& type) {
        ScopedKey opened;
        ScopedKey::Open(registry, kHkeyCurrentUser, key.path(), reg::kKeyRead, opened);
        std::vector<std::uint8_t> data;
        registry.QueryValue(opened.get(), "Run", type, data);
        return std::string(data.begin(), data.end());
    }
    // The finding, as a scan lists it, selected.
    void AddFinding(const std::string& data) {
        ui::CheckListView& results = window->results();
        results.AddRow({"Invalid Entry", "HKEY_CURRENT_USER", key.path() + "\\Run",
                        data.substr(0, data.find('\0'))});
        const HWND list = GetDlgItem(window->hwnd(), ui::kErrorsList);
        ListView_SetItemState(list, 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    }

    TestKey key;
    TempFolder program;
    TempFolder drive_files;
    ScriptedDialogs dialogs;
    ui::Win32Clock clock;
    ActingPump pump;
    RecordingShell shell;
    ui::Win32Screen screen;
    system::Win32SystemInfo system;
    Win32Registry registry;
    Win32FileExistence files;
    system::Win32FileSystemRedirection redirection;
    system::DiskFileSystem disk;
    RecordingProcesses processes;
    text::SystemAnsiCodePage code_page;
    FakeIgnoreWindow ignore;
    ui::ProgramState state;
    std::unique_ptr<ui::MainWindow> window;
};

TEST(MissingFile, TheFileFoundOnTheDriveTakesThePlaceOfTheMissingOne) {
    SearchRig rig;
    const std::string name = UniqueName("regvex-tool") + ".exe";
    rig.drive_files.MakeFolder("Found");
    const std::string found = rig.drive_files.MakeFile("Found\\" + name);
    const std::string missing = rig.drive_files.path() + "\\Gone\\" + name;
    const std::string data = "\"" + missing + "\" /x,1\0second\0\0"s;
    {
        ScopedKey made;
        ASSERT_EQ(ScopedKey::Create(rig.registry, kHkeyCurrentUser, rig.key.path(),
                                    reg::kKeyAllAccess, made),
                  reg::kSuccess);
        ASSERT_EQ(rig.registry.SetValue(made.get(), "Run", reg::kMultiSz, Bytes(data)),
                  reg::kSuccess);
    }
    rig.AddFinding(data);

    // Cancel, once the search has begun: nothing changes.
    rig.pump.act = [] {
        SearchRig::Click(ui::search::kIdSearchCancel);
        return true;
    };
    SendMessageW(rig.window->hwnd(), WM_COMMAND, ui::kMenuSearch, 0);
    EXPECT_EQ(SearchRig::SearchWindow(), nullptr);
    std::uint32_t type = 0;
    EXPECT_EQ(rig.Data(type), data);
    EXPECT_FALSE(rig.disk.Exists(backup::BackupsFolder(rig.program.path())));
    EXPECT_EQ(rig.window->results().Text(0, 0), "Invalid Entry");

    // Again; the file is picked as soon as the walk of the drive has come upon it.
    rig.pump.act = [&] {
        const HWND list = GetDlgItem(SearchRig::SearchWindow(), ui::search::kIdSearchFound);
        if (ListView_GetItemCount(list) == 0) {
            return false;
        }
        wchar_t path[MAX_PATH] = {};
        ListView_GetItemText(list, 0, 0, path, MAX_PATH);
        EXPECT_EQ(text::FromWide(path), found);
        ListView_SetItemState(list, 0, LVIS_SELECTED, LVIS_SELECTED);
        SearchRig::Click(ui::search::kIdSearchUse);
        return true;
    };
    SendMessageW(rig.window->hwnd(), WM_COMMAND, ui::kMenuSearch, 0);
    EXPECT_EQ(SearchRig::SearchWindow(), nullptr);
    EXPECT_EQ(rig.Data(type), "\"" + found + "\" /x,1\0second\0\0"s);
    EXPECT_EQ(type, reg::kMultiSz);
    EXPECT_EQ(rig.window->results().Text(0, 0), "Repaired");
    EXPECT_EQ(rig.window->results().Text(0, 3), "\"" + found + "\" /x,1");
    ASSERT_EQ(rig.dialogs.shown.size(), 1u);
    EXPECT_EQ(rig.dialogs.shown[0].style, ui::mb::kInformation);

    // The backup is on the backups page, and restores the old path.
    rig.window->form().LoadBackupList();
    ui::CheckListView& backups = rig.window->backups();
    ASSERT_EQ(backups.RowCount(), 1);
    const std::string backup = backup::BackupsFolder(rig.program.path()) + "\\" + backups.Tag(0);
    EXPECT_TRUE(rig.disk.Exists(backup));
    DeleteFileW(text::ToWide(backup).c_str());
    RemoveDirectoryW(text::ToWide(backup::BackupsFolder(rig.program.path())).c_str());
}

}  // namespace
}  // namespace regvex::testing
