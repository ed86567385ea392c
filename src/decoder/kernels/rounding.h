#pragma once

#include <bit>
#include <cstdint>

namespace trnmpa {

/// Rounds to the nearest integer, ties to even, and clips to 16 bits.
inline std::int16_t RoundToPcm(float sample) {
    // Clipping first gives the same integers and keeps any finite sample within the reach of the addition,
    // which leaves the rounded integer in the low bits of the sum's mantissa.
    constexpr double kRoundingBias = 6755399441055744.0; // 1.5 * 2^52
    const float above = sample > -32768.0f ? sample : -32768.0f;
    const float clipped = above < 32767.0f ? above : 32767.0f;
    const double biased = static_cast<double>(clipped) + kRoundingBias;
    return static_cast<std::int16_t>(std::bit_cast<std::uint64_t>(biased) & 0xFFFFu);
}

} // namespace trnmpa
