#include "reader/counted_memory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::atomic<std::size_t> held = 0;
std::atomic<std::size_t> peak = 0;

/// In front of each block, as wide as the strictest alignment that plain new promises.
constexpr std::size_t kSizeBytes = alignof(std::max_align_t);

void* Take(std::size_t size) {
    auto* block =
        size <= SIZE_MAX - kSizeBytes ? static_cast<char*>(std::malloc(size + kSizeBytes)) : nullptr;
    if (block == nullptr)
        return nullptr;
    std::memcpy(block, &size, sizeof size);
    const std::size_t now = held += size;
    std::size_t before = peak;
    while (before < now && !peak.compare_exchange_weak(before, now)) {
    }
    return block + kSizeBytes;
}

void GiveBack(void* memory) {
    if (memory == nullptr)
        return;
    char* block = static_cast<char*>(memory) - kSizeBytes;
    std::size_t size = 0;
    std::memcpy(&size, block, sizeof size);
    held -= size;
    std::free(block);
}

} // namespace

namespace test {

std::size_t MemoryHeld() {
    return held;
}

std::size_t PeakMemory() {
    return peak;
}

void ForgetPeak() {
    peak = held.load();
}

} // namespace test

// The forms for arrays and those that take a size end up in these.
void* operator new(std::size_t size) {
    void* memory = Take(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Take(size);
}

void operator delete(void* memory) noexcept {
    GiveBack(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    GiveBack(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    GiveBack(memory);
}
