#include "ui/base/throttled_text_win32.h"

#include "text/wide_text_win32.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui {

std::string ThrottledText::Caption() const {
    return is_pending_ ? pending_ : WindowTextOf(window_);
}

void ThrottledText::SetCaption(std::string_view caption) {
    pending_.assign(caption);
    is_pending_ = true;
    if (!held_) {
        Show();
    }
}

void ThrottledText::AtPause(Pace::Clock::time_point now) {
    held_ = true;
    if (is_pending_ && pace_.Due(now)) {
        Show();
    }
}

void ThrottledText::Release() {
    held_ = false;
    if (is_pending_) {
        Show();
    }
}

void ThrottledText::Show() {
    const auto started = Pace::Clock::now();
    SetWindowTextW(window_, text::ToWide(pending_).c_str());
    is_pending_ = false;
    pace_.Done(started, Pace::Clock::now());
}

}  // namespace regvex::ui
