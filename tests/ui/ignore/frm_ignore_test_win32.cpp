// The real ignore-list window under Wine: its controls and texts, and an entry going from
// the text box through "Add" and "Apply Changes" into the file.

#include "ui/ignore/frm_ignore_win32.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "support/scripted_services.h"
#include "text/ansi_code_page_win32.h"
#include "text/wide_text_win32.h"
#include "ui/base/disk_text_files.h"
#include "ui/base/win32_controls_win32.h"
#include "win32/test_support_win32.h"

namespace regvex::ui::ignore {
namespace {

int ScreenTwipsPerPixel() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return 1440 / dpi;
}

void PumpMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

class IgnoreWindowTest : public ::testing::Test {
  protected:
    IgnoreWindowTest() {
        state.program_folder = folder.path();
        state.theme = Rgb(212, 208, 200);
        // The window cannot be closed under its own message boxes.
        dialogs.on_show = [this](const auto&) {
            boxes_over_enabled_window += IsWindowEnabled(window->Handle()) ? 1 : 0;
        };
        owner.Reset(CreateWindowExW(0, L"STATIC", L"Main window stand-in", WS_OVERLAPPEDWINDOW, 40,
                                    40, 640, 480, nullptr, nullptr, GetModuleHandleW(nullptr),
                                    nullptr));
        window = std::make_unique<Win32IgnoreWindow>(Win32IgnoreWindow::Dependencies{
            dialogs, files, code_page, state, [this] { return owner.get(); },
            [this] { ++main_window_calls; }});
    }
    ~IgnoreWindowTest() override {
        window.reset();
        DeleteFileW(text::ToWide(IgnoreFile()).c_str());
    }

    // Shown and painted, as the program's message loop would leave it.
    void Show() {
        window->Show();
        for (int i = 0; i < 10; ++i) {
            Sleep(5);
            PumpMessages();
        }
    }
    std::string IgnoreFile() const { return folder.path() + "\\Ignore.txt"; }
    std::string FileBytes() { return files.Read(IgnoreFile()).value_or("<unreadable>"); }
    HWND Control(int id) const { return GetDlgItem(window->Handle(), id); }
    std::vector<std::string> ListItems() const {
        std::vector<std::string> items;
        const HWND list = Control(kIdLstIgnore);
        const auto count = static_cast<int>(SendMessageW(list, LB_GETCOUNT, 0, 0));
        for (int i = 0; i < count; ++i) {
            wchar_t item[512] = {};
            SendMessageW(list, LB_GETTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(item));
            items.push_back(text::FromWide(item));
        }
        return items;
    }
    void Type(const std::string& text) {
        SetWindowTextW(Control(kIdTxtString), text::ToWide(text).c_str());
    }
    void Click(int id) { SendMessageW(Control(id), BM_CLICK, 0, 0); }
    std::pair<DWORD, DWORD> Selection() const {
        DWORD start = 0;
        DWORD end = 0;
        SendMessageW(Control(kIdTxtString), EM_GETSEL, reinterpret_cast<WPARAM>(&start),
                     reinterpret_cast<LPARAM>(&end));
        return {start, end};
    }

