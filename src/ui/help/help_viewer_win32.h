#pragma once
// Shows the compiled help through the HTML Help engine of Windows (hhctrl.ocx). The engine
// is loaded when the help is first asked for, not linked: a system without it still runs
// the program, and the caller tells the user instead.

#include <windows.h>

#include <string_view>

#include "handles/unique_handle_win32.h"

namespace regvex::ui::help {

class HelpViewer {
  public:
    HelpViewer() = default;
    // Closes every help window that the program opened, then releases the engine.
    ~HelpViewer();

    HelpViewer(const HelpViewer&) = delete;
    HelpViewer& operator=(const HelpViewer&) = delete;

    // Opens the help file at its contents page in a window owned by `owner` (which may be
    // null). False when the file is not there, the engine cannot be loaded, or the engine
    // opens no window; the caller then tells the user.
    bool Show(HWND owner, std::string_view help_path);

    // The same at one page of the file, such as "scanning.htm" or "results.htm#menu"; an
    // empty topic opens the file's own default page.
    bool ShowTopic(HWND owner, std::string_view help_path, std::string_view topic);

    // Closes every help window that the program opened; nothing when none is open.
    void CloseAll();

  private:
    using HtmlHelpFunction = HWND(WINAPI*)(HWND, LPCWSTR, UINT, DWORD_PTR);

    bool LoadEngine();

    handles::UniqueModule engine_;
    HtmlHelpFunction html_help_ = nullptr;
};

}  // namespace regvex::ui::help
