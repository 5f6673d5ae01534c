#include "ui/main_window_win32.h"

#include <commctrl.h>

#include <map>
#include <span>
#include <vector>

#include "text/wide_text_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/task_pane_keys.h"
#include "ui/taskpane/task_icons.h"

namespace regvex::ui {

namespace {

const WindowClass kMainClass{L"RegvexlorMainWindow", ButtonFaceBrush(), L"AAA"};
// The window as designed, before it is scaled to the screen.
constexpr int kDesignWidth = 800;
constexpr int kDesignHeight = 560;

// The fonts, in the order the window hands them over.
enum MainFont : int { kFormFont, kLinkFont };
constexpr DWORD kLabel = SS_NOPREFIX;
constexpr DWORD kListStyle = LVS_REPORT | LVS_SHOWSELALWAYS | LVS_SINGLESEL | WS_TABSTOP;
constexpr DWORD kListExStyle = LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES |
                               LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER;

// The scan panel, then the backups panel behind it until the task pane asks for it, then
// below the panels the product and the way to the help.
constexpr ChildControl kScanPanel[] = {
    {kScanFrame, L"BUTTON", "Registry Scan", BS_GROUPBOX, 0, {212, 6, 580, 512}, kFormFont},
    {kDriveLabel, L"STATIC", "Select Drive:", kLabel, 0, {226, 34, 78, 18}, kFormFont},
    {kDriveCombo,
     WC_COMBOBOXW,
     "",
     CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP,
     0,
     {306, 30, 200, 240},
     kFormFont},
    {kDeepOption,
     L"BUTTON",
     "Deep Scan",
     BS_AUTORADIOBUTTON | WS_GROUP | WS_TABSTOP,
     0,
     {526, 32, 96, 20},
     kFormFont},
    {kSafeOption, L"BUTTON", "Safe Scan", BS_AUTORADIOBUTTON, 0, {628, 32, 96, 20}, kFormFont},
    {kStartStopButton,
     L"BUTTON",
     "Begin Scan",
     BS_PUSHBUTTON | WS_TABSTOP | WS_GROUP,
     0,
     {688, 60, 92, 28},
     kFormFont},
    {kStatusLabel, L"STATIC", "Scanning Key:", kLabel, 0, {226, 66, 450, 18}, kFormFont},
    {kCurrentKeyLabel, L"STATIC", "", kLabel | SS_PATHELLIPSIS, 0, {226, 92, 554, 18}, kFormFont},
    {kErrorsList, WC_LISTVIEWW, "", kListStyle, WS_EX_CLIENTEDGE, {226, 116, 554, 366}, kFormFont},
    {kProgressBar, PROGRESS_CLASSW, "", PBS_SMOOTH, 0, {226, 490, 554, 16}, kFormFont},
};
constexpr ChildControl kBackupsPanel[] = {
    {kBackupsFrame, L"BUTTON", "Restore Backups", BS_GROUPBOX, 0, {212, 6, 580, 512}, kFormFont},
    {kBackupsList, WC_LISTVIEWW, "", kListStyle, WS_EX_CLIENTEDGE, {226, 30, 554, 424}, kFormFont},
    {kRestoreButton,
     L"BUTTON",
     "Restore Selected Backup",
     BS_PUSHBUTTON | WS_TABSTOP,
     0,
     {226, 466, 200, 30},
     kFormFont},
    {kDeleteButton,
     L"BUTTON",
     "Delete Selected Backup",
     BS_PUSHBUTTON | WS_TABSTOP,
     0,
     {436, 466, 200, 30},
     kFormFont},
};
constexpr ChildControl kFooter[] = {
    {kProductLabel, L"STATIC", "", kLabel, 0, {212, 532, 300, 18}, kFormFont},
    {kHelpImage,
     L"STATIC",
     "",
     SS_ICON | SS_NOTIFY | SS_REALSIZEIMAGE,
     0,
     {730, 526, 24, 24},
     kFormFont},
    {kHelpLabel, L"STATIC", "Help", kLabel | SS_NOTIFY, 0, {758, 531, 34, 18}, kLinkFont},
};

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

handles::UniqueFont MakeFormFont(const wchar_t* face, int points, bool underline) {
    return MakeFont(face, PointsToHeight(points), FW_NORMAL, underline, CLEARTYPE_QUALITY,
                    DEFAULT_PITCH | FF_DONTCARE);
}

std::vector<HWND> ControlsOf(HWND window, std::span<const ChildControl> controls) {
    std::vector<HWND> found;
    for (const ChildControl& control : controls) {
        found.push_back(GetDlgItem(window, control.id));
    }
    return found;
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
    DestroyImpl();
}

bool MainWindow::Create(int show) {
    menus_ = CreateMainMenus();
    const SIZE frame = FrameSizeFor({kDesignWidth, kDesignHeight}, WS_OVERLAPPEDWINDOW, 0, true);
    WindowParams params;
    params.style = WS_OVERLAPPEDWINDOW;
    params.bounds = {CW_USEDEFAULT, CW_USEDEFAULT, frame.cx, frame.cy};
    params.menu = menus_.bar.get();
    if (CreateImpl(kMainClass, params) == nullptr) {
        return false;
    }
    menus_.bar.Release();  // the window's now
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
    resizer_.Capture(hwnd());
    form_->Form_Load();
    FitFirstColumns();
    ShowWindow(hwnd(), show);
    UpdateWindow(hwnd());
    return true;
}

void MainWindow::CreateControls() {
    const HWND window = hwnd();
    font_ = MakeFormFont(L"Tahoma", 8, false);
    link_font_ = MakeFormFont(L"Tahoma", 8, true);
    form_window_.Attach(window);
    menu_start_stop_.Attach(GetMenu(window), kMenuStartStop);

    task_pane_.Create(window, kTaskPane, RECT{0, 0, 200, kDesignHeight});
    task_pane_.SetOnItemClick([this](std::string_view key) {
        if (form_) {
            form_->TaskPane_ItemClick(key);
        }
    });
    SendMessageW(task_pane_.hwnd(), WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);

    header_tips_.Reset(CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                                       WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT,
                                       CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, window, nullptr,
                                       GetModuleHandleW(nullptr), nullptr));
    const HWND tips = header_tips_.get();

