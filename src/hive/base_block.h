#pragma once
// The first 4,096 bytes of a hive file and of its transaction logs: what says whether the
// file is a hive at all, whether it was written cleanly, and how long its hive bins are.

#include <cstddef>
#include <cstdint>
#include <span>

namespace regvex::hive {

inline constexpr std::size_t kBaseBlockSize = 4096;
// The part of the base block the checksum covers, and what a log keeps a copy of.
inline constexpr std::size_t kChecksummedSize = 508;
inline constexpr std::size_t kLogSectorSize = 512;
inline constexpr std::size_t kHiveBinAlignment = 4096;

inline constexpr std::uint32_t kPrimaryFile = 0;
inline constexpr std::uint32_t kOldLogFile = 1;
inline constexpr std::uint32_t kNewLogFile = 6;

std::uint16_t ReadU16(std::span<const std::uint8_t> bytes, std::size_t at);
std::uint32_t ReadU32(std::span<const std::uint8_t> bytes, std::size_t at);
std::uint64_t ReadU64(std::span<const std::uint8_t> bytes, std::size_t at);
void WriteU32(std::span<std::uint8_t> bytes, std::size_t at, std::uint32_t value);

// A view of a base block (or of the first sector of a log, which holds a copy of one);
// the bytes must be at least kLogSectorSize long and outlive the view.
class BaseBlock {
  public:
    explicit BaseBlock(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    bool HasSignature() const;
    std::uint32_t PrimarySequence() const { return ReadU32(bytes_, 4); }
    std::uint32_t SecondarySequence() const { return ReadU32(bytes_, 8); }
    std::uint64_t LastWritten() const { return ReadU64(bytes_, 12); }
    std::uint32_t MajorVersion() const { return ReadU32(bytes_, 20); }
    std::uint32_t MinorVersion() const { return ReadU32(bytes_, 24); }
    std::uint32_t FileType() const { return ReadU32(bytes_, 28); }
    std::uint32_t RootCell() const { return ReadU32(bytes_, 36); }
    std::uint32_t HiveBinsSize() const { return ReadU32(bytes_, 40); }
    bool ChecksumValid() const;

    // Not written cleanly: Windows replays the logs of such a hive before it uses it.
    bool Dirty() const { return !ChecksumValid() || PrimarySequence() != SecondarySequence(); }

  private:
    std::span<const std::uint8_t> bytes_;
};

std::uint32_t BaseBlockChecksum(std::span<const std::uint8_t> bytes);

// Makes `bytes` (a whole base block) a clean primary base block: both sequence numbers
// `sequence`, the file type of a hive, the checksum recomputed.
void MarkClean(std::span<std::uint8_t> bytes, std::uint32_t sequence);

}  // namespace regvex::hive
