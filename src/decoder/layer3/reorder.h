#pragma once

#include "decoder/layer3/band_layout.h"
#include "decoder/layer3/requantise.h"

namespace trnmpa {

/// Interleaves the three windows of every short band value by value (ISO/IEC 11172-3, 2.4.3.4.8); long bands
/// stay. Gives the non-zero count of the new order: at most the end of the band that held the last value.
int ReorderShortBlocks(const BandLayout& layout, int nonZeroCount, Spectrum spectrum);

} // namespace trnmpa
