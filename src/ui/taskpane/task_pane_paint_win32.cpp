// How the task pane draws itself: a gradient behind groups whose caption bars carry a
// chevron and whose bodies hold the links, in the system's colours, off screen first.

#include "ui/taskpane/task_pane_win32.h"

#include <commctrl.h>

#include <algorithm>

#include "text/wide_text_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/taskpane/task_icons_win32.h"
#include "ui/taskpane/task_pane_colors.h"

namespace regvex::ui::taskpane {

using handles::UniqueBitmap;
using handles::UniqueBrush;
using handles::UniqueDc;
using handles::UniqueRegion;

namespace {

Rgba ToRgba(COLORREF color, BYTE alpha = 255) {
    return Rgba{GetRValue(color), GetGValue(color), GetBValue(color), alpha};
}

PanePalette SystemPalette() {
    SystemColors system;
    system.window = GetSysColor(COLOR_WINDOW);
    system.window_text = GetSysColor(COLOR_WINDOWTEXT);
    system.highlight = GetSysColor(COLOR_HIGHLIGHT);
    system.highlight_text = GetSysColor(COLOR_HIGHLIGHTTEXT);
    system.hot_track = GetSysColor(COLOR_HOTLIGHT);
    return MakePanePalette(system);
}

void Gradient(HDC dc, const RECT& rect, COLORREF from, COLORREF to, ULONG mode) {
    const auto vertex = [](LONG x, LONG y, COLORREF color) {
        TRIVERTEX v{};
        v.x = x;
        v.y = y;
        v.Red = static_cast<COLOR16>(GetRValue(color) << 8);
        v.Green = static_cast<COLOR16>(GetGValue(color) << 8);
        v.Blue = static_cast<COLOR16>(GetBValue(color) << 8);
        return v;
    };
    TRIVERTEX vertices[2] = {vertex(rect.left, rect.top, from),
                             vertex(rect.right, rect.bottom, to)};
    GRADIENT_RECT span{0, 1};
    GradientFill(dc, vertices, 2, &span, 1, mode);
}

void Fill(HDC dc, const RECT& rect, COLORREF color) {
    const UniqueBrush brush(CreateSolidBrush(color));
    FillRect(dc, &rect, brush.get());
}

void DrawTextIn(HDC dc, const std::string& text, RECT rect, UINT format) {
    std::wstring wide = text::ToWide(text);
    DrawTextW(dc, wide.c_str(), static_cast<int>(wide.size()), &rect, format);
}

}  // namespace

std::optional<LRESULT> TaskPane::OnPaintMessage(UINT message, WPARAM wparam) {
    const HWND window = hwnd();
    switch (message) {
        case WM_ERASEBKGND:
            return 1;
        case WM_PAINT: {
            PAINTSTRUCT paint{};
            const HDC dc = BeginPaint(window, &paint);
            RECT client{};
            GetClientRect(window, &client);
            if (client.right > 0 && client.bottom > 0) {
                // Drawn off screen first, so that hovering never flickers.
                const UniqueDc memory(CreateCompatibleDC(dc));
                const UniqueBitmap canvas(CreateCompatibleBitmap(dc, client.right, client.bottom));
                if (memory && canvas) {
                    const SelectIn select(memory.get(), canvas.get());
                    Paint(memory.get(), client);
                    BitBlt(dc, 0, 0, client.right, client.bottom, memory.get(), 0, 0, SRCCOPY);
                } else {
                    Paint(dc, client);
                }
            }
            EndPaint(window, &paint);
            return 0;
        }
        case WM_PRINTCLIENT: {
            RECT client{};
            GetClientRect(window, &client);
            Paint(reinterpret_cast<HDC>(wparam), client);
            return 0;
        }
        default:
            return std::nullopt;
    }
}

void TaskPane::Paint(HDC dc, const RECT& client) const {
    const PanePalette palette = SystemPalette();
    Gradient(dc, client, palette.pane_top, palette.pane_bottom, GRADIENT_FILL_RECT_V);
    SetBkMode(dc, TRANSPARENT);
    for (std::size_t g = 0; g < model_.groups().size(); ++g) {
        const RECT header = ToClient(model_.places()[g].header);
        const RECT body = ToClient(model_.places()[g].body);
        if (std::max(header.bottom, body.bottom) < client.top || header.top >= client.bottom) {
            continue;
        }
        PaintGroup(dc, g, palette);
    }
}

void TaskPane::PaintGroup(HDC dc, std::size_t index, const PanePalette& palette) const {
    const TaskGroup& group = model_.groups()[index];
    const GroupPlace& place = model_.places()[index];
    const int group_number = static_cast<int>(index);
    const PaneHit& hover = model_.hover();
    const bool header_hot = hover.kind == PaneHit::Kind::kHeader && hover.group == group_number;
    const RECT header = ToClient(place.header);

    // The caption bar, its top corners rounded.
    {
        const int radius = Scale(4);
        const UniqueRegion corners(CreateRoundRectRgn(header.left, header.top, header.right + 1,
                                                      header.bottom + radius * 2, radius * 2,
                                                      radius * 2));
        const int saved = SaveDC(dc);
        SelectClipRgn(dc, corners.get());
        if (group.special) {
            Gradient(dc, header, palette.special_left, palette.special_right, GRADIENT_FILL_RECT_H);
        } else {
            Gradient(dc, header, palette.header_left, palette.header_right, GRADIENT_FILL_RECT_H);
        }
        RestoreDC(dc, saved);
    }
    {
        const SelectIn select(dc, bold_font_.get());
        if (group.special) {
            SetTextColor(dc, header_hot ? palette.special_caption_hot : palette.special_caption);
        } else {
            SetTextColor(dc, header_hot ? palette.caption_hot : palette.caption);
        }
        const UINT cues = ShowCues() ? 0 : DT_HIDEPREFIX;
        DrawTextIn(dc, group.caption, ToClient(place.caption),
                   DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | cues);
    }
    {
        ChevronColors colors;
        if (group.special) {
            colors.face = ToRgba(
                MixColor(palette.special_left, palette.special_caption, header_hot ? 0.3 : 0.18));
            colors.edge = ToRgba(palette.special_caption, header_hot ? 255 : 190);
            colors.arrows = ToRgba(palette.special_caption);
        } else {
            colors.face = ToRgba(palette.header_left);
            colors.edge =
                ToRgba(MixColor(palette.header_right, palette.caption, header_hot ? 0.7 : 0.3));
            colors.arrows = ToRgba(header_hot ? palette.caption_hot : palette.caption);
        }
        const RECT chevron = ToClient(place.chevron);
        DrawGlyph(dc, chevron.left, chevron.top,
                  RenderChevron(place.chevron.Width(), !group.collapsed, colors));
    }
    if (group.collapsed) {
        return;
    }

    const RECT body = ToClient(place.body);
    Fill(dc, body, palette.body);
    {
        const UniqueBrush edge(CreateSolidBrush(palette.body_edge));
        FrameRect(dc, &body, edge.get());
    }
    const bool show_focus = ShowCues() && GetFocus() == hwnd();
    const HFONT base = font_ != nullptr ? font_ : default_font_.get();
    for (std::size_t i = 0; i < group.items.size(); ++i) {
        const TaskItem& item = group.items[i];
        const ItemPlace& at = place.items[i];
        const ItemRef ref{group_number, static_cast<int>(i)};
        const RECT icon = ToClient(at.icon);
        if (item.icon != kNoIcon && images_) {
            ImageList_Draw(images_.get(), item.icon, dc, icon.left, icon.top, ILD_TRANSPARENT);
        }
        const bool hot = item.IsLink() && hover.kind == PaneHit::Kind::kLink &&
                         hover.group == ref.group && hover.item == ref.item;
        const SelectIn select(dc, hot ? underline_font_.get() : base);
        if (item.IsLink()) {
            SetTextColor(dc, hot ? palette.link_hot : palette.link);
        } else {
            SetTextColor(dc, palette.plain_text);
        }
        // As wide as it was measured, so that the lines break where the layout expects.
        RECT text = ToClient(at.text);
        text.right = at.row.right;
        DrawTextIn(dc, item.text, text, DT_WORDBREAK | DT_NOPREFIX);
        if (show_focus && model_.focus() == ref) {
            RECT focus = ToClient(at.hot);
            InflateRect(&focus, Scale(2), Scale(1));
            SetTextColor(dc, RGB(0, 0, 0));
            SetBkColor(dc, RGB(255, 255, 255));
            DrawFocusRect(dc, &focus);
        }
    }
}
}  // namespace regvex::ui::taskpane
