#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/rounding.h"
#include "decoder/tables/synthesis_tables.h"

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

/// sums[n] for output n, sums[16 + n] for output 32 - n. Loops that a compiler turns into vector code.
void AddTaps(const float* taps, const float* values, float* sums) {
    for (int n = 0; n < 16; ++n)
        sums[n] += taps[n] * values[n];
    for (int n = 0; n < 16; ++n)
        sums[16 + n] += taps[16 + n] * values[n];
}

float WindowCentre(const float* newest) {
    float sum = 0;
    for (int k = 1; k < 16; k += 2)
        sum += tables::kCentreWindow[k / 2] * newest[-k];
    return sum;
}

void WindowSlot(const float* newestRow, const float* newestCentre, std::int16_t* outputs) {
    float sums[32] = {};
    for (int k = 0; k < 16; ++k)
        AddTaps(tables::kFoldedWindow[k], newestRow - 32 * k + k % 2 * 16, sums);
    // There is no output 32.
    sums[16] = WindowCentre(newestCentre);
    std::int16_t rounded[32];
    for (int n = 0; n < 32; ++n)
        rounded[n] = RoundToPcm(sums[n]);
    for (int n = 0; n < 16; ++n)
        outputs[n] = rounded[n];
    outputs[16] = rounded[16];
    for (int n = 1; n < 16; ++n)
        outputs[32 - n] = rounded[16 + n];
}

} // namespace

void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm) {
    for (int slot = 0; slot < count; ++slot, pcm += 32 * channels) {
        std::int16_t outputs[2][32];
        for (int channel = 0; channel < channels; ++channel)
            WindowSlot(source[channel].row + 32 * slot, source[channel].centre + slot, outputs[channel]);
        for (int n = 0; n < 32; ++n)
            for (int channel = 0; channel < channels; ++channel)
                pcm[n * channels + channel] = outputs[channel][n];
    }
}

} // namespace trnmpa::plain
