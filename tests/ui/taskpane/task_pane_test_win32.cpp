// The task pane as a real window under Wine: mouse and keys sent to it as Windows sends
// them, with the main window's own groups, and what it paints where.

#include <windows.h>

#include <commctrl.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "main_window_groups.h"
#include "text/wide_text_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/taskpane/task_pane_win32.h"

namespace regvex::ui::taskpane {
namespace {

using handles::UniqueBitmap;
using handles::UniqueDc;
using handles::UniqueFont;
using handles::UniqueWindow;

constexpr int kPaneId = 1001;

LPARAM PointParam(POINT p) {
    return MAKELPARAM(static_cast<WORD>(p.x), static_cast<WORD>(p.y));
}

POINT Centre(const RECT& r) {
    return {(r.left + r.right) / 2, (r.top + r.bottom) / 2};
}

// One top-level window for every test: Wine takes a second or two to show and to take
// away a top-level window, and nothing of a pane outlives it.
HWND SharedHost(int width, int height) {
    static UniqueWindow host;
    const DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
    RECT frame{0, 0, width, height};
    AdjustWindowRectEx(&frame, style, FALSE, 0);
    if (!host) {
        host.Reset(CreateWindowExW(0, L"STATIC", L"Task pane", style | WS_VISIBLE, 300, 60, 0, 0,
                                   nullptr, nullptr, GetModuleHandleW(nullptr), nullptr));
    }
    SetWindowPos(host.get(), nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                 SWP_NOMOVE | SWP_NOZORDER);
    return host.get();
}

// A pane that fills the shared window, with the main window's groups.
class PaneHost {
  public:
    explicit PaneHost(int width = 240, int height = 640, const wchar_t* face = L"Tahoma",
                      int pixel_height = 11) {
        font_.Reset(CreateFontW(-pixel_height, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE,
                                DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                DEFAULT_QUALITY, DEFAULT_PITCH, face));
        const RECT client{0, 0, width, height};
        created = pane.Create(SharedHost(width, height), kPaneId, client);
        SendMessageW(pane.hwnd(), WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
        pane.SetOnItemClick([this](std::string_view key) { clicks.emplace_back(key); });
        pane.SetGroups(testing::MainWindowGroups());
        UpdateWindow(pane.hwnd());
    }

    HWND window() const { return pane.hwnd(); }
    HFONT font() const { return font_.get(); }

    void Send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
        SendMessageW(window(), message, wparam, lparam);
    }
    void MoveMouse(POINT p) { Send(WM_MOUSEMOVE, 0, PointParam(p)); }
    void PressRelease(POINT down, POINT up) {
        MoveMouse(down);
        Send(WM_LBUTTONDOWN, MK_LBUTTON, PointParam(down));
        MoveMouse(up);
        Send(WM_LBUTTONUP, 0, PointParam(up));
    }
    void Click(POINT p) { PressRelease(p, p); }
    void Key(WPARAM key) {
        Send(WM_KEYDOWN, key, 1);
        Send(WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u));
    }

    bool created = false;
    std::vector<std::string> clicks;

  private:
    UniqueFont font_;

  public:
    TaskPane pane;  // after the font, which it uses until it goes
};

// Holds a key down in the thread's keyboard state, as GetKeyState sees it.
class HeldKey {
  public:
    explicit HeldKey(int key) : key_(key) { Set(0x80); }
    ~HeldKey() { Set(0); }
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

