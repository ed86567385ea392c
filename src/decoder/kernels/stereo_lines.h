#pragma once

#include <span>

namespace trnmpa {

struct IntensityRatio {
    double left = 0;
    double right = 0;
};

/// left, right = (left + right) / sqrt(2), (left - right) / sqrt(2), in double precision.
void UndoMidSide(std::span<float> left, std::span<float> right);

/// left, right = left x ratio.left, left x ratio.right, in double precision.
void SpreadIntensity(std::span<float> left, std::span<float> right, IntensityRatio ratio);

} // namespace trnmpa
