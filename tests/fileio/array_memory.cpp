#include "fileio/array_memory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> limit = SIZE_MAX;

void* Take(std::size_t size) {
    return size <= limit ? std::malloc(size != 0 ? size : 1) : nullptr;
}

} // namespace

namespace test {

ArrayMemoryLimit::ArrayMemoryLimit(std::size_t bytes) {
    limit = bytes;
}

ArrayMemoryLimit::~ArrayMemoryLimit() {
    limit = SIZE_MAX;
}

} // namespace test

void* operator new[](std::size_t size) {
    void* memory = Take(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Take(size);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
