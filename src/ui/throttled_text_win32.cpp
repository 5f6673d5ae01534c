#include "ui/throttled_text_win32.h"

#include "text/wide_text_win32.h"
#include "ui/win32_controls_win32.h"

namespace regvex::ui {

namespace {

constexpr ULONGLONG kShowInterval = 100;

}  // namespace

ThrottledText::~ThrottledText() {
    if (is_pending_ && IsWindow(window_)) {
        KillTimer(window_, reinterpret_cast<UINT_PTR>(this));
    }
}

std::string ThrottledText::Caption() const {
    return is_pending_ ? pending_ : WindowText(window_).Caption();
}

void ThrottledText::SetCaption(std::string_view caption) {
    pending_.assign(caption);
    if (is_pending_) {
        return;
    }
    const ULONGLONG since = GetTickCount64() - shown_at_;
    if (since >= kShowInterval) {
        Show();
        return;
    }
    // The timer's number is the text's owner, so the callback finds its way back.
    is_pending_ = SetTimer(window_, reinterpret_cast<UINT_PTR>(this),
                           static_cast<UINT>(kShowInterval - since), ShowPending) != 0;
    if (!is_pending_) {
        Show();
    }
}

void ThrottledText::Show() {
    SetWindowTextW(window_, text::ToWide(pending_).c_str());
    shown_at_ = GetTickCount64();
}

void CALLBACK ThrottledText::ShowPending(HWND window, UINT, UINT_PTR timer, DWORD) {
    KillTimer(window, timer);
    auto* self = reinterpret_cast<ThrottledText*>(timer);
    self->is_pending_ = false;
    self->Show();
}

}  // namespace regvex::ui
