#pragma once
// The platform services of the windows, on Windows.

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "ui/base/services.h"

namespace regvex::ui {

class Win32Clock final : public Clock {
  public:
    float SecondsSinceMidnight() override;
    std::string GeneralDateText() override;
};

class Win32MessagePump final : public MessagePump {
  public:
    // `pretranslate` gives modeless windows their keyboard navigation; true when it
    // handled the message.
    explicit Win32MessagePump(std::function<bool(MSG&)> pretranslate = {})
        : pretranslate_(std::move(pretranslate)) {}
    // Waits for and handles messages until the program's last window has gone.
    int Run();
    void DoEvents() override;
    void EndProcess() override;

  private:
    void Handle(MSG& message);
    std::function<bool(MSG&)> pretranslate_;
};

class Win32Shell final : public Shell {
  public:
    Win32Shell(HWND owner, std::function<bool(HWND, std::string_view)> show_help)
        : owner_(owner), show_help_(std::move(show_help)) {}
    void SetOwner(HWND owner) { owner_ = owner; }
    void OpenUrl(std::string_view url) override;
    bool ShowHelp(std::string_view chm_path) override;

  private:
    HWND owner_;
    std::function<bool(HWND, std::string_view)> show_help_;
};

class Win32Screen final : public Screen {
  public:
    ScreenMetrics Metrics() override;
};

}  // namespace regvex::ui
