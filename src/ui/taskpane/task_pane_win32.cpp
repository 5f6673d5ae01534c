#include "ui/taskpane/task_pane_win32.h"

#include <windowsx.h>

#include <commctrl.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "text/wide_text_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/base/window_kit_win32.h"
#include "ui/taskpane/task_icons_win32.h"
#include "ui/taskpane/task_pane_colors.h"

namespace regvex::ui::taskpane {

using handles::UniqueBitmap;
using handles::UniqueBrush;
using handles::UniqueDc;
using handles::UniqueRegion;

namespace {

// Painted whole by the pane itself.
const WindowClass kPaneClass{L"RegvexTaskPane"};

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

TaskPane::~TaskPane() {
    // The window goes first: its last messages still reach the members.
    DestroyImpl();
}

bool TaskPane::Create(HWND parent, int control_id, const RECT& rect) {
    if (hwnd() != nullptr) {
        return false;
    }
    INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_WIN95_CLASSES};
    InitCommonControlsEx(&controls);

    WindowSpec spec;
    spec.style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_CLIPSIBLINGS;
    spec.bounds = {rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top};
    spec.parent = parent;
    spec.menu = ChildId(control_id);
    if (CreateImpl(kPaneClass, spec) == nullptr) {
        return false;
    }

    dpi_ = ScreenDpi(LOGPIXELSY);
    measure_dc_.Reset(CreateCompatibleDC(nullptr));
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) {
        default_font_.Reset(CreateFontIndirectW(&metrics.lfMessageFont));
    } else {
        default_font_.Reset(static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT)));
    }
    own_images_ = CreateTaskIconImageList(Scale(16));

    tooltip_.Reset(CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                                   WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT,
                                   CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, hwnd(), nullptr,
                                   GetModuleHandleW(nullptr), nullptr));
    if (tooltip_) {
        SendMessageW(tooltip_.get(), TTM_SETMAXTIPWIDTH, 0, Scale(320));
    }

    model_.SetMeasure([this](std::string_view text, int max_width) {
        const HDC dc = measure_dc_.get();
        const SelectIn select(dc, font_ != nullptr ? font_ : default_font_.get());
        const std::wstring wide = text::ToWide(text);
        RECT bounds{0, 0, max_width, 0};
        DrawTextW(dc, wide.c_str(), static_cast<int>(wide.size()), &bounds,
                  DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
        return TextExtent{bounds.right - bounds.left, bounds.bottom - bounds.top};
    });
    UpdateFonts(nullptr);
    RebuildTools();
    return true;
}

