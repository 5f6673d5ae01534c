#pragma once
// Starting the system's own programs (the Registry Editor, Notepad, ...).

#include <cstdint>
#include <string>

namespace regvex {

class ProcessLauncher {
  public:
    virtual ~ProcessLauncher() = default;
    // Runs a command line, waits for it without a time-out and answers its exit code;
    // 0 when it could not be started.
    virtual std::uint32_t RunAndWait(const std::string& command_line) = 0;
};

}  // namespace regvex
