// The C library's functions as the module finds them: this program's own stand before the library's, for all
// that is linked to it.

#include "faults/fault_layer.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <new>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using test::SystemCall;
using test::TakeCall;

std::int64_t liveBlocks = 0;

/// True, with the reason set, when the call must fail.
bool Fails(SystemCall call, int reason) {
    if (!TakeCall(call))
        return false;
    errno = reason;
    return true;
}

void* Allocate(std::size_t bytes, std::size_t alignment) {
    void* memory = nullptr;
    if (!TakeCall(SystemCall::kAllocate))
        memory = alignment <= alignof(std::max_align_t)
                     ? std::malloc(bytes != 0 ? bytes : 1)
                     : std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
    if (memory == nullptr)
        throw std::bad_alloc();
    __atomic_add_fetch(&liveBlocks, 1, __ATOMIC_RELAXED);
    return memory;
}

void Release(void* memory) noexcept {
    if (memory != nullptr)
        __atomic_sub_fetch(&liveBlocks, 1, __ATOMIC_RELAXED);
    std::free(memory);
}

constexpr std::size_t kPlain = alignof(std::max_align_t);

} // namespace

// As programs with 64-bit offsets call them.
#define TRN_TAKES_OVER extern "C" __attribute__((visibility("default")))

TRN_TAKES_OVER int open64(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        std::va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    if (Fails(SystemCall::kOpen, EMFILE))
        return -1;
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

TRN_TAKES_OVER int close(int descriptor) {
    const auto result = static_cast<int>(::syscall(SYS_close, descriptor));
    return Fails(SystemCall::kClose, EIO) ? -1 : result;
}

TRN_TAKES_OVER ssize_t pread64(int descriptor, void* buffer, std::size_t count, off64_t offset) {
    return Fails(SystemCall::kRead, EIO) ? -1 : ::syscall(SYS_pread64, descriptor, buffer, count, offset);
}

TRN_TAKES_OVER ssize_t read(int descriptor, void* buffer, std::size_t count) {
    return Fails(SystemCall::kRead, EIO) ? -1 : ::syscall(SYS_read, descriptor, buffer, count);
}

TRN_TAKES_OVER ssize_t write(int descriptor, const void* buffer, std::size_t count) {
    return Fails(SystemCall::kWrite, ENOSPC) ? -1 : ::syscall(SYS_write, descriptor, buffer, count);
}

TRN_TAKES_OVER off64_t lseek64(int descriptor, off64_t offset, int origin) noexcept {
    return Fails(SystemCall::kSeek, EIO) ? -1 : ::syscall(SYS_lseek, descriptor, offset, origin);
}

TRN_TAKES_OVER int fstat64(int descriptor, struct stat64* status) noexcept {
    return Fails(SystemCall::kAsk, EIO) ? -1 : ::fstatat64(descriptor, "", status, AT_EMPTY_PATH);
}

TRN_TAKES_OVER int stat64(const char* path, struct stat64* status) noexcept {
    return Fails(SystemCall::kAsk, EIO) ? -1 : ::fstatat64(AT_FDCWD, path, status, 0);
}

void* operator new(std::size_t bytes) {
    return Allocate(bytes, kPlain);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return Allocate(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    Release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    Release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    Release(memory);
}

namespace test {

std::optional<std::int64_t> LiveBlocks() {
    return __atomic_load_n(&liveBlocks, __ATOMIC_RELAXED);
}

std::size_t OpenHandles() {
    // The descriptor that reads the folder counts each time.
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

void TakeOverCalls() {}

} // namespace test
