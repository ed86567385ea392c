/// The cosine transform of as many time slots at once as there are lanes. Private to the file that includes
/// it.
#pragma once

#include "decoder/kernels/cosine_transform_lanes.h"
#include "decoder/kernels/kernel_table.h"

namespace trnmpa {
namespace {

/// Where slot number i of all channels goes.
inline SynthesisRows RowsOf(int i, int count, const SynthesisRows* target) {
    const int channel = i / count;
    const int slot = i % count;
    return {target[channel].row + 32 * slot, target[channel].centre + slot};
}

/// From C[0] to C[31], each for a time slot a lane, to rows as SynthesisRows has them.
template <typename Lanes>
inline void StoreRows(const Lanes* c, int first, int count, const SynthesisRows* target) {
    constexpr int kLanes = Lanes::kCount;
    float* row[kLanes];
    float centre[kLanes];
    c[0].Store(centre);
    for (int i = 0; i < kLanes; ++i) {
        const SynthesisRows rows = RowsOf(first + i, count, target);
        row[i] = rows.row;
        *rows.centre = centre[i];
    }
    for (int n = 0; n < 16; n += kLanes) {
        Lanes reversed[kLanes];
        for (int i = 0; i < kLanes; ++i)
            reversed[i] = c[16 - n - i];
        Lanes::StoreTransposed(c + 16 + n, row, n);
        Lanes::StoreTransposed(reversed, row, 16 + n);
    }
}

/// `first`, the number of the first slot, is even.
template <typename Lanes>
inline void TransformGroup(const float* slots, int first, int count, bool invertFrequency,
                           const SynthesisRows* target) {
    Lanes x[32];
    for (int i = 0; i < 32; i += Lanes::kCount)
        Lanes::LoadTransposed(slots + 32 * first + i, 32, x + i);
    if (invertFrequency) {
        for (int i = 1; i < 32; i += 2)
            x[i] = x[i].WithOddNegated();
    }
    Lanes c[32];
    CosineTransform<32>(x, c);
    StoreRows(c, first, count, target);
}

} // namespace
} // namespace trnmpa
