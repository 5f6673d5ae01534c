// Real message boxes under Wine: the first box after SetMessageBoxColors is painted in
// its colours, and the hook is gone with it. Each box is inspected from a timer inside
// its modal loop and then closed; one that stays up is cancelled after a few seconds.

#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"
#include "ui/dialogs/message_dialogs_win32.h"
#include "ui/dialogs/mod_dialogs_win32.h"

namespace regvex::ui::dialogs {
namespace {

constexpr ColorRef kTheme = Rgb(200, 40, 40);
constexpr ColorRef kBlack = Rgb(0, 0, 0);
constexpr COLORREF kUntouched = RGB(1, 2, 3);
// Other test programs may show boxes on the same display.
constexpr wchar_t kTitle[] = L"regvex_dialogs_win32_tests";
constexpr int kPatienceTicks = 250;  // 5 seconds of 20 ms ticks

using handles::UniqueBitmap;
using handles::UniqueDc;
using handles::UniqueWindow;

struct Painted {
    HBRUSH handle = nullptr;
    LOGBRUSH brush = {};
    COLORREF text = 0;
    int background_mode = 0;
};

// What the dialog answers to `message` for a fresh memory device context.
Painted Paint(HWND dialog, UINT message) {
    const UniqueDc dc(CreateCompatibleDC(nullptr));
    SetTextColor(dc.get(), kUntouched);
    SetBkMode(dc.get(), TRANSPARENT);
    Painted painted;
    painted.handle = reinterpret_cast<HBRUSH>(SendMessageW(
        dialog, message, reinterpret_cast<WPARAM>(dc.get()), reinterpret_cast<LPARAM>(dialog)));
    GetObjectW(painted.handle, sizeof painted.brush, &painted.brush);
    painted.text = GetTextColor(dc.get());
    painted.background_mode = GetBkMode(dc.get());
    return painted;
}

struct Visit {
    std::function<void(HWND)> inspect;
    int ticks = 0;
    bool inspected = false;
    bool timed_out = false;
};
Visit* current_visit = nullptr;

void CALLBACK OnTick(HWND, UINT, UINT_PTR, DWORD) {
    Visit& visit = *current_visit;
    const HWND dialog = FindWindowW(L"#32770", kTitle);
    if (dialog != nullptr && !visit.inspected) {
        visit.inspected = true;
        visit.inspect(dialog);
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    } else if (++visit.ticks == kPatienceTicks) {
        visit.timed_out = true;
        PostMessageW(dialog != nullptr ? dialog : GetActiveWindow(), WM_COMMAND, IDCANCEL, 0);
    }
}

int ShowBox() {
    return MessageBoxW(nullptr, L"Box", kTitle, MB_OK);
}

// Shows a box through `show`, hands it to `inspect` once it is up, presses OK and
// answers what `show` answered.
int WithBox(std::function<void(HWND)> inspect, const std::function<int()>& show = ShowBox) {
    Visit visit{std::move(inspect)};
    current_visit = &visit;
    const UINT_PTR timer = SetTimer(nullptr, 0, 20, &OnTick);
    const int answer = show();
    KillTimer(nullptr, timer);
    current_visit = nullptr;
    EXPECT_TRUE(visit.inspected);
    EXPECT_FALSE(visit.timed_out);
    return answer;
}

TEST(MessageBoxColors, ColoursTheNextBoxOnly) {
    const UniqueWindow owner(CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW, 0, 0, 200,
                                             100, nullptr, nullptr, nullptr, nullptr));
    Win32MessageDialogs dialogs([&] { return owner.get(); });
    const std::string title = text::FromWide(kTitle);
    HBRUSH coloured = nullptr;
    const int answer = WithBox(
        [&](HWND dialog) {
            EXPECT_EQ(GetWindow(dialog, GW_OWNER), owner.get());
            for (const UINT message : {WM_CTLCOLORDLG, WM_CTLCOLORSTATIC, WM_CTLCOLORBTN}) {
                const Painted painted = Paint(dialog, message);
                EXPECT_EQ(painted.brush.lbStyle, static_cast<UINT>(BS_SOLID)) << message;
                EXPECT_EQ(painted.brush.lbColor, kTheme) << message;
                EXPECT_EQ(painted.text, kBlack) << message;
                // The mode the module hands over is refused and the old one stays.
                EXPECT_EQ(painted.background_mode, TRANSPARENT) << message;
            }
            coloured = Paint(dialog, WM_CTLCOLORDLG).handle;
        },
        [&] { return ShowMessage(dialogs, kTheme, "Coloured", mb::kOkOnly, title); });
    EXPECT_EQ(answer, mb::kOk);
    EXPECT_EQ(HookHandle(), nullptr);

