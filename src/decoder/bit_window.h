#pragma once

#include "decoder/bit_reader.h"

#include <algorithm>
#include <cstdint>

namespace trnmpa {

/// The next bits of a body in a register, for loops that read many short fields. It does not look where the
/// data ends: enough zeros must lie behind it for all that is read between construction and Position().
class BitWindow {
public:
    /// Valid bits after a refill, at least.
    static constexpr int kRefilledBits = 56;
    /// How far behind the next bit's byte a refill may read, at most.
    static constexpr int kBytesAhead = 16;

    /// Goes on where the reader is. Past the end all bits are zero, so there it starts at the first of them.
    explicit BitWindow(const BitReader& reader)
        : start_(reader.Bytes()), behindEnd_(std::max(reader.Position() - reader.SizeInBits(), 0)) {
        const int first = reader.Position() - behindEnd_;
        next_ = start_ + first / 8;
        Refill();
        Skip(first % 8);
    }

    /// Bytes enter whole; the part of a byte that does not fit yet is there already and enters again.
    void Refill() {
        bits_ |= LoadBigEndian64(next_) >> held_;
        next_ += (63 - held_) >> 3;
        held_ |= kRefilledBits;
    }

    /// All the bits, the next one on top.
    std::uint64_t Bits() const { return bits_; }
    void Skip(int bits) {
        bits_ <<= bits;
        held_ -= bits;
    }
    /// The next `bits` (0 to 32) bits.
    std::uint32_t Get(int bits) {
        const auto value = static_cast<std::uint32_t>(bits_ >> 1 >> (63 - bits));
        Skip(bits);
        return value;
    }

    /// Bits of the body before the next one.
    int Position() const { return static_cast<int>(next_ - start_) * 8 - held_ + behindEnd_; }

private:
    const std::uint8_t* start_;
    const std::uint8_t* next_ = nullptr;
    std::uint64_t bits_ = 0;
    int behindEnd_; ///< how far behind the end the reader stood
    int held_ = 0;  ///< valid bits; those below them are zeros or what a refill will bring
};

} // namespace trnmpa
