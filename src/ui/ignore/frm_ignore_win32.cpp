#include "ui/ignore/frm_ignore_win32.h"

#include <commctrl.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"
#include "ui/base/form_resizer_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/base/modal_message_dialogs_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/base/win32_controls_win32.h"
#include "ui/base/window_kit_win32.h"
#include "ui/ignore/ignore_controls_win32.h"

namespace regvex::ui::ignore {

namespace {

const WindowClass kIgnoreClass{L"RegvexlorIgnoreList", ButtonFaceBrush()};

// The window as designed, in pixels at 96 dots per inch; ResizeIgnore scales it to the
// screen.
constexpr SIZE kDesignClient{376, 318};
constexpr int kDesignFontHeight = -11;  // 8 points at 96 dpi
constexpr wchar_t kWindowFont[] = L"Tahoma";

// The frame comes first so that it lies beneath the controls drawn inside it.
constexpr ChildControl kControls[] = {
    {kIdFrame1, L"BUTTON", kFrame1Caption, BS_GROUPBOX, 0, {8, 6, 360, 80}, 0},
    {kIdLabel1, L"STATIC", kLabel1Caption, SS_LEFT | SS_NOPREFIX, 0, {20, 27, 240, 14}, 0},
    {kIdTxtString,
     L"EDIT",
     "",
     WS_TABSTOP | ES_AUTOHSCROLL,
     WS_EX_CLIENTEDGE,
     {20, 45, 258, 23},
     0},
    {kIdCmdAdd, L"BUTTON", kAddCaption, WS_TABSTOP | BS_PUSHBUTTON, 0, {286, 45, 70, 23}, 0},
    {kIdLabel2, L"STATIC", kLabel2Caption, SS_LEFT | SS_NOPREFIX, 0, {10, 96, 356, 28}, 0},
    {kIdLstIgnore,
     L"LISTBOX",
     "",
     WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
     WS_EX_CLIENTEDGE,
     {8, 126, 360, 146},
     0},
    {kIdCmdRemove, L"BUTTON", kRemoveCaption, WS_TABSTOP | BS_PUSHBUTTON, 0, {8, 282, 90, 26}, 0},
    {kIdCmdApply, L"BUTTON", kApplyCaption, WS_TABSTOP | BS_PUSHBUTTON, 0, {268, 282, 100, 26}, 0},
};

// The menu bar with its one menu, "&File".
handles::UniqueMenu CreateMenuBar() {
    const HMENU file_menu = CreatePopupMenu();
    AppendMenuW(file_menu, MF_STRING, kIdMnuAdd, text::ToWide(kMnuAddCaption).c_str());
    AppendMenuW(file_menu, MF_STRING, kIdMnuRemove, text::ToWide(kMnuRemoveCaption).c_str());
    AppendMenuW(file_menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(file_menu, MF_STRING, kIdMnuClose, text::ToWide(kMnuCloseCaption).c_str());
    handles::UniqueMenu bar(CreateMenu());
    AppendMenuW(bar.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(file_menu),
                text::ToWide(kMnuFileCaption).c_str());
    return bar;
}

int TwipsPerPixel() {
    return 1440 / ScreenDpi();
}

}  // namespace

struct Win32IgnoreWindow::Loaded {
    Loaded(HWND window, handles::UniqueFont design_font, MessageDialogs& dialogs)
        : font(std::move(design_font)),
          menu_bar(GetMenu(window)),
          modal_dialogs(dialogs, window),
          form(window),
          frame(GetDlgItem(window, kIdFrame1)),
          label1(GetDlgItem(window, kIdLabel1)),
          txt_string(GetDlgItem(window, kIdTxtString)),
          cmd_add(GetDlgItem(window, kIdCmdAdd)),
          lst_ignore(GetDlgItem(window, kIdLstIgnore)),
          label2(GetDlgItem(window, kIdLabel2)),
          cmd_remove(GetDlgItem(window, kIdCmdRemove)),
          cmd_apply(GetDlgItem(window, kIdCmdApply)),
          mnu_file(menu_bar, 0, true, window),
          mnu_add(GetSubMenu(menu_bar, 0), kIdMnuAdd, false, window),
          mnu_remove(GetSubMenu(menu_bar, 0), kIdMnuRemove, false, window),
          mnu_close(GetSubMenu(menu_bar, 0), kIdMnuClose, false, window) {}

