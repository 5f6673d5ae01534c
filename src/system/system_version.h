#pragma once
// Which Windows the program runs on, and the registry access masks that follow from it.

#include <cstdint>
#include <string>

#include "engine/registry.h"

namespace regvex::system {

struct OsVersion {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
};

inline constexpr std::uint16_t kProcessorArchitectureIa64 = 6;
inline constexpr std::uint16_t kProcessorArchitectureAmd64 = 9;

// The system's own answers (GetVersionEx, GetNativeSystemInfo).
class SystemInfo {
  public:
    virtual ~SystemInfo() = default;
    virtual OsVersion Version() = 0;
    virtual std::uint16_t NativeProcessorArchitecture() = 0;
};

// "major.minor", as the version test compares it.
std::string VersionText(OsVersion version);

// Compares the version as text with "5.1", not as a number: a two-digit major version
// such as 10 sorts before "5" and is taken for an older system. Kept on purpose.
bool IsWindowsXPOrLater(SystemInfo& system);

// Asks for the processor architecture only when the version test passes.
bool Is64BitWindows(SystemInfo& system);

// Program-wide registry access masks, set once at start-up.
struct KeyMasks {
    AccessMask KeyQueryMask = reg::kKeyQueryValue;
    AccessMask KeySetMask = reg::kKeySetValue;
    AccessMask KeyAccessMask = reg::kKeyAllAccess;
};

// On 64-bit Windows every mask also asks for the 64-bit registry view, so that a 32-bit
// build of the program reaches the same keys as the system's own tools.
KeyMasks KeyMasksFor(bool is_64_bit_windows);

}  // namespace regvex::system
