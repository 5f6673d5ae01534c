#include "ui/about/frm_about_win32.h"

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"
#include "ui/base/form_resizer_win32.h"
#include "ui/base/modal_message_dialogs_win32.h"
#include "ui/base/startup_win32.h"
#include "ui/base/win32_controls_win32.h"

namespace regvex::ui::about {

namespace {

constexpr wchar_t kWindowClass[] = L"RegvexlorAboutBox";
constexpr wchar_t kIconResource[] = L"AAA";

// The box as designed, in pixels at 96 dots per inch; ResizeAbout scales it to the screen.
constexpr int kDesignDpi = 96;
constexpr SIZE kDesignClient{420, 192};
constexpr int kDesignFontHeight = -11;  // Tahoma 8 points
constexpr int kTitleFontHeight = -24;   // Arial 18 points
constexpr int kDesignIconSize = 48;
constexpr int kLinkHeight = 16;
// The classic link blue. The system's hot-tracking colour is no link colour under every
// theme: some make it a pale grey that reads as disabled text.
constexpr COLORREF kLinkColor = RGB(0, 102, 204);
constexpr int kLinkPadding = 2;  // beside the text, so that no pixel of it is cut

enum class Font { kBox, kTitle, kLink, kNone };

struct Place {
    int id;
    const wchar_t* window_class;
    DWORD style;
    RECT bounds;  // left, top, width, height; a link's width follows its text
    Font font;
};

// Created in this order, which is also the order Tab takes between the buttons.
constexpr Place kPlaces[] = {
    {kIdAboutPicIcon,
     L"STATIC",
     SS_ICON | SS_REALSIZECONTROL,
     {16, 16, kDesignIconSize, kDesignIconSize},
     Font::kNone},
    {kIdAboutTitle, L"STATIC", SS_LEFT | SS_NOPREFIX, {80, 14, 324, 30}, Font::kTitle},
    {kIdAboutVersion, L"STATIC", SS_LEFT | SS_NOPREFIX, {80, 48, 324, 16}, Font::kBox},
    {kIdAboutDescription, L"STATIC", SS_LEFT | SS_NOPREFIX, {80, 70, 324, 30}, Font::kBox},
    {kIdAboutLink,
     L"STATIC",
     SS_LEFT | SS_NOPREFIX | SS_NOTIFY,
     {80, 106, 0, kLinkHeight},
     Font::kLink},
    {kIdAboutLine, L"STATIC", SS_ETCHEDHORZ, {16, 138, 388, 2}, Font::kNone},
    {kIdAboutOk, L"BUTTON", WS_TABSTOP | BS_DEFPUSHBUTTON, {316, 152, 88, 26}, Font::kBox},
    {kIdAboutSysInfo, L"BUTTON", WS_TABSTOP | BS_PUSHBUTTON, {204, 152, 104, 26}, Font::kBox},
};

// The texts the box is designed with; Form_Load fills in the rest.
std::string_view DesignText(int id) {
    switch (id) {
        case kIdAboutVersion:
            return "Version";
        case kIdAboutDescription:
            return kAboutDescription;
        case kIdAboutLink:
            return kAboutLinkCaption;
        case kIdAboutOk:
            return kAboutOkCaption;
        case kIdAboutSysInfo:
            return kAboutSysInfoCaption;
        default:
            return {};
    }
}

int ScreenDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = screen != nullptr ? GetDeviceCaps(screen, LOGPIXELSX) : kDesignDpi;
    if (screen != nullptr) {
        ReleaseDC(nullptr, screen);
    }
    return dpi > 0 ? dpi : kDesignDpi;
}

handles::UniqueFont MakeFont(const wchar_t* face, int height, int weight, bool underline) {
    return handles::UniqueFont(CreateFontW(
        height, 0, 0, 0, weight, FALSE, underline ? TRUE : FALSE, FALSE, DEFAULT_CHARSET,
        OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_SWISS, face));
}

int TextWidth(HWND control, HFONT font) {
    const HDC dc = GetDC(control);
    if (dc == nullptr) {
        return 0;
    }
    const HGDIOBJ old = SelectObject(dc, font);
    const int length = GetWindowTextLengthW(control);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), length + 1)));
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    SelectObject(dc, old);
    ReleaseDC(control, dc);
    return size.cx;
}

