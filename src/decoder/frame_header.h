/// The decoder's own reading of a frame header (ISO/IEC 11172-3, 2.4.1.3 and 2.4.2.3).
#pragma once

#include <array>
#include <cstdint>

namespace trnmpa {

using HeaderBytes = std::array<std::uint8_t, 4>;

/// The fields of an accepted header. A frame is `frameBytes` long, header included.
struct DecoderHeader {
    std::int32_t lowSamplingFrequency = 0; ///< 1 for MPEG-2 and MPEG 2.5
    std::int32_t mpeg25 = 0;
    std::int32_t layer = 0;
    std::uint8_t hasCrc = 0;
    std::int32_t bitRateIndex = 0;
    std::int32_t bitRateKbps = 0;
    std::int32_t sampleRateIndex = 0;
    std::int32_t sampleRate = 0; ///< Hz
    std::uint8_t padding = 0;
    std::uint8_t privateBit = 0;
    std::int32_t mode = 0; ///< 0 stereo, 1 joint stereo, 2 dual channel, 3 single channel
    std::int32_t modeExtension = 0;
    std::uint8_t copyright = 0;
    std::uint8_t original = 0;
    std::int32_t emphasis = 0;
    std::int32_t channels = 2;
    std::int32_t frameBytes = 0;

    bool IsJointStereo() const { return mode == 1; }
    /// Layers I and II: first subband that both channels share (2.4.2.3).
    int JointStereoBound() const { return IsJointStereo() ? 4 * modeExtension + 4 : 32; }
    int GranuleCount() const { return lowSamplingFrequency != 0 ? 1 : 2; }
    /// Row of the band tables: MPEG-1, MPEG-2, MPEG 2.5.
    int BandTableRow() const { return lowSamplingFrequency + mpeg25; }
    int SideInfoBytes() const;
    /// Samples per channel that one frame decodes to.
    int SamplesPerFrame() const;
};

/// True when the four bytes pass the header test. Layer I, free format and the reserved rates are refused;
/// the version bits are not tested. `locked`, when not null, is the header whose version flag, layer and
/// sample-rate index must be met.
bool IsAcceptedHeader(const HeaderBytes& bytes, const DecoderHeader* locked);

DecoderHeader ParseHeader(const HeaderBytes& bytes);

/// How many bytes to drop from the front of a refused candidate: up to the next place where a sync word can
/// start.
int BytesToNextCandidate(const HeaderBytes& bytes);

} // namespace trnmpa
