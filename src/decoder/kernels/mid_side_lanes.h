/// Mid/side stereo with lanes across the lines. Private to the file that includes it.
#pragma once

#include "decoder/kernels/kernel_sets.h"

#include <cstddef>

namespace trnmpa {
namespace {

template <typename Lanes>
inline void UndoMidSideInLanes(float* left, float* right, std::size_t count) {
    const Lanes halfRoot(kHalfRoot);
    std::size_t i = 0;
    for (; i + Lanes::kCount <= count; i += Lanes::kCount) {
        const Lanes mid = Lanes::LoadFloats(left + i);
        const Lanes side = Lanes::LoadFloats(right + i);
        ((mid + side) * halfRoot).StoreFloats(left + i);
        ((mid - side) * halfRoot).StoreFloats(right + i);
    }
    plain::UndoMidSide(left + i, right + i, count - i);
}

} // namespace
} // namespace trnmpa
