#pragma once
// Starts programs with CreateProcess and waits for them.

#include "system/process.h"

namespace regvex::system {

class Win32ProcessLauncher final : public ProcessLauncher {
  public:
    std::uint32_t RunAndWait(const std::string& command_line) override;
    bool Start(const std::string& command_line) override;
};

class Win32FileSystemRedirection final : public FileSystemRedirection {
  public:
    std::uintptr_t Disable() override;
    void Revert(std::uintptr_t old_value) override;
};

}  // namespace regvex::system
