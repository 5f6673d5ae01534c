// The real "Info On This Item" under Wine: it opens modal over its owner with the
// explanation in a fixed-pitch font, Copy puts the whole text on the clipboard with CR LF
// line ends, and Escape closes it. The steps are taken from a timer inside the box's own
// message loop; a watchdog closes the box if a step fails to.

#include "ui/info/frm_info_win32.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "handles/unique_handle_win32.h"
#include "support/scripted_services.h"
#include "text/wide_text_win32.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui::info {
namespace {

constexpr UINT kTickMs = 20;
constexpr int kWatchdogTicks = 500;  // ten seconds
const std::string kExplanation = "Data:        \"C:\\App\\x.exe\" /y\n              ^^^^^^^^^^^^\n";

std::wstring ClipboardText(HWND owner) {
    std::wstring text;
    if (OpenClipboard(owner) == FALSE) {
        return L"(the clipboard could not be opened)";
    }
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT); data != nullptr) {
        if (const auto* chars = static_cast<const wchar_t*>(GlobalLock(data)); chars != nullptr) {
            text = chars;
            GlobalUnlock(data);
        }
    }
    CloseClipboard();
    return text;
}

struct Seen {
    std::string caption;
    std::string text;
    BYTE pitch = 0;
    bool owner_enabled = true;
    std::wstring copied;
    int ticks = 0;
    HWND box = nullptr;
};
Seen* seen = nullptr;
HWND owner_window = nullptr;

HWND ShownBox() {
    HWND found = nullptr;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM lparam) -> BOOL {
            if (GetWindow(window, GW_OWNER) == owner_window && IsWindowVisible(window)) {
                *reinterpret_cast<HWND*>(lparam) = window;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) {
    const HWND box = ShownBox();
    if (box == nullptr) {
        return;
    }
    if (++seen->ticks >= kWatchdogTicks) {
        PostMessageW(box, WM_CLOSE, 0, 0);
        return;
    }
    if (seen->box != nullptr) {
        return;
    }
    seen->box = box;
    seen->caption = WindowTextOf(box);
    const HWND text = GetDlgItem(box, kIdInfoText);
    seen->text = WindowTextOf(text);
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(text, WM_GETFONT, 0, 0)), sizeof(font), &font);
    seen->pitch = static_cast<BYTE>(font.lfPitchAndFamily & 0x03);
    seen->owner_enabled = IsWindowEnabled(owner_window) != FALSE;
    SendMessageW(GetDlgItem(box, kIdInfoCopy), BM_CLICK, 0, 0);
    seen->copied = ClipboardText(box);
    PostMessageW(box, WM_KEYDOWN, VK_ESCAPE, 0);
}

TEST(InfoBox, ShowsTheTextInFixedPitchCopiesItAllAndClosesOnEscape) {
    handles::UniqueWindow owner(
        CreateWindowExW(0, L"STATIC", L"Main window stand-in", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 40,
                        40, 640, 480, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr));
    owner_window = owner.get();
    Seen s;
    seen = &s;
    testing::ScriptedDialogs dialogs;
    int main_window_calls = 0;
    Win32InfoBox box({dialogs, Rgb(212, 212, 212), [&] { ++main_window_calls; }});
    const UINT_PTR timer = SetTimer(nullptr, 0, kTickMs, &Tick);
    box.ShowModal(owner.get(), kExplanation);
    KillTimer(nullptr, timer);

    ASSERT_NE(s.box, nullptr) << "the box never showed";
    EXPECT_LT(s.ticks, kWatchdogTicks) << "the box did not close on Escape";
    EXPECT_EQ(s.caption, "Info On This Item");
    EXPECT_EQ(s.pitch, FIXED_PITCH);
    EXPECT_FALSE(s.owner_enabled);
    const std::wstring crlf =
        text::ToWide("Data:        \"C:\\App\\x.exe\" /y\r\n              ^^^^^^^^^^^^\r\n");
    EXPECT_EQ(s.text, text::FromWide(crlf));
    EXPECT_EQ(s.copied, crlf);
    EXPECT_TRUE(dialogs.shown.empty());
    EXPECT_EQ(main_window_calls, 1);
    EXPECT_TRUE(IsWindowEnabled(owner.get()));
}

}  // namespace
}  // namespace regvex::ui::info
