/// The 32-point cosine transform over any kind of lanes. Everything here is private to the file that includes
/// it, so that code for different instruction sets is never merged.
#pragma once

#include "decoder/tables/synthesis_tables.h"

namespace trnmpa {
namespace {

template <int N>
constexpr const float* HalfSecants() {
    if constexpr (N == 32)
        return tables::kHalfSecant32;
    else if constexpr (N == 16)
        return tables::kHalfSecant16;
    else if constexpr (N == 8)
        return tables::kHalfSecant8;
    else if constexpr (N == 4)
        return tables::kHalfSecant4;
    else
        return tables::kHalfSecant2;
}

/// Lee: the even outputs are the half-size transform of x[i] + x[N-1-i]; with d the half-size transform of
/// (x[i] - x[N-1-i]) / (2 cos((2i + 1) pi / 2N)), output 2k + 1 is d[k] + d[k + 1].
template <int N, typename Lanes>
inline void CosineTransform(const Lanes* x, Lanes* output) {
    if constexpr (N == 1) {
        output[0] = x[0];
    } else {
        constexpr int kHalf = N / 2;
        const float* halfSecant = HalfSecants<N>();
        Lanes sums[kHalf];
        Lanes differences[kHalf];
        for (int i = 0; i < kHalf; ++i) {
            sums[i] = x[i] + x[N - 1 - i];
            differences[i] = (x[i] - x[N - 1 - i]) * Lanes(halfSecant[i]);
        }
        Lanes even[kHalf];
        Lanes odd[kHalf];
        CosineTransform<kHalf>(sums, even);
        CosineTransform<kHalf>(differences, odd);
        for (int k = 0; k < kHalf; ++k)
            output[2 * k] = even[k];
        for (int k = 0; k < kHalf - 1; ++k)
            output[2 * k + 1] = odd[k] + odd[k + 1];
        output[N - 1] = odd[kHalf - 1];
    }
}

} // namespace
} // namespace trnmpa
