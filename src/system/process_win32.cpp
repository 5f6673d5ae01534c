#include "system/process_win32.h"

#include <windows.h>

#include <string>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"

namespace regvex::system {

std::uint32_t Win32ProcessLauncher::RunAndWait(const std::string& command_line) {
    // CreateProcessW may write into the command line, so it gets a copy of its own.
    std::wstring writable = text::ToWide(command_line);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION info{};
    // No application name: the system finds the program from the first word of the
    // command line and searches the path for it, as a user typing it would expect.
    if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, TRUE, NORMAL_PRIORITY_CLASS,
                        nullptr, nullptr, &startup, &info)) {
        return 0;
    }
    // Declared in this order so that the thread handle is closed before the process handle.
    const handles::UniqueHandle process(info.hProcess);
    const handles::UniqueHandle thread(info.hThread);

    WaitForSingleObject(process.get(), INFINITE);
    DWORD exit_code = 0;
    if (!GetExitCodeProcess(process.get(), &exit_code)) {
        return 0;
    }
    return exit_code;
}

bool Win32ProcessLauncher::Start(const std::string& command_line) {
    std::wstring writable = text::ToWide(command_line);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION info{};
    if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, FALSE, NORMAL_PRIORITY_CLASS,
                        nullptr, nullptr, &startup, &info)) {
        return false;
    }
    // Nobody waits for it: the handles go at once.
    const handles::UniqueHandle process(info.hProcess);
    const handles::UniqueHandle thread(info.hThread);
    return true;
}

std::uintptr_t Win32FileSystemRedirection::Disable() {
    void* old_value = nullptr;
    Wow64DisableWow64FsRedirection(&old_value);
    return reinterpret_cast<std::uintptr_t>(old_value);
}

void Win32FileSystemRedirection::Revert(std::uintptr_t old_value) {
    Wow64RevertWow64FsRedirection(reinterpret_cast<void*>(old_value));
}

}  // namespace regvex::system
