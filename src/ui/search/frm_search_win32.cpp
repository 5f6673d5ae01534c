#include "ui/search/frm_search_win32.h"

#include <commctrl.h>

#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"
#include "ui/base/form_resizer_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/base/modal_message_dialogs_win32.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui::search {

namespace {

const WindowClass kSearchClass{kSearchWindowClass, ButtonFaceBrush(), L"AAA"};

// The window as designed, in pixels at 96 dots per inch; it is scaled to the screen.
constexpr SIZE kDesignClient{600, 380};
constexpr int kDesignFontHeight = -11;  // Tahoma 8 points
constexpr int kColumnPadding = 16;

constexpr ChildControl kControls[] = {
    {kIdSearchMissing, L"STATIC", "", SS_LEFT | SS_NOPREFIX, 0, {12, 12, 576, 16}, 0},
    {kIdSearchPath,
     L"STATIC",
     "",
     SS_LEFT | SS_NOPREFIX | SS_PATHELLIPSIS,
     0,
     {24, 32, 564, 16},
     1},
    {kIdSearchFound,
     WC_LISTVIEWW,
     "",
     LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | WS_TABSTOP,
     WS_EX_CLIENTEDGE,
     {12, 58, 576, 236},
     0},
    {kIdSearchProgress,
     L"STATIC",
     "",
     SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS,
     0,
     {12, 302, 576, 16},
     0},
    {kIdSearchStop, L"BUTTON", "", BS_PUSHBUTTON | WS_TABSTOP, 0, {12, 336, 90, 28}, 0},
    {kIdSearchUse, L"BUTTON", "", BS_DEFPUSHBUTTON | WS_TABSTOP, 0, {386, 336, 110, 28}, 0},
    {kIdSearchCancel, L"BUTTON", "", BS_PUSHBUTTON | WS_TABSTOP, 0, {504, 336, 84, 28}, 0},
};

// The files found: a report list view, one row per file, no check boxes.
class FoundList final : public CheckListView {
  public:
    explicit FoundList(HWND list) : list_(list) {
        ListView_SetExtendedListViewStyle(list_, LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
    }
    void AddColumn(const ListColumn& column) override {
        const std::wstring caption = text::ToWide(column.caption);
        LVCOLUMNW lv{};
        lv.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        lv.pszText = const_cast<wchar_t*>(caption.c_str());
        lv.cx = columns_ == 0 ? 340 : 110;
        lv.iSubItem = columns_;
        ListView_InsertColumn(list_, columns_, &lv);
        ++columns_;
    }
    int ColumnCount() const override { return columns_; }
    int RowCount() const override { return ListView_GetItemCount(list_); }
    void AddRow(const std::vector<std::string>& texts) override {
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.iItem = RowCount();
        std::wstring first = texts.empty() ? std::wstring() : text::ToWide(texts[0]);
        item.pszText = first.data();
        const int row = ListView_InsertItem(list_, &item);
        for (std::size_t column = 1; column < texts.size(); ++column) {
            SetText(row, static_cast<int>(column), texts[column]);
        }
        tags_.resize(static_cast<std::size_t>(RowCount()));
    }
    void Clear() override {
        ListView_DeleteAllItems(list_);
        tags_.clear();
    }
    std::string Text(int row, int column) const override {
        std::vector<wchar_t> buffer(32768);
        ListView_GetItemText(list_, row, column, buffer.data(), static_cast<int>(buffer.size()));
        return text::FromWide(buffer.data());
    }
    void SetText(int row, int column, std::string_view value) override {
        std::wstring wide = text::ToWide(value);
        ListView_SetItemText(list_, row, column, wide.data());
    }
    bool Checked(int) const override { return false; }
    void SetChecked(int, bool) override {}
    int SelectedRow() const override { return ListView_GetNextItem(list_, -1, LVNI_SELECTED); }
    std::string Tag(int row) const override {
        return row >= 0 && static_cast<std::size_t>(row) < tags_.size()
                   ? tags_[static_cast<std::size_t>(row)]
                   : std::string();
    }
    void SetTag(int row, std::string_view tag) override {
        if (row >= 0 && static_cast<std::size_t>(row) < tags_.size()) {
            tags_[static_cast<std::size_t>(row)] = std::string(tag);
        }
    }
    void AutoSizeColumn(int column) override {
        // Never narrower than its caption, and never narrower than it is.
        const int before = ListView_GetColumnWidth(list_, column);
        ListView_SetColumnWidth(list_, column, LVSCW_AUTOSIZE_USEHEADER);
        if (ListView_GetColumnWidth(list_, column) < before) {
            ListView_SetColumnWidth(list_, column, before);
        }
    }
    void Refresh() override { InvalidateRect(list_, nullptr, TRUE); }

  private:
    HWND list_;
    int columns_ = 0;
    std::vector<std::string> tags_;
};

}  // namespace

std::string LocalFileTimeText(std::int64_t unix_seconds) {
    // FILETIME counts 100-nanosecond steps from 1601.
    constexpr std::int64_t kSecondsFrom1601To1970 = 11644473600;
    const auto ticks =
        static_cast<ULONGLONG>((unix_seconds + kSecondsFrom1601To1970) * 10'000'000LL);
    FILETIME utc{static_cast<DWORD>(ticks & 0xFFFFFFFFu), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME universal{};
    SYSTEMTIME local{};
    if (!FileTimeToSystemTime(&utc, &universal) ||
        !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local)) {
        return {};
    }
    wchar_t date[128] = {};
    wchar_t time[128] = {};
    GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &local, nullptr, date, 128);
    GetTimeFormatW(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &local, nullptr, time, 128);
    return text::FromWide(std::wstring(date) + L" " + time);
}

