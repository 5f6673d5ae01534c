#pragma once
// Owns an open hivex hive and, for a hive recovered in memory, the memory file it was
// opened from.

#include <hivex.h>
#include <unistd.h>

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

}  // namespace regvex::hive
