#include "cli/progress_line.h"

namespace regvex::cli {

void ProgressLine::KeyVisited(std::string_view full_key_name) {
    ++keys_;
    // Reading the clock for every key would cost more than the redraws it saves.
    if (!enabled_ || keys_ % 64 != 1) {
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now < next_draw_) {
        return;
    }
    next_draw_ = now + kRedrawInterval;
    Draw(full_key_name.substr(0, full_key_name.find('\\')));
}

void ProgressLine::Draw(std::string_view root) {
    std::string line = "\r";
    line.append(root);
    line += "  " + std::to_string(keys_) + " keys  " + std::to_string(findings_) + " findings";
    const std::size_t width = line.size() - 1;
    if (width < drawn_width_) {
        line.append(drawn_width_ - width, ' ');
    }
    drawn_width_ = width;
    out_ << line << std::flush;
}

void ProgressLine::Clear() {
    if (!enabled_ || drawn_width_ == 0) {
        return;
    }
    out_ << '\r' << std::string(drawn_width_, ' ') << '\r' << std::flush;
    drawn_width_ = 0;
}

}  // namespace regvex::cli
