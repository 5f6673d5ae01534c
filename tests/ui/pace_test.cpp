#include "ui/base/pace.h"

#include <gtest/gtest.h>

namespace regvex::ui {
namespace {

using namespace std::chrono_literals;

// However long a drawing takes, the next one waits until drawing has had no more than its
// share of the time: the window's cost per key stays the same on a slower machine.
TEST(PaceTest, TheNextRunWaitsForItsShareOfTheTimeWithinTheIntervals) {
    struct Case {
        std::chrono::milliseconds cost;
        std::chrono::milliseconds not_yet;
        std::chrono::milliseconds due;
    };
    const Case cases[] = {
        {0ms, 99ms, 100ms},       // free: the shortest interval
        {2ms, 99ms, 100ms},       // cheap: still the shortest interval
        {10ms, 189ms, 190ms},     // 19 times the cost
        {150ms, 2849ms, 2850ms},  // a slow machine's list: drawn every 2.85 s
        {60s, 4999ms, 5000ms},    // slow for once: never more than the longest wait
    };
    for (const Case& c : cases) {
        Pace pace(100ms, 5s, 19);
        const Pace::Clock::time_point start{1h};
        EXPECT_TRUE(pace.Due(start));
        pace.Done(start, start + c.cost);
        const auto ended = start + c.cost;
        EXPECT_FALSE(pace.Due(ended + c.not_yet)) << c.cost.count();
        EXPECT_TRUE(pace.Due(ended + c.due)) << c.cost.count();
        pace.Restart(ended + c.due);
        EXPECT_FALSE(pace.Due(ended + c.due)) << "waits again after a restart";
    }
}

}  // namespace
}  // namespace regvex::ui
