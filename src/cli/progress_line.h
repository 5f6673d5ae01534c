#pragma once
// The one-line progress display of a scan on a terminal: root key, keys visited and
// findings so far, redrawn at most ten times a second.

#include <chrono>
#include <cstddef>
#include <ostream>
#include <string_view>

namespace regvex::cli {

class ProgressLine {
  public:
    ProgressLine(std::ostream& out, bool enabled) : out_(out), enabled_(enabled) {}

    void KeyVisited(std::string_view full_key_name);
    void FindingListed() { ++findings_; }
    // Removes the line, so that what follows starts on a clean line.
    void Clear();

  private:
    void Draw(std::string_view root);

    static constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

    std::ostream& out_;
    bool enabled_;
    std::size_t keys_ = 0;
    std::size_t findings_ = 0;
    std::size_t drawn_width_ = 0;
    std::chrono::steady_clock::time_point next_draw_{};
};

}  // namespace regvex::cli
