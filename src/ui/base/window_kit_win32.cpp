#include "ui/base/window_kit_win32.h"

#include "text/wide_text_win32.h"

namespace regvex::ui {

namespace {

HINSTANCE ProgramModule() {
    return GetModuleHandleW(nullptr);
}

bool RegisterOnce(const WindowClass& window_class, WNDPROC procedure) {
    WNDCLASSEXW existing{};
    existing.cbSize = sizeof(existing);
    if (GetClassInfoExW(ProgramModule(), window_class.name, &existing)) {
        return true;
    }
    WNDCLASSEXW registered{};
    registered.cbSize = sizeof(registered);
    registered.lpfnWndProc = procedure;
    registered.hInstance = ProgramModule();
    registered.hIcon =
        window_class.icon != nullptr ? LoadIconW(ProgramModule(), window_class.icon) : nullptr;
    registered.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    registered.hbrBackground = window_class.background;
    registered.lpszClassName = window_class.name;
    return RegisterClassExW(&registered) != 0;
}

}  // namespace

WindowImpl::~WindowImpl() {
    if (window_) {
        SetWindowLongPtrW(window_.get(), GWLP_USERDATA, 0);
        window_.Reset();
    }
}

HWND WindowImpl::CreateImpl(const WindowClass& window_class, const WindowParams& params) {
    if (window_ || !RegisterOnce(window_class, &WindowImpl::Route)) {
        return nullptr;
    }
    // Route takes the window over at WM_NCCREATE, before CreateWindowExW returns.
    CreateWindowExW(params.ex_style, window_class.name, text::ToWide(params.text).c_str(),
                    params.style, params.bounds.left, params.bounds.top, params.bounds.right,
                    params.bounds.bottom, params.parent, params.menu, ProgramModule(), this);
    return hwnd();
}

void WindowImpl::DestroyImpl() {
    window_.Reset();
}

LRESULT CALLBACK WindowImpl::Route(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE) {
        auto* self = static_cast<WindowImpl*>(
            reinterpret_cast<const CREATESTRUCTW*>(lparam)->lpCreateParams);
        self->window_ = handles::UniqueWindow(window);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<WindowImpl*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr) {
        return DefWindowProcW(window, message, wparam, lparam);
    }
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        if (self->window_.get() == window) {
            self->window_.Release();
        }
    }
    return self->HandleMessage(window, message, wparam, lparam);
}

SIZE FrameSizeFor(SIZE client, DWORD style, DWORD ex_style, bool has_menu) {
    RECT frame{0, 0, client.cx, client.cy};
    AdjustWindowRectEx(&frame, style, has_menu ? TRUE : FALSE, ex_style);
    return {frame.right - frame.left, frame.bottom - frame.top};
}

void CreateChildControls(HWND parent, std::span<const ChildControl> controls,
                         std::span<const HFONT> fonts) {
    for (const ChildControl& control : controls) {
        const HWND made = CreateWindowExW(
            control.ex_style, control.window_class, text::ToWide(control.text).c_str(),
            WS_CHILD | WS_VISIBLE | control.style, control.bounds.left, control.bounds.top,
            control.bounds.right, control.bounds.bottom, parent, ChildId(control.id),
            ProgramModule(), nullptr);
        if (control.font >= 0 && static_cast<std::size_t>(control.font) < fonts.size()) {
            SendMessageW(made, WM_SETFONT,
                         reinterpret_cast<WPARAM>(fonts[static_cast<std::size_t>(control.font)]),
                         FALSE);
        }
    }
}

void CentreOnOwner(HWND window, HWND owner) {
    RECT around{};
    if (owner == nullptr || !IsWindowVisible(owner) || IsIconic(owner) ||
        !GetWindowRect(owner, &around)) {
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &around, 0);
    }
    RECT placed{};
    GetWindowRect(window, &placed);
    const LONG width = placed.right - placed.left;
    const LONG height = placed.bottom - placed.top;
    SetWindowPos(window, nullptr, around.left + (around.right - around.left - width) / 2,
                 around.top + (around.bottom - around.top - height) / 2, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

std::optional<int> RunModalLoop(const std::function<HWND()>& window) {
    MSG message;
    while (window() != nullptr) {
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got == 0) {
            return static_cast<int>(message.wParam);
        }
        if (got == -1) {
            break;
        }
        const HWND current = window();
        if (current == nullptr || !IsDialogMessageW(current, &message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return std::nullopt;
}

void ReturnToOwner(HWND owner, bool reenable, std::optional<int> quit_code) {
    if (owner != nullptr && IsWindow(owner)) {
        if (reenable) {
            EnableWindow(owner, TRUE);
        }
        SetActiveWindow(owner);
    }
    if (quit_code) {
        PostQuitMessage(*quit_code);
    }
}

}  // namespace regvex::ui
