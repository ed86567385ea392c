// reader/counted_memory.h where a sanitizer has the allocations: it counts them all and keeps its guards
// around them.
#include "reader/counted_memory.h"

#include <atomic>

// As the sanitizers' allocator_interface.h has them, which GCC does not install.
extern "C" {
int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                              void (*onFree)(const volatile void*));
std::size_t __sanitizer_get_allocated_size(const volatile void* block);
}

namespace {

std::atomic<std::size_t> held = 0;
std::atomic<std::size_t> peak = 0;

void Count(const volatile void* block, std::size_t size) {
    if (block == nullptr)
        return;
    const std::size_t now = held += size;
    std::size_t before = peak;
    while (before < now && !peak.compare_exchange_weak(before, now)) {
    }
}

/// Blocks from before the hooks stood may go, too.
void Discount(const volatile void* block) {
    if (block == nullptr)
        return;
    const std::size_t size = __sanitizer_get_allocated_size(block);
    std::size_t before = held;
    while (!held.compare_exchange_weak(before, before - (size < before ? size : before))) {
    }
}

[[maybe_unused]] const int installed = __sanitizer_install_malloc_and_free_hooks(Count, Discount);

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
