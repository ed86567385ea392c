#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

namespace trnmpa {

/// Bytes that only grow; growing drops the content. Room that nobody writes to is not touched, so that a
/// request far beyond what exists costs little more than what exists.
class ByteBuffer {
public:
    /// Makes room for `bytes`. Throws std::bad_alloc; the buffer is then empty.
    std::uint8_t* Require(std::size_t bytes) {
        if (bytes > capacity_) {
            Release();
            Keep(::operator new(bytes), {[](void* block) { ::operator delete(block); }}, bytes);
        }
        return bytes_.get();
    }

    /// The same, with zeros in it. Many of them come from the system, which has them for nothing.
    std::uint8_t* RequireZeros(std::size_t bytes) {
        constexpr std::size_t kMostCleared = std::size_t{1} << 20;
        if (bytes > kMostCleared) {
            Release();
            Keep(std::calloc(bytes, 1), {std::free}, bytes);
        } else {
            std::fill_n(Require(bytes), bytes, std::uint8_t{0});
        }
        return bytes_.get();
    }

    void Release() {
        bytes_.reset();
        capacity_ = 0;
    }

    std::uint8_t* Data() { return bytes_.get(); }

private:
    struct GiveBack {
        void (*function)(void*);
        void operator()(std::uint8_t* block) const { function(block); }
    };

    void Keep(void* block, GiveBack giveBack, std::size_t bytes) {
        if (block == nullptr)
            throw std::bad_alloc();
        bytes_ = {static_cast<std::uint8_t*>(block), giveBack};
        capacity_ = bytes;
    }

    std::unique_ptr<std::uint8_t[], GiveBack> bytes_{};
    std::size_t capacity_ = 0;
};

} // namespace trnmpa