struct Win32SearchWindow::Shown {
    Shown(HWND owner_window, MessageDialogs& dialogs, HWND window)
        : owner(owner_window),
          owner_was_enabled(owner_window != nullptr && IsWindowEnabled(owner_window) != FALSE),
          modal_dialogs(dialogs, window),
          form(window),
          missing(GetDlgItem(window, kIdSearchMissing)),
          path(GetDlgItem(window, kIdSearchPath)),
          found(GetDlgItem(window, kIdSearchFound)),
          progress(GetDlgItem(window, kIdSearchProgress)),
          stop(GetDlgItem(window, kIdSearchStop)),
          use(GetDlgItem(window, kIdSearchUse)),
          cancel(GetDlgItem(window, kIdSearchCancel)) {}

    HWND owner;
    bool owner_was_enabled;
    // These go after the window, whose controls use them (Destroy).
    handles::UniqueFont font;
    handles::UniqueFont bold_font;
    FormResizer resizer;
    ModalToWindow modal_dialogs;
    FormWindow form;
    WindowText missing;
    WindowText path;
    FoundList found;
    WindowText progress;
    WindowText stop;
    WindowText use;
    WindowText cancel;
    std::unique_ptr<frmSearch> code;
};

Win32SearchWindow::Win32SearchWindow(Dependencies dependencies) : deps_(std::move(dependencies)) {}

Win32SearchWindow::~Win32SearchWindow() {
    Destroy();
}

void Win32SearchWindow::ShowModal(HWND owner, MissingFile missing) {
    if (shown_ != nullptr) {
        SetForegroundWindow(hwnd());
        return;
    }
    Load(owner, std::move(missing));
    if (shown_ == nullptr || hwnd() == nullptr) {
        Destroy();
        return;
    }
    const HWND window = hwnd();
    if (shown_->owner_was_enabled) {
        EnableWindow(owner, FALSE);
    }
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    SetFocus(GetDlgItem(window, kIdSearchFound));
    UpdateWindow(window);

    RunHandler(&frmSearch::RunSearch);
    const std::optional<int> quit_code = RunModalLoop([this] { return hwnd(); });
    const bool reenable = shown_ != nullptr && shown_->owner_was_enabled;
    Destroy();
    ReturnToOwner(owner, reenable, quit_code);
}

