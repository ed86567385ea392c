#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>

namespace trnmpa {

/// The last 16 time slots of one channel: each holds the 32 values of CosineTransform32; the slot of phase p
/// is number p, older ones follow modulo 16.
struct SynthesisRing {
    static constexpr int kSlots = 16;
    float slot[kSlots][32] = {};
};

/// The 512-tap window of the polyphase synthesis (ISO/IEC 11172-3, 2.4.3.2.2) over the ring, whose newest
/// slot is `phase`: 32 output samples in 16-bit units. Each output is a single-precision sum from the newest
/// slot to the oldest, whatever the phase.
void WindowSlots(const SynthesisRing& ring, int phase, std::span<float, 32> output);

/// Rounds to the nearest integer, ties to even, and clips to 16 bits.
inline std::int16_t RoundToPcm(float sample) {
    // Clipping first gives the same integers and keeps any finite sample within the reach of the addition,
    // which leaves the rounded integer in the low bits of the sum's mantissa.
    constexpr double kRoundingBias = 6755399441055744.0; // 1.5 * 2^52
    const double clipped = static_cast<double>(std::clamp(sample, -32768.0f, 32767.0f));
    return static_cast<std::int16_t>(std::bit_cast<std::uint64_t>(clipped + kRoundingBias) & 0xFFFFu);
}

} // namespace trnmpa
