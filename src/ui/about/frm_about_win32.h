#pragma once
// The About box on Windows: real controls under frmAbout's code, shown modal over the
// window that opens it.

#include <windows.h>

#include <functional>
#include <memory>

#include "engine/path_exists.h"
#include "engine/registry.h"
#include "system/process.h"
#include "ui/about/frm_about.h"
#include "ui/base/services.h"
#include "ui/base/window_kit_win32.h"

namespace regvex::ui::about {

// The controls' identifiers, for anyone who needs to find them (tests). OK answers to
// Enter and Escape as well.
enum AboutControlId : int {
    kIdAboutOk = IDOK,
    kIdAboutPicIcon = 101,
    kIdAboutTitle,
    kIdAboutVersion,
    kIdAboutDescription,
    kIdAboutLink,
    kIdAboutLine,
    kIdAboutSysInfo,
    kIdAboutLicence,
};

class Win32AboutBox final : private AboutView, private WindowImpl {
  public:
    struct Dependencies {
        MessageDialogs& dialogs;
        // The message boxes' colour.
        ColorRef theme;
        Registry& registry;
        // KeyAccessMask of the program's KeyMasks.
        AccessMask key_access_mask;
        FileExistence& files;
        system::ProcessLauncher& launcher;
        // Opens the web-site link.
        Shell& shell;
        // The argument-less call on the main window whenever the box closes.
        std::function<void()> main_window_on_close;
    };

    explicit Win32AboutBox(Dependencies dependencies);
    ~Win32AboutBox() override;
    Win32AboutBox(const Win32AboutBox&) = delete;
    Win32AboutBox& operator=(const Win32AboutBox&) = delete;

    // Shows the box over `owner` and returns when it has closed. The owner is disabled
    // meanwhile and activated again afterwards. A WM_QUIT that arrives meanwhile closes the
    // box and is posted again for the caller's loop.
    void ShowModal(HWND owner);

  private:
    struct Shown;

    LRESULT HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) override;
    void Load(HWND owner);
    void RunHandler(const std::function<void()>& handler);
    void OnCommand(int id, int code, HWND control);
    void Destroy();

    void SetWindowIcon() override;
    void ResizeAbout() override;
    void MatchLinkFontToLabels() override;
    void Close() override;

    Dependencies deps_;
    std::unique_ptr<Shown> shown_;
};

}  // namespace regvex::ui::about
