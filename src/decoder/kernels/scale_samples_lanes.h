/// Layer II's scaling with lanes across the subbands. Private to the file that includes it.
#pragma once

#include "decoder/kernels/kernel_table.h"

namespace trnmpa {
namespace {

template <typename Lanes>
inline void ScaleSamplesInLanes(const std::int32_t* samples, const std::int32_t* centres,
                                const double* factors, int slots, float* subbands) {
    for (int i = 0; i < kSubbands; i += Lanes::kCount) {
        const Lanes factor = Lanes::Load(factors + i);
        for (int slot = 0; slot < slots; ++slot) {
            const int place = kSubbands * slot + i;
            (Lanes::LoadDifferences(samples + place, centres + i) * factor).StoreFloats(subbands + place);
        }
    }
}

} // namespace
} // namespace trnmpa
