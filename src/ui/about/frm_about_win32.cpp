#include "ui/about/frm_about_win32.h"

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"
#include "ui/base/form_resizer_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/base/modal_message_dialogs_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui::about {

namespace {

const WindowClass kAboutClass{L"RegvexlorAboutBox", ButtonFaceBrush()};
constexpr wchar_t kIconResource[] = L"AAA";

// The box as designed, in pixels at 96 dots per inch; ResizeAbout scales it to the screen.
constexpr SIZE kDesignClient{420, 212};
constexpr int kDesignFontHeight = -11;  // Tahoma 8 points
constexpr int kTitleFontHeight = -24;   // Arial 18 points
constexpr int kDesignIconSize = 48;
constexpr int kLinkHeight = 16;
// The classic link blue. The system's hot-tracking colour is no link colour under every
// theme: some make it a pale grey that reads as disabled text.
constexpr COLORREF kLinkColor = RGB(0, 102, 204);
constexpr int kLinkPadding = 2;  // beside the text, so that no pixel of it is cut

// The fonts, in the order Shown hands them over.
enum AboutFont : int { kBoxFont, kTitleFont, kLinkFont };

// Made in this order, which is also the order Tab takes between the buttons. A link's
// width follows its text; Form_Load fills in the texts left empty.
constexpr ChildControl kControls[] = {
    {kIdAboutPicIcon,
     L"STATIC",
     "",
     SS_ICON | SS_REALSIZECONTROL,
     0,
     {16, 16, kDesignIconSize, kDesignIconSize},
     kNoFont},
    {kIdAboutTitle, L"STATIC", "", SS_LEFT | SS_NOPREFIX, 0, {80, 14, 324, 30}, kTitleFont},
    {kIdAboutVersion, L"STATIC", "Version", SS_LEFT | SS_NOPREFIX, 0, {80, 48, 324, 16}, kBoxFont},
    {kIdAboutDescription,
     L"STATIC",
     kAboutDescription,
     SS_LEFT | SS_NOPREFIX,
     0,
     {80, 70, 324, 30},
     kBoxFont},
    {kIdAboutLicence,
     L"STATIC",
     kAboutLicence,
     SS_LEFT | SS_NOPREFIX,
     0,
     {80, 104, 324, 16},
     kBoxFont},
    {kIdAboutLink,
     L"STATIC",
     kAboutLinkCaption,
     SS_LEFT | SS_NOPREFIX | SS_NOTIFY,
     0,
     {80, 126, 0, kLinkHeight},
     kLinkFont},
    {kIdAboutLine, L"STATIC", "", SS_ETCHEDHORZ, 0, {16, 158, 388, 2}, kNoFont},
    {kIdAboutOk,
     L"BUTTON",
     kAboutOkCaption,
     WS_TABSTOP | BS_DEFPUSHBUTTON,
     0,
     {316, 172, 88, 26},
     kBoxFont},
    {kIdAboutSysInfo,
     L"BUTTON",
     kAboutSysInfoCaption,
     WS_TABSTOP | BS_PUSHBUTTON,
     0,
     {204, 172, 104, 26},
     kBoxFont},
};

int TextWidth(HWND control, HFONT font) {
    return TextExtent(control, font, text::ToWide(WindowTextOf(control))).cx;
}

}  // namespace

struct Win32AboutBox::Shown {
    Shown(HWND owner_window, MessageDialogs& dialogs, HWND box)
        : owner(owner_window),
          owner_was_enabled(owner_window != nullptr && IsWindowEnabled(owner_window) != FALSE),
          font(MakeFont(L"Tahoma", kDesignFontHeight)),
          title_font(MakeFont(L"Arial", kTitleFontHeight, FW_BOLD)),
          link_font(MakeFont(L"Tahoma", kDesignFontHeight, FW_NORMAL, true)),
          modal_dialogs(dialogs, box),
          form(box) {}

    HWND owner;
    bool owner_was_enabled;
    // These go after the window, whose controls use them (Destroy).
    handles::UniqueFont font;
    handles::UniqueFont title_font;
    handles::UniqueFont link_font;
    handles::UniqueFont matched_link_font;
    handles::UniqueIcon picture;
    FormResizer resizer;  // holds the scaled fonts
    // Where the focus was when the box was last deactivated.
    HWND focus = nullptr;
    bool closing = false;

