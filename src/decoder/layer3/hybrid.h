/// From a granule's spectrum to its time slots: reordering, alias reduction, inverse MDCT.
#pragma once

#include "decoder/kernels/kernel_table.h"
#include "decoder/layer3/band_layout.h"
#include "decoder/layer3/requantise.h"
#include "decoder/layer3/side_info.h"

namespace trnmpa {

/// 18 time slots of 32 subband samples.
using GranuleSlots = float[kLinesPerSubband][kSubbands];

/// What one channel keeps from granule to granule.
struct HybridMemory {
    /// Second half of the last granule's windows, laid out like the time slots that it is added to.
    alignas(32) float overlap[kLinesPerSubband][kSubbands] = {};
    int overlapEnd = 0;       ///< subbands of the overlap from here on are zero
    int slotsEnd = kSubbands; ///< and those of the channel's time slots

    void ClearOverlap();
};

/// Transforms one channel's spectrum, whose lines from `nonZeroCount` on are zero. `slots` holds what the
/// last call left in it.
void SynthesiseHybrid(const GranuleInfo& info, const BandLayout& layout, int nonZeroCount, Spectrum spectrum,
                      HybridMemory& memory, GranuleSlots& slots);

} // namespace trnmpa