// The box's own caption.
class BoxWindow final : public Window {
  public:
    explicit BoxWindow(HWND window) : text_(window) {}
    std::string Caption() const override { return text_.Caption(); }
    void SetCaption(std::string_view caption) override { text_.SetCaption(caption); }
    bool IsMinimized() const override { return IsIconic(text_.hwnd()) != FALSE; }
    void Activate() override { SetForegroundWindow(text_.hwnd()); }

  private:
    WindowText text_;
};

void RegisterWindowClass(HINSTANCE instance, WNDPROC procedure) {
    WNDCLASSEXW window_class{};
    window_class.cbSize = sizeof(window_class);
    if (GetClassInfoExW(instance, kWindowClass, &window_class)) {
        return;
    }
    window_class.lpfnWndProc = procedure;
    window_class.hInstance = instance;
    window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    window_class.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    window_class.lpszClassName = kWindowClass;
    RegisterClassExW(&window_class);
}

}  // namespace

struct Win32AboutBox::Shown {
    Shown(HWND owner_window, MessageDialogs& dialogs, HWND box)
        : owner(owner_window),
          owner_was_enabled(owner_window != nullptr && IsWindowEnabled(owner_window) != FALSE),
          font(MakeFont(L"Tahoma", kDesignFontHeight, FW_NORMAL, false)),
          title_font(MakeFont(L"Arial", kTitleFontHeight, FW_BOLD, false)),
          link_font(MakeFont(L"Tahoma", kDesignFontHeight, FW_NORMAL, true)),
          window(box),
          modal_dialogs(dialogs, box),
          form(box),
          title(GetDlgItem(box, kIdAboutTitle)),
          version(GetDlgItem(box, kIdAboutVersion)) {}

    HWND owner;
    bool owner_was_enabled;
    handles::UniqueFont font;
    handles::UniqueFont title_font;
    handles::UniqueFont link_font;
    handles::UniqueFont matched_link_font;
    handles::UniqueIcon picture;
    // Holds the scaled fonts that the controls use: it goes after the window.
    FormResizer resizer;
    handles::UniqueWindow window;
    // Where the focus was when the box was last deactivated.
    HWND focus = nullptr;
    bool closing = false;

    ModalToWindow modal_dialogs;
    BoxWindow form;
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
        SetForegroundWindow(shown_->window.get());
        return;
    }
    Load(owner);
    if (shown_ == nullptr || shown_->window.get() == nullptr) {
        Destroy();
        return;
    }
    const HWND box = shown_->window.get();
    if (shown_->owner_was_enabled) {
        EnableWindow(owner, FALSE);
    }
    ShowWindow(box, SW_SHOW);
    SetForegroundWindow(box);
    SetFocus(GetDlgItem(box, kIdAboutOk));

    bool quit = false;
    WPARAM quit_code = 0;
    MSG message;
    while (shown_->window.get() != nullptr) {
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got == 0) {
            quit = true;
            quit_code = message.wParam;
            break;
        }
        if (got == -1) {
            break;
        }
        const HWND current = shown_->window.get();
        if (current == nullptr || !IsDialogMessageW(current, &message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }

    const bool reenable = shown_->owner_was_enabled;
    // The program is ending when the loop ends without a close: no call on the main window.
    Destroy();
    if (owner != nullptr && IsWindow(owner)) {
        if (reenable) {
            EnableWindow(owner, TRUE);
        }
        SetActiveWindow(owner);
    }
    if (quit) {
        PostQuitMessage(static_cast<int>(quit_code));
    }
}

