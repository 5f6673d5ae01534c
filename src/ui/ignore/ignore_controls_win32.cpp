#include "ui/ignore/ignore_controls_win32.h"

#include <stdexcept>

#include "text/wide_text_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui::ignore {

std::string WinTextBox::Text() const {
    return WindowTextOf(edit_);
}

void WinTextBox::SetText(std::string_view text) {
    SetWindowTextW(edit_, text::ToWide(text).c_str());
}

void WinTextBox::SetFocus() {
    // A control of a hidden window cannot take the focus; the caller goes on.
    if (!IsWindowVisible(edit_) || !IsWindowEnabled(edit_)) {
        throw std::runtime_error("the text box cannot take the focus");
    }
    ::SetFocus(edit_);
}

void WinTextBox::SetSelection(std::size_t start, std::size_t length) {
    SendMessageW(edit_, EM_SETSEL, static_cast<WPARAM>(start), static_cast<LPARAM>(start + length));
}

int WinListBox::ItemCount() const {
    const LRESULT count = SendMessageW(list_, LB_GETCOUNT, 0, 0);
    return count == LB_ERR ? 0 : static_cast<int>(count);
}

std::string WinListBox::Item(int index) const {
    const LRESULT length = SendMessageW(list_, LB_GETTEXTLEN, static_cast<WPARAM>(index), 0);
    if (length == LB_ERR) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    const LRESULT copied = SendMessageW(list_, LB_GETTEXT, static_cast<WPARAM>(index),
                                        reinterpret_cast<LPARAM>(text.data()));
    text.resize(copied == LB_ERR ? 0 : static_cast<std::size_t>(copied));
    return text::FromWide(text);
}

void WinListBox::AddItem(std::string_view text) {
    const std::wstring wide = text::ToWide(text);
    const LRESULT added =
        SendMessageW(list_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(wide.c_str()));
    if (added == LB_ERR || added == LB_ERRSPACE) {
        throw std::runtime_error("the list box is full");
    }
}

void WinListBox::RemoveItem(int index) {
    if (SendMessageW(list_, LB_DELETESTRING, static_cast<WPARAM>(index), 0) == LB_ERR) {
        throw std::out_of_range("no such item in the list box");
    }
}

void WinListBox::Clear() {
    SendMessageW(list_, LB_RESETCONTENT, 0, 0);
}

int WinListBox::ListIndex() const {
    return static_cast<int>(SendMessageW(list_, LB_GETCURSEL, 0, 0));
}

void WinListBox::SetListIndex(int index) {
    SendMessageW(list_, LB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

double WinListBox::TextWidthTwips(std::string_view text) const {
    const HWND parent = GetParent(list_);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(parent, WM_GETFONT, 0, 0));
    const SIZE size = TextExtent(parent, font, text::ToWide(text));
    return static_cast<double>(size.cx) * (1440 / ScreenDpi());
}

void WinListBox::SetHorizontalExtent(int pixels) {
    SendMessageW(list_, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(pixels), 0);
}

void WinListBox::ScrollToBottom() {
    SendMessageW(list_, WM_VSCROLL, MAKEWPARAM(SB_BOTTOM, 0), 0);
}

int MouseShiftState(WPARAM wparam) {
    int shift = 0;
    if ((wparam & MK_SHIFT) != 0) {
        shift |= 1;
    }
    if ((wparam & MK_CONTROL) != 0) {
        shift |= 2;
    }
    if (GetKeyState(VK_MENU) < 0) {
        shift |= 4;
    }
    return shift;
}

}  // namespace regvex::ui::ignore
