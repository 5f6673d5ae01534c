#pragma once
// Owners of the window, GDI and image-list handles that the task pane makes: each one
// destroys its handle when it goes, so that no path leaks one.

#include <windows.h>

#include <commctrl.h>

#include <utility>

namespace regvex::ui::taskpane {

template <typename Handle, typename Destroy>
class Owner {
  public:
    Owner() = default;
    explicit Owner(Handle handle) : handle_(handle) {}
    ~Owner() { Reset(); }

    Owner(Owner&& other) noexcept : handle_(other.Release()) {}
    Owner& operator=(Owner&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    Handle get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

    void Reset(Handle handle = nullptr) {
        if (handle_ != nullptr) {
            Destroy{}(handle_);
        }
        handle_ = handle;
    }
    Handle Release() { return std::exchange(handle_, nullptr); }

  private:
    Handle handle_ = nullptr;
};

struct DestroyGdiObject {
    void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
struct DestroyDc {
    void operator()(HDC dc) const { DeleteDC(dc); }
};
struct DestroyImageList {
    void operator()(HIMAGELIST list) const { ImageList_Destroy(list); }
};
// A child or owned window may already be gone with its parent.
struct DestroyWindowIfAlive {
    void operator()(HWND window) const {
        if (IsWindow(window)) {
            DestroyWindow(window);
        }
    }
};

using UniqueFont = Owner<HFONT, DestroyGdiObject>;
using UniqueBrush = Owner<HBRUSH, DestroyGdiObject>;
using UniqueBitmap = Owner<HBITMAP, DestroyGdiObject>;
using UniqueRegion = Owner<HRGN, DestroyGdiObject>;
using UniqueDc = Owner<HDC, DestroyDc>;
using UniqueImageList = Owner<HIMAGELIST, DestroyImageList>;
using UniqueWindow = Owner<HWND, DestroyWindowIfAlive>;

// Selects an object into a device context for as long as it lives.
class SelectIn {
  public:
    SelectIn(HDC dc, HGDIOBJ object) : dc_(dc), old_(SelectObject(dc, object)) {}
    ~SelectIn() { SelectObject(dc_, old_); }
    SelectIn(const SelectIn&) = delete;
    SelectIn& operator=(const SelectIn&) = delete;

  private:
    HDC dc_;
    HGDIOBJ old_;
};

}  // namespace regvex::ui::taskpane
