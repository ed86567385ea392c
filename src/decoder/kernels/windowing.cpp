#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/rounding.h"
#include "decoder/tables/synthesis_tables.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace trnmpa::plain {

// The standard windows a vector of 64 values per slot. With C the 32 transform values of the slot that is k
// slots old, the values that meet taps D[32k + n] for output n are
//
//     k even:  C[16 + n] (n < 16),   0 (n = 16),  -C[48 - n] (n > 16)
//     k odd:  -C[16 - n] (n <= 16),               -C[n - 16] (n > 16)
//
// so outputs n and 32 - n share their values: the first half of a row for even k, the second for odd k. The
// folded window has the taps of outputs 0 to 15 and of 32 to 17 (the first of these a zero) in the same order
// and with the signs above.

namespace {

float WindowCentre(const float* newest) {
    float sum = 0;
    for (int k = 1; k < 16; k += 2)
        sum += tables::kCentreWindow[k / 2] * newest[-k];
    return sum;
}

/// Sums for output n at n, for output 32 - n at 16 + n; at 16, where the taps are zeros, none. The loops here
/// and below are such that compilers turn them into vector code.
void WindowRow(const float* newestRow, float* output) {
    float sums[32] = {};
    for (int k = 0; k < 16; ++k) {
        const float* taps = tables::kFoldedWindow[k];
        const float* values = newestRow - 32 * k + k % 2 * 16;
        for (int n = 0; n < 16; ++n)
            sums[n] += taps[n] * values[n];
        for (int n = 0; n < 16; ++n)
            sums[16 + n] += taps[16 + n] * values[n];
    }
    for (int n = 0; n < 32; ++n)
        output[n] = sums[n];
}

/// The outputs in order, not yet rounded.
void WindowChannel(const SynthesisRows& source, int count, float* outputs) {
    for (int slot = 0; slot < count; ++slot)
        WindowRow(source.row + 32 * slot, outputs + 32 * slot);
    for (int slot = 0; slot < count; ++slot)
        outputs[32 * slot + 16] = WindowCentre(source.centre + slot);
    for (int slot = 0; slot < count; ++slot)
        std::reverse(outputs + 32 * slot + 17, outputs + 32 * slot + 32);
}

/// A left and a right sample as they lie in memory.
std::uint32_t RoundPair(float left, float right) {
    if constexpr (std::endian::native == std::endian::little)
        std::swap(left, right);
    return RoundToBits(left) << 16 | (RoundToBits(right) & 0xFFFFu);
}

} // namespace

// WindowRow sets all of a row.
// NOLINTBEGIN(clang-analyzer-core.CallAndMessage)
void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm) {
    float left[kMaximumSlots * 32];
    WindowChannel(source[0], count, left);
    if (channels == 1) {
        for (int i = 0; i < 32 * count; ++i)
            pcm[i] = RoundToPcm(left[i]);
        return;
    }
    float right[kMaximumSlots * 32];
    WindowChannel(source[1], count, right);
    for (int i = 0; i < 32 * count; ++i) {
        const std::uint32_t pair = RoundPair(left[i], right[i]);
        std::memcpy(pcm + 2 * i, &pair, sizeof pair);
    }
}
// NOLINTEND(clang-analyzer-core.CallAndMessage)

} // namespace trnmpa::plain