    WithBox([&](HWND dialog) {
        EXPECT_EQ(GetPropW(dialog, L"OrigWindowProc"), nullptr);
        const Painted painted = Paint(dialog, WM_CTLCOLORDLG);
        EXPECT_NE(painted.handle, coloured);
        EXPECT_NE(painted.brush.lbColor, kTheme);
    });
}

TEST(MessageBoxColors, ControlsTakeTheLatestColoursOfTheirKind) {
    const UniqueBitmap bitmap(CreateBitmap(8, 8, 1, 1, nullptr));
    const auto picture = DialogColor::Picture(reinterpret_cast<std::uintptr_t>(bitmap.get()));
    const DialogColor none = DialogColor::Missing();
    const ColorRef blue = Rgb(0, 0, 255), green = Rgb(0, 128, 0), grey = Rgb(9, 9, 9);
    struct Expected {
        UINT message;
        UINT style;
        COLORREF brush_color, text_color;
    };
    const struct {
        std::vector<std::array<DialogColor, 4>> calls;
        std::vector<Expected> painted;
    } cases[] = {
        {{{DialogColor::Color(blue), DialogColor::Color(kTheme), DialogColor::Color(green),
           DialogColor::Color(grey)}},
         {{WM_CTLCOLOREDIT, BS_SOLID, grey, green}, {WM_CTLCOLORSTATIC, BS_SOLID, kTheme, blue}}},
        // No text colour given: the device context keeps its own.
        {{{none, picture, none, none}}, {{WM_CTLCOLORDLG, BS_PATTERN, 0, kUntouched}}},
        // The hook of the first call stays and paints with the second call's colours.
        {{{none, DialogColor::Color(green), none, none},
          {DialogColor::Color(blue), DialogColor::Color(kTheme), none, none}},
         {{WM_CTLCOLORDLG, BS_SOLID, kTheme, blue}}},
    };
    for (const auto& c : cases) {
        std::set<HHOOK> hooks;
        for (const auto& colors : c.calls) {
            SetMessageBoxColors(colors[0], colors[1], colors[2], colors[3]);
            hooks.insert(HookHandle());
        }
        EXPECT_EQ(hooks.size(), 1u);
        EXPECT_EQ(hooks.count(nullptr), 0u);
        WithBox([&](HWND dialog) {
            for (const Expected& expected : c.painted) {
                const Painted painted = Paint(dialog, expected.message);
                EXPECT_EQ(painted.brush.lbStyle, expected.style) << expected.message;
                if (expected.style == BS_SOLID) {
                    EXPECT_EQ(painted.brush.lbColor, expected.brush_color) << expected.message;
                }
                EXPECT_EQ(painted.text, expected.text_color) << expected.message;
            }
        });
        EXPECT_EQ(HookHandle(), nullptr);
    }
}

TEST(MessageBoxColors, WithoutArgumentsHooksButLeavesThePlatformsLook) {
    SetMessageBoxColors();
    EXPECT_NE(HookHandle(), nullptr);
    WithBox([&](HWND dialog) {
        const auto previous = reinterpret_cast<WNDPROC>(GetPropW(dialog, L"OrigWindowProc"));
        ASSERT_NE(previous, nullptr);
        const UniqueDc dc(CreateCompatibleDC(nullptr));
        const LRESULT own =
            CallWindowProcW(previous, dialog, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc.get()),
                            reinterpret_cast<LPARAM>(dialog));
        EXPECT_EQ(Paint(dialog, WM_CTLCOLORSTATIC).handle, reinterpret_cast<HBRUSH>(own));
    });
    EXPECT_EQ(HookHandle(), nullptr);
}

}  // namespace
}  // namespace regvex::ui::dialogs
