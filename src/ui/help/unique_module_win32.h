#pragma once
// Owns one loaded DLL (LoadLibrary) and frees it when it goes.

#include <windows.h>

namespace regvex::ui::help {

class UniqueModule {
  public:
    UniqueModule() = default;
    explicit UniqueModule(HMODULE module) : module_(module) {}
    ~UniqueModule() { Reset(); }

    UniqueModule(UniqueModule&& other) noexcept : module_(other.Release()) {}
    UniqueModule& operator=(UniqueModule&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    UniqueModule(const UniqueModule&) = delete;
    UniqueModule& operator=(const UniqueModule&) = delete;

    HMODULE get() const { return module_; }
    explicit operator bool() const { return module_ != nullptr; }

    void Reset(HMODULE module = nullptr) {
        if (module_ != nullptr) {
            FreeLibrary(module_);
        }
        module_ = module;
    }

    HMODULE Release() {
        const HMODULE module = module_;
        module_ = nullptr;
        return module;
    }

  private:
    HMODULE module_ = nullptr;
};

}  // namespace regvex::ui::help
