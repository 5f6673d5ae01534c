#include "hive/marvin32.h"

#include <bit>

namespace regvex::hive {

namespace {

struct State {
    std::uint32_t low;
    std::uint32_t high;

    void Mix(std::uint32_t word) {
        low += word;
        high ^= low;
        low = std::rotl(low, 20) + high;
        high = std::rotl(high, 9) ^ low;
        low = std::rotl(low, 27) + high;
        high = std::rotl(high, 19);
    }
};

}  // namespace

std::uint64_t Marvin32(std::span<const std::uint8_t> data, std::uint64_t seed) {
    State state{static_cast<std::uint32_t>(seed), static_cast<std::uint32_t>(seed >> 32)};
    std::size_t at = 0;
    for (; at + 4 <= data.size(); at += 4) {
        state.Mix(static_cast<std::uint32_t>(data[at]) |
                  (static_cast<std::uint32_t>(data[at + 1]) << 8) |
                  (static_cast<std::uint32_t>(data[at + 2]) << 16) |
                  (static_cast<std::uint32_t>(data[at + 3]) << 24));
    }
    // The last one to three bytes, closed by a 0x80 byte.
    std::uint32_t last = 0x80;
    for (std::size_t i = data.size(); i > at; --i) {
        last = (last << 8) | data[i - 1];
    }
    state.Mix(last);
    state.Mix(0);
    return (static_cast<std::uint64_t>(state.high) << 32) | state.low;
}

}  // namespace regvex::hive