void Win32SearchWindow::Load(HWND owner, MissingFile missing) {
    const DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU;
    const DWORD ex_style = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
    const SIZE frame = FrameSizeFor(kDesignClient, style, ex_style, false);
    WindowParams params;
    params.style = style;
    params.ex_style = ex_style;
    params.bounds = {CW_USEDEFAULT, CW_USEDEFAULT, frame.cx, frame.cy};
    params.parent = owner;
    const HWND window = CreateImpl(kSearchClass, params);
    if (window == nullptr) {
        return;
    }
    // The font handles must outlive the controls: made first, handed over after.
    handles::UniqueFont font = MakeFont(L"Tahoma", kDesignFontHeight);
    handles::UniqueFont bold = MakeFont(L"Tahoma", kDesignFontHeight, FW_BOLD);
    const HFONT fonts[] = {font.get(), bold.get()};
    CreateChildControls(window, kControls, fonts);
    shown_ = std::make_unique<Shown>(owner, deps_.dialogs, window);
    Shown& s = *shown_;
    s.font = std::move(font);
    s.bold_font = std::move(bold);

    // While the main window repairs, this one takes no clicks: a second Use would repair
    // twice.
    MissingFile guarded{std::move(missing.path),
                        [window, use = std::move(missing.use_file)](const std::string& path) {
                            EnableWindow(window, FALSE);
                            const bool done = use && use(path);
                            EnableWindow(window, TRUE);
                            return done;
                        }};
    SearchServices services{deps_.files, deps_.pump,         s.modal_dialogs,
                            deps_.theme, &LocalFileTimeText, [this] { Close(); }};
    s.code = std::make_unique<frmSearch>(
        SearchControls{s.form, s.missing, s.path, s.found, s.progress, s.stop, s.use, s.cancel},
        std::move(services), std::move(guarded));
    RunHandler(&frmSearch::Form_Load);
    const double ratio = static_cast<double>(ScreenDpi()) / kDesignDpi;
    s.resizer.Capture(window);
    s.resizer.SizeForm(ratio, ratio);
    CentreOnOwner(window, owner);
}

void Win32SearchWindow::RunHandler(void (frmSearch::*handler)()) {
    if (shown_ == nullptr || shown_->code == nullptr) {
        return;
    }
    ++busy_;
    try {
        ((*shown_->code).*handler)();
    } catch (const std::exception& error) {
        // Nothing may unwind into the system's window procedures.
        ShowRunTimeError(
            shown_ != nullptr ? static_cast<MessageDialogs&>(shown_->modal_dialogs) : deps_.dialogs,
            deps_.theme, error);
    }
    if (--busy_ == 0 && close_pending_) {
        close_pending_ = false;
        Destroy();
    }
}

void Win32SearchWindow::Close() {
    if (shown_ == nullptr || hwnd() == nullptr) {
        return;
    }
    shown_->code->Form_QueryUnload();
    // Enabled before the window goes, so that the system hands the activation back to it.
    if (shown_->owner_was_enabled && IsWindow(shown_->owner)) {
        EnableWindow(shown_->owner, TRUE);
    }
    if (busy_ > 0) {
        ShowWindow(hwnd(), SW_HIDE);
        close_pending_ = true;
        return;
    }
    Destroy();
}

void Win32SearchWindow::Destroy() {
    if (shown_ == nullptr) {
        return;
    }
    // Forget the window first: the messages of its destruction find it gone.
    std::unique_ptr<Shown> gone = std::move(shown_);
    DestroyImpl();
}

void Win32SearchWindow::OnCommand(int id, int code) {
    // Enter and Escape arrive as IDOK and IDCANCEL without a notification code.
    if (code != BN_CLICKED) {
        return;
    }
    switch (id) {
        case kIdSearchStop:
            RunHandler(&frmSearch::cmdStop_Click);
            break;
        case IDOK:
        case kIdSearchUse:
            RunHandler(&frmSearch::cmdUse_Click);
            break;
        case kIdSearchCancel:
            RunHandler(&frmSearch::cmdCancel_Click);
            break;
        default:
            break;
    }
}

LRESULT Win32SearchWindow::HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const bool live = shown_ != nullptr && shown_->code != nullptr && hwnd() == window;
    switch (message) {
        case WM_COMMAND:
            if (live) {
                OnCommand(LOWORD(wparam), HIWORD(wparam));
            }
            return 0;
        case WM_NOTIFY:
            if (live) {
                // While the search runs, the keys go to the list without the dialog
                // manager: Enter and Escape are taken here then.
                const auto* notification = reinterpret_cast<const NMHDR*>(lparam);
                if (notification->idFrom != kIdSearchFound) {
                    return 0;
                }
                if (notification->code == NM_DBLCLK || notification->code == NM_RETURN) {
                    RunHandler(&frmSearch::cmdUse_Click);
                } else if (notification->code == LVN_KEYDOWN &&
                           reinterpret_cast<const NMLVKEYDOWN*>(lparam)->wVKey == VK_ESCAPE) {
                    RunHandler(&frmSearch::cmdCancel_Click);
                }
            }
            return 0;
        case WM_CLOSE:
            if (live) {
                Close();
            }
            return 0;
        case DM_GETDEFID:
            return MAKELRESULT(kIdSearchUse, DC_HASDEFID);
        default:
            break;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace regvex::ui::search
