#include "ui/info/frm_info_win32.h"

#include <exception>
#include <utility>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"
#include "ui/base/gdi_win32.h"
#include "ui/base/modal_message_dialogs_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui::info {

namespace {

const WindowClass kInfoClass{L"RegvexlorInfoBox", ButtonFaceBrush()};
constexpr wchar_t kIconResource[] = L"AAA";

// The box as designed, in pixels at 96 dots per inch, scaled to the screen when it is
// made; it can be made larger, for long data, and the text grows with it.
constexpr SIZE kDesignClient{780, 460};
constexpr SIZE kSmallestClient{360, 200};
constexpr int kMargin = 12;
constexpr SIZE kButton{88, 26};

enum InfoFont : int { kBoxFont, kTextFont };

constexpr ChildControl kControls[] = {
    {kIdInfoText,
     L"EDIT",
     "",
     ES_MULTILINE | ES_READONLY | ES_AUTOHSCROLL | ES_AUTOVSCROLL | WS_HSCROLL | WS_VSCROLL |
         WS_TABSTOP,
     WS_EX_CLIENTEDGE,
     {kMargin, kMargin, 100, 100},
     kTextFont},
    {kIdInfoCopy, L"BUTTON", kCopyCaption, WS_TABSTOP | BS_PUSHBUTTON, 0, {0, 0, 88, 26}, kBoxFont},
    {kIdInfoClose,
     L"BUTTON",
     kCloseCaption,
     WS_TABSTOP | BS_DEFPUSHBUTTON,
     0,
     {0, 0, 88, 26},
     kBoxFont},
};

int Scaled(int pixels) {
    return MulDiv(pixels, ScreenDpi(), kDesignDpi);
}

// The read-only text: lines ended by '\n' in the code, CR LF in the control.
class InfoText final : public Captioned {
  public:
    void Attach(HWND window) { window_ = window; }
    std::string Caption() const override { return WindowTextOf(window_); }
    void SetCaption(std::string_view caption) override {
        SetWindowTextW(window_, WithCrLf(caption).c_str());
    }

  private:
    HWND window_ = nullptr;
};

}  // namespace

struct Win32InfoBox::Shown {
    Shown(HWND owner_window, MessageDialogs& dialogs, HWND box)
        : owner(owner_window),
          owner_was_enabled(owner_window != nullptr && IsWindowEnabled(owner_window) != FALSE),
          font(MakeFont(L"Tahoma", PointsToHeight(8))),
          // Columns line up only in a font whose characters are all equally wide: the
          // mark under the path stands under the characters it marks.
          text_font(MakeFont(L"Consolas", PointsToHeight(10), FW_NORMAL, false, CLEARTYPE_QUALITY,
                             FIXED_PITCH | FF_MODERN)),
          clipboard(box),
          modal_dialogs(dialogs, box),
          form(box) {}

    HWND owner;
    bool owner_was_enabled;
    handles::UniqueFont font;
    handles::UniqueFont text_font;
    HWND focus = nullptr;
    bool closing = false;

    Win32Clipboard clipboard;
    ModalToWindow modal_dialogs;
    FormWindow form;
    InfoText text;
    std::unique_ptr<frmInfo> code;
};

Win32InfoBox::Win32InfoBox(Dependencies dependencies) : deps_(std::move(dependencies)) {}

Win32InfoBox::~Win32InfoBox() {
    Destroy();
}

void Win32InfoBox::ShowModal(HWND owner, const std::string& explanation) {
    if (shown_ != nullptr) {
        SetForegroundWindow(hwnd());
        return;
    }
    Load(owner, explanation);
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
    SetFocus(GetDlgItem(box, kIdInfoClose));

    const std::optional<int> quit_code = RunModalLoop([this] { return hwnd(); });
    const bool reenable = shown_ != nullptr && shown_->owner_was_enabled;
    Destroy();
    ReturnToOwner(owner, reenable, quit_code);
}

void Win32InfoBox::Load(HWND owner, const std::string& explanation) {
    const DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME;
    const DWORD ex_style = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
    const SIZE frame =
        FrameSizeFor({Scaled(kDesignClient.cx), Scaled(kDesignClient.cy)}, style, ex_style, false);
    WindowParams params;
    params.style = style;
    params.ex_style = ex_style;
    params.bounds = {CW_USEDEFAULT, CW_USEDEFAULT, frame.cx, frame.cy};
    params.parent = owner;
    const HWND box = CreateImpl(kInfoClass, params);
    if (box == nullptr) {
        return;
    }
    shown_ = std::make_unique<Shown>(owner, deps_.dialogs, box);
    Shown& s = *shown_;
    const HFONT fonts[] = {s.font.get(), s.text_font.get()};
    CreateChildControls(box, kControls, fonts);
    s.text.Attach(GetDlgItem(box, kIdInfoText));
    // However long the data, the text box holds it all.
    SendMessageW(GetDlgItem(box, kIdInfoText), EM_SETLIMITTEXT, 0, 0);
    RECT client{};
    GetClientRect(box, &client);
    LayOut(client.right, client.bottom);

    s.code = std::make_unique<frmInfo>(
        InfoControls{s.form, s.text},
        InfoServices{*this, s.clipboard, s.modal_dialogs, deps_.theme, deps_.main_window_on_close},
        explanation);
    try {
        s.code->Form_Load();
    } catch (const std::exception&) {
        // Nothing may unwind into the system's window procedures.
    }
    CentreOnOwner(box, owner);
}

