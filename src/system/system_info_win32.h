#pragma once
// The running system's version and processor architecture.

#include "system/system_version.h"

namespace regvex::system {

class Win32SystemInfo final : public SystemInfo {
  public:
    OsVersion Version() override;
    std::uint16_t NativeProcessorArchitecture() override;
};

}  // namespace regvex::system