LRESULT TaskPane::HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_NCDESTROY:
            tooltip_.Reset();
            break;
        case WM_SIZE:
            Relayout();
            Redraw();
            return 0;
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
        case WM_SETFONT:
            UpdateFonts(reinterpret_cast<HFONT>(wparam));
            if (LOWORD(lparam) != 0) {
                Redraw();
            }
            return 0;
        case WM_GETFONT:
            return reinterpret_cast<LRESULT>(font_);
        case WM_SYSCOLORCHANGE:
        case WM_SETTINGCHANGE:
            Redraw();
            return 0;

        case WM_MOUSEMOVE: {
            last_mouse_ = POINT{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
            if (!tracking_mouse_) {
                TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, window, 0};
                tracking_mouse_ = TrackMouseEvent(&track) != FALSE;
            }
            if (model_.MouseMove(ToContent(lparam))) {
                SendMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                             MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
                Redraw();
            }
            return 0;
        }
        case WM_MOUSELEAVE:
            tracking_mouse_ = false;
            last_mouse_.reset();
            if (model_.MouseLeave()) {
                Redraw();
            }
            return 0;
        case WM_SETCURSOR:
            if (reinterpret_cast<HWND>(wparam) == window && LOWORD(lparam) == HTCLIENT) {
                const bool pointing = model_.hover().kind != PaneHit::Kind::kNothing;
                SetCursor(LoadCursorW(nullptr, pointing ? IDC_HAND : IDC_ARROW));
                return TRUE;
            }
            break;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            keyboard_cues_ = false;
            if (GetFocus() != window) {
                SetFocus(window);
            }
            if (model_.MouseDown(ToContent(lparam))) {
                SetCapture(window);
            }
            Redraw();
            return 0;
        case WM_LBUTTONUP: {
            // Decided before the capture goes: releasing it cancels the press.
            const PaneAction action = model_.MouseUp(ToContent(lparam));
            if (GetCapture() == window) {
                ReleaseCapture();
            }
            Follow(action);
            return 0;
        }
        case WM_CAPTURECHANGED:
            model_.CancelPress();
            return 0;
        case WM_MOUSEWHEEL: {
            wheel_remainder_ += GET_WHEEL_DELTA_WPARAM(wparam);
            const int notches = wheel_remainder_ / WHEEL_DELTA;
            wheel_remainder_ %= WHEEL_DELTA;
            UINT lines = 3;
            SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
            RECT client{};
            GetClientRect(window, &client);
            const int step =
                lines == WHEEL_PAGESCROLL ? client.bottom : static_cast<int>(lines) * Scale(16);
            ScrollTo(scroll_y_ - notches * step);
            return 0;
        }
        case WM_VSCROLL: {
            RECT client{};
            GetClientRect(window, &client);
            const int line = Scale(16);
            int position = scroll_y_;
            switch (LOWORD(wparam)) {
                case SB_LINEUP:
                    position -= line;
                    break;
                case SB_LINEDOWN:
                    position += line;
                    break;
                case SB_PAGEUP:
                    position -= std::max(line, static_cast<int>(client.bottom) - line);
                    break;
                case SB_PAGEDOWN:
                    position += std::max(line, static_cast<int>(client.bottom) - line);
                    break;
                case SB_TOP:
                    position = 0;
                    break;
                case SB_BOTTOM:
                    position = model_.ContentHeight();
                    break;
                case SB_THUMBTRACK:
                case SB_THUMBPOSITION: {
                    SCROLLINFO info{};
                    info.cbSize = sizeof(info);
                    info.fMask = SIF_TRACKPOS;
                    GetScrollInfo(window, SB_VERT, &info);
                    position = info.nTrackPos;
                    break;
                }
                default:
                    break;
            }
            ScrollTo(position);
            return 0;
        }

        case WM_GETDLGCODE: {
            LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
            const auto* msg = reinterpret_cast<const MSG*>(lparam);
            if (msg != nullptr && msg->message == WM_KEYDOWN) {
                // Tab stays in the pane until its last link, then the dialog moves on.
                const bool back = GetKeyState(VK_SHIFT) < 0;
                if (msg->wParam == VK_TAB &&
                    model_.CanMoveFocus(back ? FocusMove::kPrevious : FocusMove::kNext)) {
                    code |= DLGC_WANTTAB;
                }
                if (msg->wParam == VK_RETURN && model_.focus()) {
                    code |= DLGC_WANTMESSAGE;
                }
            }
            return code;
        }
        case WM_KEYDOWN:
            OnKeyDown(wparam);
            return 0;
        case WM_CHAR:
            if (wparam > L' ') {
                HandleAccelerator(static_cast<wchar_t>(wparam));
            }
            return 0;
        case WM_SYSCHAR:
            if (wparam > L' ' && HandleAccelerator(static_cast<wchar_t>(wparam))) {
                return 0;
            }
            break;
        case WM_SETFOCUS:
            if (GetKeyState(VK_TAB) < 0) {
                keyboard_cues_ = true;
                if (!model_.focus()) {
                    model_.MoveFocus(
                        GetKeyState(VK_SHIFT) < 0 ? FocusMove::kLast : FocusMove::kFirst, false);
                }
                RevealFocus();
            }
            Redraw();
            return 0;
        case WM_KILLFOCUS:
            Redraw();
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

void TaskPane::OnKeyDown(WPARAM key) {
    keyboard_cues_ = true;
    const bool shift = GetKeyState(VK_SHIFT) < 0;
    switch (key) {
        case VK_TAB:
            // Reached only when no dialog takes Tab on, so it goes round within the pane.
            model_.MoveFocus(shift ? FocusMove::kPrevious : FocusMove::kNext, true);
            break;
        case VK_DOWN:
            model_.MoveFocus(FocusMove::kNext, false);
            break;
        case VK_UP:
            model_.MoveFocus(FocusMove::kPrevious, false);
            break;
        case VK_HOME:
            model_.MoveFocus(FocusMove::kFirst, false);
            break;
        case VK_END:
            model_.MoveFocus(FocusMove::kLast, false);
            break;
        case VK_RETURN:
        case VK_SPACE:
            Follow(model_.ActivateFocus());
            return;
        default:
            break;
    }
    RevealFocus();
    Redraw();
}

void TaskPane::Follow(const PaneAction& action) {
    switch (action.kind) {
        case PaneAction::Kind::kNone:
            Redraw();
            return;
        case PaneAction::Kind::kToggle:
            Relayout();
            RefreshHover();
            Redraw();
            return;
        case PaneAction::Kind::kActivate:
            break;
    }
    const TaskItem* item = model_.Item({action.group, action.item});
    if (item == nullptr) {
        return;
    }
    // The handler may replace the groups or open a modal window: keep the key, and let
    // the pane show its state first.
    const std::string key = item->key;
    Redraw();
    UpdateWindow(hwnd());
    if (on_click_) {
        on_click_(key);
    }
}

