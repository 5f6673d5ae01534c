#pragma once
// "Info On This Item" on Windows: real controls under frmInfo's code, shown modal over
// the window that opens it.

#include <windows.h>

#include <functional>
#include <memory>
#include <string>

#include "ui/base/services.h"
#include "ui/base/window_kit_win32.h"
#include "ui/info/clipboard_win32.h"
#include "ui/info/frm_info.h"

namespace regvex::ui::info {

// The controls' identifiers, for anyone who needs to find them (tests). Close answers to
// Enter and Escape as well.
enum InfoControlId : int {
    kIdInfoClose = IDCANCEL,
    kIdInfoText = 101,
    kIdInfoCopy,
};

class Win32InfoBox final : private InfoView, private WindowImpl {
  public:
    struct Dependencies {
        MessageDialogs& dialogs;
        ColorRef theme;  // the message boxes' colour
        // The argument-less call on the main window whenever the box closes.
        std::function<void()> main_window_on_close;
    };

    explicit Win32InfoBox(Dependencies dependencies);
    ~Win32InfoBox() override;
    Win32InfoBox(const Win32InfoBox&) = delete;
    Win32InfoBox& operator=(const Win32InfoBox&) = delete;

    // Shows the explanation over `owner` and returns when the box has closed. The owner is
    // disabled meanwhile and activated again afterwards. A WM_QUIT that arrives meanwhile
    // closes the box and is posted again for the caller's loop.
    void ShowModal(HWND owner, const std::string& explanation);

  private:
    struct Shown;

    LRESULT HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) override;
    void Load(HWND owner, const std::string& explanation);
    void LayOut(int width, int height);
    void OnCommand(int id, int code, HWND control);
    void Destroy();

    void SetWindowIcon() override;
    void Close() override;

    Dependencies deps_;
    std::unique_ptr<Shown> shown_;
};

}  // namespace regvex::ui::info
