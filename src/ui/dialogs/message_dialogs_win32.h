#pragma once
// The program's message boxes on Windows: the platform's standard box, in the colours
// that the call before it recorded.

#include <windows.h>

#include <functional>
#include <string_view>

#include "ui/base/services.h"

namespace regvex::ui::dialogs {

class Win32MessageDialogs final : public MessageDialogs {
  public:
    // `owner` is asked for the boxes' owner window each time one is shown, since the
    // window that should own them may come and go; without it they have none.
    explicit Win32MessageDialogs(std::function<HWND()> owner = {});

    void SetMessageBoxColors(DialogColor text, DialogColor back, DialogColor edit_text,
                             DialogColor edit_back) override;
    int MsgBox(std::string_view prompt, int style, std::string_view title) override;

  private:
    std::function<HWND()> owner_;
};

}  // namespace regvex::ui::dialogs
