#pragma once
// Starting the system's own programs (the Registry Editor, Notepad, ...).

#include <cstdint>
#include <string>

namespace regvex::system {

class ProcessLauncher {
  public:
    virtual ~ProcessLauncher() = default;
    // Runs a command line, waits for it without a time-out and answers its exit code;
    // 0 when it could not be started.
    virtual std::uint32_t RunAndWait(const std::string& command_line) = 0;
    // Starts a command line in a normal window with the focus and does not wait; false
    // when it could not be started.
    virtual bool Start(const std::string& command_line) = 0;
};

// The file-system redirection of 32-bit programs on 64-bit Windows: switched off around
// starting a system program, so that the 64-bit one starts.
class FileSystemRedirection {
  public:
    virtual ~FileSystemRedirection() = default;
    // Switches it off for this thread and answers the old value to give back.
    virtual std::uintptr_t Disable() = 0;
    virtual void Revert(std::uintptr_t old_value) = 0;
};

// Switches the redirection off for as long as it lives, when asked to.
class RedirectionOff {
  public:
    RedirectionOff(FileSystemRedirection& redirection, bool switch_off)
        : redirection_(switch_off ? &redirection : nullptr),
          old_value_(switch_off ? redirection.Disable() : 0) {}
    ~RedirectionOff() {
        if (redirection_ != nullptr) {
            redirection_->Revert(old_value_);
        }
    }
    RedirectionOff(const RedirectionOff&) = delete;
    RedirectionOff& operator=(const RedirectionOff&) = delete;

  private:
    FileSystemRedirection* redirection_;
    std::uintptr_t old_value_;
};

}  // namespace regvex::system