  private:
    void Set(BYTE state) {
        BYTE keys[256];
        GetKeyboardState(keys);
        keys[key_] = state;
        SetKeyboardState(keys);
    }
    int key_;
};

const char* const kLinkKeys[] = {"SCAN",    "CHECKALL", "UNCHECK", "DELETE", "RESTORE",  "IGNORE",
                                 "VERSION", "COPY",     "COMPANY", "ABOUT",  "FACEBOOK1"};

TEST(TaskPaneWindow, ClickingALinkReportsItsKey) {
    PaneHost host;
    ASSERT_TRUE(host.created);
    for (const char* key : kLinkKeys) {
        host.clicks.clear();
        const auto rect = host.pane.ItemRect(key);
        ASSERT_TRUE(rect.has_value()) << key;
        host.Click(Centre(*rect));
        EXPECT_EQ(host.clicks, std::vector<std::string>{key});
        // The icon is part of the link too.
        host.clicks.clear();
        host.Click({rect->left + 4, rect->top + 4});
        EXPECT_EQ(host.clicks, std::vector<std::string>{key}) << "on the icon";
    }
}

TEST(TaskPaneWindow, ClicksThatAreNotOnOneLinkDoNothing) {
    PaneHost host;
    const RECT scan = *host.pane.ItemRect("SCAN");
    const RECT check_all = *host.pane.ItemRect("CHECKALL");
    const RECT info = *host.pane.ItemRect(1, 0);
    RECT client{};
    GetClientRect(host.window(), &client);
    struct Case {
        const char* what;
        POINT down;
        POINT up;
    };
    const Case cases[] = {
        {"plain text", Centre(info), Centre(info)},
        {"beside a link's text",
         {scan.right + 10, Centre(scan).y},
         {scan.right + 10, Centre(scan).y}},
        {"released on another link", Centre(scan), Centre(check_all)},
        {"dragged off the link", Centre(scan), {client.right - 2, client.bottom - 2}},
        {"pressed off the link", {2, 2}, Centre(scan)},
    };
    for (const Case& c : cases) {
        host.PressRelease(c.down, c.up);
        EXPECT_TRUE(host.clicks.empty()) << c.what;
        host.clicks.clear();
    }
}

TEST(TaskPaneWindow, ItemsWithTooltipsHaveOneToolEach) {
    PaneHost host;
    std::map<std::wstring, std::string> expected;
    for (const TaskGroup& group : testing::MainWindowGroups()) {
        for (const TaskItem& item : group.items) {
            if (!item.tooltip.empty()) {
                expected.emplace(text::ToWide(item.tooltip), item.key);
            }
        }
    }
    ASSERT_NE(host.pane.tooltip(), nullptr);
    const auto count = SendMessageW(host.pane.tooltip(), TTM_GETTOOLCOUNT, 0, 0);
    ASSERT_EQ(count, static_cast<LRESULT>(expected.size()));
    std::map<std::wstring, std::string> found;
    for (int i = 0; i < count; ++i) {
        std::array<wchar_t, 512> text{};
        TTTOOLINFOW tool{};
        tool.cbSize = TTTOOLINFOW_V2_SIZE;
        tool.lpszText = text.data();
        ASSERT_TRUE(SendMessageW(host.pane.tooltip(), TTM_ENUMTOOLSW, static_cast<WPARAM>(i),
                                 reinterpret_cast<LPARAM>(&tool)));
        EXPECT_EQ(tool.hwnd, host.window());
        const auto match = expected.find(text.data());
        ASSERT_NE(match, expected.end()) << text::FromWide(text.data());
        found.insert(*match);
        // The tool covers the item, so the tip shows where the item is.
        const RECT item = *host.pane.ItemRect(match->second);
        EXPECT_TRUE(EqualRect(&tool.rect, &item)) << match->second;
    }
    EXPECT_EQ(found, expected);
}

struct KeyCase {
    const char* what;
    std::vector<std::pair<UINT, WPARAM>> messages;
    std::vector<std::string> clicks;
};

TEST(TaskPaneWindow, KeyboardMovesTheFocusAndFollowsLinks) {
    const KeyCase cases[] = {
        {"Tab, Enter", {{WM_KEYDOWN, VK_TAB}, {WM_KEYDOWN, VK_RETURN}}, {"SCAN"}},
        {"Tab twice, Space",
         {{WM_KEYDOWN, VK_TAB}, {WM_KEYDOWN, VK_TAB}, {WM_KEYDOWN, VK_SPACE}},
         {"CHECKALL"}},
        {"Down past the info text",
         {{WM_KEYDOWN, VK_DOWN},
          {WM_KEYDOWN, VK_DOWN},
          {WM_KEYDOWN, VK_DOWN},
          {WM_KEYDOWN, VK_DOWN},
          {WM_KEYDOWN, VK_DOWN},
          {WM_KEYDOWN, VK_DOWN},
          {WM_KEYDOWN, VK_DOWN},
          {WM_KEYDOWN, VK_RETURN}},
         {"VERSION"}},
        {"End, Up",
         {{WM_KEYDOWN, VK_END}, {WM_KEYDOWN, VK_UP}, {WM_KEYDOWN, VK_RETURN}},
         {"ABOUT"}},
        {"Tab wraps round",
         {{WM_KEYDOWN, VK_END}, {WM_KEYDOWN, VK_TAB}, {WM_KEYDOWN, VK_RETURN}},
         {"SCAN"}},
        {"Alt+D", {{WM_SYSCHAR, L'd'}, {WM_KEYDOWN, VK_RETURN}}, {"VERSION"}},
        {"D then T", {{WM_CHAR, L'D'}, {WM_CHAR, L't'}, {WM_KEYDOWN, VK_RETURN}}, {"SCAN"}},
        {"Alt+I: the info group has no link", {{WM_SYSCHAR, L'i'}, {WM_KEYDOWN, VK_RETURN}}, {}},
        {"Enter with nothing focused", {{WM_KEYDOWN, VK_RETURN}}, {}},
    };
    for (const KeyCase& c : cases) {
        PaneHost host;
        SetFocus(host.window());
        for (const auto& [message, key] : c.messages) {
            host.Send(message, key, 1);
        }
        EXPECT_EQ(host.clicks, c.clicks) << c.what;
    }
}

TEST(TaskPaneWindow, TabIsKeptWhileThereIsALinkToGoToAndShiftTabGoesBack) {
    PaneHost host;
    MSG tab{host.window(), WM_KEYDOWN, VK_TAB, 0, 0, {}};
    const auto wants_tab = [&] {
        return (SendMessageW(host.window(), WM_GETDLGCODE, VK_TAB, reinterpret_cast<LPARAM>(&tab)) &
                DLGC_WANTTAB) != 0;
    };
    SetFocus(host.window());
    EXPECT_TRUE(wants_tab());
    host.Key(VK_TAB);
    host.Key(VK_TAB);
    {
        const HeldKey shift(VK_SHIFT);
        host.Key(VK_TAB);
    }
    host.Key(VK_RETURN);
    EXPECT_EQ(host.clicks, std::vector<std::string>{"SCAN"});
    host.Key(VK_END);
    EXPECT_FALSE(wants_tab()) << "from the last link Tab leaves the pane";
    const HeldKey shift(VK_SHIFT);
    EXPECT_TRUE(wants_tab());
}

TEST(TaskPaneWindow, ParentCanHandAcceleratorsOver) {
    PaneHost host;
    EXPECT_TRUE(host.pane.HandleAccelerator(L'D'));
    EXPECT_EQ(GetFocus(), host.window());
    EXPECT_FALSE(host.pane.HandleAccelerator(L'x'));
    host.Key(VK_RETURN);
    EXPECT_EQ(host.clicks, std::vector<std::string>{"VERSION"});
}

TEST(TaskPaneWindow, ClickingACaptionBarFoldsAndUnfoldsItsGroup) {
    PaneHost host;
    const RECT header = *host.pane.HeaderRect("TASKS");
    const RECT scan = *host.pane.ItemRect("SCAN");
    const RECT version = *host.pane.ItemRect("VERSION");

    host.Click(Centre(header));
    EXPECT_TRUE(host.pane.IsGroupCollapsed("TASKS"));
    EXPECT_FALSE(host.pane.ItemRect("SCAN").has_value());
    EXPECT_LT(host.pane.ItemRect("VERSION")->top, version.top);
    // Nothing of the first link is left to click or to show a tip for.
    EXPECT_NE(host.pane.model().HitTest({Centre(scan).x, Centre(scan).y}).kind,
              PaneHit::Kind::kLink);
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    ASSERT_TRUE(
        SendMessageW(host.pane.tooltip(), TTM_ENUMTOOLSW, 0, reinterpret_cast<LPARAM>(&tool)));
    EXPECT_TRUE(IsRectEmpty(&tool.rect));

    // The chevron is part of the caption bar.
    host.Click({header.right - 8, Centre(header).y});
    EXPECT_FALSE(host.pane.IsGroupCollapsed("TASKS"));
    const RECT unfolded = *host.pane.ItemRect("VERSION");
    EXPECT_TRUE(EqualRect(&unfolded, &version));
    EXPECT_TRUE(host.clicks.empty()) << "folding is no task";
}

TEST(TaskPaneWindow, ScrollsOnlyWhenTheGroupsAreTallerThanThePane) {
    {
        PaneHost tall(240, 640);
        EXPECT_EQ(GetWindowLongPtrW(tall.window(), GWL_STYLE) & WS_VSCROLL, 0);
        RECT client{};
        GetClientRect(tall.window(), &client);
        EXPECT_EQ(client.right, 240) << "the groups have the whole width";
    }
    PaneHost host(240, 260);
    SCROLLINFO info{};
    info.cbSize = sizeof(info);
    info.fMask = SIF_ALL;
    ASSERT_TRUE(GetScrollInfo(host.window(), SB_VERT, &info));
    EXPECT_GT(info.nMax + 1, static_cast<int>(info.nPage));
    EXPECT_NE(GetWindowLongPtrW(host.window(), GWL_STYLE) & WS_VSCROLL, 0);

    RECT client{};
    GetClientRect(host.window(), &client);
    EXPECT_GT(host.pane.ItemRect("FACEBOOK1")->top, client.bottom);

    host.Send(WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-WHEEL_DELTA)), 0);
    const int after_wheel = host.pane.scroll_position();
    EXPECT_GT(after_wheel, 0);

    host.Send(WM_VSCROLL, SB_BOTTOM);
    EXPECT_GT(host.pane.scroll_position(), after_wheel);
    const RECT like = *host.pane.ItemRect("FACEBOOK1");
    EXPECT_LE(like.bottom, client.bottom);
    host.Click(Centre(like));
    EXPECT_EQ(host.clicks, std::vector<std::string>{"FACEBOOK1"});

    // Keyboard focus brings its link into view.
    host.Send(WM_VSCROLL, SB_TOP);
    SetFocus(host.window());
    host.Key(VK_END);
    const RECT shown = *host.pane.ItemRect("FACEBOOK1");
    EXPECT_GE(shown.top, 0);
    EXPECT_LE(shown.bottom, client.bottom);
}