    const HFONT fonts[] = {font_.get(), link_font_.get()};
    CreateChildControls(window, kScanPanel, fonts);
    CreateChildControls(window, kBackupsPanel, fonts);
    CreateChildControls(window, kFooter, fonts);
    const auto control = [window](int id) { return GetDlgItem(window, id); };
    ListView_SetExtendedListViewStyle(control(kErrorsList), kListExStyle);
    ListView_SetExtendedListViewStyle(control(kBackupsList), kListExStyle);
    SendMessageW(
        control(kHelpImage), STM_SETICON,
        reinterpret_cast<WPARAM>(LoadImageW(nullptr, IDI_QUESTION, IMAGE_ICON, 24, 24, LR_SHARED)),
        0);

    frame1_.Attach(control(kScanFrame));
    frame2_.Attach(control(kBackupsFrame));
    label2_.Attach(control(kDriveLabel));
    drive_.Attach(control(kDriveCombo));
    drive_.Fill();
    option1_.Attach(control(kDeepOption));
    option2_.Attach(control(kSafeOption));
    start_stop_.Attach(control(kStartStopButton));
    status_.Attach(control(kStatusLabel));
    current_key_.Attach(control(kCurrentKeyLabel));
    errors_.Attach(control(kErrorsList), tips);
    progress_.Attach(control(kProgressBar));
    backups_.Attach(control(kBackupsList), tips);
    restore_button_.Attach(control(kRestoreButton));
    delete_button_.Attach(control(kDeleteButton));
    label21_.Attach(control(kProductLabel));
    label3_.Attach(control(kHelpLabel));

    AddTooltip(tips, window, control(kDriveCombo), L"Select Drive To Scan for Invalid Entries");
    AddTooltip(tips, window, control(kDeepOption),
               L"Scans Deeper in the registry for more invalid entries.");
    AddTooltip(tips, window, control(kSafeOption), L"Scans for invalid entries.");

    scan_panel_ = ControlsOf(window, kScanPanel);
    backups_panel_ = ControlsOf(window, kBackupsPanel);
    BringToFront(Panel::kScan);
}

void MainWindow::SetWindowIcon() {
    ui::SetWindowIcon(hwnd(), L"AAA", true);
}

void MainWindow::SetControlsFont(std::string_view font_name) {
    const std::wstring face = text::ToWide(font_name);
    // Segoe UI reads at 9 points what Tahoma reads at 8.
    const int points = font_name == "Segoe UI" ? 9 : 8;
    font_ = MakeFormFont(face.c_str(), points, false);
    link_font_ = MakeFormFont(face.c_str(), points, true);
    for (HWND child = GetWindow(hwnd(), GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        const HFONT font = child == label3_.hwnd() ? link_font_.get() : font_.get();
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    }
    resizer_.Capture(hwnd());
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
            [this] { SetActiveWindow(hwnd()); }});
    }
    about_->ShowModal(hwnd());
}

void MainWindow::ShowSearch(search::MissingFile missing) {
    if (!search_) {
        search_ =
            std::make_unique<search::Win32SearchWindow>(search::Win32SearchWindow::Dependencies{
                services_.dialogs, state_.theme, services_.disk, services_.pump});
    }
    search_->ShowModal(hwnd(), std::move(missing));
}

void MainWindow::ShowInfo(const std::string& explanation) {
    if (!info_) {
        info_ = std::make_unique<info::Win32InfoBox>(info::Win32InfoBox::Dependencies{
            services_.dialogs, state_.theme, [this] { SetActiveWindow(hwnd()); }});
    }
    info_->ShowModal(hwnd(), explanation);
}

void MainWindow::ScanPaused() {
    const auto now = Pace::Clock::now();
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
    SendMessageW(hwnd(), WM_CLOSE, kUnloadFromCode, 0);
}

}  // namespace regvex::ui
