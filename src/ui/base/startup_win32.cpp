#include "ui/base/startup_win32.h"

#include <commctrl.h>
#include <ole2.h>
#include <olectl.h>

namespace regvex::ui {

namespace {

constexpr std::uint32_t kWindowBackgroundColor = 0x80000005;

HWND TopOwner(HWND window) {
    HWND top = window;
    for (HWND owner = GetWindow(window, GW_OWNER); owner != nullptr;
         owner = GetWindow(owner, GW_OWNER)) {
        top = owner;
    }
    return top;
}

void SetIcon(HWND window, HWND top, const wchar_t* resource_name, bool set_on_owner,
             int width_metric, int height_metric, WPARAM which) {
    // Shared icons belong to the system and are never destroyed by the program.
    auto* icon = static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), resource_name, IMAGE_ICON,
                                               GetSystemMetrics(width_metric),
                                               GetSystemMetrics(height_metric), LR_SHARED));
    if (set_on_owner) {
        SendMessageW(top, WM_SETICON, which, reinterpret_cast<LPARAM>(icon));
    }
    SendMessageW(window, WM_SETICON, which, reinterpret_cast<LPARAM>(icon));
}

}  // namespace

void SetWindowIcon(HWND window, const wchar_t* resource_name, bool set_on_owner) {
    const HWND top = set_on_owner ? TopOwner(window) : window;
    SetIcon(window, top, resource_name, set_on_owner, SM_CXICON, SM_CYICON, ICON_BIG);
    SetIcon(window, top, resource_name, set_on_owner, SM_CXSMICON, SM_CYSMICON, ICON_SMALL);
}

bool InitCommonControlsSafe() {
    INITCOMMONCONTROLSEX controls{};
    controls.dwSize = sizeof(controls);
    controls.dwICC = ICC_USEREX_CLASSES;
    InitCommonControlsEx(&controls);
    return true;
}

std::int64_t TranslateSystemColor(std::uint32_t color, HPALETTE palette) {
    COLORREF rgb = 0;
    if (FAILED(OleTranslateColor(color, palette, &rgb))) {
        return -1;
    }
    return rgb;
}

ColorRef ThemeFromWindowBackground() {
    const std::int64_t color = TranslateSystemColor(kWindowBackgroundColor, nullptr);
    const auto red = static_cast<std::uint8_t>(color & 255);
    return Rgb(red, red, red);
}

}  // namespace regvex::ui
