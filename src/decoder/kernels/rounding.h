#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

namespace trnmpa {

/// Rounds to the nearest integer, ties to even, and clips to 16 bits.
inline std::int16_t RoundToPcm(float sample) {
    // The bits of floats stand in the order of their magnitudes, so that integers without branches can clip
    // them: as signed ones the positive, as unsigned ones the negative.
    constexpr auto kLargest = std::bit_cast<std::int32_t>(32767.0f);
    constexpr auto kSmallest = std::bit_cast<std::uint32_t>(-32768.0f);
    const std::int32_t below = std::min(std::bit_cast<std::int32_t>(sample), kLargest);
    const std::uint32_t clipped = std::min(static_cast<std::uint32_t>(below), kSmallest);
    // The addition leaves the rounded integer in the low bits of the sum's mantissa.
    constexpr float kRoundingBias = 12582912.0f; // 1.5 * 2^23
    const float biased = std::bit_cast<float>(clipped) + kRoundingBias;
    return static_cast<std::int16_t>(std::bit_cast<std::uint32_t>(biased) & 0xFFFFu);
}

} // namespace trnmpa
