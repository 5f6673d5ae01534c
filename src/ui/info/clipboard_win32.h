#pragma once
// The system's clipboard on Windows, as Unicode text with CR LF line ends.

#include <windows.h>

#include "ui/info/clipboard.h"

namespace regvex::ui {

class Win32Clipboard final : public Clipboard {
  public:
    // `owner`: the window the clipboard is opened for.
    explicit Win32Clipboard(HWND owner = nullptr) : owner_(owner) {}
    void SetOwner(HWND owner) { owner_ = owner; }
    bool SetText(std::string_view text) override;

  private:
    HWND owner_;
};

// Line ends of '\n' as CR LF, the form edit controls and the clipboard take.
std::wstring WithCrLf(std::string_view text);

}  // namespace regvex::ui