    ModalToWindow modal_dialogs;
    FormWindow form;
    WindowText title;
    WindowText version;
    std::unique_ptr<frmAbout> code;
};

Win32AboutBox::Win32AboutBox(Dependencies dependencies) : deps_(std::move(dependencies)) {}

Win32AboutBox::~Win32AboutBox() {
    Destroy();
}

void Win32AboutBox::ShowModal(HWND owner) {
    if (shown_ != nullptr) {
        // Already up: it stays the one box.
        SetForegroundWindow(hwnd());
        return;
    }
    Load(owner);
    if (shown_ == nullptr || hwnd() == nullptr) {
        Destroy();
        return;
    }
    const HWND box = hwnd();
    if (shown_->owner_was_enabled) {
        EnableWindow(owner, FALSE);
    }
    ShowWindow(box, SW_SHOW);
    SetForegroundWindow(box);
    SetFocus(GetDlgItem(box, kIdAboutOk));

    const std::optional<int> quit_code = RunModalLoop([this] { return hwnd(); });
    const bool reenable = shown_->owner_was_enabled;
    // The program is ending when the loop ends without a close: no call on the main window.
    Destroy();
    ReturnToOwner(owner, reenable, quit_code);
}

void Win32AboutBox::Load(HWND owner) {
    const DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU;
    const DWORD ex_style = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
    const SIZE frame = FrameSizeFor(kDesignClient, style, ex_style, false);
    WindowParams params;
    params.style = style;
    params.ex_style = ex_style;
    params.bounds = {CW_USEDEFAULT, CW_USEDEFAULT, frame.cx, frame.cy};
    params.parent = owner;
    const HWND box = CreateImpl(kAboutClass, params);
    if (box == nullptr) {
        return;
    }
    shown_ = std::make_unique<Shown>(owner, deps_.dialogs, box);
    Shown& s = *shown_;
    const HFONT fonts[] = {s.font.get(), s.title_font.get(), s.link_font.get()};
    CreateChildControls(box, kControls, fonts);
    s.title.Attach(GetDlgItem(box, kIdAboutTitle));
    s.version.Attach(GetDlgItem(box, kIdAboutVersion));
    const HWND link = GetDlgItem(box, kIdAboutLink);
    SetWindowPos(link, nullptr, 0, 0, TextWidth(link, s.link_font.get()) + kLinkPadding,
                 kLinkHeight, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);

    // Drawn at the size the screen will show it; without the resource the place stays
    // empty.
    const int icon_size = MulDiv(kDesignIconSize, ScreenDpi(), kDesignDpi);
    s.picture.Reset(static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), kIconResource, IMAGE_ICON, icon_size, icon_size, 0)));
    if (s.picture) {
        SendMessageW(GetDlgItem(box, kIdAboutPicIcon), STM_SETICON,
                     reinterpret_cast<WPARAM>(s.picture.get()), 0);
    }

    AboutServices services{*this,       deps_.registry, deps_.key_access_mask,
                           deps_.files, deps_.launcher, s.modal_dialogs,
                           deps_.theme, deps_.shell,    deps_.main_window_on_close};
    s.code =
        std::make_unique<frmAbout>(AboutControls{s.form, s.title, s.version}, std::move(services));
    RunHandler([&s] { s.code->Form_Load(); });
    CentreOnOwner(box, owner);
}

void Win32AboutBox::Destroy() {
    if (shown_ == nullptr) {
        return;
    }
    // Forget the box first: the messages of its destruction find it gone.
    std::unique_ptr<Shown> gone = std::move(shown_);
    DestroyImpl();
}

void Win32AboutBox::RunHandler(const std::function<void()>& handler) {
    try {
        handler();
    } catch (const std::exception&) {
        // Nothing may unwind into the system's window procedures.
    }
}

void Win32AboutBox::SetWindowIcon() {
    ui::SetWindowIcon(hwnd(), kIconResource, true);
}

void Win32AboutBox::ResizeAbout() {
    const double ratio = static_cast<double>(ScreenDpi()) / kDesignDpi;
    shown_->resizer.Capture(hwnd());
    shown_->resizer.SizeForm(ratio, ratio);
}

