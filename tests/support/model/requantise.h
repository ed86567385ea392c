/// Requantisation of layer III lines (ISO/IEC 11172-3 clause 2.4.3.4.7).
#pragma once

#include "support/model/bands.h"
#include "support/model/huffman.h"
#include "support/model/scale_factors.h"

#include <array>

namespace test::model {

using Spectrum = std::array<double, kLines>;

/// sign(x) |x|^(4/3) 2^((global_gain - 210 - offset) / 4), times 16384: half of the 16-bit full scale, which
/// is this decoder's level. Lines in no band are 0.
Spectrum Requantise(const Header& header, const GranuleInfo& granule, const ScaleFactors& factors,
                    const QuantisedLines& lines);

} // namespace test::model