bool TaskPane::HandleAccelerator(wchar_t letter) {
    if (hwnd() == nullptr || !model_.FocusAccelerator(static_cast<char32_t>(letter))) {
        return false;
    }
    keyboard_cues_ = true;
    Relayout();
    if (GetFocus() != hwnd()) {
        SetFocus(hwnd());
    }
    RevealFocus();
    Redraw();
    return true;
}

void TaskPane::SetGroups(std::vector<TaskGroup> groups) {
    model_.SetGroups(std::move(groups));
    scroll_y_ = 0;
    Relayout();
    RebuildTools();
    RefreshHover();
    Redraw();
}

void TaskPane::SetOnItemClick(std::function<void(std::string_view key)> on_click) {
    on_click_ = std::move(on_click);
}

void TaskPane::SetImageList(HIMAGELIST images) {
    images_ = images;
    UpdateMetrics();
    Relayout();
    Redraw();
}

bool TaskPane::SetGroupCollapsed(std::string_view group_key, bool collapsed) {
    if (!model_.SetCollapsed(model_.FindGroup(group_key), collapsed)) {
        return false;
    }
    Relayout();
    RefreshHover();
    Redraw();
    return true;
}

bool TaskPane::IsGroupCollapsed(std::string_view group_key) const {
    const int group = model_.FindGroup(group_key);
    return group >= 0 && model_.groups()[static_cast<std::size_t>(group)].collapsed;
}

std::optional<RECT> TaskPane::ItemRect(std::string_view key) const {
    const auto ref = model_.FindItem(key);
    if (!ref) {
        return std::nullopt;
    }
    return ItemRect(ref->group, ref->item);
}

std::optional<RECT> TaskPane::ItemRect(int group, int item) const {
    if (model_.Item({group, item}) == nullptr ||
        model_.groups()[static_cast<std::size_t>(group)].collapsed) {
        return std::nullopt;
    }
    return ToClient(
        model_.places()[static_cast<std::size_t>(group)].items[static_cast<std::size_t>(item)].hot);
}

std::optional<RECT> TaskPane::HeaderRect(std::string_view group_key) const {
    const int group = model_.FindGroup(group_key);
    if (group < 0) {
        return std::nullopt;
    }
    return ToClient(model_.places()[static_cast<std::size_t>(group)].header);
}

void TaskPane::UpdateFonts(HFONT font) {
    font_ = font;
    LOGFONTW base{};
    GetObjectW(font_ != nullptr ? font_ : default_font_.get(), sizeof(base), &base);
    LOGFONTW bold = base;
    bold.lfWeight = FW_BOLD;
    bold_font_.Reset(CreateFontIndirectW(&bold));
    LOGFONTW underline = base;
    underline.lfUnderline = TRUE;
    underline_font_.Reset(CreateFontIndirectW(&underline));
    UpdateMetrics();
    Relayout();
}

void TaskPane::UpdateMetrics() {
    if (!measure_dc_) {
        return;
    }
    TEXTMETRICW bold{};
    {
        const SelectIn select(measure_dc_.get(), bold_font_.get());
        GetTextMetricsW(measure_dc_.get(), &bold);
    }
    TaskPaneMetrics metrics;
    metrics.margin = Scale(12);
    metrics.group_gap = Scale(12);
    metrics.header_height = std::max(Scale(25), static_cast<int>(bold.tmHeight) + Scale(10));
    metrics.chevron_size = std::min(Scale(19), metrics.header_height - Scale(4));
    metrics.header_padding = Scale(10);
    metrics.body_padding_x = Scale(12);
    metrics.body_padding_y = Scale(11);
    metrics.item_gap = Scale(7);
    int icon_width = Scale(16);
    int icon_height = Scale(16);
    if (images() != nullptr) {
        ImageList_GetIconSize(images(), &icon_width, &icon_height);
    }
    metrics.icon_size = icon_height;
    metrics.icon_gap = Scale(6);
    model_.SetMetrics(metrics);
}

void TaskPane::Relayout() {
    if (hwnd() == nullptr || laying_out_) {
        return;
    }
    laying_out_ = true;
    const HWND window = hwnd();
    RECT client{};
    GetClientRect(window, &client);
    // Laid out for the width without a scroll bar first; only content taller than the
    // pane gives up room to one.
    const int bar = GetSystemMetrics(SM_CXVSCROLL);
    const bool has_bar = (GetWindowLongPtrW(window, GWL_STYLE) & WS_VSCROLL) != 0;
    const int full_width = client.right + (has_bar ? bar : 0);
    model_.SetWidth(full_width);
    if (model_.ContentHeight() > client.bottom) {
        model_.SetWidth(full_width - bar);
    }
    scroll_y_ = ClampScroll(scroll_y_, client.bottom, model_.ContentHeight());
    UpdateScrollBar();
    laying_out_ = false;
    UpdateToolRects();
}

