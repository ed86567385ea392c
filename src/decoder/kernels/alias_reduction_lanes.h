/// Alias reduction with lanes across the butterflies of a boundary. Private to the file that includes it.
#pragma once

#include "decoder/kernels/kernel_table.h"
#include "decoder/tables/hybrid_tables.h"

namespace trnmpa {
namespace {

template <typename Lanes>
inline void ReduceAliasesInLanes(float* spectrum, int boundaries) {
    float* boundary = spectrum + kLinesPerSubband;
    for (int i = 0; i < boundaries; ++i, boundary += kLinesPerSubband) {
        for (int k = 0; k < 8; k += Lanes::kCount) {
            const Lanes cs = Lanes::Load(tables::kAliasCs + k);
            const Lanes ca = Lanes::Load(tables::kAliasCa + k);
            float* above = boundary - k - Lanes::kCount;
            const Lanes upper = Lanes::LoadReversedFloats(above);
            const Lanes lower = Lanes::LoadFloats(boundary + k);
            (upper * cs - lower * ca).StoreReversedFloats(above);
            (lower * cs + upper * ca).StoreFloats(boundary + k);
        }
    }
}

} // namespace
} // namespace trnmpa
