#include "ui/base/gdi_win32.h"

namespace regvex::ui {

int ScreenDpi(int axis) {
    const handles::WindowDc screen = handles::GetWindowDc(nullptr);
    const int dpi = screen ? GetDeviceCaps(screen.get(), axis) : kDesignDpi;
    return dpi > 0 ? dpi : kDesignDpi;
}

int PointsToHeight(int points) {
    return -MulDiv(points, ScreenDpi(LOGPIXELSY), 72);
}

handles::UniqueFont MakeFont(const wchar_t* face, int height, int weight, bool underline,
                             BYTE quality, BYTE pitch_and_family) {
    return handles::UniqueFont(CreateFontW(height, 0, 0, 0, weight, FALSE, underline ? TRUE : FALSE,
                                           FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                                           CLIP_DEFAULT_PRECIS, quality, pitch_and_family, face));
}

SIZE TextExtent(HWND window, HFONT font, std::wstring_view text) {
    SIZE size{};
    const handles::WindowDc dc = handles::GetWindowDc(window);
    if (!dc) {
        return size;
    }
    const HGDIOBJ old = font != nullptr ? SelectObject(dc.get(), font) : nullptr;
    GetTextExtentPoint32W(dc.get(), text.data(), static_cast<int>(text.size()), &size);
    if (old != nullptr) {
        SelectObject(dc.get(), old);
    }
    return size;
}

}  // namespace regvex::ui
