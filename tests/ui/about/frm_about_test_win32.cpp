// The real About box under Wine: it opens modal over its owner with its texts, routes its
// link and buttons to its code, and closes on OK, Enter, Escape and the end of the program.
// Every step is taken from a timer inside the box's own message loop, and a watchdog
// closes the box if a step fails to.

#include "ui/about/frm_about_win32.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "about_doubles.h"
#include "handles/unique_handle_win32.h"
#include "support/registry_fixtures.h"
#include "ui/base/program_version.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui::about {
namespace {

constexpr UINT kTickMs = 20;
constexpr int kWatchdogTicks = 500;  // ten seconds

LOGFONTW FontOf(HWND control) {
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)), sizeof(font),
               &font);
    return font;
}

HWND OwnedPopup(HWND owner) {
    struct Search {
        HWND owner;
        HWND found;
    } search{owner, nullptr};
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM lparam) -> BOOL {
            auto* s = reinterpret_cast<Search*>(lparam);
            if (GetWindow(window, GW_OWNER) == s->owner && IsWindowVisible(window)) {
                s->found = window;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

class AboutBoxTest : public ::testing::Test {
  protected:
    // One owner for every test: without a window manager, Wine waits two seconds for each
    // top-level window that goes.
    static void SetUpTestSuite() {
        owner_ = new handles::UniqueWindow(CreateWindowExW(
            0, L"STATIC", L"Main window stand-in", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 40, 40, 640,
            480, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr));
    }
    static void TearDownTestSuite() {
        delete owner_;
        owner_ = nullptr;
    }

    AboutBoxTest() : owner(*owner_) {
        current_ = this;
        dialogs.on_show = [this](const auto&) { box_enabled.push_back(IsWindowEnabled(box_)); };
    }
    ~AboutBoxTest() override { current_ = nullptr; }

    // Shows the box and, once it is up, takes `step` on it; returns when the box is gone.
    void ShowAndThen(std::function<void(HWND box)> step) {
        step_ = std::move(step);
        ticks_ = 0;
        stepped_ = false;
        const UINT_PTR timer = SetTimer(nullptr, 0, kTickMs, &AboutBoxTest::Tick);
        box.ShowModal(owner.get());
        KillTimer(nullptr, timer);
        EXPECT_TRUE(stepped_) << "the box never showed";
        EXPECT_LT(ticks_, kWatchdogTicks) << "the box did not close by itself";
    }

    static void PostClick(HWND button) { PostMessageW(button, BM_CLICK, 0, 0); }

    handles::UniqueWindow& owner;
    MemoryRegistry registry;
    testing::SetOfFiles files;
    testing::RecordingProcesses launcher;
    testing::ScriptedDialogs dialogs;
    std::vector<BOOL> box_enabled;  // when each message box came up
    testing::RecordingShell shell;
    int main_window_calls = 0;
    Win32AboutBox box{{dialogs, Rgb(212, 212, 212), registry,
                       reg::kKeyAllAccess | reg::kKeyWow64_64Key, files, launcher, shell,
                       [this] { ++main_window_calls; }}};

  private:
    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) {
        AboutBoxTest* self = current_;
        const HWND shown = OwnedPopup(self->owner.get());
        if (++self->ticks_ >= kWatchdogTicks && shown != nullptr) {
            PostMessageW(shown, WM_CLOSE, 0, 0);
            return;
        }
        if (shown == nullptr || self->stepped_) {
            return;
        }
        self->stepped_ = true;
        self->box_ = shown;
        self->step_(shown);
    }

    static inline handles::UniqueWindow* owner_ = nullptr;
    static inline AboutBoxTest* current_ = nullptr;
    std::function<void(HWND)> step_;
    HWND box_ = nullptr;
    int ticks_ = 0;
    bool stepped_ = false;
};

TEST_F(AboutBoxTest, OpensModalOverItsOwnerAndClosesOnOk) {
    std::string caption;
    std::vector<std::string> texts;
    bool owner_enabled = true;
    bool has_picture = false;
    bool has_window_icon = false;
    LOGFONTW title{};
    LOGFONTW link{};
    LOGFONTW label{};
    ShowAndThen([&](HWND shown) {
        caption = WindowTextOf(shown);
        for (int id : {kIdAboutTitle, kIdAboutVersion, kIdAboutDescription, kIdAboutLicence,
                       kIdAboutLink, kIdAboutSysInfo, kIdAboutOk}) {
            texts.push_back(WindowTextOf(GetDlgItem(shown, id)));
        }
        owner_enabled = IsWindowEnabled(owner.get()) != FALSE;
        has_picture = SendMessageW(GetDlgItem(shown, kIdAboutPicIcon), STM_GETICON, 0, 0) != 0;
        has_window_icon = SendMessageW(shown, WM_GETICON, ICON_BIG, 0) != 0;
        title = FontOf(GetDlgItem(shown, kIdAboutTitle));
        link = FontOf(GetDlgItem(shown, kIdAboutLink));
        label = FontOf(GetDlgItem(shown, kIdAboutDescription));
        PostClick(GetDlgItem(shown, kIdAboutOk));
    });

    EXPECT_EQ(caption, "About Registry Vexlor");
    EXPECT_EQ(texts,
              (std::vector<std::string>{
                  "Registry Vexlor",
                  "Version " + std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor),
                  "A program to scan your registry and remove invalid entries",
                  "Free software under the MIT License: see the file LICENSE",
                  "Registry Vexlor WebSite", "&System Info...", "OK"}));
    EXPECT_FALSE(owner_enabled);
    EXPECT_TRUE(has_picture);
    EXPECT_TRUE(has_window_icon);
    EXPECT_EQ(std::wstring(title.lfFaceName), L"Arial");
    EXPECT_LT(title.lfHeight, label.lfHeight);  // negative heights: the title is larger
    EXPECT_EQ(std::wstring(label.lfFaceName), L"Tahoma");
    EXPECT_TRUE(link.lfUnderline);
    EXPECT_EQ(link.lfHeight, label.lfHeight);

    EXPECT_EQ(main_window_calls, 1);
    EXPECT_TRUE(IsWindowEnabled(owner.get()));
    EXPECT_EQ(OwnedPopup(owner.get()), nullptr);
}

