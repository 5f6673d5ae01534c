#pragma once
// A window text that a scan changes for every key or finding: a label or the caption.

#include <windows.h>

#include <string>

#include "ui/controls.h"

namespace regvex::ui {

// Showing a text repaints its window at once, which costs more than walking a key. The
// newest text is kept straight away and shown at most ten times a second; a timer shows
// the last one, so the window always ends up with the text last set.
class ThrottledText final : public Captioned {
  public:
    ThrottledText() = default;
    ~ThrottledText() override;
    ThrottledText(const ThrottledText&) = delete;
    ThrottledText& operator=(const ThrottledText&) = delete;

    void Attach(HWND window) { window_ = window; }
    HWND hwnd() const { return window_; }
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;

  private:
    void Show();
    static void CALLBACK ShowPending(HWND window, UINT message, UINT_PTR timer, DWORD time);

    HWND window_ = nullptr;
    std::string pending_;
    bool is_pending_ = false;
    ULONGLONG shown_at_ = 0;
};

}  // namespace regvex::ui
