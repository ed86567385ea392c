/// The bit reader between the byte source and the layer decoders.
#pragma once

#include "decoder/bit_reader.h"
#include "decoder/decoder_interface.h"

#include <array>
#include <cstdint>

namespace trnmpa {

/// Holds the body of one frame, read linearly: that of a layer I or II frame, or the main data of a layer III
/// frame, which is taken from the bit reservoir, a ring. Bits that are asked for when no bytes are left read
/// as zeros.
class AMPBitstream {
public:
    /// Bytes of the reservoir ring; a power of two.
    static constexpr int kReservoirBytes = 2048;
    /// Room for the longest layer II body: MPEG 2.5, 8 kHz, 160 kbit/s, padded.
    static constexpr int kLinearBytes = 2880;
    /// Zero bytes behind every body. They cover what one granule of layer III can read past the end (288
    /// pairs of 47 bits and 144 quadruples of 10), so that its loops need not look where the data ends.
    static constexpr int kZerosBehind = 1920;

    AMPBitstream() = default;
    AMPBitstream(const AMPBitstream&) = delete;
    AMPBitstream& operator=(const AMPBitstream&) = delete;

    void SetSource(IAMPBitsource* source) { source_ = source; }

    /// Forgets all bytes and bits; the reservoir's bytes become zeros.
    void Clear();

    /// Reads exactly `count` bytes from the source, or throws AMP_ERR_END_OF_STREAM.
    void ReadSource(void* destination, int count);
    /// The same without throwing: true when all arrived.
    bool TryReadSource(void* destination, int count);

    /// Layers I and II: reads a frame body of `count` bytes and stands at its first bit.
    void FillLinear(int count);

    /// Layer III: appends `count` bytes of main data to the reservoir. They are read after a rewind.
    void AppendToReservoir(int count);
    /// Layer III: stands at the first bit of the byte that lies `bytes` before the end of what was appended.
    /// Whether the reservoir really holds that much is not checked.
    void RewindToFrameStart(int bytes);

    /// The body and the place in it. Behind its bytes lie kZerosBehind zeros.
    BitReader& Reader() { return reader_; }

private:
    static constexpr int kReservoirMask = kReservoirBytes - 1;

    void StartBody(int count);

    IAMPBitsource* source_ = nullptr;
    std::array<std::uint8_t, kReservoirBytes> reservoir_ = {};
    std::int32_t writeIndex_ = 0;
    std::array<std::uint8_t, kLinearBytes + kZerosBehind> body_ = {};
    std::int32_t dirtyBytes_ = 0; ///< of the body; zeros behind
    BitReader reader_ = BitReader(body_.data(), 0);
};

static_assert(AMPBitstream::kZerosBehind >= BitReader::kZerosBehind);
static_assert(AMPBitstream::kLinearBytes >= AMPBitstream::kReservoirBytes);

} // namespace trnmpa
