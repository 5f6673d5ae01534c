#include "ui/taskpane/task_pane_win32.h"

#include <windowsx.h>

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "text/wide_text_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/base/window_kit_win32.h"
#include "ui/taskpane/task_icons_win32.h"

namespace regvex::ui::taskpane {

namespace {

// Painted whole by the pane itself.
const WindowClass kPaneClass{L"RegvexTaskPane"};

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

    WindowParams params;
    params.style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_CLIPSIBLINGS;
    params.bounds = {rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top};
    params.parent = parent;
    params.menu = ChildId(control_id);
    if (CreateImpl(kPaneClass, params) == nullptr) {
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
    images_ = CreateTaskIconImageList(Scale(16));

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
    std::optional<LRESULT> result = OnWindowMessage(message, wparam, lparam);
    if (!result) {
        result = OnPaintMessage(message, wparam);
    }
    if (!result) {
        result = OnMouseMessage(message, wparam, lparam);
    }
    if (!result) {
        result = OnScrollMessage(message, wparam);
    }
    if (!result) {
        result = OnKeyboardMessage(message, wparam, lparam);
    }
    return result ? *result : DefWindowProcW(window, message, wparam, lparam);
}

std::optional<LRESULT> TaskPane::OnWindowMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_NCDESTROY:
            tooltip_.Reset();
            return std::nullopt;
        case WM_SIZE:
            Relayout();
            Redraw();
            return 0;
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
        default:
            return std::nullopt;
    }
}

void TaskPane::SetGroups(std::vector<TaskGroup> groups) {
    model_.SetGroups(std::move(groups));
    Relayout();
    RebuildTools();
    RefreshHover();
    Redraw();
}

void TaskPane::SetOnItemClick(std::function<void(std::string_view key)> on_click) {
    on_click_ = std::move(on_click);
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
    if (images_) {
        ImageList_GetIconSize(images_.get(), &icon_width, &icon_height);
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
    const int bar = GetSystemMetrics(SM_CXVSCROLL);
    const bool has_bar = (GetWindowLongPtrW(window, GWL_STYLE) & WS_VSCROLL) != 0;
    model_.SetView(client.right + (has_bar ? bar : 0), client.bottom, bar);
    UpdateScrollBar();
    laying_out_ = false;
    UpdateToolRects();
}

void TaskPane::UpdateScrollBar() {
    SCROLLINFO info{};
    info.cbSize = sizeof(info);
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
    info.nMin = 0;
    info.nMax = std::max(0, model_.ContentHeight() - 1);
    info.nPage = static_cast<UINT>(model_.view_height());
    info.nPos = model_.scroll_top();
    SetScrollInfo(hwnd(), SB_VERT, &info, TRUE);
}

void TaskPane::Scrolled(bool moved) {
    if (!moved || hwnd() == nullptr) {
        return;
    }
    UpdateScrollBar();
    UpdateToolRects();
    RefreshHover();
    Redraw();
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
        model_.MouseMove({last_mouse_->x, last_mouse_->y + model_.scroll_top()});
    }
}

bool TaskPane::ShowCues() const {
    // Users who asked for access keys always to be underlined get focus rectangles too.
    BOOL always = FALSE;
    SystemParametersInfoW(SPI_GETKEYBOARDCUES, 0, &always, 0);
    return keyboard_cues_ || always != FALSE;
}

int TaskPane::Scale(int pixels) const {
    return MulDiv(pixels, dpi_, 96);
}

RECT TaskPane::ToClient(const PaneRect& rect) const {
    const int top = model_.scroll_top();
    return RECT{rect.left, rect.top - top, rect.right, rect.bottom - top};
}

PanePoint TaskPane::ToContent(LPARAM lparam) const {
    return {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam) + model_.scroll_top()};
}

}  // namespace regvex::ui::taskpane
