#include "hive/base_block.h"

#include <algorithm>

namespace regvex::hive {

std::uint16_t ReadU16(std::span<const std::uint8_t> bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] | (bytes[at + 1] << 8));
}

std::uint32_t ReadU32(std::span<const std::uint8_t> bytes, std::size_t at) {
    return static_cast<std::uint32_t>(bytes[at]) |
           (static_cast<std::uint32_t>(bytes[at + 1]) << 8) |
           (static_cast<std::uint32_t>(bytes[at + 2]) << 16) |
           (static_cast<std::uint32_t>(bytes[at + 3]) << 24);
}

std::uint64_t ReadU64(std::span<const std::uint8_t> bytes, std::size_t at) {
    return ReadU32(bytes, at) | (static_cast<std::uint64_t>(ReadU32(bytes, at + 4)) << 32);
}

void WriteU32(std::span<std::uint8_t> bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

bool BaseBlock::HasSignature() const {
    static constexpr std::uint8_t kSignature[] = {'r', 'e', 'g', 'f'};
    return std::equal(std::begin(kSignature), std::end(kSignature), bytes_.begin());
}

std::uint32_t BaseBlockChecksum(std::span<const std::uint8_t> bytes) {
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < kChecksummedSize; at += 4) {
        sum ^= ReadU32(bytes, at);
    }
    // Windows never stores these two, so that a checksum can never look like "unset".
    if (sum == 0xFFFFFFFF) {
        return 0xFFFFFFFE;
    }
    return sum == 0 ? 1 : sum;
}

bool BaseBlock::ChecksumValid() const {
    return BaseBlockChecksum(bytes_) == ReadU32(bytes_, kChecksummedSize);
}

void MarkClean(std::span<std::uint8_t> bytes, std::uint32_t sequence) {
    WriteU32(bytes, 4, sequence);
    WriteU32(bytes, 8, sequence);
    WriteU32(bytes, 28, kPrimaryFile);
    WriteU32(bytes, kChecksummedSize, BaseBlockChecksum(bytes));
}

}  // namespace regvex::hive