TEST_F(AboutBoxTest, EnterAndEscapeClose) {
    for (const WPARAM key : {VK_ESCAPE, VK_RETURN}) {
        ShowAndThen(
            [key](HWND shown) { PostMessageW(GetDlgItem(shown, kIdAboutOk), WM_KEYDOWN, key, 1); });
        EXPECT_EQ(OwnedPopup(owner.get()), nullptr) << key;
    }
    EXPECT_EQ(main_window_calls, 2);
}

TEST_F(AboutBoxTest, LinkAndSystemInfoReachTheCode) {
    testing::PutString(registry, kHkeyLocalMachine, kSysInfoKey, kSysInfoValue,
                       "C:\\windows\\system32\\msinfo32.exe");
    ShowAndThen([](HWND shown) {
        const HWND link = GetDlgItem(shown, kIdAboutLink);
        PostMessageW(link, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(2, 2));
        PostMessageW(link, WM_LBUTTONUP, 0, MAKELPARAM(2, 2));
        PostClick(GetDlgItem(shown, kIdAboutSysInfo));
        PostClick(GetDlgItem(shown, kIdAboutOk));
    });
    EXPECT_EQ(shell.urls, std::vector<std::string>{std::string(kProjectPage)});
    EXPECT_EQ(launcher.started, std::vector<std::string>{"C:\\windows\\system32\\msinfo32.exe"});
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(AboutBoxTest, UnavailableMessageKeepsTheBoxDisabled) {
    ShowAndThen([](HWND shown) {
        PostClick(GetDlgItem(shown, kIdAboutSysInfo));
        PostClick(GetDlgItem(shown, kIdAboutOk));
    });
    EXPECT_EQ(dialogs.Prompts(),
              std::vector<std::string>{"System Information Is Unavailable At This Time"});
    EXPECT_EQ(box_enabled, std::vector<BOOL>{FALSE});
    EXPECT_TRUE(launcher.started.empty());
}

TEST_F(AboutBoxTest, QuitClosesTheBoxAndReachesTheCallersLoop) {
    ShowAndThen([](HWND) { PostQuitMessage(3); });
    EXPECT_EQ(OwnedPopup(owner.get()), nullptr);
    EXPECT_EQ(main_window_calls, 0);
    EXPECT_TRUE(IsWindowEnabled(owner.get()));
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 3u);
}

}  // namespace
}  // namespace regvex::ui::about
