#include "plugin/failing_memory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> held = 0;
/// Allocations up to the one that fails; below 0 behind it, kNever when none does.
constexpr std::int64_t kNever = INT64_MAX;
std::atomic<std::int64_t> remaining = kNever;

void* Take(std::size_t size) {
    const bool fails = remaining != kNever && remaining-- == 0;
    void* block = fails ? nullptr : std::malloc(size != 0 ? size : 1);
    held += block != nullptr ? 1 : 0;
    return block;
}

void GiveBack(void* block) {
    held -= block != nullptr ? 1 : 0;
    std::free(block);
}

} // namespace

namespace test {

std::size_t BlocksHeld() {
    return held;
}

FailingAllocation::FailingAllocation(std::size_t number) {
    remaining = static_cast<std::int64_t>(number);
}

FailingAllocation::~FailingAllocation() {
    remaining = kNever;
}

bool FailingAllocation::HasFailed() const {
    return remaining < 0;
}

} // namespace test

// The forms for arrays and those that take a size end up in these.
void* operator new(std::size_t size) {
    void* block = Take(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Take(size);
}

void operator delete(void* block) noexcept {
    GiveBack(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    GiveBack(block);
}

void operator delete(void* block, std::size_t) noexcept {
    GiveBack(block);
}
