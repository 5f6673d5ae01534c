#pragma once
// A window that shows message boxes of its own stays disabled while one is up, as the
// main window does, so that it cannot be closed under the handler waiting for the answer,
// whichever window the boxes belong to.

#include <windows.h>

#include "ui/base/services.h"

namespace regvex::ui {

class ModalToWindow final : public MessageDialogs {
  public:
    ModalToWindow(MessageDialogs& dialogs, HWND window) : dialogs_(dialogs), window_(window) {}
    void SetMessageBoxColors(DialogColor text, DialogColor back, DialogColor edit_text,
                             DialogColor edit_back) override {
        dialogs_.SetMessageBoxColors(text, back, edit_text, edit_back);
    }
    int MsgBox(std::string_view prompt, int style, std::string_view title) override {
        const bool disable = IsWindowEnabled(window_) != FALSE;
        if (disable) {
            EnableWindow(window_, FALSE);
        }
        const int answer = dialogs_.MsgBox(prompt, style, title);
        if (disable) {
            EnableWindow(window_, TRUE);
        }
        return answer;
    }

  private:
    MessageDialogs& dialogs_;
    HWND window_;
};

}  // namespace regvex::ui
