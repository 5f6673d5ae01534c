#include "system/system_info_win32.h"

#include <windows.h>

namespace regvex::system {

OsVersion Win32SystemInfo::Version() {
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof(info);
    // GetVersionEx is deprecated because it answers what the manifest claims rather than
    // the true version; the version test was written against exactly that answer.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const BOOL ok = GetVersionExW(&info);
#pragma GCC diagnostic pop
    if (!ok) {
        return OsVersion{};
    }
    return OsVersion{info.dwMajorVersion, info.dwMinorVersion};
}

std::uint16_t Win32SystemInfo::NativeProcessorArchitecture() {
    // The native answer, so that a 32-bit build under WOW64 still sees a 64-bit system.
    SYSTEM_INFO info{};
    GetNativeSystemInfo(&info);
    return info.wProcessorArchitecture;
}

}  // namespace regvex::system