void TaskPane::UpdateScrollBar() {
    RECT client{};
    GetClientRect(hwnd(), &client);
    SCROLLINFO info{};
    info.cbSize = sizeof(info);
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
    info.nMin = 0;
    info.nMax = std::max(0, model_.ContentHeight() - 1);
    info.nPage = static_cast<UINT>(std::max(0L, client.bottom));
    info.nPos = scroll_y_;
    SetScrollInfo(hwnd(), SB_VERT, &info, TRUE);
}

void TaskPane::ScrollTo(int position) {
    if (hwnd() == nullptr) {
        return;
    }
    RECT client{};
    GetClientRect(hwnd(), &client);
    position = ClampScroll(position, client.bottom, model_.ContentHeight());
    if (position == scroll_y_) {
        return;
    }
    scroll_y_ = position;
    UpdateScrollBar();
    UpdateToolRects();
    RefreshHover();
    Redraw();
}

void TaskPane::RevealFocus() {
    const auto& focus = model_.focus();
    if (!focus || hwnd() == nullptr) {
        return;
    }
    RECT client{};
    GetClientRect(hwnd(), &client);
    PaneRect target = model_.places()[static_cast<std::size_t>(focus->group)]
                          .items[static_cast<std::size_t>(focus->item)]
                          .row;
    // Some room around the item, so that its focus rectangle shows too.
    target.top -= model_.metrics().item_gap;
    target.bottom += model_.metrics().item_gap;
    ScrollTo(ScrollToReveal(target, scroll_y_, client.bottom, model_.ContentHeight()));
}

void TaskPane::RebuildTools() {
    if (!tooltip_ || hwnd() == nullptr) {
        return;
    }
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    tool.hwnd = hwnd();
    for (std::size_t id = 0; id < tools_.size(); ++id) {
        tool.uId = id;
        SendMessageW(tooltip_.get(), TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
    tools_.clear();
    const auto& groups = model_.groups();
    for (std::size_t g = 0; g < groups.size(); ++g) {
        for (std::size_t i = 0; i < groups[g].items.size(); ++i) {
            const TaskItem& item = groups[g].items[i];
            if (item.tooltip.empty()) {
                continue;
            }
            // The tooltip keeps its own copy of the text.
            std::wstring text = text::ToWide(item.tooltip);
            tool.uFlags = TTF_SUBCLASS;
            tool.uId = tools_.size();
            tool.rect = RECT{};
            tool.lpszText = text.data();
            if (SendMessageW(tooltip_.get(), TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool))) {
                tools_.push_back({static_cast<int>(g), static_cast<int>(i)});
            }
        }
    }
    UpdateToolRects();
}

void TaskPane::UpdateToolRects() {
    if (!tooltip_ || hwnd() == nullptr) {
        return;
    }
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    tool.hwnd = hwnd();
    for (std::size_t id = 0; id < tools_.size(); ++id) {
        tool.uId = id;
        const auto rect = ItemRect(tools_[id].group, tools_[id].item);
        tool.rect = rect.value_or(RECT{});
        SendMessageW(tooltip_.get(), TTM_NEWTOOLRECTW, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

void TaskPane::Redraw() {
    if (hwnd() != nullptr) {
        InvalidateRect(hwnd(), nullptr, FALSE);
    }
}

void TaskPane::RefreshHover() {
    if (last_mouse_) {
        model_.MouseMove({last_mouse_->x, last_mouse_->y + scroll_y_});
    }
}

bool TaskPane::ShowCues() const {
    // Users who asked for access keys always to be underlined get focus rectangles too.
    BOOL always = FALSE;
    SystemParametersInfoW(SPI_GETKEYBOARDCUES, 0, &always, 0);
    return keyboard_cues_ || always != FALSE;
}

HIMAGELIST TaskPane::images() const {
    return images_ != nullptr ? images_ : own_images_.get();
}

int TaskPane::Scale(int pixels) const {
    return MulDiv(pixels, dpi_, 96);
}

RECT TaskPane::ToClient(const PaneRect& rect) const {
    return RECT{rect.left, rect.top - scroll_y_, rect.right, rect.bottom - scroll_y_};
}

PanePoint TaskPane::ToContent(LPARAM lparam) const {
    return {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam) + scroll_y_};
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
        if (item.icon != kNoIcon && images() != nullptr) {
            ImageList_Draw(images(), item.icon, dc, icon.left, icon.top, ILD_TRANSPARENT);
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
