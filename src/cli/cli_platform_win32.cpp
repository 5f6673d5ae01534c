#include <windows.h>

#include <io.h>
#include <shellapi.h>

#include <cstdio>

#include "cli/cli_platform.h"
#include "engine/file_existence_win32.h"
#include "engine/win32_registry_win32.h"
#include "system/general_date.h"
#include "system/process_win32.h"
#include "system/program_folder_win32.h"
#include "system/system_info_win32.h"
#include "system/system_version.h"
#include "text/ansi_code_page_win32.h"
#include "text/wide_text_win32.h"

namespace regvex::cli {

namespace {

class Win32Repair final : public RepairPlatform {
  public:
    std::string ProgramFolder() override { return system::ProgramFolderOfThisProcess(); }
    system::FileSystem& Disk() override { return disk_; }
    system::ProcessLauncher& Processes() override { return processes_; }
    system::FileSystemRedirection& Redirection() override { return redirection_; }
    bool Is64BitWindows() override {
        system::Win32SystemInfo system;
        return regvex::system::Is64BitWindows(system);
    }
    std::string GeneralDateText() override { return system::GeneralDateTextNow(); }

  private:
    system::DiskFileSystem disk_;
    system::Win32ProcessLauncher processes_;
    system::Win32FileSystemRedirection redirection_;
};

class Win32Platform final : public CliPlatform {
  public:
    std::unique_ptr<Registry> OpenLiveRegistry(std::string&) override {
        return std::make_unique<Win32Registry>();
    }
    std::unique_ptr<FileExistence> SystemFiles() override {
        return std::make_unique<Win32FileExistence>();
    }
    const text::AnsiCodePage& AnsiCodePage() override { return code_page_; }
    AccessMask KeyAccessMask() override {
        system::Win32SystemInfo system;
        return system::KeyMasksFor(system::Is64BitWindows(system)).KeyAccessMask;
    }
    RepairPlatform* Repair(std::string&) override { return &repair_; }
    bool StdoutIsTerminal() override { return _isatty(_fileno(stdout)) != 0; }
    bool StderrIsTerminal() override { return _isatty(_fileno(stderr)) != 0; }

  private:
    text::SystemAnsiCodePage code_page_;
    Win32Repair repair_;
};

struct LocalFreeDeleter {
    void operator()(LPWSTR* p) const { LocalFree(p); }
};

}  // namespace

std::unique_ptr<CliPlatform> MakeSystemPlatform() {
    return std::make_unique<Win32Platform>();
}

std::vector<std::string> Utf8Arguments(int, char**) {
    // The narrow argv of Windows is in the ANSI code page; the wide command line holds
    // every character the user typed.
    int count = 0;
    std::unique_ptr<LPWSTR, LocalFreeDeleter> wide(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> args;
    for (int i = 1; wide && i < count; ++i) {
        args.push_back(text::FromWide(wide.get()[i]));
    }
    return args;
}

void PrepareConsole() {
    SetConsoleOutputCP(CP_UTF8);
    // Output that does not go to a console (a file, a pipe, the null device) is written in
    // blocks. The C runtime takes any character device for a console and would otherwise
    // write it one character at a time.
    DWORD mode = 0;
    if (GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) == 0) {
        std::setvbuf(stdout, nullptr, _IOFBF, 64 * 1024);
    }
}

}  // namespace regvex::cli
