/// The bit reservoir read through a 32-bit accumulator that is filled byte by byte: slow, and easy to
/// believe.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace test::literal {

/// A ring of main data. Bits that are asked for when no bytes are left read as zeros.
class Reservoir {
public:
    static constexpr int kBytes = 2048;

    void Append(std::span<const std::uint8_t> bytes);
    /// Stands at the first bit of the byte that lies `bytes` before the end of what was appended.
    void RewindToFrameStart(int bytes);
    /// The next `bits` (1 to 24) bits, left in place.
    std::uint32_t Peek(int bits);
    void Skip(int bits);
    std::uint32_t Get(int bits);
    /// Bits up to the end; negative when more were read than were there.
    int BitsRemaining() const { return 8 * bytesLeft_ + (24 - bitShift_); }
    void SeekToBitsRemaining(int target);

private:
    static constexpr int kMask = kBytes - 1;
    static constexpr int kAccumulatorEmpty = 24;

    void Refill();
    void EmptyAccumulator();

    std::array<std::uint8_t, kBytes> ring_ = {};
    std::int32_t bitShift_ = kAccumulatorEmpty; ///< where the next byte enters: 24 less the bits held
    std::int32_t bytesLeft_ = 0;                ///< bytes not yet in the accumulator
    std::int32_t readIndex_ = 0;
    std::int32_t writeIndex_ = 0;
    std::uint32_t accumulator_ = 0; ///< the next bit to read is bit 31
};

} // namespace test::literal
