// The program's entry point: the environment set once, then the main window.

#include <windows.h>

#include <exception>

#include "engine/file_existence_win32.h"
#include "engine/win32_registry_win32.h"
#include "ignore/frm_ignore.h"
#include "ignore/frm_ignore_win32.h"
#include "system/system_info_win32.h"
#include "text/ansi_code_page_win32.h"
#include "text/wide_text_win32.h"
#include "ui/dialogs/message_dialogs_win32.h"
#include "ui/disk_text_files.h"
#include "ui/help/help_viewer_win32.h"
#include "ui/main_window_win32.h"
#include "ui/platform_services_win32.h"
#include "ui/startup_win32.h"

namespace regvex::ui {

namespace {

std::string ProgramFolder() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2);
    }
    return text::FromWide(path.substr(0, path.find_last_of(L'\\')));
}

int Main(int show) {
    ProgramState state;
    Win32SystemInfo system;
    state.masks = KeyMasksFor(Is64BitWindows(system));
    state.theme = ThemeFromWindowBackground();
    InitCommonControlsSafe();
    state.program_folder = ProgramFolder();

    std::unique_ptr<MainWindow> main_window;
    const auto main_hwnd = [&main_window]() -> HWND {
        return main_window ? main_window->hwnd() : nullptr;
    };
    Win32MessageDialogs dialogs(main_hwnd);
    DiskTextFiles files;
    text::SystemAnsiCodePage code_page;
    Win32IgnoreWindow ignore({dialogs, files, code_page, state, main_hwnd, [&main_window] {
                                  if (main_window) {
                                      SetActiveWindow(main_window->hwnd());
                                  }
                              }});
    Win32Clock clock;
    Win32MessagePump pump([&ignore](MSG& message) { return ignore.PreTranslateMessage(message); });
    HelpViewer help;
    Win32Shell shell(nullptr,
                     [&help](HWND owner, std::string_view path) { return help.Show(owner, path); });
    Win32Screen screen;
    Win32Registry registry;
    Win32FileExistence existence;
    Win32Redirection redirection;

    main_window = std::make_unique<MainWindow>(
        MainWindowServices{dialogs, clock, pump, shell, screen, system, registry, existence,
                           redirection, ignore,
                           [&] { AddToIgnore_Click(main_window->results(), ignore, state); },
                           [&] { AddSubkeyToIgnore_Click(main_window->results(), ignore, state); }},
        state);
    if (!main_window->Create(show)) {
        return 1;
    }
    shell.SetOwner(main_window->hwnd());
    return pump.Run();
}

}  // namespace

}  // namespace regvex::ui

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int show) {
    try {
        return regvex::ui::Main(show);
    } catch (const std::exception&) {
        return 1;
    }
}