void Win32AboutBox::MatchLinkFontToLabels() {
    Shown& s = *shown_;
    const HWND box = hwnd();
    const auto label_font = reinterpret_cast<HFONT>(
        SendMessageW(GetDlgItem(box, kIdAboutDescription), WM_GETFONT, 0, 0));
    const HWND link = GetDlgItem(box, kIdAboutLink);
    const auto link_font = reinterpret_cast<HFONT>(SendMessageW(link, WM_GETFONT, 0, 0));
    LOGFONTW label{};
    LOGFONTW matched{};
    if (label_font == nullptr || GetObjectW(label_font, sizeof(label), &label) == 0 ||
        GetObjectW(link_font != nullptr ? link_font : s.link_font.get(), sizeof(matched),
                   &matched) == 0) {
        return;
    }
    matched.lfHeight = label.lfHeight;
    s.matched_link_font.Reset(CreateFontIndirectW(&matched));
    if (!s.matched_link_font) {
        return;
    }
    SendMessageW(link, WM_SETFONT, reinterpret_cast<WPARAM>(s.matched_link_font.get()), TRUE);
    // Only the text itself is the link.
    RECT bounds{};
    GetWindowRect(link, &bounds);
    SetWindowPos(link, nullptr, 0, 0, TextWidth(link, s.matched_link_font.get()) + kLinkPadding,
                 bounds.bottom - bounds.top, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Win32AboutBox::Close() {
    if (shown_ == nullptr || shown_->closing || hwnd() == nullptr) {
        return;
    }
    Shown& s = *shown_;
    s.closing = true;
    RunHandler([&s] { s.code->Form_QueryUnload(); });
    // Enabled before the box goes, so that the system hands the activation back to it.
    if (s.owner_was_enabled && IsWindow(s.owner)) {
        EnableWindow(s.owner, TRUE);
    }
    DestroyImpl();
}

void Win32AboutBox::OnCommand(int id, int code, HWND control) {
    frmAbout& form = *shown_->code;
    // Enter and Escape arrive as IDOK and IDCANCEL without a notification code; OK is both
    // the box's default and its cancel button.
    const bool clicked = code == BN_CLICKED;
    switch (id) {
        case kIdAboutOk:
        case IDCANCEL:
            if (clicked) {
                form.cmdOK_Click();
            }
            break;
        case kIdAboutSysInfo:
            if (clicked && control != nullptr) {
                form.cmdSysInfo_Click();
            }
            break;
        case kIdAboutLink:
            if (code == STN_CLICKED && control != nullptr) {
                form.mkcHyperLinks2_Click();
            }
            break;
        default:
            break;
    }
}

LRESULT Win32AboutBox::HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const bool live =
        shown_ != nullptr && shown_->code != nullptr && hwnd() == window && !shown_->closing;
    switch (message) {
        case WM_COMMAND:
            if (live) {
                const int id = LOWORD(wparam);
                const int code = HIWORD(wparam);
                const auto control = reinterpret_cast<HWND>(lparam);
                RunHandler([this, id, code, control] { OnCommand(id, code, control); });
            }
            return 0;
        case WM_CLOSE:
            if (live) {
                Close();
            }
            return 0;
        case DM_GETDEFID:
            return MAKELRESULT(kIdAboutOk, DC_HASDEFID);
        case WM_ACTIVATE:
            if (live) {
                if (LOWORD(wparam) == WA_INACTIVE) {
                    const HWND focus = GetFocus();
                    shown_->focus = IsChild(window, focus) ? focus : nullptr;
                } else {
                    SetFocus(shown_->focus != nullptr ? shown_->focus
                                                      : GetDlgItem(window, kIdAboutOk));
                }
                return 0;
            }
            break;
        case WM_CTLCOLORSTATIC:
            if (reinterpret_cast<HWND>(lparam) == GetDlgItem(window, kIdAboutLink)) {
                const auto dc = reinterpret_cast<HDC>(wparam);
                SetTextColor(dc, kLinkColor);
                SetBkMode(dc, TRANSPARENT);
                return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
            }
            break;
        case WM_SETCURSOR:
            if (reinterpret_cast<HWND>(wparam) == GetDlgItem(window, kIdAboutLink)) {
                SetCursor(LoadCursorW(nullptr, IDC_HAND));
                return TRUE;
            }
            break;
        default:
            break;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace regvex::ui::about
