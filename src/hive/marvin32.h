#pragma once
// Marvin32, the keyed hash with which Windows seals each entry of a transaction log.

#include <cstdint>
#include <span>

namespace regvex::hive {

// The seed Windows uses for the entries of hive transaction logs.
inline constexpr std::uint64_t kLogEntrySeed = 0xC5554E7A884DEF82;

// The 64-bit result: the high state word above the low one.
std::uint64_t Marvin32(std::span<const std::uint8_t> data, std::uint64_t seed);

}  // namespace regvex::hive
