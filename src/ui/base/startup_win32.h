#pragma once
// The small start-up and environment routines of the program's main module.

#include <windows.h>

#include <cstdint>
#include <string>

#include "ui/base/services.h"

namespace regvex::ui {

// Sets the big and small window icons from the icon resource `resource_name` of the
// program, also on the window's top owner when `set_on_owner` is true.
void SetWindowIcon(HWND window, const wchar_t* resource_name, bool set_on_owner);

// Registers the common controls the program's forms use; true when nothing failed.
bool InitCommonControlsSafe();

// An automation colour (which may name a system colour, 0x800000nn) as RGB, or -1.
std::int64_t TranslateSystemColor(std::uint32_t color, HPALETTE palette);

// The message boxes' colour: every component is the red level of the window background,
// so the boxes are a grey of that level. That is how the program has always coloured
// them.
ColorRef ThemeFromWindowBackground();

}  // namespace regvex::ui
