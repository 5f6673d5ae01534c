#include "ui/base/pace.h"

#include <algorithm>

namespace regvex::ui {

void Pace::Done(Clock::time_point started, Clock::time_point ended) {
    const Clock::duration cost = std::max(ended - started, Clock::duration::zero());
    interval_ = std::clamp(cost * cost_multiple_, shortest_, longest_);
    done_at_ = ended;
}

}  // namespace regvex::ui
