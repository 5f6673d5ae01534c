#pragma once
// What every window of the program is built with: its class registered once, its object
// reached from the window's first message to its last, its controls made from a table,
// and its place centred on its owner.
//
//     class Box final : private WindowImpl {
//         LRESULT HandleMessage(HWND, UINT, WPARAM, LPARAM) override;
//     };
//     WindowParams params;
//     params.style = WS_POPUP | WS_CAPTION;
//     params.parent = owner;
//     CreateImpl(kBoxClass, params);
//     CreateChildControls(hwnd(), kControls, fonts);

#include <windows.h>

#include <functional>
#include <optional>
#include <span>
#include <string_view>

#include "handles/unique_handle_win32.h"

namespace regvex::ui {

// A window class of the program's own module.
struct WindowClass {
    const wchar_t* name = nullptr;
    // Null: the window paints all of its background itself.
    HBRUSH background = nullptr;
    // An icon resource of the program, or null for none.
    const wchar_t* icon = nullptr;
};

// The background of dialog-like windows.
inline HBRUSH ButtonFaceBrush() {
    return reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
}

struct WindowParams {
    DWORD style = 0;
    DWORD ex_style = 0;
    std::string_view text;
    // Left, top, width and height; CW_USEDEFAULT lets the system choose.
    RECT bounds{CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT};
    // The parent of a child window, the owner of any other.
    HWND parent = nullptr;
    // The menu bar, or a child window's identifier (ChildId).
    HMENU menu = nullptr;
};

inline HMENU ChildId(int id) {
    return reinterpret_cast<HMENU>(static_cast<INT_PTR>(id));
}

// The base of the program's windows: the object owns one window at a time and sees every
// message of it, from WM_NCCREATE to WM_NCDESTROY, in HandleMessage.
class WindowImpl {
  public:
    WindowImpl(const WindowImpl&) = delete;
    WindowImpl& operator=(const WindowImpl&) = delete;

    // The window, from its first message until its last; null before and after.
    HWND hwnd() const { return window_.get(); }

  protected:
    WindowImpl() = default;
    // A window still there goes without a word to the object, whose own part is gone.
    virtual ~WindowImpl();

    // Registers the class on first use and makes the window. Null when it cannot be made
    // or this object has a window already.
    HWND CreateImpl(const WindowClass& window_class, const WindowParams& params);
    // Destroys the window now, if there is one; its last messages still reach the object.
    void DestroyImpl();

    // Messages the object leaves alone go to DefWindowProcW. By WM_NCDESTROY the window
    // is no longer the object's (hwnd() is null).
    virtual LRESULT HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) = 0;

  private:
    static LRESULT CALLBACK Route(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

    handles::UniqueWindow window_;
};

// The size of a window whose client area is `client` big.
SIZE FrameSizeFor(SIZE client, DWORD style, DWORD ex_style, bool has_menu);

inline constexpr int kNoFont = -1;

// One control of a window, as designed.
struct ChildControl {
    int id;
    const wchar_t* window_class;
    std::string_view text;
    DWORD style;  // WS_CHILD and WS_VISIBLE go with every control
    DWORD ex_style;
    RECT bounds;  // left, top, width, height
    int font;     // an index into the fonts handed over, or kNoFont
};

// Makes the controls in table order, which is the order Tab takes and the order they lie
// over each other (the first at the bottom).
void CreateChildControls(HWND parent, std::span<const ChildControl> controls,
                         std::span<const HFONT> fonts);

// Puts the window in the middle of its owner, or of the screen's work area when the
// owner is missing, hidden or minimised.
void CentreOnOwner(HWND window, HWND owner);

// A modal window's own message loop, with the dialog keys: runs while `window()` names a
// window. A WM_QUIT ends it early, and its exit code is answered, to be posted again once
// the window is gone.
std::optional<int> RunModalLoop(const std::function<HWND()>& window);
// After a modal window is gone: its owner enabled again (when it was enabled before) and
// active, and the quit the loop took posted again.
void ReturnToOwner(HWND owner, bool reenable, std::optional<int> quit_code);

}  // namespace regvex::ui
