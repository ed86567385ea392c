#include "decoder/layer3/spread_intensity.h"

namespace trnmpa {

void SpreadIntensity(std::span<float> left, std::span<float> right, IntensityRatio ratio) {
    for (std::size_t i = 0; i < left.size(); ++i) {
        const double value = left[i];
        left[i] = static_cast<float>(value * ratio.left);
        right[i] = static_cast<float>(value * ratio.right);
    }
}

} // namespace trnmpa
