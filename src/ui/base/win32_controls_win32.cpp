#include "ui/base/win32_controls_win32.h"

#include <commctrl.h>

#include <algorithm>

#include "text/wide_text_win32.h"

namespace regvex::ui {

std::string WindowTextOf(HWND window) {
    const int length = GetWindowTextLengthW(window);
    if (length <= 0) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    const int copied = GetWindowTextW(window, text.data(), length + 1);
    text.resize(static_cast<std::size_t>(copied > 0 ? copied : 0));
    return text::FromWide(text);
}

std::string MenuItemCaption(HMENU menu, UINT item, UINT flags) {
    const int length = GetMenuStringW(menu, item, nullptr, 0, flags);
    if (length <= 0) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    const int copied = GetMenuStringW(menu, item, text.data(), length + 1, flags);
    text.resize(static_cast<std::size_t>(copied > 0 ? copied : 0));
    return text::FromWide(text);
}

std::string WindowText::Caption() const {
    return WindowTextOf(window_);
}

void WindowText::SetCaption(std::string_view caption) {
    SetWindowTextW(window_, text::ToWide(caption).c_str());
}

bool FormWindow::IsMinimized() const {
    return IsIconic(text_.hwnd()) != FALSE;
}

void FormWindow::Activate() {
    SetForegroundWindow(text_.hwnd());
    SetActiveWindow(text_.hwnd());
}

std::string MenuItemText::Caption() const {
    return MenuItemCaption(menu_, item_,
                           static_cast<UINT>(by_position_ ? MF_BYPOSITION : MF_BYCOMMAND));
}

void MenuItemText::SetCaption(std::string_view caption) {
    std::wstring wide = text::ToWide(caption);
    MENUITEMINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = MIIM_STRING;
    info.dwTypeData = wide.data();
    SetMenuItemInfoW(menu_, item_, by_position_ ? TRUE : FALSE, &info);
    if (window_ != nullptr) {
        DrawMenuBar(window_);
    }
}

bool RadioButton::Value() const {
    return SendMessageW(window_, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void RadioButton::SetValue(bool selected) {
    SendMessageW(window_, BM_SETCHECK, selected ? BST_CHECKED : BST_UNCHECKED, 0);
}

void ProgressControl::SetMax(int max) {
    max_ = max;
    SendMessageW(window_, PBM_SETRANGE32, 0, max);
}

void ProgressControl::SetValue(int value) {
    value_ = value;
    SendMessageW(window_, PBM_SETPOS, static_cast<WPARAM>(std::clamp(value, 0, max_)), 0);
}

void DriveCombo::Fill() {
    SendMessageW(combo_, CB_RESETCONTENT, 0, 0);
    wchar_t windows[MAX_PATH] = {};
    GetSystemWindowsDirectoryW(windows, MAX_PATH);
    const wchar_t system_letter = windows[0] >= L'A' && windows[0] <= L'Z'
                                      ? static_cast<wchar_t>(windows[0] - L'A' + L'a')
                                      : windows[0];
    const DWORD drives = GetLogicalDrives();
    int selected = 0;
    for (int i = 0; i < 26; ++i) {
        if ((drives & (1u << i)) == 0) {
            continue;
        }
        const wchar_t letter = static_cast<wchar_t>(L'a' + i);
        std::wstring text{letter, L':'};
        const wchar_t root[] = {static_cast<wchar_t>(L'A' + i), L':', L'\\', L'\0'};
        const UINT type = GetDriveTypeW(root);
        // Asking a removable drive for its label can wait on the hardware.
        if (type != DRIVE_REMOVABLE && type != DRIVE_NO_ROOT_DIR) {
            wchar_t label[MAX_PATH + 1] = {};
            if (GetVolumeInformationW(root, label, MAX_PATH + 1, nullptr, nullptr, nullptr, nullptr,
                                      0) &&
                label[0] != L'\0') {
                text += L" [";
                text += label;
                text += L"]";
            }
        }
        const auto index =
            SendMessageW(combo_, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        if (letter == system_letter) {
            selected = static_cast<int>(index);
        }
    }
    SendMessageW(combo_, CB_SETCURSEL, static_cast<WPARAM>(selected), 0);
}

std::string DriveCombo::Drive() const {
    const auto index = SendMessageW(combo_, CB_GETCURSEL, 0, 0);
    if (index == CB_ERR) {
        return {};
    }
    const auto length = SendMessageW(combo_, CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    SendMessageW(combo_, CB_GETLBTEXT, static_cast<WPARAM>(index),
                 reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text::FromWide(text);
}

}  // namespace regvex::ui
