/// Collects bits into bytes, first bit first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test::bitstream {

class BitWriter {
public:
    /// The low `count` bits of `value`, the highest of them first.
    void Write(std::uint32_t value, int count) {
        for (int bit = count - 1; bit >= 0; --bit)
            WriteBit(((value >> bit) & 1U) != 0);
    }

    void Write(int value, int count) { Write(static_cast<std::uint32_t>(value), count); }

    void WriteBit(bool bit) {
        if (bits_ % 8 == 0)
            bytes_.push_back(0);
        if (bit)
            bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | (0x80U >> (bits_ % 8)));
        ++bits_;
    }

    /// Takes over the bits of `other` behind its own.
    void Append(const BitWriter& other) {
        for (std::size_t bit = 0; bit < other.bits_; ++bit)
            WriteBit(((other.bytes_[bit / 8] >> (7 - bit % 8)) & 1) != 0);
    }

    std::size_t Bits() const { return bits_; }

    /// The last byte is filled up with zeros.
    const std::vector<std::uint8_t>& Bytes() const { return bytes_; }

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t bits_ = 0;
};

} // namespace test::bitstream