TEST(TaskPaneWindow, TakesTheFontItIsGiven) {
    PaneHost host;
    EXPECT_EQ(reinterpret_cast<HFONT>(SendMessageW(host.window(), WM_GETFONT, 0, 0)), host.font());
    const RECT small_scan = *host.pane.ItemRect("SCAN");
    const RECT small_header = *host.pane.HeaderRect("INFO");
    const UniqueFont large(CreateFontW(-24, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE,
                                       DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                       DEFAULT_QUALITY, DEFAULT_PITCH, L"Segoe UI"));
    host.Send(WM_SETFONT, reinterpret_cast<WPARAM>(large.get()), TRUE);
    EXPECT_GT(host.pane.ItemRect("SCAN")->right - host.pane.ItemRect("SCAN")->left,
              small_scan.right - small_scan.left);
    EXPECT_GT(host.pane.ItemRect("SCAN")->bottom - host.pane.ItemRect("SCAN")->top,
              small_scan.bottom - small_scan.top);
    EXPECT_GT(host.pane.HeaderRect("INFO")->bottom - host.pane.HeaderRect("INFO")->top,
              small_header.bottom - small_header.top);
    // Back to the host's font before the large one goes.
    host.Send(WM_SETFONT, reinterpret_cast<WPARAM>(host.font()), FALSE);
}

