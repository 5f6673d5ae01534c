#pragma once
// A set of bytes tested in one step: for rules that look at every character of a path.

#include <array>
#include <cstddef>
#include <string_view>

namespace regvex::text {

class CharSet {
  public:
    constexpr explicit CharSet(std::string_view chars) {
        for (const char c : chars) {
            in_[static_cast<unsigned char>(c)] = true;
        }
    }

    constexpr bool Contains(char c) const { return in_[static_cast<unsigned char>(c)]; }

    // Position of the first character of `text` in the set, or npos.
    constexpr std::size_t FindFirstIn(std::string_view text) const {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (Contains(text[i])) {
                return i;
            }
        }
        return std::string_view::npos;
    }

  private:
    std::array<bool, 256> in_{};
};

}  // namespace regvex::text
