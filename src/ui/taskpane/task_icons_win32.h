#pragma once
// The task pane's icons as Windows keeps them: an image list, and a way to draw any
// painted glyph with its soft edges.

#include <windows.h>

#include "handles/unique_handle_win32.h"
#include "ui/taskpane/glyph_canvas.h"
#include "ui/taskpane/task_icons.h"

namespace regvex::ui::taskpane {

// Every TaskIcon at `size` pixels square, in TaskIcon order: 32-bit with alpha, and a
// mask for the drawing code of common controls older than version 6.
handles::UniqueImageList CreateTaskIconImageList(int size = 16);

// A 32-bit top-down DIB section holding the glyph's premultiplied pixels.
handles::UniqueBitmap CreateGlyphBitmap(const GlyphImage& glyph);

// Blends the glyph onto `dc` with its top left corner at (x, y).
void DrawGlyph(HDC dc, int x, int y, const GlyphImage& glyph);

}  // namespace regvex::ui::taskpane