TEST(TaskPaneWindow, HandCursorOverLinksAndCaptionBarsOnly) {
    PaneHost host;
    const HCURSOR hand = LoadCursorW(nullptr, IDC_HAND);
    const HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW);
    struct Case {
        const char* what;
        POINT point;
        HCURSOR cursor;
    };
    const Case cases[] = {
        {"link", Centre(*host.pane.ItemRect("DELETE")), hand},
        {"plain text", Centre(*host.pane.ItemRect(1, 0)), arrow},
        {"caption bar", Centre(*host.pane.HeaderRect("DETAILS")), hand},
        {"pane background", {2, 2}, arrow},
    };
    for (const Case& c : cases) {
        host.MoveMouse(c.point);
        host.Send(WM_SETCURSOR, reinterpret_cast<WPARAM>(host.window()),
                  MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        EXPECT_EQ(GetCursor(), c.cursor) << c.what;
    }
}

TEST(TaskPaneWindow, NewGroupsReplaceTheToolsEvenFromTheClickHandler) {
    PaneHost host;
    // The handler's pane drops the items of the click being handled.
    host.pane.SetOnItemClick([&](std::string_view key) {
        host.clicks.emplace_back(key);
        host.pane.SetGroups({{"&Only", "ONLY", {{"ONE", "One", "Tip", kIconInfo}}, false, false}});
    });
    host.Click(Centre(*host.pane.ItemRect("SCAN")));
    EXPECT_EQ(SendMessageW(host.pane.tooltip(), TTM_GETTOOLCOUNT, 0, 0), 1);
    host.Click(Centre(*host.pane.ItemRect("ONE")));
    EXPECT_EQ(host.clicks, (std::vector<std::string>{"SCAN", "ONE"}));
}

