#include "decoder/kernels/kernel_sets.h"

namespace trnmpa::plain {

void UndoMidSide(float* left, float* right, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const double mid = left[i];
        const double side = right[i];
        left[i] = static_cast<float>((mid + side) * kHalfRoot);
        right[i] = static_cast<float>((mid - side) * kHalfRoot);
    }
}

} // namespace trnmpa::plain