    testing::TempFolder folder;
    testing::ScriptedDialogs dialogs;
    DiskTextFiles files;
    text::SystemAnsiCodePage code_page;
    ProgramState state;
    handles::UniqueWindow owner;
    int main_window_calls = 0;
    int boxes_over_enabled_window = 0;
    std::unique_ptr<Win32IgnoreWindow> window;
};

TEST_F(IgnoreWindowTest, LoadsHiddenWithItsControlsTextsAndMenuCreatingTheFile) {
    EXPECT_FALSE(window->IsLoaded());
    window->Form();
    ASSERT_TRUE(window->IsLoaded());
    const HWND form = window->Handle();
    EXPECT_FALSE(IsWindowVisible(form));
    EXPECT_EQ(GetWindow(form, GW_OWNER), owner.get());
    EXPECT_EQ(WindowTextOf(form), "Ignore List");
    EXPECT_EQ(FileBytes(), "");

    const struct {
        int id;
        const char* text;
    } texts[] = {
        {kIdFrame1, "Registry Vexlor Ignore List"},
        {kIdLabel1, "Enter Text To Ignore:"},
        {kIdTxtString, ""},
        {kIdCmdAdd, "Add"},
        {kIdLabel2,
         "Select any item from the list below and click the remove button to remove that item."},
        {kIdCmdRemove, "Remove"},
        {kIdCmdApply, "Apply Changes"},
    };
    for (const auto& t : texts) {
        ASSERT_NE(Control(t.id), nullptr) << t.text;
        EXPECT_EQ(WindowTextOf(Control(t.id)), t.text);
        LOGFONTW font{};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(Control(t.id), WM_GETFONT, 0, 0)),
                   sizeof(font), &font);
        EXPECT_STREQ(font.lfFaceName, L"Tahoma") << t.text;
    }

    const HMENU bar = GetMenu(form);
    wchar_t caption[64] = {};
    GetMenuStringW(bar, 0, caption, 64, MF_BYPOSITION);
    EXPECT_STREQ(caption, L"&File");
    const HMENU file = GetSubMenu(bar, 0);
    const struct {
        int id;
        const wchar_t* text;
    } items[] = {{kIdMnuAdd, L"&Add"}, {kIdMnuRemove, L"&Remove"}, {kIdMnuClose, L"&Close"}};
    for (const auto& item : items) {
        GetMenuStringW(file, static_cast<UINT>(item.id), caption, 64, MF_BYCOMMAND);
        EXPECT_STREQ(caption, item.text);
    }
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(IgnoreWindowTest, AnEntryTypedAndAddedIsWrittenByApplyChanges) {
    ASSERT_TRUE(files.Write(IgnoreFile(), "old\r\n\r\nsecond\r\n"));
    Show();
    ASSERT_TRUE(IsWindowVisible(window->Handle()));
    EXPECT_EQ(ListItems(), (std::vector<std::string>{"OLD", "SECOND"}));

    Type("c:\\program files\\oldapp");
    Click(kIdCmdAdd);
    EXPECT_TRUE(dialogs.shown.empty());
    EXPECT_EQ(ListItems(),
              (std::vector<std::string>{"OLD", "SECOND", "C:\\PROGRAM FILES\\OLDAPP"}));
    EXPECT_EQ(WindowTextOf(Control(kIdTxtString)), "");
    // The list scrolls sideways once an entry is wider than it.
    const HWND list = Control(kIdLstIgnore);
    EXPECT_EQ(GetWindowLongPtrW(list, GWL_STYLE) & WS_HSCROLL, 0);
    const std::string wide(120, 'W');
    Type(wide);
    Click(kIdCmdAdd);
    EXPECT_NE(GetWindowLongPtrW(list, GWL_STYLE) & WS_HSCROLL, 0);
    RECT client{};
    GetClientRect(list, &client);
    EXPECT_GT(SendMessageW(list, LB_GETHORIZONTALEXTENT, 0, 0), client.right);
    SendMessageW(list, LB_DELETESTRING, 3, 0);

    // Not written until applied.
    EXPECT_EQ(FileBytes(), "old\r\n\r\nsecond\r\n");
    Click(kIdCmdApply);
    EXPECT_EQ(FileBytes(), "OLD\r\nSECOND\r\nC:\\PROGRAM FILES\\OLDAPP\r\n");

    SendMessageW(Control(kIdLstIgnore), LB_SETCURSEL, 1, 0);
    Click(kIdCmdRemove);
    Click(kIdCmdApply);
    EXPECT_EQ(FileBytes(), "OLD\r\nC:\\PROGRAM FILES\\OLDAPP\r\n");
    EXPECT_TRUE(dialogs.shown.empty());

    // A file that cannot be written: the button shows the run-time error over the disabled
    // window, and the list keeps what was typed.
    {
        // Held open without sharing, as another program may hold it.
        const handles::UniqueHandle busy(CreateFileW(text::ToWide(IgnoreFile()).c_str(),
                                                     GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                                     FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(busy);
        Type("kept");
        Click(kIdCmdAdd);
        Click(kIdCmdApply);
    }
    EXPECT_EQ(dialogs.Prompts(),
              (std::vector<std::string>{"Run-time error '75':\n\nPath/File access error"}));
    EXPECT_EQ(boxes_over_enabled_window, 0);
    EXPECT_EQ(ListItems(), (std::vector<std::string>{"OLD", "C:\\PROGRAM FILES\\OLDAPP", "KEPT"}));
    EXPECT_EQ(FileBytes(), "OLD\r\nC:\\PROGRAM FILES\\OLDAPP\r\n");
    EXPECT_TRUE(IsWindowVisible(window->Handle()));
}

TEST_F(IgnoreWindowTest, TheFileIsInTheAnsiCodePage) {
    if (GetACP() != 1252) {
        GTEST_SKIP() << "the system's ANSI code page is " << GetACP();
    }
    Show();
    Type("caf\xC3\xA9");
    Click(kIdCmdAdd);
    Click(kIdCmdApply);
    EXPECT_EQ(FileBytes(), "CAF\xC9\r\n");
    window->Unload();
    window->Form();
    EXPECT_EQ(ListItems(), (std::vector<std::string>{"CAF\xC3\x89"}));
}

TEST_F(IgnoreWindowTest, RefusedTextsLeaveTheFocusAndSelectionInTheTextBox) {
    ASSERT_TRUE(files.Write(IgnoreFile(), "OLD\r\n"));
    Show();
    const HWND edit = Control(kIdTxtString);

    Type("x");
    Click(kIdCmdAdd);
    Type("Old");
    Click(kIdCmdAdd);
    EXPECT_EQ(dialogs.shown.size(), 2u);
    EXPECT_EQ(boxes_over_enabled_window, 0);
    EXPECT_TRUE(IsWindowEnabled(window->Handle()));
    EXPECT_EQ(GetFocus(), edit);
    EXPECT_EQ(Selection(), std::make_pair(DWORD{0}, DWORD{3}));

    Type("y");
    Click(kIdCmdAdd);
    EXPECT_EQ(GetFocus(), edit);
    EXPECT_EQ(Selection(), std::make_pair(DWORD{1}, DWORD{1}));
    EXPECT_EQ(ListItems(), (std::vector<std::string>{"OLD"}));
}

TEST_F(IgnoreWindowTest, MouseDownSelectsByTheFixedRowRuleOverTheListsOwn) {
    std::string bytes;
    for (int i = 0; i < 12; ++i) {
        bytes += "ENTRY " + std::to_string(i) + "\r\n";
    }
    ASSERT_TRUE(files.Write(IgnoreFile(), bytes));
    Show();
    const HWND list = Control(kIdLstIgnore);
    const auto row_height = static_cast<int>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
    ASSERT_GT(row_height, 0);
    // A point where the list's own rows and the rule's 180-twip rows disagree.
    const int twips_per_pixel = ScreenTwipsPerPixel();
    int y = 1;
    int expected = -1;
    for (; y < row_height * 10; ++y) {
        const int rule_row =
            static_cast<int>(std::nearbyint(static_cast<float>(y * twips_per_pixel) / 180.0f));
        if (rule_row >= 1 && rule_row - 1 != y / row_height) {
            expected = rule_row - 1;
            break;
        }
    }
    ASSERT_GE(expected, 0) << "rows of " << row_height << " pixels match the rule everywhere";
    SendMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, y));
    SendMessageW(list, WM_LBUTTONUP, 0, MAKELPARAM(20, y));
    EXPECT_EQ(SendMessageW(list, LB_GETCURSEL, 0, 0), expected) << "y " << y;
}