// What the pane put on the screen, in client coordinates: 0x00RRGGBB, top row first.
struct Picture {
    int width = 0;
    std::vector<std::uint32_t> pixels;
    std::uint32_t At(POINT p) const { return pixels[static_cast<std::size_t>(p.y * width + p.x)]; }
    // Whether anything but `ground` was drawn inside `r`.
    bool Marked(const RECT& r, std::uint32_t ground) const {
        for (LONG y = r.top; y < r.bottom; ++y) {
            for (LONG x = r.left; x < r.right; ++x) {
                if (At({x, y}) != ground) {
                    return true;
                }
            }
        }
        return false;
    }
};

Picture Capture(HWND window) {
    UpdateWindow(window);
    RECT client{};
    GetClientRect(window, &client);
    BITMAPINFO info{};
    info.bmiHeader = {
        sizeof(info.bmiHeader), client.right, -client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const UniqueBitmap bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const UniqueDc memory(CreateCompatibleDC(nullptr));
    {
        const SelectIn select(memory.get(), bitmap.get());
        const handles::WindowDc source = handles::GetWindowDc(window);
        BitBlt(memory.get(), 0, 0, client.right, client.bottom, source.get(), 0, 0, SRCCOPY);
    }
    const auto* first = static_cast<const std::uint32_t*>(bits);
    return {client.right, {first, first + client.right * client.bottom}};
}

TEST(TaskPaneWindow, PaintsEachPartWhereTheModelPlacesIt) {
    PaneHost host(240, 260);
    const RECT scan = *host.pane.ItemRect("SCAN");
    const RECT check_all = *host.pane.ItemRect("CHECKALL");
    const POINT beside_scan{scan.right + 8, Centre(scan).y};
    Picture shot = Capture(host.window());
    const std::uint32_t body = shot.At(beside_scan);
    EXPECT_EQ(shot.At({check_all.right + 8, Centre(check_all).y}), body) << "one body colour";
    EXPECT_TRUE(shot.Marked(scan, body)) << "the link is drawn";
    EXPECT_NE(shot.At(Centre(*host.pane.HeaderRect("TASKS"))), body) << "the caption bar";

    // Scrolled, the last link is drawn where it now is.
    host.Send(WM_VSCROLL, SB_BOTTOM);
    const RECT like = *host.pane.ItemRect("FACEBOOK1");
    shot = Capture(host.window());
    EXPECT_TRUE(shot.Marked(like, body));
}

}  // namespace
}  // namespace regvex::ui::taskpane
