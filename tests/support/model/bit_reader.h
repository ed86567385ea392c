/// Bits of a block of bytes, first bit first; zeros behind its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace test::model {

class BitReader {
public:
    BitReader() = default;
    explicit BitReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    /// The next `count` bits (0 to 32) as an unsigned number.
    std::uint32_t Read(int count) {
        std::uint32_t value = 0;
        for (int i = 0; i < count; ++i)
            value = (value << 1) | ReadBit();
        return value;
    }

    int ReadInt(int count) { return static_cast<int>(Read(count)); }

    std::uint32_t ReadBit() {
        const std::size_t byte = position_ / 8;
        const auto shift = static_cast<unsigned>(7 - position_ % 8);
        ++position_;
        return byte < bytes_.size() ? (static_cast<unsigned>(bytes_[byte]) >> shift) & 1U : 0U;
    }

    std::size_t Position() const { return position_; }
    void Seek(std::size_t position) { position_ = position; }

private:
    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
};

} // namespace test::model
