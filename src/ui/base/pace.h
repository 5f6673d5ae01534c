#pragma once
// How often the window's work may interrupt a scan: drawing, and pumping its messages.

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace regvex::ui {

// Work done now and then during a scan costs what the machine makes it cost: a list
// drawn in 5 ms here took many times that on a slower machine, where a fixed number of
// drawings a second ate a growing share of the scan. So the next run of the work waits
// for the shortest interval, and also `cost_multiple` times as long as the last run took:
// the work's share of the scan stays at most one part in `cost_multiple + 1` on any
// machine. The wait never passes the longest interval, so that a run that was slow for
// once (a message box left open in a handler) does not keep the work away.
class Pace {
  public:
    using Clock = std::chrono::steady_clock;

    Pace(std::chrono::milliseconds shortest_interval, std::chrono::milliseconds longest_interval,
         std::uint32_t cost_multiple)
        : shortest_(shortest_interval),
          longest_(longest_interval),
          cost_multiple_(cost_multiple),
          interval_(shortest_) {}

    bool Due(Clock::time_point now) const { return now - done_at_ >= interval_; }

    // The work ran from `started` to `ended`.
    void Done(Clock::time_point started, Clock::time_point ended);
    // The wait for the next run starts again at `now`, unless it started later.
    void Restart(Clock::time_point now) { done_at_ = std::max(done_at_, now); }

  private:
    Clock::duration shortest_;
    Clock::duration longest_;
    std::uint32_t cost_multiple_;
    Clock::duration interval_;
    Clock::time_point done_at_{};
};

}  // namespace regvex::ui
