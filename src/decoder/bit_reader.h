/// Bits of a buffer, most significant first.
#pragma once

#include <algorithm>
#include <cstdint>

namespace trnmpa {

/// The next eight bytes as one number. Written so that compilers make one load and one byte swap of it.
inline std::uint64_t LoadBigEndian64(const std::uint8_t* bytes) {
    return std::uint64_t{bytes[0]} << 56 | std::uint64_t{bytes[1]} << 48 | std::uint64_t{bytes[2]} << 40 |
           std::uint64_t{bytes[3]} << 32 | std::uint64_t{bytes[4]} << 24 | std::uint64_t{bytes[5]} << 16 |
           std::uint64_t{bytes[6]} << 8 | std::uint64_t{bytes[7]};
}

/// Reads single fields. Behind the last byte all bits are zeros.
class BitReader {
public:
    /// Bytes that must be zeros, and readable, behind the last one.
    static constexpr int kZerosBehind = 8;

    BitReader() = default;
    BitReader(const std::uint8_t* bytes, int size) : bytes_(bytes), size_(size) {}

    /// At least 57 bits from `position` (not negative) on, the first one on top.
    std::uint64_t WindowAt(int position) const {
        return LoadBigEndian64(bytes_ + std::min(position >> 3, size_)) << (position & 7);
    }
    /// The next `bits` (0 to 32) bits, left in place.
    std::uint32_t Peek(int bits) const {
        return static_cast<std::uint32_t>(WindowAt(position_) >> 1 >> (63 - bits));
    }
    void Skip(int bits) { position_ += bits; }
    std::uint32_t Get(int bits) {
        const std::uint32_t value = Peek(bits);
        Skip(bits);
        return value;
    }

    const std::uint8_t* Bytes() const { return bytes_; }
    int SizeInBits() const { return 8 * size_; }
    /// Bits before the next one; more than SizeInBits() when zeros behind the end were read.
    int Position() const { return position_; }
    void SetPosition(int position) { position_ = position; }

private:
    const std::uint8_t* bytes_ = nullptr;
    int size_ = 0;
    int position_ = 0;
};

} // namespace trnmpa
