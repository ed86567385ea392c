#pragma once

#include <bit>
#include <cstdint>

namespace trnmpa {

/// Rounds to the nearest integer, ties to even, and clips to 16 bits: the low ones of the result, those above
/// them have no meaning. Sums of any size clip, those too large for 32-bit integers included: a loud signal
/// never wraps. Without branches, so that compilers turn loops over it into vector code.
inline std::uint32_t RoundToBits(float sample) {
    // The bits of floats, as integers, stand in the order of the positive ones and against that of the
    // negative.
    constexpr auto kLargest = std::bit_cast<std::int32_t>(32767.0f);
    constexpr auto kSmallest = std::bit_cast<std::int32_t>(-32768.0f);
    auto bits = std::bit_cast<std::int32_t>(sample);
    const std::int32_t tooLarge = -static_cast<std::int32_t>(bits > kLargest);
    bits = (bits & ~tooLarge) | (kLargest & tooLarge);
    const std::int32_t tooSmall = -static_cast<std::int32_t>(bits > kSmallest) & (bits >> 31);
    bits = (bits & ~tooSmall) | (kSmallest & tooSmall);
    // The addition leaves the rounded integer in the low bits of the sum's mantissa.
    constexpr float kRoundingBias = 12582912.0f; // 1.5 * 2^23
    return std::bit_cast<std::uint32_t>(std::bit_cast<float>(bits) + kRoundingBias);
}

inline std::int16_t RoundToPcm(float sample) {
    return static_cast<std::int16_t>(RoundToBits(sample) & 0xFFFFu);
}

} // namespace trnmpa
