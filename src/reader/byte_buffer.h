#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace trnmpa {

/// Bytes that only grow; growing drops the content.
class ByteBuffer {
public:
    /// Makes room for `bytes`. Throws std::bad_alloc; the buffer is then empty.
    std::uint8_t* Require(std::size_t bytes) {
        if (bytes > capacity_) {
            Release();
            bytes_ = std::make_unique_for_overwrite<std::uint8_t[]>(bytes);
            capacity_ = bytes;
        }
        return bytes_.get();
    }

    void Release() {
        bytes_.reset();
        capacity_ = 0;
    }

    std::uint8_t* Data() { return bytes_.get(); }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t capacity_ = 0;
};

} // namespace trnmpa
