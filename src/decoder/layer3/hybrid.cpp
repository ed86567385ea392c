#include "decoder/layer3/hybrid.h"

#include "decoder/kernels/kernel_table.h"
#include "decoder/layer3/reorder.h"

#include <algorithm>
#include <utility>

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
    Kernels().reduceAliases(spectrum.data(), boundaries);
    if (boundaries == 0)
        return nonZeroCount;
    return std::max(nonZeroCount, boundaries * kLinesPerSubband + kButterflies);
}

/// The first two subbands of a mixed block are long ones whatever the rest is.
void TransformMixed(int blockType, int count, Spectrum spectrum, GranuleSlots& overlap, GranuleSlots& slots) {
    constexpr int kLongSubbands = 2;
    const KernelTable& plain = PlainKernels();
    plain.inverseMdct(spectrum.data(), 0, kLongSubbands, overlap[0], slots[0]);
    plain.inverseMdct(&spectrum[kLongSubbands * kLinesPerSubband], blockType, kSubbandGroup - kLongSubbands,
                      &overlap[0][kLongSubbands], &slots[0][kLongSubbands]);
    if (count > kSubbandGroup)
        Kernels().inverseMdct(&spectrum[kSubbandGroup * kLinesPerSubband], blockType, count - kSubbandGroup,
                              &overlap[0][kSubbandGroup], &slots[0][kSubbandGroup]);
}

/// What subbands of zeros come to: the old overlap comes out and none remains.
void FlushOverlap(int first, HybridMemory& memory, GranuleSlots& slots) {
    const int end = std::max(first, memory.overlapEnd);
    for (int i = 0; i < kLinesPerSubband; ++i) {
        float* overlap = memory.overlap[i];
        for (int subband = first; subband < end; ++subband)
            slots[i][subband] = std::exchange(overlap[subband], 0.0f);
        for (int subband = end; subband < memory.slotsEnd; ++subband)
            slots[i][subband] = 0.0f;
    }
    memory.overlapEnd = first;
    memory.slotsEnd = end;
}

} // namespace

void HybridMemory::ClearOverlap() {
    for (float(&row)[kSubbands] : overlap)
        std::ranges::fill(row, 0.0f);
    overlapEnd = 0;
}

void SynthesiseHybrid(const GranuleInfo& info, const BandLayout& layout, int nonZeroCount, Spectrum spectrum,
                      HybridMemory& memory, GranuleSlots& slots) {
    if (info.IsShort())
        nonZeroCount = ReorderShortBlocks(layout, nonZeroCount, spectrum);
    nonZeroCount = ReduceGranuleAliases(info, nonZeroCount, spectrum);
    constexpr int kLinesPerGroup = kSubbandGroup * kLinesPerSubband;
    const int count = (nonZeroCount + kLinesPerGroup - 1) / kLinesPerGroup * kSubbandGroup;
    const auto blockType = static_cast<int>(info.blockType);
    if (count > 0 && info.mixedBlock != 0 && blockType != 0)
        TransformMixed(blockType, count, spectrum, memory.overlap, slots);
    else
        Kernels().inverseMdct(spectrum.data(), blockType, count, memory.overlap[0], slots[0]);
    FlushOverlap(count, memory, slots);
}

} // namespace trnmpa
