#pragma once

#include <span>

namespace trnmpa {

struct IntensityRatio {
    double left = 0;
    double right = 0;
};

/// left, right = left x ratio.left, left x ratio.right, in double precision.
void SpreadIntensity(std::span<float> left, std::span<float> right, IntensityRatio ratio);

} // namespace trnmpa
