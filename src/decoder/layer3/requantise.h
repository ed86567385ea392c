/// Requantisation (ISO/IEC 11172-3, 2.4.3.4.7).
#pragma once

#include "decoder/layer3/band_layout.h"
#include "decoder/layer3/scale_factors.h"
#include "decoder/layer3/side_info.h"

#include <cstdint>
#include <span>

namespace trnmpa {

inline constexpr int kGranuleLines = 576;

using Spectrum = std::span<float, kGranuleLines>;

/// What the power |line|^(4/3) of each line is to be multiplied with. The spectrum's sign is opposite to the
/// standard's; the inverse transforms turn it back.
class LineGains {
public:
    LineGains(const GranuleInfo& info, const BandLayout& layout, const ScaleFactors& factors);

    /// For the lines 2 `pair` and 2 `pair` + 1: [1], and [0], the same with inverted sign. So the sign bit of
    /// a line chooses what its magnitude's power is multiplied with.
    const double* OfPair(std::size_t pair) const { return gain_[segmentOfPair_[pair]]; }

    /// The gain itself, in single precision as it is tabulated.
    float SingleOfPair(std::size_t pair) const { return single_[segmentOfPair_[pair]]; }

private:
    void Set(int segment, int exponent);

    const std::uint8_t* segmentOfPair_;
    double gain_[BandLayout::kMaximumSegments][2];
    float single_[BandLayout::kMaximumSegments];
};

} // namespace trnmpa
