#pragma once
// Bytes live on the heap of the benchmark program, counted by its replaced global
// operator new and delete. Linking heap_counter.cpp into a program replaces them.

#include <cstddef>

namespace regvex {

std::size_t HeapLiveBytes();
std::size_t HeapPeakBytes();
// Starts a new peak from what is live now.
void ResetHeapPeak();

}  // namespace regvex
