#pragma once
// A window text that a scan changes for every key or finding: a label or the caption.

#include <windows.h>

#include <string>

#include "ui/base/controls.h"
#include "ui/base/pace.h"

namespace regvex::ui {

// Showing a text repaints its window at once, which costs more than walking a key. While
// a scan runs, the newest text is kept straight away and shown at the scan's pauses, at
// most four times a second and in no more than a fiftieth of the scan's time; when the
// scan ends the last one is shown, so the window always ends up with the text last set.
// Outside a scan every text is shown as it is set.
class ThrottledText final : public Captioned {
  public:
    void Attach(HWND window) { window_ = window; }
    HWND hwnd() const { return window_; }
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;

    // The scan pauses: from now on texts wait for a pause, and the newest is shown when
    // its time has come.
    void AtPause(Pace::Clock::time_point now);
    // Shows the newest text now, and every later one as it is set.
    void Release();

  private:
    void Show();

    HWND window_ = nullptr;
    std::string pending_;
    bool is_pending_ = false;
    bool held_ = false;
    Pace pace_{std::chrono::milliseconds(250), std::chrono::seconds(2), 49};
};

}  // namespace regvex::ui
