#include "ui/base/form_resizer_win32.h"

#include <cmath>

namespace regvex::ui {

namespace {

bool IsComboBox(HWND window) {
    wchar_t name[32] = {};
    GetClassNameW(window, name, 32);
    return lstrcmpiW(name, L"ComboBox") == 0 || lstrcmpiW(name, L"ComboBoxEx32") == 0;
}

LONG Scale(LONG value, double ratio) {
    return static_cast<LONG>(std::lround(static_cast<double>(value) * ratio));
}

}  // namespace

void FormResizer::Capture(HWND form) {
    form_ = form;
    controls_.clear();
    RECT client{};
    GetClientRect(form, &client);
    design_client_ = {client.right, client.bottom};

    for (HWND child = GetWindow(form, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        Control control;
        control.window = child;
        GetWindowRect(child, &control.design);
        MapWindowPoints(nullptr, form, reinterpret_cast<POINT*>(&control.design), 2);
        control.font = reinterpret_cast<HFONT>(SendMessageW(child, WM_GETFONT, 0, 0));
        control.combo = IsComboBox(child);
        if (control.combo) {
            // A combo box's window reaches over its drop-down list: keep the height it
            // was created with, which GetWindowRect does not report.
            COMBOBOXINFO info{};
            info.cbSize = sizeof(info);
            if (GetComboBoxInfo(child, &info) && info.hwndList != nullptr) {
                RECT list{};
                GetWindowRect(info.hwndList, &list);
                control.design.bottom = control.design.top + (list.bottom - list.top) +
                                        (control.design.bottom - control.design.top);
            }
        }
        controls_.push_back(control);
    }
}

void FormResizer::SizeForm(double ratio_x, double ratio_y) {
    if (form_ == nullptr) {
        return;
    }
    RECT wanted{0, 0, Scale(design_client_.cx, ratio_x), Scale(design_client_.cy, ratio_y)};
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(form_, GWL_STYLE));
    const auto ex_style = static_cast<DWORD>(GetWindowLongPtrW(form_, GWL_EXSTYLE));
    AdjustWindowRectEx(&wanted, style, GetMenu(form_) != nullptr, ex_style);
    SetWindowPos(form_, nullptr, 0, 0, wanted.right - wanted.left, wanted.bottom - wanted.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Layout();
}

HFONT FormResizer::ScaledFont(HFONT design, double ratio) {
    LOGFONTW font{};
    if (GetObjectW(design != nullptr ? design : GetStockObject(DEFAULT_GUI_FONT), sizeof(font),
                   &font) == 0) {
        return design;
    }
    const LONG height = Scale(font.lfHeight, ratio);
    if (height == font.lfHeight) {
        return design;
    }
    auto& slot = fonts_[{design, height}];
    if (!slot) {
        font.lfHeight = height;
        slot.Reset(CreateFontIndirectW(&font));
    }
    return slot.get();
}

void FormResizer::Layout() {
    if (form_ == nullptr || design_client_.cx <= 0 || design_client_.cy <= 0) {
        return;
    }
    RECT client{};
    GetClientRect(form_, &client);
    if (client.right <= 0 || client.bottom <= 0) {
        return;  // minimised
    }
    const double ratio_x = static_cast<double>(client.right) / design_client_.cx;
    const double ratio_y = static_cast<double>(client.bottom) / design_client_.cy;
    const double ratio_font = (ratio_x + ratio_y) / 2.0;

    HDWP positions = BeginDeferWindowPos(static_cast<int>(controls_.size()));
    for (const Control& control : controls_) {
        const LONG left = Scale(control.design.left, ratio_x);
        const LONG top = Scale(control.design.top, ratio_y);
        const LONG width = Scale(control.design.right, ratio_x) - left;
        const LONG height = Scale(control.design.bottom, ratio_y) - top;
        if (positions != nullptr) {
            positions = DeferWindowPos(positions, control.window, nullptr, left, top, width, height,
                                       SWP_NOZORDER | SWP_NOACTIVATE);
        }
        SendMessageW(control.window, WM_SETFONT,
                     reinterpret_cast<WPARAM>(ScaledFont(control.font, ratio_font)), FALSE);
    }
    if (positions != nullptr) {
        EndDeferWindowPos(positions);
    }
    InvalidateRect(form_, nullptr, TRUE);
}

}  // namespace regvex::ui