TEST_F(IgnoreWindowTest, ClosingUnloadsDiscardingEditsAndCallsTheMainWindow) {
    ASSERT_TRUE(files.Write(IgnoreFile(), "KEPT\r\n"));
    Show();
    Type("not applied");
    Click(kIdCmdAdd);
    const HWND first = window->Handle();
    SendMessageW(first, WM_CLOSE, 0, 0);
    EXPECT_FALSE(window->IsLoaded());
    EXPECT_FALSE(IsWindow(first));
    EXPECT_EQ(main_window_calls, 1);

    Show();
    EXPECT_EQ(ListItems(), (std::vector<std::string>{"KEPT"}));
    SendMessageW(window->Handle(), WM_COMMAND, MAKEWPARAM(kIdMnuClose, 0), 0);
    PumpMessages();
    EXPECT_FALSE(window->IsLoaded());
    EXPECT_EQ(main_window_calls, 2);

    window->Form();
    window->Unload();
    EXPECT_FALSE(window->IsLoaded());
    EXPECT_EQ(main_window_calls, 3);
    window->Unload();
    EXPECT_EQ(main_window_calls, 3);
    EXPECT_EQ(FileBytes(), "KEPT\r\n");
}

TEST_F(IgnoreWindowTest, TheListIsReachableForTheScanWithoutShowingTheWindow) {
    ASSERT_TRUE(files.Write(IgnoreFile(), "oldapp\r\nOLDAPP\r\n"));
    ListBox& list = window->lstIgnore();
    EXPECT_TRUE(window->IsLoaded());
    EXPECT_FALSE(IsWindowVisible(window->Handle()));
    ASSERT_EQ(list.ItemCount(), 1);
    EXPECT_EQ(list.Item(0), "OLDAPP");
}

}  // namespace
}  // namespace regvex::ui::ignore
