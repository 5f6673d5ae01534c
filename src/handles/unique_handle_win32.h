#pragma once
// One owner for every handle the system gives out: a move-only holder that frees its
// handle when it goes, with a closer per kind of handle. Registry keys have an owner of
// their own beside the registry (ScopedKey).
//
//     const handles::UniqueFont font(CreateFontIndirectW(&description));
//     const handles::WindowDc screen = handles::GetWindowDc(nullptr);

#include <windows.h>

#include <commctrl.h>

#include <utility>

namespace regvex::handles {

// `Close` frees a handle. It may say which values are no handle at all (a static
// IsHandle); otherwise only null is none.
template <typename Handle, typename Close>
class Unique {
  public:
    Unique() = default;
    explicit Unique(Handle handle, Close close = {}) : handle_(handle), close_(std::move(close)) {}
    ~Unique() { Reset(); }

    Unique(Unique&& other) noexcept : handle_(other.Release()), close_(std::move(other.close_)) {}
    Unique& operator=(Unique&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
            close_ = std::move(other.close_);
        }
        return *this;
    }
    Unique(const Unique&) = delete;
    Unique& operator=(const Unique&) = delete;

    Handle get() const { return handle_; }
    explicit operator bool() const { return IsHandle(handle_); }

    void Reset(Handle handle = Handle{}) {
        if (IsHandle(handle_)) {
            close_(handle_);
        }
        handle_ = handle;
    }
    // Gives the handle up without freeing it: it is gone already, or someone else's now.
    Handle Release() { return std::exchange(handle_, Handle{}); }

  private:
    static bool IsHandle(Handle handle) {
        if constexpr (requires { Close::IsHandle(handle); }) {
            return Close::IsHandle(handle);
        } else {
            return handle != Handle{};
        }
    }

    Handle handle_{};
    [[no_unique_address]] Close close_{};
};

// A child or owned window may be gone already with its parent or owner.
struct DestroyWindowCloser {
    void operator()(HWND window) const {
        if (IsWindow(window)) {
            DestroyWindow(window);
        }
    }
};
struct DeleteObjectCloser {
    void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
struct DeleteDcCloser {
    void operator()(HDC dc) const { DeleteDC(dc); }
};
// A device context lent by GetDC goes back to the window it came from.
struct ReleaseDcCloser {
    HWND window = nullptr;
    void operator()(HDC dc) const { ReleaseDC(window, dc); }
};
struct DestroyIconCloser {
    void operator()(HICON icon) const { DestroyIcon(icon); }
};
struct DestroyMenuCloser {
    void operator()(HMENU menu) const { DestroyMenu(menu); }
};
struct DestroyImageListCloser {
    void operator()(HIMAGELIST list) const { ImageList_Destroy(list); }
};
struct UnhookCloser {
    void operator()(HHOOK hook) const { UnhookWindowsHookEx(hook); }
};
// Kernel objects: processes, threads, files. CreateFile fails with INVALID_HANDLE_VALUE,
// most other calls with null: both are empty.
struct CloseHandleCloser {
    static bool IsHandle(HANDLE handle) {
        return handle != nullptr && handle != INVALID_HANDLE_VALUE;
    }
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
struct FreeLibraryCloser {
    void operator()(HMODULE module) const { FreeLibrary(module); }
};

using UniqueWindow = Unique<HWND, DestroyWindowCloser>;
using UniqueFont = Unique<HFONT, DeleteObjectCloser>;
using UniqueBrush = Unique<HBRUSH, DeleteObjectCloser>;
using UniqueBitmap = Unique<HBITMAP, DeleteObjectCloser>;
using UniqueRegion = Unique<HRGN, DeleteObjectCloser>;
using UniqueDc = Unique<HDC, DeleteDcCloser>;
using WindowDc = Unique<HDC, ReleaseDcCloser>;
using UniqueIcon = Unique<HICON, DestroyIconCloser>;
using UniqueMenu = Unique<HMENU, DestroyMenuCloser>;
using UniqueImageList = Unique<HIMAGELIST, DestroyImageListCloser>;
using UniqueHook = Unique<HHOOK, UnhookCloser>;
using UniqueHandle = Unique<HANDLE, CloseHandleCloser>;
using UniqueModule = Unique<HMODULE, FreeLibraryCloser>;

// The device context of a window's client area, or of the screen for null.
inline WindowDc GetWindowDc(HWND window) {
    return WindowDc(GetDC(window), ReleaseDcCloser{window});
}

}  // namespace regvex::handles
