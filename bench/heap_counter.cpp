#include "heap_counter.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace regvex {

namespace {

std::atomic<std::size_t> live_bytes{0};
std::atomic<std::size_t> peak_bytes{0};

// Each block carries its size and the address malloc gave, just below the caller's
// bytes: that is all delete needs, whatever the alignment asked for.
constexpr std::size_t kHeader = 2 * sizeof(std::size_t) > alignof(std::max_align_t)
                                    ? 2 * sizeof(std::size_t)
                                    : alignof(std::max_align_t);

void* Allocate(std::size_t size, std::size_t alignment) {
    const std::size_t extra = kHeader + (alignment > alignof(std::max_align_t) ? alignment : 0);
    if (size > SIZE_MAX - extra) {
        return nullptr;
    }
    void* block = std::malloc(size + extra);
    if (block == nullptr) {
        return nullptr;
    }
    std::uintptr_t user = reinterpret_cast<std::uintptr_t>(block) + kHeader;
    if (alignment > alignof(std::max_align_t)) {
        user = (user + alignment - 1) & ~(static_cast<std::uintptr_t>(alignment) - 1);
    }
    auto* bytes = reinterpret_cast<unsigned char*>(user);
    std::memcpy(bytes - sizeof(std::size_t), &size, sizeof(size));
    std::memcpy(bytes - 2 * sizeof(std::size_t), &block, sizeof(block));
    const std::size_t live = live_bytes.fetch_add(size, std::memory_order_relaxed) + size;
    std::size_t peak = peak_bytes.load(std::memory_order_relaxed);
    while (live > peak &&
           !peak_bytes.compare_exchange_weak(peak, live, std::memory_order_relaxed)) {
    }
    return bytes;
}

void Release(void* pointer) {
    if (pointer == nullptr) {
        return;
    }
    auto* bytes = static_cast<unsigned char*>(pointer);
    std::size_t size = 0;
    void* block = nullptr;
    std::memcpy(&size, bytes - sizeof(std::size_t), sizeof(size));
    std::memcpy(&block, bytes - 2 * sizeof(std::size_t), sizeof(block));
    live_bytes.fetch_sub(size, std::memory_order_relaxed);
    std::free(block);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    while (true) {
        if (void* pointer = Allocate(size, alignment)) {
            return pointer;
        }
        std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) {
            throw std::bad_alloc();
        }
        handler();
    }
}

void* AllocateOrNull(std::size_t size, std::size_t alignment) noexcept {
    try {
        return AllocateOrThrow(size, alignment);
    } catch (...) {
        return nullptr;
    }
}

constexpr std::size_t kDefault = alignof(std::max_align_t);

}  // namespace

std::size_t HeapLiveBytes() {
    return live_bytes.load(std::memory_order_relaxed);
}

std::size_t HeapPeakBytes() {
    return peak_bytes.load(std::memory_order_relaxed);
}

void ResetHeapPeak() {
    peak_bytes.store(live_bytes.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

}  // namespace regvex

using regvex::AllocateOrNull;
using regvex::AllocateOrThrow;
using regvex::Release;

void* operator new(std::size_t size) {
    return AllocateOrThrow(size, regvex::kDefault);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, regvex::kDefault);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return AllocateOrNull(size, regvex::kDefault);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return AllocateOrNull(size, regvex::kDefault);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return AllocateOrNull(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return AllocateOrNull(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* pointer) noexcept {
    Release(pointer);
}
void operator delete[](void* pointer) noexcept {
    Release(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    Release(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    Release(pointer);
}
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
    Release(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
    Release(pointer);
}
void operator delete(void* pointer, std::align_val_t) noexcept {
    Release(pointer);
}
void operator delete[](void* pointer, std::align_val_t) noexcept {
    Release(pointer);
}
void operator delete(void* pointer, std::size_t, std::align_val_t) noexcept {
    Release(pointer);
}
void operator delete[](void* pointer, std::size_t, std::align_val_t) noexcept {
    Release(pointer);
}
void operator delete(void* pointer, std::align_val_t, const std::nothrow_t&) noexcept {
    Release(pointer);
}
void operator delete[](void* pointer, std::align_val_t, const std::nothrow_t&) noexcept {
    Release(pointer);
}
