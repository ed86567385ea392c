#include "decoder/kernels/windowing.h"

#include "decoder/tables/synthesis_tables.h"

#include <algorithm>
#include <bit>

namespace trnmpa {

// The standard windows a vector of 64 values per slot. With C the 32 transform values of the slot that is k
// slots old, the values that meet taps D[32k + n] for output n are
//
//     k even:  C[16 + n] (n < 16),   0 (n = 16),  -C[48 - n] (n > 16)
//     k odd:  -C[16 - n] (n <= 16),               -C[n - 16] (n > 16)
//
// so outputs n and 32 - n share their values.

namespace {

void AddEvenTap(const float* taps, const float* c, float* sums) {
    for (int n = 0; n < 16; ++n)
        sums[n] += taps[n] * c[16 + n];
    for (int n = 1; n < 16; ++n)
        sums[32 - n] -= taps[32 - n] * c[16 + n];
}

void AddOddTap(const float* taps, const float* c, float* sums) {
    for (int n = 0; n <= 16; ++n)
        sums[n] -= taps[n] * c[16 - n];
    for (int n = 1; n < 16; ++n)
        sums[32 - n] -= taps[32 - n] * c[16 - n];
}

} // namespace

void WindowSlots(const SynthesisRing& ring, int phase, std::span<float, 32> output) {
    float sums[32] = {};
    for (int k = 0; k < SynthesisRing::kSlots; k += 2) {
        AddEvenTap(tables::kSynthesisWindow[k], ring.slot[(phase + k) & 15], sums);
        AddOddTap(tables::kSynthesisWindow[k + 1], ring.slot[(phase + k + 1) & 15], sums);
    }
    std::copy(sums, sums + 32, output.begin());
}

std::int16_t RoundToPcm(float sample) {
    // Clipping first gives the same integers and keeps any finite sample within the reach of the addition,
    // which leaves the rounded integer in the low bits of the sum's mantissa.
    constexpr double kRoundingBias = 6755399441055744.0; // 1.5 * 2^52
    const double clipped = static_cast<double>(std::clamp(sample, -32768.0f, 32767.0f));
    return static_cast<std::int16_t>(std::bit_cast<std::uint64_t>(clipped + kRoundingBias) & 0xFFFFu);
}

} // namespace trnmpa