    // Goes after the window, whose controls use it (Destroy).
    handles::UniqueFont font;
    // The form's font as the resizer left its controls: what the list measures text in.
    HFONT form_font = nullptr;
    HMENU menu_bar;  // destroyed with the window
    ModalToWindow modal_dialogs;
    FormResizer resizer;

    FormWindow form;
    WindowText frame;
    WindowText label1;
    WinTextBox txt_string;
    WindowText cmd_add;
    WinListBox lst_ignore;
    WindowText label2;
    WindowText cmd_remove;
    WindowText cmd_apply;
    MenuItemText mnu_file;
    MenuItemText mnu_add;
    MenuItemText mnu_remove;
    MenuItemText mnu_close;

    std::unique_ptr<frmIgnore> code;
};

Win32IgnoreWindow::Win32IgnoreWindow(Dependencies dependencies) : deps_(std::move(dependencies)) {}

Win32IgnoreWindow::~Win32IgnoreWindow() {
    Destroy();
}

bool Win32IgnoreWindow::IsLoaded() const {
    return loaded_ != nullptr;
}

HWND Win32IgnoreWindow::Handle() const {
    return loaded_ != nullptr ? hwnd() : nullptr;
}

frmIgnore& Win32IgnoreWindow::Form() {
    if (loaded_ == nullptr) {
        Load();
    }
    if (loaded_ == nullptr) {
        // Closed again by the time its load was done (from a message box of the load).
        throw std::runtime_error("the ignore-list window was unloaded while loading");
    }
    return *loaded_->code;
}

ListBox& Win32IgnoreWindow::lstIgnore() {
    Form();
    return loaded_->lst_ignore;
}

void Win32IgnoreWindow::Show() {
    Form();
    const HWND window = hwnd();
    ShowWindow(window, IsIconic(window) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(window);
}

void Win32IgnoreWindow::Unload() {
    if (loaded_ == nullptr) {
        return;
    }
    if (busy_ > 0) {
        unload_pending_ = true;
        return;
    }
    unload_pending_ = false;
    loaded_->code->Form_QueryUnload();
    Destroy();
}

bool Win32IgnoreWindow::PreTranslateMessage(MSG& message) {
    const HWND window = Handle();
    if (window == nullptr || (message.hwnd != window && !IsChild(window, message.hwnd))) {
        return false;
    }
    return IsDialogMessageW(window, &message) != FALSE;
}

void Win32IgnoreWindow::Destroy() {
    if (loaded_ == nullptr) {
        return;
    }
    // Forget the window first: the messages of its destruction find it unloaded.
    std::unique_ptr<Loaded> gone = std::move(loaded_);
    DestroyImpl();
}

void Win32IgnoreWindow::Load() {
    // Fixed in size: the layout is made once and does not follow the frame.
    const DWORD style = WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
    const DWORD ex_style = WS_EX_CONTROLPARENT;
    const SIZE frame = FrameSizeFor(kDesignClient, style, ex_style, true);
    const HWND owner = deps_.owner ? deps_.owner() : nullptr;
    handles::UniqueMenu menu_bar = CreateMenuBar();
    WindowParams params;
    params.style = style;
    params.ex_style = ex_style;
    params.text = kIgnoreCaption;
    params.bounds = {CW_USEDEFAULT, CW_USEDEFAULT, frame.cx, frame.cy};
    params.parent = owner;
    params.menu = menu_bar.get();
    const HWND window = CreateImpl(kIgnoreClass, params);
    if (window == nullptr) {
        throw std::runtime_error("the ignore-list window could not be made");
    }
    menu_bar.Release();  // the window's now

    // Tahoma as designed, whatever font the main window took for the system it runs on.
    handles::UniqueFont font = MakeFont(kWindowFont, kDesignFontHeight);
    const HFONT fonts[] = {font.get()};
    CreateChildControls(window, kControls, fonts);
    // Subclassed by hand: the common controls' subclassing looks up a window property
    // for every message, a round trip to the server under Wine, and a scan asks this
    // list for its entries at every finding.
    const HWND list = GetDlgItem(window, kIdLstIgnore);
    SetWindowLongPtrW(list, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    list_proc_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(list, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ListProc)));

    loaded_ = std::make_unique<Loaded>(window, std::move(font), deps_.dialogs);
    Loaded& l = *loaded_;
    l.form_font = l.font.get();

    IgnoreServices services{
        l.modal_dialogs,
        deps_.files,
        deps_.code_page,
        deps_.state,
        deps_.main_window_on_close,
        [this](float x, float y) { PopupFileMenu(x, y); },
        [window] { PostMessageW(window, WM_CLOSE, 0, 0); },
        [this] { ResizeIgnore(); },
        ScrollMetrics{TwipsPerPixel(), GetSystemMetrics(SM_CXVSCROLL)},
    };
    IgnoreControls controls{l.form,       l.frame,      l.label1,     l.txt_string, l.cmd_add,
                            l.lst_ignore, l.label2,     l.cmd_remove, l.cmd_apply,  l.mnu_file,
                            l.mnu_add,    l.mnu_remove, l.mnu_close};
    l.code = std::make_unique<frmIgnore>(controls, std::move(services));

    SetWindowIcon(window, L"AAA", true);
    RunHandler([&l] { l.code->Form_Load(); });
    if (loaded_ != nullptr) {
        CentreOnOwner(window, owner);
    }
}

void Win32IgnoreWindow::RunHandler(const std::function<void()>& handler) {
    ++busy_;
    try {
        handler();
    } catch (const std::exception& error) {
        // Nothing may unwind into the system's window procedures. A handler that lets an
        // error go (Apply, on a file that cannot be written) has it shown here as any
        // run-time error that nothing handles, and the window stays as it was.
        ShowRunTimeError(loaded_ != nullptr ? static_cast<MessageDialogs&>(loaded_->modal_dialogs)
                                            : deps_.dialogs,
                         deps_.state.theme, error);
    }
    if (--busy_ == 0 && unload_pending_) {
        Unload();
    }
}

void Win32IgnoreWindow::ResizeIgnore() {
    if (loaded_ == nullptr) {
        return;
    }
    Loaded& l = *loaded_;
    const double ratio = static_cast<double>(ScreenDpi()) / kDesignDpi;
    l.resizer.Capture(hwnd());
    l.resizer.SizeForm(ratio, ratio);
    l.form_font =
        reinterpret_cast<HFONT>(SendMessageW(GetDlgItem(hwnd(), kIdLstIgnore), WM_GETFONT, 0, 0));
}

void Win32IgnoreWindow::PopupFileMenu(float x_twips, float y_twips) {
    if (loaded_ == nullptr) {
        return;
    }
    const HWND list = GetDlgItem(hwnd(), kIdLstIgnore);
    const int twips_per_pixel = TwipsPerPixel();
    POINT point{static_cast<LONG>(x_twips / static_cast<float>(twips_per_pixel)),
                static_cast<LONG>(y_twips / static_cast<float>(twips_per_pixel))};
    ClientToScreen(list, &point);
    TrackPopupMenu(GetSubMenu(loaded_->menu_bar, 0), TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RIGHTBUTTON,
                   point.x, point.y, 0, hwnd(), nullptr);
}

void Win32IgnoreWindow::OnCommand(int id) {
    frmIgnore& code = *loaded_->code;
    switch (id) {
        case kIdCmdAdd:
            code.cmdAdd_Click();
            break;
        case kIdCmdRemove:
            code.cmdRemove_Click();
            break;
        case kIdCmdApply:
            code.cmdApply_Click();
            break;
        case kIdMnuAdd:
            code.mnuAdd_Click();
            break;
        case kIdMnuRemove:
            code.mnuRemove_Click();
            break;
        case kIdMnuClose:
            code.mnuClose_Click();
            break;
        default:
            break;
    }
}

void Win32IgnoreWindow::OnListMouse(UINT message, WPARAM wparam, LPARAM lparam) {
    frmIgnore& code = *loaded_->code;
    const int twips_per_pixel = TwipsPerPixel();
    // Signed: a captured pointer can be left of or above the list.
    const auto x = static_cast<float>(static_cast<short>(LOWORD(lparam)) * twips_per_pixel);
    const auto y = static_cast<float>(static_cast<short>(HIWORD(lparam)) * twips_per_pixel);
    const int shift = MouseShiftState(wparam);
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            code.lstIgnore_MouseDown(mouse::kLeft, shift, x, y);
            break;
        case WM_RBUTTONDOWN:
        case WM_RBUTTONDBLCLK:
            code.lstIgnore_MouseDown(mouse::kRight, shift, x, y);
            break;
        case WM_MBUTTONDOWN:
        case WM_MBUTTONDBLCLK:
            code.lstIgnore_MouseDown(mouse::kMiddle, shift, x, y);
            break;
        case WM_LBUTTONUP:
            code.lstIgnore_MouseUp(mouse::kLeft, shift, x, y);
            break;
        case WM_RBUTTONUP:
            code.lstIgnore_MouseUp(mouse::kRight, shift, x, y);
            break;
        case WM_MBUTTONUP:
            code.lstIgnore_MouseUp(mouse::kMiddle, shift, x, y);
            break;
        default:
            break;
    }
}

LRESULT CALLBACK Win32IgnoreWindow::ListProc(HWND list, UINT message, WPARAM wparam,
                                             LPARAM lparam) {
    auto* self = reinterpret_cast<Win32IgnoreWindow*>(GetWindowLongPtrW(list, GWLP_USERDATA));
    const WNDPROC previous = self->list_proc_;
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_RBUTTONDOWN:
        case WM_RBUTTONDBLCLK:
        case WM_MBUTTONDOWN:
        case WM_MBUTTONDBLCLK:
        case WM_LBUTTONUP:
        case WM_RBUTTONUP:
        case WM_MBUTTONUP: {
            // The list box does its own selecting first; the handlers have the last word.
            const LRESULT result = CallWindowProcW(previous, list, message, wparam, lparam);
            if (self->loaded_ != nullptr) {
                self->RunHandler([&] { self->OnListMouse(message, wparam, lparam); });
            }
            return result;
        }
        case WM_NCDESTROY:
            SetWindowLongPtrW(list, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
            SetWindowLongPtrW(list, GWLP_USERDATA, 0);
            break;
        default:
            break;
    }
    return CallWindowProcW(previous, list, message, wparam, lparam);
}

LRESULT Win32IgnoreWindow::HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const bool loaded = loaded_ != nullptr;
    switch (message) {
        case WM_COMMAND: {
            const int id = LOWORD(wparam);
            const int code = HIWORD(wparam);
            const bool from_menu = lparam == 0 && code == 0;
            const bool clicked = lparam != 0 && code == BN_CLICKED;
            if (loaded && (from_menu || clicked)) {
                RunHandler([this, id] { OnCommand(id); });
            }
            return 0;
        }
        case WM_CLOSE:
            if (loaded) {
                Unload();
            }
            return 0;
        case WM_SIZE:
            if (loaded) {
                RunHandler([this] { loaded_->code->Form_Resize(); });
            }
            break;
        case WM_GETFONT:
            return loaded ? reinterpret_cast<LRESULT>(loaded_->form_font) : 0;
        case WM_SETFONT:
            if (loaded) {
                loaded_->form_font = reinterpret_cast<HFONT>(wparam);
            }
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace regvex::ui::ignore
