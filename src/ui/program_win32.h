#pragma once
// The program put together: the environment set once at start-up, the services of the
// platform, the ignore-list window and the main window.

#include <windows.h>

#include <memory>

#include "engine/file_existence_win32.h"
#include "engine/win32_registry_win32.h"
#include "system/process_win32.h"
#include "system/system_info_win32.h"
#include "text/ansi_code_page_win32.h"
#include "ui/base/disk_text_files.h"
#include "ui/base/platform_services_win32.h"
#include "ui/dialogs/message_dialogs_win32.h"
#include "ui/help/help_viewer_win32.h"
#include "ui/ignore/frm_ignore_win32.h"
#include "ui/main_window_win32.h"

namespace regvex::ui {

class Program {
  public:
    // Sets the access masks, the message boxes' colour and the common controls.
    Program();
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // Shows the main window.
    bool Start(int show);
    // Handles messages until the main window has gone; answers the exit code.
    int Run() { return pump_.Run(); }

    ProgramState& state() { return state_; }
    MainWindow& main_window() { return *main_window_; }

  private:
    ProgramState state_;
    system::Win32SystemInfo system_;
    dialogs::Win32MessageDialogs dialogs_;
    DiskTextFiles files_;
    text::SystemAnsiCodePage code_page_;
    ignore::Win32IgnoreWindow ignore_;
    Win32Clock clock_;
    Win32MessagePump pump_;
    help::HelpViewer help_;
    Win32Shell shell_;
    Win32Screen screen_;
    Win32Registry registry_;
    Win32FileExistence existence_;
    system::Win32FileSystemRedirection redirection_;
    system::DiskFileSystem disk_;
    system::Win32ProcessLauncher processes_;
    std::unique_ptr<MainWindow> main_window_;
};

}  // namespace regvex::ui
