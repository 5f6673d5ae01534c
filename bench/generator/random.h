#pragma once
// Raw std::mt19937_64 output with reductions of our own: the standard distributions
// give different numbers on different standard libraries.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

namespace regvex::bench_generator {

class Random {
  public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    std::uint64_t Next() { return engine_(); }
    // The modulo's bias is below 2^-40 for every bound used here.
    std::size_t Below(std::size_t bound) {
        return bound == 0 ? 0 : static_cast<std::size_t>(Next() % bound);
    }
    std::size_t Between(std::size_t low, std::size_t high) { return low + Below(high - low + 1); }
    double Unit() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
    bool Chance(double probability) { return Unit() < probability; }
    // Early indexes far more often than late ones, as with popular files and busy keys.
    std::size_t Skewed(std::size_t bound, int power) {
        double u = Unit();
        double p = u;
        for (int i = 1; i < power; ++i) {
            p *= u;
        }
        return std::min(bound - 1, static_cast<std::size_t>(p * static_cast<double>(bound)));
    }
    template <typename T, std::size_t N>
    const T& Pick(const std::array<T, N>& items) {
        return items[Below(N)];
    }

  private:
    std::mt19937_64 engine_;
};

}  // namespace regvex::bench_generator
