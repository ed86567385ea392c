/// From a granule's spectrum to its time slots: reordering, alias reduction, inverse MDCT.
#pragma once

#include "decoder/kernels/kernel_table.h"
#include "decoder/layer3/band_layout.h"
#include "decoder/layer3/requantise.h"
#include "decoder/layer3/side_info.h"

#include <span>

namespace trnmpa {

/// 18 time slots of 32 subband samples.
using GranuleSlots = float[kLinesPerSubband][kSubbands];

/// Second half of the last granule's windows, laid out like the time slots that it is added to.
using OverlapBuffer = float[kLinesPerSubband][kSubbands];

/// Transforms one channel's spectrum, whose lines from `nonZeroCount` on are zero.
void SynthesiseHybrid(const GranuleInfo& info, const BandLayout& layout, int nonZeroCount, Spectrum spectrum,
                      OverlapBuffer& overlap, GranuleSlots& slots);

} // namespace trnmpa
