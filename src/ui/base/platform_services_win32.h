#pragma once
// The platform services of the windows, on Windows.

#include <windows.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "ui/base/pace.h"
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
    // Called for every key a scan walks. Asking for a message when none waits is dear
    // under Wine (two server round trips and the processor given up to whoever else
    // wants it, which on a busy machine costs more than walking the key), and even the
    // queue's status is a round trip: the queue is looked at every five milliseconds and
    // pumped when something waits. What only a pump fetches (under Wine the display's own
    // input) comes with a pump every 20 ms, or up to every 100 ms where pumps cost more
    // than a fiftieth of the time.
    void DoEvents() override;
    void EndProcess() override;

  private:
    void Handle(MSG& message);
    std::function<bool(MSG&)> pretranslate_;
    std::chrono::steady_clock::time_point looked_at_{};
    Pace unprompted_pumps_{std::chrono::milliseconds(20), std::chrono::milliseconds(100), 49};
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
