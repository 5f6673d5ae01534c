#include "system/program_folder_win32.h"

#include <windows.h>

#include "text/wide_text_win32.h"

namespace regvex::system {

std::string ProgramFolderOfThisProcess() {
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

}  // namespace regvex::system
