#include "ui/main_window_win32.h"

#include <commctrl.h>

#include <map>

#include "text/wide_text_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/task_pane_keys.h"
#include "ui/taskpane/task_icons.h"

namespace regvex::ui {

namespace {

constexpr const wchar_t* kClassName = L"RegvexlorMainWindow";
// The window as designed, before it is scaled to the screen.
constexpr int kDesignWidth = 800;
constexpr int kDesignHeight = 560;
constexpr COLORREF kLinkColor = RGB(0, 70, 170);

int TaskIconOf(std::string_view key) {
    static const std::map<std::string_view, int> icons{
        {kScanTask, taskpane::kIconScan},
        {kCheckAllTask, taskpane::kIconCheckAll},
        {kUncheckTask, taskpane::kIconUncheck},
        {kDeleteTask, taskpane::kIconDelete},
        {kRestoreTask, taskpane::kIconRestore},
        {kIgnoreTask, taskpane::kIconIgnore},
        {"", taskpane::kIconInfo},
        {kVersionTask, taskpane::kIconVersion},
        {kCopyrightTask, taskpane::kIconCopyright},
        {kCompanyTask, taskpane::kIconCompany},
        {kAboutTask, taskpane::kIconAbout},
        {kLikeTask, taskpane::kIconLike},
    };
    auto it = icons.find(key);
    return it == icons.end() ? taskpane::kNoIcon : it->second;
}

HFONT MakeFont(const wchar_t* face, int points, bool underline) {
    HDC screen = GetDC(nullptr);
    const int height = -MulDiv(points, GetDeviceCaps(screen, LOGPIXELSY), 72);
    ReleaseDC(nullptr, screen);
    return CreateFontW(height, 0, 0, 0, FW_NORMAL, FALSE, underline ? TRUE : FALSE, FALSE,
                       DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY,
                       DEFAULT_PITCH | FF_DONTCARE, face);
}

void AddTooltip(HWND tooltip, HWND owner, HWND control, const wchar_t* text) {
    TOOLINFOW tool{};
    tool.cbSize = sizeof(tool);
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = owner;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = const_cast<wchar_t*>(text);
    SendMessageW(tooltip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

}  // namespace

MainWindow::MainWindow(MainWindowServices services, ProgramState& state)
    : services_(std::move(services)), state_(state) {}

MainWindow::~MainWindow() {
    destroying_ = true;
    if (window_ != nullptr && IsWindow(window_)) {
        DestroyWindow(window_);
    }
}

bool MainWindow::Create(int show) {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSEXW window_class{};
    window_class.cbSize = sizeof(window_class);
    window_class.lpfnWndProc = WindowProc;
    window_class.hInstance = instance;
    window_class.hIcon = LoadIconW(instance, L"AAA");
    window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    window_class.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    window_class.lpszClassName = kClassName;
    RegisterClassExW(&window_class);

    menus_ = CreateMainMenus();
    RECT frame{0, 0, kDesignWidth, kDesignHeight};
    AdjustWindowRectEx(&frame, WS_OVERLAPPEDWINDOW, TRUE, 0);
    window_ = CreateWindowExW(0, kClassName, L"", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                              frame.right - frame.left, frame.bottom - frame.top, nullptr,
                              menus_.bar, instance, this);
    if (window_ == nullptr) {
        return false;
    }
    CreateControls();
    form_ = std::make_unique<frmMain>(
        MainControls{form_window_, frame1_, frame2_, option1_, option2_, drive_, start_stop_,
                     status_, current_key_, errors_, backups_, progress_, label21_,
                     menu_start_stop_},
        MainServices{services_.dialogs, services_.clock, services_.pump, services_.shell,
                     services_.screen, services_.system, services_.registry, services_.files,
                     services_.redirection, services_.disk, services_.processes,
                     services_.code_page, services_.ignore, *this},
        state_);
    resizer_.Capture(window_);
    form_->Form_Load();
    FitFirstColumns();
    ShowWindow(window_, show);
    UpdateWindow(window_);
    return true;
}

HWND MainWindow::Control(const wchar_t* window_class, const wchar_t* text, DWORD style, int x,
                         int y, int width, int height, int id, DWORD ex_style) {
    HWND control = CreateWindowExW(
        ex_style, window_class, text, WS_CHILD | WS_VISIBLE | style, x, y, width, height, window_,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
    return control;
}

void MainWindow::CreateControls() {
    font_.Reset(MakeFont(L"Tahoma", 8, false));
    link_font_.Reset(MakeFont(L"Tahoma", 8, true));
    form_window_.Attach(window_);
    menu_start_stop_.Attach(menus_.bar, kMenuStartStop);

    task_pane_.Create(window_, kTaskPane, RECT{0, 0, 200, kDesignHeight});
    task_pane_.SetOnItemClick([this](std::string_view key) {
        if (form_) {
            form_->TaskPane_ItemClick(key);
        }
    });
    SendMessageW(task_pane_.hwnd(), WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);

    header_tips_.Reset(CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                                       WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT,
                                       CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, window_,
                                       nullptr, GetModuleHandleW(nullptr), nullptr));
    const HWND tips = header_tips_.get();

    // The scan panel.
    const DWORD label = SS_NOPREFIX;
    const HWND frame1 = Control(L"BUTTON", L"Registry Scan", BS_GROUPBOX, 212, 6, 580, 512, -1);
    const HWND label2 = Control(L"STATIC", L"Select Drive:", label, 226, 34, 78, 18, -1);
    const HWND drive = Control(WC_COMBOBOXW, L"", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, 306,
                               30, 200, 240, kDriveCombo);
    const HWND option1 =
        Control(L"BUTTON", L"Deep Scan", BS_AUTORADIOBUTTON | WS_GROUP | WS_TABSTOP, 526, 32, 96,
                20, kDeepOption);
    const HWND option2 =
        Control(L"BUTTON", L"Safe Scan", BS_AUTORADIOBUTTON, 628, 32, 96, 20, kSafeOption);
    const HWND start_stop = Control(L"BUTTON", L"Begin Scan", BS_PUSHBUTTON | WS_TABSTOP | WS_GROUP,
                                    688, 60, 92, 28, kStartStopButton);
    const HWND status = Control(L"STATIC", L"Scanning Key:", label, 226, 66, 450, 18, kStatusLabel);
    const HWND current_key =
        Control(L"STATIC", L"", label | SS_PATHELLIPSIS, 226, 92, 554, 18, kCurrentKeyLabel);
    const DWORD list_style = LVS_REPORT | LVS_SHOWSELALWAYS | LVS_SINGLESEL | WS_TABSTOP;
    const DWORD list_ex_style = LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES |
                                LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER;
    const HWND errors =
        Control(WC_LISTVIEWW, L"", list_style, 226, 116, 554, 366, kErrorsList, WS_EX_CLIENTEDGE);
    ListView_SetExtendedListViewStyle(errors, list_ex_style);
    const HWND progress = Control(PROGRESS_CLASSW, L"", PBS_SMOOTH, 226, 490, 554, 16, -1);

    // The backups panel, behind the scan panel until the task pane asks for it.
    const HWND frame2 = Control(L"BUTTON", L"Restore Backups", BS_GROUPBOX, 212, 6, 580, 512, -1);
    const HWND backups =
        Control(WC_LISTVIEWW, L"", list_style, 226, 30, 554, 424, kBackupsList, WS_EX_CLIENTEDGE);
    ListView_SetExtendedListViewStyle(backups, list_ex_style);
    const HWND restore = Control(L"BUTTON", L"Restore Selected Backup", BS_PUSHBUTTON | WS_TABSTOP,
                                 226, 466, 200, 30, kRestoreButton);
    const HWND remove = Control(L"BUTTON", L"Delete Selected Backup", BS_PUSHBUTTON | WS_TABSTOP,
                                436, 466, 200, 30, kDeleteButton);

    // Below the panels: the product and the way to the help.
    const HWND label21 = Control(L"STATIC", L"", label, 212, 532, 300, 18, -1);
    image1_ = Control(L"STATIC", L"", SS_ICON | SS_NOTIFY | SS_REALSIZEIMAGE, 730, 526, 24, 24,
                      kHelpImage);
    SendMessageW(
        image1_, STM_SETICON,
        reinterpret_cast<WPARAM>(LoadImageW(nullptr, IDI_QUESTION, IMAGE_ICON, 24, 24, LR_SHARED)),
        0);
    const HWND label3 =
        Control(L"STATIC", L"Help", label | SS_NOTIFY, 758, 531, 34, 18, kHelpLabel);
    SendMessageW(label3, WM_SETFONT, reinterpret_cast<WPARAM>(link_font_.get()), FALSE);

    frame1_.Attach(frame1);
    frame2_.Attach(frame2);
    label2_.Attach(label2);
    drive_.Attach(drive);
    drive_.Fill();
    option1_.Attach(option1);
    option2_.Attach(option2);
    start_stop_.Attach(start_stop);
    status_.Attach(status);
    current_key_.Attach(current_key);
    errors_.Attach(errors, tips);
    progress_.Attach(progress);
    backups_.Attach(backups, tips);
    restore_button_.Attach(restore);
    delete_button_.Attach(remove);
    label21_.Attach(label21);
    label3_.Attach(label3);

    AddTooltip(tips, window_, drive, L"Select Drive To Scan for Invalid Entries");
    AddTooltip(tips, window_, option1, L"Scans Deeper in the registry for more invalid entries.");
    AddTooltip(tips, window_, option2, L"Scans for invalid entries.");

    scan_panel_ = {frame1,     label2, drive,       option1, option2,
                   start_stop, status, current_key, errors,  progress};
    backups_panel_ = {frame2, backups, restore, remove};
    BringToFront(Panel::kScan);
}

void MainWindow::SetWindowIcon() {
    ui::SetWindowIcon(window_, L"AAA", true);
}

void MainWindow::SetControlsFont(std::string_view font_name) {
    const std::wstring face = text::ToWide(font_name);
    // Segoe UI reads at 9 points what Tahoma reads at 8.
    const int points = font_name == "Segoe UI" ? 9 : 8;
    font_.Reset(MakeFont(face.c_str(), points, false));
    link_font_.Reset(MakeFont(face.c_str(), points, true));
    for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        const HFONT font = child == label3_.hwnd() ? link_font_.get() : font_.get();
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    }
    resizer_.Capture(window_);
}

void MainWindow::BuildTaskPane(const std::vector<TaskPaneGroup>& groups) {
    std::vector<taskpane::TaskGroup> pane;
    for (const TaskPaneGroup& source : groups) {
        taskpane::TaskGroup group;
        group.caption = source.caption;
        group.key = source.key;
        group.special = pane.empty();
        for (const TaskPaneLink& item : source.items) {
            group.items.push_back(
                {std::string(item.key), item.text, item.tooltip, TaskIconOf(item.key)});
        }
        pane.push_back(std::move(group));
    }
    task_pane_.SetGroups(std::move(pane));
}

void MainWindow::BringToFront(Panel panel) {
    for (HWND control : scan_panel_) {
        ShowWindow(control, panel == Panel::kScan ? SW_SHOW : SW_HIDE);
    }
    for (HWND control : backups_panel_) {
        ShowWindow(control, panel == Panel::kBackups ? SW_SHOW : SW_HIDE);
    }
}

void MainWindow::ScaleForm(double ratio_x, double ratio_y, bool size_window) {
    if (size_window) {
        resizer_.SizeForm(ratio_x, ratio_y);
    } else {
        resizer_.Layout();
    }
    FitFirstColumns();
}

void MainWindow::LayOut() {
    resizer_.Layout();
    FitFirstColumns();
}

void MainWindow::FitFirstColumns() {
    // The first columns are not sized by the scan; they hold a status or a number. The
    // backups' dates and sizes are as wide as the widest the locale writes.
    errors_.FitColumnTo(0, "Invalid Entry");
    backups_.FitColumnTo(0, "Backup #0000");
    backups_.FitColumnTo(1, "12/31/2026 12:59:59 PM ");
    backups_.FitColumnTo(2, "10000.00 KB");
}

void MainWindow::ShowAbout() {
    if (!about_) {
        about_ = std::make_unique<about::Win32AboutBox>(about::Win32AboutBox::Dependencies{
            services_.dialogs, state_.theme, services_.registry, state_.masks.KeyAccessMask,
            services_.files, services_.processes, services_.shell,
            [this] { SetActiveWindow(window_); }});
    }
    about_->ShowModal(window_);
}

void MainWindow::ScanPaused() {
    const ULONGLONG now = GetTickCount64();
    form_window_.caption().AtPause(now);
    status_.AtPause(now);
    current_key_.AtPause(now);
    errors_.AtPause(now);
}

void MainWindow::ShowHeldBack() {
    form_window_.caption().Release();
    status_.Release();
    current_key_.Release();
    errors_.Release();
}

void MainWindow::Close() {
    SendMessageW(window_, WM_CLOSE, kUnloadFromCode, 0);
}

void MainWindow::OnClose() {
    // A close of our own asks nothing; the title bar's close box asks first.
    if (form_->Form_QueryUnload(kUnloadFromTitleBar)) {
        return;
    }
    form_->Form_Unload();
    if (state_.bScanning) {
        // The scan ends the process at its next pause.
        return;
    }
    DestroyWindow(window_);
}

void MainWindow::OnCommand(int id, int code) {
    switch (id) {
        case kStartStopButton:
            if (code == BN_CLICKED) {
                form_->cmdStartStop_Click();
            }
            break;
        case kHelpImage:
            if (code == STN_CLICKED) {
                form_->Image1_Click();
            }
            break;
        case kHelpLabel:
            if (code == STN_CLICKED) {
                form_->Label3_Click();
            }
            break;
        case kMenuStartStop:
            form_->mnuStartStop_Click();
            break;
        case kMenuRestore:
            form_->TaskPane_ItemClick(kRestoreTask);
            break;
        case kMenuExit:
            form_->mnuExit_Click();
            break;
        case kMenuCheckAll:
            form_->mnuCheckAll_Click();
            break;
        case kMenuUncheckAll:
            form_->mnuUncheckAll_Click();
            break;
        case kMenuHelp:
            form_->mnuHelp2_Click();
            break;
        case kMenuAbout:
            form_->mnuAbout_Click();
            break;
        case kRestoreButton:
            if (code == BN_CLICKED) {
                form_->Command1_Click();
            }
            break;
        case kDeleteButton:
            if (code == BN_CLICKED) {
                form_->Command2_Click();
            }
            break;
        case kMenuFix:
            form_->mnuFix_Click();
            break;
        case kMenuRegeditView:
            form_->Regedit_View_Click();
            break;
        case kMenuViewBackup:
            form_->View_Backup_Click();
            break;
        case kMenuAddToIgnore:
            if (services_.add_value_to_ignore) {
                services_.add_value_to_ignore();
            }
            break;
        case kMenuAddSubkeyToIgnore:
            if (services_.add_subkey_to_ignore) {
                services_.add_subkey_to_ignore();
            }
            break;
        default:
            break;
    }
}

void MainWindow::ShowContextMenu(HMENU menu) {
    POINT at{};
    GetCursorPos(&at);
    TrackPopupMenu(menu, TPM_RIGHTBUTTON, at.x, at.y, 0, window_, nullptr);
}

void MainWindow::PreTranslateMessage(const MSG& message) const {
    errors_.RelayToTips(message);
    backups_.RelayToTips(message);
}

void MainWindow::OnNotify(const NMHDR& notification) {
    if (notification.code == NM_RCLICK) {
        if (notification.hwndFrom == errors_.hwnd()) {
            ShowContextMenu(menus_.add_ignore.get());
        } else if (notification.hwndFrom == backups_.hwnd()) {
            ShowContextMenu(menus_.restore_context.get());
        }
    } else if (notification.code == HDN_ENDTRACKW || notification.code == HDN_ITEMCHANGEDW) {
        errors_.UpdateColumnTips();
        backups_.UpdateColumnTips();
    }
}

LRESULT MainWindow::ColorStatic(HDC dc, HWND control) {
    SetBkMode(dc, TRANSPARENT);
    if (control == label3_.hwnd()) {
        SetTextColor(dc, kLinkColor);
    }
    return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
}

LRESULT MainWindow::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_COMMAND:
            if (form_) {
                OnCommand(LOWORD(wparam), HIWORD(wparam));
            }
            return 0;
        case WM_NOTIFY:
            if (form_) {
                OnNotify(*reinterpret_cast<const NMHDR*>(lparam));
            }
            return 0;
        case WM_SIZE:
            if (form_) {
                form_->Form_Resize();
            }
            return 0;
        case WM_GETMINMAXINFO: {
            auto* limits = reinterpret_cast<MINMAXINFO*>(lparam);
            limits->ptMinTrackSize = {640, 480};
            return 0;
        }
        case WM_CTLCOLORSTATIC:
            return ColorStatic(reinterpret_cast<HDC>(wparam), reinterpret_cast<HWND>(lparam));
        case WM_SETCURSOR:
            if (reinterpret_cast<HWND>(wparam) == label3_.hwnd() ||
                reinterpret_cast<HWND>(wparam) == image1_) {
                SetCursor(LoadCursorW(nullptr, IDC_HAND));
                return TRUE;
            }
            break;
        case WM_CLOSE:
            if (form_) {
                if (wparam == kUnloadFromCode) {
                    form_->Form_QueryUnload(kUnloadFromCode);
                    form_->Form_Unload();
                    DestroyWindow(window_);
                } else {
                    OnClose();
                }
            }
            return 0;
        case WM_DESTROY:
            if (!destroying_) {
                PostQuitMessage(0);
            }
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window_, message, wparam, lparam);
}

LRESULT CALLBACK MainWindow::WindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lparam);
        auto* self = static_cast<MainWindow*>(create->lpCreateParams);
        self->window_ = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr) {
        return DefWindowProcW(window, message, wparam, lparam);
    }
    return self->Handle(message, wparam, lparam);
}

}  // namespace regvex::ui
