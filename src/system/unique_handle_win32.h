#pragma once
// Owns one kernel object handle (process, thread, file, ...) and closes it when it goes.

#include <windows.h>

namespace regvex::system {

class UniqueHandle {
  public:
    UniqueHandle() = default;
    explicit UniqueHandle(HANDLE handle) : handle_(handle) {}
    ~UniqueHandle() { Reset(); }

    UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.Release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;

    HANDLE get() const { return handle_; }
    // CreateFile fails with INVALID_HANDLE_VALUE, most other calls with null: both are empty.
    explicit operator bool() const { return IsValid(handle_); }

    void Reset(HANDLE handle = nullptr) {
        if (IsValid(handle_)) {
            CloseHandle(handle_);
        }
        handle_ = handle;
    }

    HANDLE Release() {
        const HANDLE handle = handle_;
        handle_ = nullptr;
        return handle;
    }

  private:
    static bool IsValid(HANDLE handle) {
        return handle != nullptr && handle != INVALID_HANDLE_VALUE;
    }

    HANDLE handle_ = nullptr;
};

}  // namespace regvex::system
