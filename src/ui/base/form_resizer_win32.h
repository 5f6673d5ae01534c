#pragma once
// Lays a window's controls out in proportion: every control keeps the place and size it
// was designed with, scaled by the ratio of the window's size to its designed size, and
// its font by the mean of the two ratios.

#include <windows.h>

#include <map>
#include <vector>

#include "handles/unique_handle_win32.h"

namespace regvex::ui {

class FormResizer {
  public:
    // Remembers the window's client size and every child control's place and font, as
    // they stand now: call once the window's controls are created.
    void Capture(HWND form);

    // Sizes the window to its designed client size scaled by the ratios.
    void SizeForm(double ratio_x, double ratio_y);

    // Moves and sizes every control (left, top, width, height, font size) to the
    // window's current client size.
    void Layout();

  private:
    struct Control {
        HWND window = nullptr;
        RECT design{};
        HFONT font = nullptr;  // as designed, or null for the system font
        bool combo = false;
    };

    HFONT ScaledFont(HFONT design, double ratio);

    HWND form_ = nullptr;
    SIZE design_client_{};
    std::vector<Control> controls_;
    // Scaled fonts by design font and height, kept while the form lives.
    std::map<std::pair<HFONT, LONG>, handles::UniqueFont> fonts_;
};

}  // namespace regvex::ui
