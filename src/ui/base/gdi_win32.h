#pragma once
// Owners for the GDI and USER handles the windows create.

#include <windows.h>

#include <utility>

namespace regvex::ui {

// A font, brush, pen or bitmap, deleted when its owner goes.
template <typename Handle>
class GdiObject {
  public:
    GdiObject() = default;
    explicit GdiObject(Handle handle) : handle_(handle) {}
    ~GdiObject() { Reset(); }
    GdiObject(GdiObject&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    GdiObject& operator=(GdiObject&& other) noexcept {
        if (this != &other) {
            Reset(std::exchange(other.handle_, nullptr));
        }
        return *this;
    }
    GdiObject(const GdiObject&) = delete;
    GdiObject& operator=(const GdiObject&) = delete;

    Handle get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }
    void Reset(Handle handle = nullptr) {
        if (handle_ != nullptr) {
            DeleteObject(handle_);
        }
        handle_ = handle;
    }

  private:
    Handle handle_ = nullptr;
};

using UniqueFont = GdiObject<HFONT>;
using UniqueBrush = GdiObject<HBRUSH>;
using UniqueBitmap = GdiObject<HBITMAP>;

// A memory device context for measuring and drawing off screen.
class MemoryDc {
  public:
    MemoryDc() = default;
    ~MemoryDc() {
        if (dc_ != nullptr) {
            DeleteDC(dc_);
        }
    }
    MemoryDc(const MemoryDc&) = delete;
    MemoryDc& operator=(const MemoryDc&) = delete;

    // Made on first use, compatible with the screen.
    HDC get() {
        if (dc_ == nullptr) {
            dc_ = CreateCompatibleDC(nullptr);
        }
        return dc_;
    }

  private:
    HDC dc_ = nullptr;
};

// A window this program created and must destroy.
class UniqueWindow {
  public:
    UniqueWindow() = default;
    explicit UniqueWindow(HWND window) : window_(window) {}
    ~UniqueWindow() { Reset(); }
    UniqueWindow(UniqueWindow&& other) noexcept : window_(std::exchange(other.window_, nullptr)) {}
    UniqueWindow& operator=(UniqueWindow&& other) noexcept {
        if (this != &other) {
            Reset(std::exchange(other.window_, nullptr));
        }
        return *this;
    }
    UniqueWindow(const UniqueWindow&) = delete;
    UniqueWindow& operator=(const UniqueWindow&) = delete;

    HWND get() const { return window_; }
    void Reset(HWND window = nullptr) {
        if (window_ != nullptr && IsWindow(window_)) {
            DestroyWindow(window_);
        }
        window_ = window;
    }
    // The window is gone already (destroyed by the system); forget it.
    HWND Release() { return std::exchange(window_, nullptr); }

  private:
    HWND window_ = nullptr;
};

}  // namespace regvex::ui
