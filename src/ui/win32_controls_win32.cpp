#include "ui/win32_controls_win32.h"

#include <commctrl.h>

#include <algorithm>

#include "text/wide_text_win32.h"

namespace regvex::ui {

namespace {

std::string TextOf(HWND window) {
    const int length = GetWindowTextLengthW(window);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), length + 1)));
    return text::FromWide(text);
}

// Space a list view leaves around a text in a column.
constexpr int kColumnPadding = 16;

}  // namespace

std::string WindowText::Caption() const {
    return TextOf(window_);
}

void WindowText::SetCaption(std::string_view caption) {
    SetWindowTextW(window_, text::ToWide(caption).c_str());
}

bool FormWindow::IsMinimized() const {
    return IsIconic(text_.hwnd()) != FALSE;
}

void FormWindow::Activate() {
    SetForegroundWindow(text_.hwnd());
    SetActiveWindow(text_.hwnd());
}

std::string MenuItemText::Caption() const {
    wchar_t text[256] = {};
    GetMenuStringW(menu_, id_, text, 256, MF_BYCOMMAND);
    return text::FromWide(text);
}

void MenuItemText::SetCaption(std::string_view caption) {
    const std::wstring wide = text::ToWide(caption);
    MENUITEMINFOW item{};
    item.cbSize = sizeof(item);
    item.fMask = MIIM_STRING;
    item.dwTypeData = const_cast<wchar_t*>(wide.c_str());
    SetMenuItemInfoW(menu_, id_, FALSE, &item);
}

bool RadioButton::Value() const {
    return SendMessageW(window_, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void RadioButton::SetValue(bool selected) {
    SendMessageW(window_, BM_SETCHECK, selected ? BST_CHECKED : BST_UNCHECKED, 0);
}

void ProgressControl::SetMax(int max) {
    max_ = max;
    SendMessageW(window_, PBM_SETRANGE32, 0, max);
}

void ProgressControl::SetValue(int value) {
    value_ = value;
    SendMessageW(window_, PBM_SETPOS, static_cast<WPARAM>(std::clamp(value, 0, max_)), 0);
}

void CheckListControl::Attach(HWND list, HWND tooltip) {
    list_ = list;
    tooltip_ = tooltip;
}

void CheckListControl::AddColumn(const ListColumn& column) {
    const std::wstring caption = text::ToWide(column.caption);
    LVCOLUMNW lv{};
    lv.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    lv.pszText = const_cast<wchar_t*>(caption.c_str());
    lv.cx = columns_.empty() ? 110 : 150;
    lv.iSubItem = ColumnCount();
    ListView_InsertColumn(list_, ColumnCount(), &lv);
    columns_.push_back({column, 0, 0});

    if (tooltip_ != nullptr) {
        const std::wstring tip = text::ToWide(column.tooltip);
        TOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        tool.uFlags = TTF_SUBCLASS;
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
    const int row = RowCount();
    const std::wstring first = text::ToWide(texts.empty() ? std::string() : texts[0]);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.pszText = const_cast<wchar_t*>(first.c_str());
    const int inserted = ListView_InsertItem(list_, &item);
    for (std::size_t column = 1; column < texts.size(); ++column) {
        SetText(inserted, static_cast<int>(column), texts[column]);
    }
    tags_.resize(static_cast<std::size_t>(RowCount()));
}

void CheckListControl::Clear() {
    ListView_DeleteAllItems(list_);
    tags_.clear();
    for (ColumnState& state : columns_) {
        state.widest = 0;
        state.measured_rows = 0;
    }
}

std::string CheckListControl::Text(int row, int column) const {
    std::wstring text(1024, L'\0');
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = static_cast<int>(text.size());
    const auto length = SendMessageW(list_, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                                     reinterpret_cast<LPARAM>(&item));
    text.resize(static_cast<std::size_t>(length));
    return text::FromWide(text);
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
    ColumnState& state = columns_[static_cast<std::size_t>(column)];
    const int rows = RowCount();
    if (rows < state.measured_rows) {
        state.widest = 0;
        state.measured_rows = 0;
    }
    for (int row = state.measured_rows; row < rows; ++row) {
        const std::wstring text = text::ToWide(Text(row, column));
        const int width = static_cast<int>(SendMessageW(list_, LVM_GETSTRINGWIDTHW, 0,
                                                        reinterpret_cast<LPARAM>(text.c_str()))) +
                          kColumnPadding;
        state.widest = std::max(state.widest, width);
    }
    state.measured_rows = rows;
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

void CheckListControl::Refresh() {
    InvalidateRect(list_, nullptr, FALSE);
}

void DriveCombo::Fill() {
    SendMessageW(combo_, CB_RESETCONTENT, 0, 0);
    wchar_t windows[MAX_PATH] = {};
    GetSystemWindowsDirectoryW(windows, MAX_PATH);
    const wchar_t system_letter = windows[0] >= L'A' && windows[0] <= L'Z'
                                      ? static_cast<wchar_t>(windows[0] - L'A' + L'a')
                                      : windows[0];
    const DWORD drives = GetLogicalDrives();
    int selected = 0;
    for (int i = 0; i < 26; ++i) {
        if ((drives & (1u << i)) == 0) {
            continue;
        }
        const wchar_t letter = static_cast<wchar_t>(L'a' + i);
        std::wstring text{letter, L':'};
        const wchar_t root[] = {static_cast<wchar_t>(L'A' + i), L':', L'\\', L'\0'};
        const UINT type = GetDriveTypeW(root);
        // Asking a removable drive for its label can wait on the hardware.
        if (type != DRIVE_REMOVABLE && type != DRIVE_NO_ROOT_DIR) {
            wchar_t label[MAX_PATH + 1] = {};
            if (GetVolumeInformationW(root, label, MAX_PATH + 1, nullptr, nullptr, nullptr, nullptr,
                                      0) &&
                label[0] != L'\0') {
                text += L" [";
                text += label;
                text += L"]";
            }
        }
        const auto index =
            SendMessageW(combo_, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        if (letter == system_letter) {
            selected = static_cast<int>(index);
        }
    }
    SendMessageW(combo_, CB_SETCURSEL, static_cast<WPARAM>(selected), 0);
}

std::string DriveCombo::Drive() const {
    const auto index = SendMessageW(combo_, CB_GETCURSEL, 0, 0);
    if (index == CB_ERR) {
        return {};
    }
    const auto length = SendMessageW(combo_, CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    SendMessageW(combo_, CB_GETLBTEXT, static_cast<WPARAM>(index),
                 reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text::FromWide(text);
}

}  // namespace regvex::ui
