#include "decoder/kernels/windowing.h"

#include "decoder/tables/synthesis_tables.h"

#include <algorithm>

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

} // namespace trnmpa