void Win32InfoBox::LayOut(int width, int height) {
    const HWND box = hwnd();
    const int margin = Scaled(kMargin);
    const int button_width = Scaled(kButton.cx);
    const int button_height = Scaled(kButton.cy);
    const int buttons_top = height - margin - button_height;
    MoveWindow(GetDlgItem(box, kIdInfoText), margin, margin, width - 2 * margin,
               buttons_top - 2 * margin, TRUE);
    MoveWindow(GetDlgItem(box, kIdInfoClose), width - margin - button_width, buttons_top,
               button_width, button_height, TRUE);
    MoveWindow(GetDlgItem(box, kIdInfoCopy), width - 2 * (margin + button_width) + margin / 2,
               buttons_top, button_width, button_height, TRUE);
}

void Win32InfoBox::Destroy() {
    if (shown_ == nullptr) {
        return;
    }
    std::unique_ptr<Shown> gone = std::move(shown_);
    DestroyImpl();
}

void Win32InfoBox::SetWindowIcon() {
    ui::SetWindowIcon(hwnd(), kIconResource, true);
}

void Win32InfoBox::Close() {
    if (shown_ == nullptr || shown_->closing || hwnd() == nullptr) {
        return;
    }
    Shown& s = *shown_;
    s.closing = true;
    try {
        s.code->Form_QueryUnload();
    } catch (const std::exception&) {
    }
    // Enabled before the box goes, so that the system hands the activation back to it.
    if (s.owner_was_enabled && IsWindow(s.owner)) {
        EnableWindow(s.owner, TRUE);
    }
    DestroyImpl();
}

void Win32InfoBox::OnCommand(int id, int code, HWND control) {
    frmInfo& form = *shown_->code;
    // Enter and Escape arrive as IDOK and IDCANCEL without a notification code.
    switch (id) {
        case IDOK:
        case kIdInfoClose:
            if (code == BN_CLICKED) {
                form.cmdClose_Click();
            }
            break;
        case kIdInfoCopy:
            if (code == BN_CLICKED && control != nullptr) {
                form.cmdCopy_Click();
            }
            break;
        default:
            break;
    }
}

LRESULT Win32InfoBox::HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const bool live =
        shown_ != nullptr && shown_->code != nullptr && hwnd() == window && !shown_->closing;
    switch (message) {
        case WM_COMMAND:
            if (live) {
                try {
                    OnCommand(LOWORD(wparam), HIWORD(wparam), reinterpret_cast<HWND>(lparam));
                } catch (const std::exception&) {
                }
            }
            return 0;
        case WM_SIZE:
            if (shown_ != nullptr && wparam != SIZE_MINIMIZED) {
                LayOut(LOWORD(lparam), HIWORD(lparam));
            }
            return 0;
        case WM_GETMINMAXINFO: {
            auto* limits = reinterpret_cast<MINMAXINFO*>(lparam);
            const SIZE smallest =
                FrameSizeFor({Scaled(kSmallestClient.cx), Scaled(kSmallestClient.cy)},
                             static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)),
                             static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)), false);
            limits->ptMinTrackSize = {smallest.cx, smallest.cy};
            return 0;
        }
        case WM_CLOSE:
            if (live) {
                Close();
            }
            return 0;
        case DM_GETDEFID:
            return MAKELRESULT(kIdInfoClose, DC_HASDEFID);
        case WM_ACTIVATE:
            if (live) {
                if (LOWORD(wparam) == WA_INACTIVE) {
                    const HWND focus = GetFocus();
                    shown_->focus = IsChild(window, focus) ? focus : nullptr;
                } else {
                    SetFocus(shown_->focus != nullptr ? shown_->focus
                                                      : GetDlgItem(window, kIdInfoClose));
                }
                return 0;
            }
            break;
        case WM_CTLCOLORSTATIC:
            // A read-only edit control asks as a static one would; its text reads best on
            // the window background of an ordinary text box.
            if (reinterpret_cast<HWND>(lparam) == GetDlgItem(window, kIdInfoText)) {
                const auto dc = reinterpret_cast<HDC>(wparam);
                SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
                SetBkColor(dc, GetSysColor(COLOR_WINDOW));
                return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
            }
            break;
        default:
            break;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace regvex::ui::info
