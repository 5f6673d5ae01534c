#include "ui/base/throttled_text_win32.h"

#include "text/wide_text_win32.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui {

namespace {

constexpr ULONGLONG kShowInterval = 100;

}  // namespace

std::string ThrottledText::Caption() const {
    return is_pending_ ? pending_ : WindowTextOf(window_);
}

void ThrottledText::SetCaption(std::string_view caption) {
    pending_.assign(caption);
    is_pending_ = true;
    if (!held_) {
        Show(GetTickCount64());
    }
}

void ThrottledText::AtPause(ULONGLONG now) {
    held_ = true;
    if (is_pending_ && now - shown_at_ >= kShowInterval) {
        Show(now);
    }
}

void ThrottledText::Release() {
    held_ = false;
    if (is_pending_) {
        Show(GetTickCount64());
    }
}

void ThrottledText::Show(ULONGLONG now) {
    SetWindowTextW(window_, text::ToWide(pending_).c_str());
    is_pending_ = false;
    shown_at_ = now;
}

}  // namespace regvex::ui