void Win32AboutBox::Load(HWND owner) {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    RegisterWindowClass(instance, &Win32AboutBox::WindowProc);

    const DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU;
    const DWORD ex_style = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
    RECT frame{0, 0, kDesignClient.cx, kDesignClient.cy};
    AdjustWindowRectEx(&frame, style, FALSE, ex_style);
    const HWND box = CreateWindowExW(ex_style, kWindowClass, L"", style, CW_USEDEFAULT,
                                     CW_USEDEFAULT, frame.right - frame.left,
                                     frame.bottom - frame.top, owner, nullptr, instance, this);
    if (box == nullptr) {
        return;
    }
    for (const Place& place : kPlaces) {
        CreateWindowExW(0, place.window_class, text::ToWide(DesignText(place.id)).c_str(),
                        WS_CHILD | WS_VISIBLE | place.style, place.bounds.left, place.bounds.top,
                        place.bounds.right, place.bounds.bottom, box,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(place.id)), instance, nullptr);
    }
    shown_ = std::make_unique<Shown>(owner, deps_.dialogs, box);
    Shown& s = *shown_;

    for (const Place& place : kPlaces) {
        const HFONT font = place.font == Font::kTitle  ? s.title_font.get()
                           : place.font == Font::kLink ? s.link_font.get()
                           : place.font == Font::kBox  ? s.font.get()
                                                       : nullptr;
        if (font != nullptr) {
            SendMessageW(GetDlgItem(box, place.id), WM_SETFONT, reinterpret_cast<WPARAM>(font),
                         FALSE);
        }
    }
    const HWND link = GetDlgItem(box, kIdAboutLink);
    SetWindowPos(link, nullptr, 0, 0, TextWidth(link, s.link_font.get()) + kLinkPadding,
                 kLinkHeight, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);

    // Drawn at the size the screen will show it; without the resource the place stays
    // empty.
    const int icon_size = MulDiv(kDesignIconSize, ScreenDpi(), kDesignDpi);
    s.picture.Reset(static_cast<HICON>(
        LoadImageW(instance, kIconResource, IMAGE_ICON, icon_size, icon_size, 0)));
    if (s.picture.get() != nullptr) {
        SendMessageW(GetDlgItem(box, kIdAboutPicIcon), STM_SETICON,
                     reinterpret_cast<WPARAM>(s.picture.get()), 0);
    }

    AboutServices services{*this,       deps_.registry, deps_.key_access_mask,
                           deps_.files, deps_.launcher, s.modal_dialogs,
                           deps_.theme, deps_.shell,    deps_.main_window_on_close};
    s.code =
        std::make_unique<frmAbout>(AboutControls{s.form, s.title, s.version}, std::move(services));
    RunHandler([&s] { s.code->Form_Load(); });

    // Centred on the owner, or on the screen's work area.
    RECT around{};
    if (owner == nullptr || !IsWindowVisible(owner) || IsIconic(owner) ||
        !GetWindowRect(owner, &around)) {
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &around, 0);
    }
    RECT placed{};
    GetWindowRect(box, &placed);
    const int width = placed.right - placed.left;
    const int height = placed.bottom - placed.top;
    SetWindowPos(box, nullptr, around.left + (around.right - around.left - width) / 2,
                 around.top + (around.bottom - around.top - height) / 2, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Win32AboutBox::Destroy() {
    if (shown_ == nullptr) {
        return;
    }
    // Forget the box first: the messages of its destruction find it gone.
    std::unique_ptr<Shown> gone = std::move(shown_);
    gone->window.Reset();
}

void Win32AboutBox::RunHandler(const std::function<void()>& handler) {
    try {
        handler();
    } catch (const std::exception&) {
        // Nothing may unwind into the system's window procedures.
    }
}

void Win32AboutBox::SetWindowIcon() {
    ui::SetWindowIcon(shown_->window.get(), kIconResource, true);
}

void Win32AboutBox::ResizeAbout() {
    const double ratio = static_cast<double>(ScreenDpi()) / kDesignDpi;
    shown_->resizer.Capture(shown_->window.get());
    shown_->resizer.SizeForm(ratio, ratio);
}

void Win32AboutBox::MatchLinkFontToLabels() {
    Shown& s = *shown_;
    const HWND box = s.window.get();
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
    if (shown_ == nullptr || shown_->closing || shown_->window.get() == nullptr) {
        return;
    }
    Shown& s = *shown_;
    s.closing = true;
    RunHandler([&s] { s.code->Form_QueryUnload(); });
    // Enabled before the box goes, so that the system hands the activation back to it.
    if (s.owner_was_enabled && IsWindow(s.owner)) {
        EnableWindow(s.owner, TRUE);
    }
    s.window.Reset();
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

LRESULT CALLBACK Win32AboutBox::WindowProc(HWND window, UINT message, WPARAM wparam,
                                           LPARAM lparam) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lparam);
        SetWindowLongPtrW(window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    auto* self = reinterpret_cast<Win32AboutBox*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        // Destroyed from outside (with its owner): the modal loop must not wait for it.
        if (self != nullptr && self->shown_ != nullptr && self->shown_->window.get() == window) {
            self->shown_->window.Release();
        }
    }
    if (self == nullptr) {
        return DefWindowProcW(window, message, wparam, lparam);
    }
    return self->HandleMessage(window, message, wparam, lparam);
}

LRESULT Win32AboutBox::HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const bool live = shown_ != nullptr && shown_->code != nullptr &&
                      shown_->window.get() == window && !shown_->closing;
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
