#pragma once
// Owns an open hivex hive and, for a hive recovered in memory, the memory file it was
// opened from.

#include <hivex.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

namespace regvex::hive {

class HivexHandle {
  public:
    HivexHandle(hive_h* hive, int memory_file) : hive_(hive), memory_file_(memory_file) {}
    ~HivexHandle() {
        hivex_close(hive_);
        if (memory_file_ >= 0) {
            close(memory_file_);
        }
    }
    HivexHandle(const HivexHandle&) = delete;
    HivexHandle& operator=(const HivexHandle&) = delete;

    hive_h* get() const { return hive_; }

  private:
    hive_h* hive_;
    int memory_file_;
};

// A value's type is any 32-bit number, of which hivex's enum names a few. Types are kept
// as numbers and pass through the enum only as bytes: an enum holding a number it does
// not name is undefined in C++.
static_assert(sizeof(hive_type) == sizeof(std::uint32_t));
inline std::uint32_t TypeNumber(const hive_type& type) {
    std::uint32_t number = 0;
    std::memcpy(&number, &type, sizeof number);
    return number;
}
inline void SetTypeNumber(hive_type& type, std::uint32_t number) {
    std::memcpy(&type, &number, sizeof number);
}

}  // namespace regvex::hive
