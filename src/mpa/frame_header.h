/// The header of an MPEG audio frame as the stream analysis reads it.
///
/// The built-in decoder decodes headers by itself; its rules differ in places, such as the length of a layer
/// II frame at the lower sampling frequencies (see frame_walk.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace trnmpa {

inline constexpr std::size_t kFrameHeaderBytes = 4;

/// The four bytes as they stand in the file.
using FrameHeaderBytes = std::array<std::uint8_t, kFrameHeaderBytes>;

/// The most bytes that `MpaFrameHeader::frameBytes` can say for a valid header: layer II at 32000 Hz and
/// 384 kbit/s, padded.
inline constexpr std::int32_t kMaximumFrameBytes = 1729;

/// A decoded header.
struct MpaFrameHeader {
    std::int64_t firstFrameOffset = 0; ///< byte position of the first accepted frame; FindFirstFrame sets it
    std::int32_t frameBytes = 0;       ///< whole frame, header included
    std::int32_t bitRate = 0;          ///< kbit/s
    std::int32_t sampleRate = 0;       ///< Hz
    std::int32_t bitRateIndex = 0;
    std::int32_t sampleRateIndex = 0;
    std::int32_t lsf = 0; ///< 1 for MPEG-2 and MPEG 2.5; the reserved version bits 01 read as MPEG-1
    std::uint8_t padding = 0;
    std::int32_t layer = 0;       ///< 1, 2 or 3
    std::int32_t channelMode = 0; ///< 0 stereo, 1 joint stereo, 2 dual channel, 3 single channel
    std::int32_t channels = 0;
};

/// Summary of a stream's first frame.
struct MpaFrameInfo {
    std::uint32_t valid = 1;
    std::uint8_t layer = 0;   ///< 1, 2 or 3
    std::uint8_t version = 0; ///< 1 for MPEG-1, 2 for MPEG-2 and MPEG 2.5
    std::int32_t frameBytes = 0;
    std::int32_t bitRate = 0;    ///< bit/s
    std::int32_t sampleRate = 0; ///< Hz
    std::int32_t stereo = 0;     ///< 0 for single channel, else 1
    std::int32_t bitsPerSample = 16;
    std::int32_t pcmBytesPerFrame = 0; ///< decoded, all channels
};

/// True when the four bytes are a header of a stream that the module serves. Layer I and free format are
/// refused on purpose; version, protection and everything behind the padding bit are not looked at.
bool IsValidFrameHeader(const FrameHeaderBytes& bytes) noexcept;

/// Decodes a header into everything but `firstFrameOffset`, which keeps its value. Rates that the tables do
/// not have, and a length that would be computed from them, are 0; a valid header never gives them.
void DecodeFrameHeader(const FrameHeaderBytes& bytes, MpaFrameHeader& header) noexcept;

/// True when a CRC word follows the header.
constexpr bool IsProtected(const FrameHeaderBytes& bytes) noexcept {
    return (bytes[1] & 0x01) == 0;
}

/// Samples per channel in one frame; `version` as in MpaFrameInfo.
std::int32_t SamplesPerFrame(std::int32_t layer, std::int32_t version) noexcept;

/// The summary of a decoded header.
MpaFrameInfo FillFrameInfo(const MpaFrameHeader& header) noexcept;

/// True when both headers can belong to one stream of constant bit rate: sync, version, layer, bit-rate index
/// and sample-rate index are equal.
bool SameCbrHeader(const FrameHeaderBytes& x, const FrameHeaderBytes& y) noexcept;

} // namespace trnmpa
