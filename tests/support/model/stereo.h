/// Joint stereo of layer III (ISO/IEC 11172-3 clause 2.4.3.4.9, ISO/IEC 13818-3 clause 2.4.3.2).
#pragma once

#include "support/model/requantise.h"

#include <array>

namespace test::model {

/// No intensity processing on a line.
inline constexpr int kNoIntensity = 7;

/// Intensity position of every line, from the right channel's bands, scale factors and zero part.
std::array<int, kLines> IntensityPositions(const Header& header, const GranuleInfo& right,
                                           const ScaleFactors& factors, const Spectrum& spectrum);

/// Both channels in place, in the order of the bit stream (before short blocks are reordered). `rightInfo`
/// and `rightFactors` are the right channel's.
void ProcessStereo(const Header& header, const GranuleInfo& rightInfo, const ScaleFactors& rightFactors,
                   Spectrum& left, Spectrum& right);

} // namespace test::model
