#pragma once
// Drawing helpers the windows share: the screen's resolution, fonts, measuring text.

#include <windows.h>

#include <string_view>

#include "handles/unique_handle_win32.h"

namespace regvex::ui {

// The windows are designed at this resolution and scaled to the screen's.
inline constexpr int kDesignDpi = 96;

// Dots per inch of the screen across (LOGPIXELSX) or down (LOGPIXELSY); the design's
// when the screen cannot tell.
int ScreenDpi(int axis = LOGPIXELSX);

// The character height in pixels of a font of `points` on the screen, for MakeFont.
int PointsToHeight(int points);

// A font of the face, or the one the system falls back on (by `pitch_and_family`) when
// it has none of that face. A negative height is the characters' height in pixels.
handles::UniqueFont MakeFont(const wchar_t* face, int height, int weight = FW_NORMAL,
                             bool underline = false, BYTE quality = DEFAULT_QUALITY,
                             BYTE pitch_and_family = DEFAULT_PITCH | FF_SWISS);

// The size of `text` in `font` (the window's device context's own when null), in the
// pixels of `window`'s device context; nothing when there is none.
SIZE TextExtent(HWND window, HFONT font, std::wstring_view text);

// Selects an object into a device context for as long as it lives.
class SelectIn {
  public:
    SelectIn(HDC dc, HGDIOBJ object) : dc_(dc), old_(SelectObject(dc, object)) {}
    ~SelectIn() { SelectObject(dc_, old_); }
    SelectIn(const SelectIn&) = delete;
    SelectIn& operator=(const SelectIn&) = delete;

  private:
    HDC dc_;
    HGDIOBJ old_;
};

}  // namespace regvex::ui
