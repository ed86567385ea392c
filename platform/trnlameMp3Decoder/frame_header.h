/// The header of a frame, ISO/IEC 11172-3 clause 2.4.2.3, as far as reading and decoding need it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace mp3 {

inline constexpr std::size_t kHeaderBytes = 4;

/// What all frames of a stream have in common.
struct StreamFormat {
    bool lowRate = false; ///< MPEG-2 or 2.5
    bool mpeg25 = false;
    std::int32_t layer = 0;
    std::int32_t sampleRate = 0; ///< Hz
    std::int32_t channels = 0;

    bool operator==(const StreamFormat&) const = default;

    /// Of one frame, per channel.
    std::int32_t FrameSamples() const { return layer == 3 && lowRate ? 576 : 1152; }
    /// Of one frame at 16 bits.
    std::size_t PcmBytes() const { return static_cast<std::size_t>(FrameSamples() * channels) * 2; }
};

struct FrameHeader {
    StreamFormat format;
    std::int32_t bitRate = 0; ///< bit/s
    bool hasCrc = false;
    std::size_t frameBytes = 0; ///< header included

    /// Where the side information of a layer III frame begins, counted from the frame's start.
    std::size_t SideInfoStart() const { return kHeaderBytes + (hasCrc ? 2 : 0); }
    std::size_t SideInfoBytes() const;
};

/// Nothing when the bytes are no header of layer II or III, or one of free format.
std::optional<FrameHeader> ParseHeader(std::span<const std::uint8_t, kHeaderBytes> bytes);

/// The longest frame there is: layer II at 384 kbit/s and 32000 Hz, padded; of low rates at 160 kbit/s and
/// 8000 Hz.
inline constexpr std::size_t kLongestFrame = 2881;

} // namespace mp3
