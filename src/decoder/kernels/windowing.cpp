#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/rounding.h"
#include "decoder/tables/synthesis_tables.h"

#include <algorithm>

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

/// Rounds the sums of rows, output 16 at 16, and puts them in order.
void RoundRows(const float* sums, int count, std::int16_t* outputs) {
    std::int16_t rounded[kMaximumSlots * 32];
    for (int i = 0; i < 32 * count; ++i)
        rounded[i] =
            RoundToPcm(sums[i]); // NOLINT(clang-analyzer-core.CallAndMessage): WindowRow sets all of a row
    for (int slot = 0; slot < count; ++slot) {
        const std::int16_t* row = rounded + 32 * slot;
        outputs = std::copy_n(row, 17, outputs);
        outputs = std::reverse_copy(row + 17, row + 32, outputs);
    }
}

void WindowChannel(const SynthesisRows& source, int count, std::int16_t* outputs) {
    float sums[kMaximumSlots * 32];
    for (int slot = 0; slot < count; ++slot)
        WindowRow(source.row + 32 * slot, sums + 32 * slot);
    for (int slot = 0; slot < count; ++slot)
        sums[32 * slot + 16] = WindowCentre(source.centre + slot);
    RoundRows(sums, count, outputs);
}

} // namespace

void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm) {
    if (channels == 1)
        return WindowChannel(source[0], count, pcm);
    std::int16_t left[kMaximumSlots * 32];
    std::int16_t right[kMaximumSlots * 32];
    WindowChannel(source[0], count, left);
    WindowChannel(source[1], count, right);
    for (int i = 0; i < 32 * count; ++i) {
        pcm[2 * i] = left[i];
        pcm[2 * i + 1] = right[i];
    }
}

} // namespace trnmpa::plain
