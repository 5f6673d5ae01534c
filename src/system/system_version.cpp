#include "system/system_version.h"

namespace regvex::system {

std::string VersionText(OsVersion version) {
    return std::to_string(version.major) + "." + std::to_string(version.minor);
}

bool IsWindowsXPOrLater(SystemInfo& system) {
    return VersionText(system.Version()) >= std::string("5.1");
}

bool Is64BitWindows(SystemInfo& system) {
    if (!IsWindowsXPOrLater(system)) {
        return false;
    }
    const std::uint16_t architecture = system.NativeProcessorArchitecture();
    return architecture == kProcessorArchitectureAmd64 ||
           architecture == kProcessorArchitectureIa64;
}

KeyMasks KeyMasksFor(bool is_64_bit_windows) {
    if (!is_64_bit_windows) {
        return KeyMasks{};
    }
    return KeyMasks{reg::kKeyQueryValue | reg::kKeyWow64_64Key,
                    reg::kKeySetValue | reg::kKeyWow64_64Key,
                    reg::kKeyAllAccess | reg::kKeyWow64_64Key};
}

}  // namespace regvex::system
