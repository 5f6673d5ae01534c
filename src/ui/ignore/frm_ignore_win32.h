#pragma once
// The ignore-list window on Windows: real controls under frmIgnore's code. It exists
// only while loaded; loading makes it hidden and reads the ignore file, Show shows it
// modeless in front of its owner, and closing it (close box, "&Close", Unload) discards
// edits that were not applied.

#include <windows.h>

#include <functional>
#include <memory>

#include "text/ansi_code_page.h"
#include "ui/base/program_state.h"
#include "ui/base/services.h"
#include "ui/base/window_kit_win32.h"
#include "ui/ignore/frm_ignore.h"
#include "ui/ignore/ignore_window.h"

namespace regvex::ui::ignore {

// The controls' identifiers, for anyone who needs to find them (tests).
enum IgnoreControlId : int {
    kIdFrame1 = 101,
    kIdLabel1,
    kIdTxtString,
    kIdCmdAdd,
    kIdLstIgnore,
    kIdLabel2,
    kIdCmdRemove,
    kIdCmdApply,
    kIdMnuAdd = 201,
    kIdMnuRemove,
    kIdMnuClose,
};

class Win32IgnoreWindow final : public IgnoreWindow, private WindowImpl {
  public:
    struct Dependencies {
        MessageDialogs& dialogs;
        TextFiles& files;
        const text::AnsiCodePage& code_page;
        ProgramState& state;
        // The main window, asked each time the window is made: it owns the window.
        std::function<HWND()> owner;
        // The argument-less call on the main window whenever this window closes.
        std::function<void()> main_window_on_close;
    };

    explicit Win32IgnoreWindow(Dependencies dependencies);
    // Destroys the window, if loaded, without the call on the main window: the program
    // is ending.
    ~Win32IgnoreWindow() override;
    Win32IgnoreWindow(const Win32IgnoreWindow&) = delete;
    Win32IgnoreWindow& operator=(const Win32IgnoreWindow&) = delete;

    bool IsLoaded() const override;
    frmIgnore& Form() override;
    ListBox& lstIgnore() override;
    void Unload() override;
    void Show() override;

    // The window, or null when it is not loaded.
    HWND Handle() const;

    // For the program's message loop: lets Tab, Shift+Tab and the mnemonics move between
    // the window's controls. True when the message was handled.
    bool PreTranslateMessage(MSG& message);

  private:
    struct Loaded;
    // The list box's own procedure, behind ours.
    WNDPROC list_proc_ = nullptr;
    friend struct Loaded;

    static LRESULT CALLBACK ListProc(HWND list, UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) override;
    void Load();
    void Destroy();
    // Runs a handler of frmIgnore; an unload asked for meanwhile happens once it is done.
    void RunHandler(const std::function<void()>& handler);
    void OnCommand(int id);
    void OnListMouse(UINT message, WPARAM wparam, LPARAM lparam);
    void PopupFileMenu(float x_twips, float y_twips);
    void ResizeIgnore();

    Dependencies deps_;
    std::unique_ptr<Loaded> loaded_;
    // Handlers of this window on the stack: an unload asked for meanwhile waits for them.
    int busy_ = 0;
    bool unload_pending_ = false;
};

}  // namespace regvex::ui::ignore
