#include "ui/check_list_control_win32.h"

#include <commctrl.h>

#include <algorithm>

#include "text/wide_text_win32.h"

namespace regvex::ui {

namespace {

// Space a list view leaves around a text in a column.
constexpr int kColumnPadding = 16;
constexpr wchar_t kFirstAscii = L' ';
constexpr wchar_t kLastAscii = L'~';
constexpr int kRoundingAllowance = 2;
// Most cells fit the first read; a longer one is read again into a buffer that fits it.
constexpr std::size_t kFirstReadLength = 1024;
// Far beyond any registry path or value text; a list that keeps filling the buffer stops
// being asked there.
constexpr std::size_t kLongestRead = std::size_t{1} << 22;

}  // namespace

void CheckListControl::Attach(HWND list, HWND tooltip) {
    list_ = list;
    tooltip_ = tooltip;
}

void CheckListControl::AtPause(Pace::Clock::time_point now) {
    held_ = true;
    if (redraw_held_ && redraw_pace_.Due(now)) {
        ResumeRedraw();
    }
}

void CheckListControl::Release() {
    held_ = false;
    if (redraw_held_) {
        ResumeRedraw();
    }
}

void CheckListControl::HoldRedraw() {
    if (!held_ || redraw_held_ || !IsWindowVisible(list_)) {
        return;
    }
    SendMessageW(list_, WM_SETREDRAW, FALSE, 0);
    redraw_held_ = true;
    redraw_pace_.Restart(Pace::Clock::now());
}

void CheckListControl::ResumeRedraw() {
    const auto started = Pace::Clock::now();
    redraw_held_ = false;
    SendMessageW(list_, WM_SETREDRAW, TRUE, 0);
    // Drawn now: the scan pumps its messages only now and then, and a row added before
    // that would hold the drawing again and the list would drop the paint.
    RedrawWindow(list_, nullptr, nullptr,
                 RDW_ERASE | RDW_FRAME | RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    redraw_pace_.Done(started, Pace::Clock::now());
}

HDC CheckListControl::MeasuringDc() {
    if (!measure_dc_) {
        measure_dc_.Reset(CreateCompatibleDC(nullptr));
    }
    const HDC dc = measure_dc_.get();
    // The list's font may change with the window's layout. Selecting a font costs more
    // than measuring with it, so it is selected again only when it changed.
    const auto font = reinterpret_cast<HFONT>(SendMessageW(list_, WM_GETFONT, 0, 0));
    if (font != measured_font_) {
        SelectObject(dc, font);
        measured_font_ = font;
        if (!GetCharWidth32W(dc, kFirstAscii, kLastAscii, ascii_widths_.data())) {
            ascii_widths_.fill(0);
        }
    }
    return dc;
}

int CheckListControl::TextWidth(const std::wstring& text) {
    SIZE size{};
    GetTextExtentPoint32W(MeasuringDc(), text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx + kColumnPadding;
}

bool CheckListControl::FitsWithoutMeasuring(const std::wstring& text, int width) {
    // A text of printable ASCII is as wide as its characters' widths added up: a font has
    // them all, and the list draws them without kerning. A few pixels allow for rounding.
    // Other characters may come from another font, so such texts are measured.
    MeasuringDc();
    long long sum = kRoundingAllowance + kColumnPadding;
    for (const wchar_t c : text) {
        if (c < kFirstAscii || c > kLastAscii) {
            return false;
        }
        const INT char_width = ascii_widths_[static_cast<std::size_t>(c - kFirstAscii)];
        if (char_width <= 0) {
            return false;
        }
        sum += char_width;
    }
    return sum <= width;
}

void CheckListControl::AddColumn(const ListColumn& column) {
    const std::wstring caption = text::ToWide(column.caption);
    LVCOLUMNW lv{};
    lv.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    lv.pszText = const_cast<wchar_t*>(caption.c_str());
    lv.cx = columns_.empty() ? 110 : 150;
    lv.iSubItem = ColumnCount();
    ListView_InsertColumn(list_, ColumnCount(), &lv);
    columns_.push_back({column, 0});

    if (tooltip_ != nullptr) {
        const std::wstring tip = text::ToWide(column.tooltip);
        TOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        // Relayed, not subclassed: a subclassed header pays a window-property lookup
        // for every message the list sends it, a round trip to the server under Wine.
        tool.uFlags = 0;
        tool.hwnd = ListView_GetHeader(list_);
        tool.uId = static_cast<UINT_PTR>(columns_.size());
        tool.lpszText = const_cast<wchar_t*>(tip.c_str());
        SendMessageW(tooltip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
        UpdateColumnTips();
    }
}

void CheckListControl::UpdateColumnTips() {
    if (tooltip_ == nullptr) {
        return;
    }
    const HWND header = ListView_GetHeader(list_);
    for (int i = 0; i < ColumnCount(); ++i) {
        TOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        tool.hwnd = header;
        tool.uId = static_cast<UINT_PTR>(i + 1);
        Header_GetItemRect(header, i, &tool.rect);
        SendMessageW(tooltip_, TTM_NEWTOOLRECTW, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

int CheckListControl::RowCount() const {
    return ListView_GetItemCount(list_);
}

void CheckListControl::AddRow(const std::vector<std::string>& texts) {
    HoldRedraw();
    const int row = RowCount();
    const std::wstring first = text::ToWide(texts.empty() ? std::string() : texts[0]);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.pszText = const_cast<wchar_t*>(first.c_str());
    const int inserted = ListView_InsertItem(list_, &item);
    for (std::size_t column = 1; column < texts.size(); ++column) {
        const std::wstring wide = text::ToWide(texts[column]);
        LVITEMW sub_item{};
        sub_item.iSubItem = static_cast<int>(column);
        sub_item.pszText = const_cast<wchar_t*>(wide.c_str());
        SendMessageW(list_, LVM_SETITEMTEXTW, static_cast<WPARAM>(inserted),
                     reinterpret_cast<LPARAM>(&sub_item));
        if (column < columns_.size()) {
            int& widest = columns_[column].widest;
            if (!FitsWithoutMeasuring(wide, widest)) {
                widest = std::max(widest, TextWidth(wide));
            }
        }
    }
    tags_.resize(static_cast<std::size_t>(RowCount()));
}

void CheckListControl::Clear() {
    ListView_DeleteAllItems(list_);
    tags_.clear();
    for (ColumnState& state : columns_) {
        state.widest = 0;
    }
}

std::string CheckListControl::Text(int row, int column) const {
    // The list copies what fits and answers the length copied: a text that filled the
    // buffer may have been cut, so it is read again with room to spare.
    std::wstring buffer(kFirstReadLength, L'\0');
    for (;;) {
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = buffer.data();
        item.cchTextMax = static_cast<int>(buffer.size());
        const auto length = SendMessageW(list_, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                                         reinterpret_cast<LPARAM>(&item));
        if (length <= 0 || item.pszText == nullptr) {
            return {};
        }
        const auto copied = static_cast<std::size_t>(length);
        // A list that answers with a text of its own has given it whole.
        if (item.pszText != buffer.data() || copied + 1 < buffer.size() ||
            buffer.size() >= kLongestRead) {
            return text::FromWide(std::wstring_view(item.pszText, copied));
        }
        buffer.assign(buffer.size() * 4, L'\0');
    }
}

void CheckListControl::SetText(int row, int column, std::string_view text) {
    const std::wstring wide = text::ToWide(text);
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = const_cast<wchar_t*>(wide.c_str());
    SendMessageW(list_, LVM_SETITEMTEXTW, static_cast<WPARAM>(row),
                 reinterpret_cast<LPARAM>(&item));
}

bool CheckListControl::Checked(int row) const {
    return ListView_GetCheckState(list_, row) != 0;
}

void CheckListControl::SetChecked(int row, bool checked) {
    ListView_SetCheckState(list_, row, checked ? TRUE : FALSE);
}

int CheckListControl::SelectedRow() const {
    return ListView_GetNextItem(list_, -1, LVNI_SELECTED);
}

std::string CheckListControl::Tag(int row) const {
    return row >= 0 && static_cast<std::size_t>(row) < tags_.size()
               ? tags_[static_cast<std::size_t>(row)]
               : std::string();
}

void CheckListControl::SetTag(int row, std::string_view tag) {
    if (row >= 0 && static_cast<std::size_t>(row) < tags_.size()) {
        tags_[static_cast<std::size_t>(row)] = std::string(tag);
    }
}

void CheckListControl::AutoSizeColumn(int column) {
    if (column < 0 || column >= ColumnCount()) {
        return;
    }
    const ColumnState& state = columns_[static_cast<std::size_t>(column)];
    if (ListView_GetColumnWidth(list_, column) != state.widest) {
        ListView_SetColumnWidth(list_, column, state.widest);
        UpdateColumnTips();
    }
}

void CheckListControl::FitColumnTo(int column, std::string_view sample) {
    const std::wstring text = text::ToWide(sample);
    const int width = static_cast<int>(SendMessageW(list_, LVM_GETSTRINGWIDTHW, 0,
                                                    reinterpret_cast<LPARAM>(text.c_str()))) +
                      GetSystemMetrics(SM_CXMENUCHECK) + 2 * kColumnPadding;
    ListView_SetColumnWidth(list_, column, width);
    UpdateColumnTips();
}

void CheckListControl::RelayToTips(const MSG& message) const {
    if (tooltip_ != nullptr && message.message >= WM_MOUSEFIRST &&
        message.message <= WM_MOUSELAST && message.hwnd == ListView_GetHeader(list_)) {
        SendMessageW(tooltip_, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&message));
    }
}

void CheckListControl::Refresh() {
    // While drawing is held the whole list is redrawn when it resumes; invalidating it
    // now would paint it at the next message pump all the same.
    if (!redraw_held_) {
        InvalidateRect(list_, nullptr, FALSE);
    }
}

}  // namespace regvex::ui
