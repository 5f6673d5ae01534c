#pragma once
// Starts programs with CreateProcess and waits for them.

#include "system/process.h"

namespace regvex {

class Win32ProcessLauncher final : public ProcessLauncher {
  public:
    std::uint32_t RunAndWait(const std::string& command_line) override;
};

}  // namespace regvex
