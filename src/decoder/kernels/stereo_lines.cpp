#include "decoder/kernels/stereo_lines.h"

namespace trnmpa {

void UndoMidSide(std::span<float> left, std::span<float> right) {
    constexpr double kHalfRoot = 0.7071067811865476;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const double mid = left[i];
        const double side = right[i];
        left[i] = static_cast<float>((mid + side) * kHalfRoot);
        right[i] = static_cast<float>((mid - side) * kHalfRoot);
    }
}

void SpreadIntensity(std::span<float> left, std::span<float> right, IntensityRatio ratio) {
    for (std::size_t i = 0; i < left.size(); ++i) {
        const double value = left[i];
        left[i] = static_cast<float>(value * ratio.left);
        right[i] = static_cast<float>(value * ratio.right);
    }
}

} // namespace trnmpa
