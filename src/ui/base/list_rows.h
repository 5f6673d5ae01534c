#pragma once
// The program has always counted the rows of its lists with signed 16-bit numbers: a
// command that walks a longer list fails with an overflow before it starts.

#include "engine/run_time_error.h"

namespace regvex::ui {

inline constexpr int kMostListRows = 32767;

// `count`, when a 16-bit counter can walk that many rows.
inline int CountOfRows(int count) {
    if (count > kMostListRows) {
        throw RunTimeError(kErrorOverflow, "Overflow: the list holds more than 32767 rows.");
    }
    return count;
}

}  // namespace regvex::ui
