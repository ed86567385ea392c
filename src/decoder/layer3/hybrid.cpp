#include "decoder/layer3/hybrid.h"

#include "decoder/kernels/alias_reduction.h"
#include "decoder/kernels/imdct.h"
#include "decoder/layer3/reorder.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr int kButterflies = 8;
constexpr int kAllBoundaries = kSubbands - 1;

/// Reduces aliases where there are lines to reduce; gives the grown non-zero count. Unmixed short blocks get
/// all boundaries too, unlike the standard's; wanted.
int ReduceGranuleAliases(const GranuleInfo& info, int nonZeroCount, Spectrum spectrum) {
    const bool onlyFirst = info.windowSwitching != 0 && info.IsMixedShort();
    // Boundary b reaches down to line 18 b - 8.
    const int reached = (nonZeroCount + kButterflies - 1) / kLinesPerSubband;
    const int boundaries = std::min(onlyFirst ? 1 : kAllBoundaries, reached);
    ReduceAliases(spectrum, boundaries);
    if (boundaries == 0)
        return nonZeroCount;
    return std::max(nonZeroCount, boundaries * kLinesPerSubband + kButterflies);
}

int BlockTypeOf(const GranuleInfo& info, int subband) {
    const bool isMixedLong = info.mixedBlock != 0 && subband < 2;
    return isMixedLong ? 0 : static_cast<int>(info.blockType);
}

} // namespace

void SynthesiseHybrid(const GranuleInfo& info, const BandLayout& layout, int nonZeroCount, Spectrum spectrum,
                      OverlapBuffer& overlap, GranuleSlots& slots) {
    if (info.IsShort())
        nonZeroCount = ReorderShortBlocks(layout, nonZeroCount, spectrum);
    nonZeroCount = ReduceGranuleAliases(info, nonZeroCount, spectrum);
    const int limit = (nonZeroCount + kLinesPerSubband - 1) / kLinesPerSubband;
    for (int subband = 0; subband < kSubbands; ++subband) {
        float* output = &slots[0][subband];
        if (subband >= limit) {
            FlushOverlap(overlap[subband], output, kSubbands);
            continue;
        }
        const auto lines = spectrum.subspan(static_cast<std::size_t>(subband) * kLinesPerSubband);
        InverseMdct(lines.first<kLinesPerSubband>(), BlockTypeOf(info, subband), overlap[subband], output,
                    kSubbands);
    }
}

} // namespace trnmpa
