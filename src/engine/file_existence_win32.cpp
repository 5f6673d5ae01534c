#include "engine/file_existence_win32.h"

#include <shlwapi.h>
#include <windows.h>

#include "text/wide_text_win32.h"

namespace regvex {

int Win32FileExistence::Check(const std::string& path) {
    // The BOOL goes back as it came: PathExists decides what an answer other than 1 means.
    return ::PathFileExistsW(text::ToWide(path).c_str());
}

}  // namespace regvex
