/// Requantisation (ISO/IEC 11172-3, 2.4.3.4.7).
#pragma once

#include "decoder/layer3/band_layout.h"
#include "decoder/layer3/huffman.h"
#include "decoder/layer3/scale_factors.h"

#include <cstdint>
#include <span>

namespace trnmpa {

using Spectrum = std::span<float, kGranuleLines>;

/// Requantises the first `nonZeroCount` of the Huffman-decoded `lines` into `spectrum` and zeroes the rest.
/// The spectrum's sign is opposite to the standard's; the inverse transforms turn it back. Gives the index
/// after the last value that is not zero.
int Requantise(std::span<const std::int32_t, kGranuleLines> lines, int nonZeroCount, const GranuleInfo& info,
               const BandLayout& layout, const ScaleFactors& factors, Spectrum spectrum);

} // namespace trnmpa
