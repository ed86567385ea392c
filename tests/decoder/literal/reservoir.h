/// The bit reader between the byte source and the layer decoders.
#pragma once

#include "decoder/decoder_interface.h"

#include <array>
#include <cstdint>

namespace trnmpa {

/// Holds the body of one layer I or II frame, read linearly, or the bit reservoir of layer III, a ring of
/// main data. Bits that are asked for when no bytes are left read as zeros.
class AMPBitstream {
public:
    /// Bytes of the reservoir ring; a power of two.
    static constexpr int kReservoirBytes = 2048;
    /// Room for the longest layer II body: MPEG 2.5, 8 kHz, 160 kbit/s, padded.
    static constexpr int kLinearBytes = 2880;

    void SetSource(IAMPBitsource* source) { source_ = source; }

    /// Forgets all bytes and bits; the reservoir's bytes become zeros.
    void Clear();

    /// Reads exactly `count` bytes from the source, or throws AMP_ERR_END_OF_STREAM.
    void ReadSource(void* destination, int count);
    /// The same without throwing: true when all arrived.
    bool TryReadSource(void* destination, int count);

    // Layers I and II.

    /// Reads a frame body of `count` bytes to the start of the buffer.
    void FillLinear(int count);
    /// The next `bits` (0 to 32) bits of the body.
    std::uint32_t GetLinear(int bits);

    // Layer III.

    /// Appends `count` bytes of main data to the reservoir.
    void AppendToReservoir(int count);
    /// Stands at the first bit of the byte that lies `bytes` before the end of what was appended. Whether the
    /// reservoir really holds that much is not checked.
    void RewindToFrameStart(int bytes);
    /// The next `bits` (1 to 24) bits, left in place.
    std::uint32_t Peek(int bits);
    void Skip(int bits);
    std::uint32_t Get(int bits);
    std::uint32_t GetBit() { return Get(1); }
    /// Bits up to the end of the reservoir; negative when more were read than were there.
    int BitsRemaining() const { return 8 * bytesLeft_ + (24 - bitShift_); }
    /// Stands where BitsRemaining gives `target`, ahead or back.
    void SeekToBitsRemaining(int target);

private:
    static constexpr int kReservoirMask = kReservoirBytes - 1;
    static constexpr int kAccumulatorEmpty = 24;

    void Refill();
    void EmptyAccumulator();

    IAMPBitsource* source_ = nullptr;
    std::array<std::uint8_t, kLinearBytes> buffer_ = {};
    std::int32_t bitShift_ = kAccumulatorEmpty; ///< where the next byte enters: 24 less the bits held
    std::int32_t bytesLeft_ = 0;                ///< bytes not yet in the accumulator
    std::int32_t readIndex_ = 0;
    std::int32_t writeIndex_ = 0;
    std::int32_t linearBit_ = 0;    ///< next bit of a linear body
    std::uint32_t accumulator_ = 0; ///< the next bit to read is bit 31
};

// Inline: the Huffman decoder lives in these.

inline void AMPBitstream::EmptyAccumulator() {
    bitShift_ = kAccumulatorEmpty;
    accumulator_ = 0;
}

inline void AMPBitstream::Refill() {
    while (bitShift_ >= 0 && bytesLeft_ > 0) {
        accumulator_ |= static_cast<std::uint32_t>(buffer_[static_cast<std::size_t>(readIndex_)])
                        << bitShift_;
        readIndex_ = (readIndex_ + 1) & kReservoirMask;
        bitShift_ -= 8;
        --bytesLeft_;
    }
}

inline std::uint32_t AMPBitstream::Peek(int bits) {
    if (bitShift_ > 24 - bits)
        Refill();
    return accumulator_ >> (32 - bits);
}

inline void AMPBitstream::Skip(int bits) {
    if (bitShift_ > 24 - bits)
        Refill();
    accumulator_ <<= bits;
    bitShift_ += bits;
}

inline std::uint32_t AMPBitstream::Get(int bits) {
    const std::uint32_t value = Peek(bits);
    accumulator_ <<= bits;
    bitShift_ += bits;
    return value;
}

} // namespace trnmpa
