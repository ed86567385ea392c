#include "decoder/layer3/requantise.h"

#include "decoder/tables/requantise_tables.h"

#include <algorithm>
#include <iterator>

namespace trnmpa {

namespace {

constexpr int kFirstGainExponent = -45;

int GainOffset(const GranuleInfo& info, const BandSegment& segment, const ScaleFactors& factors) {
    const int shift = static_cast<int>(info.scaleFactorScale) + 1;
    if (segment.isShort)
        return (factors.shortBand[segment.window][segment.band] << shift) +
               8 * static_cast<int>(info.subblockGain[segment.window]);
    const int emphasis = info.preflag != 0 ? tables::kPreEmphasis[segment.band] : 0;
    return (factors.longBand[segment.band] + emphasis) << shift;
}

/// Scale factors of an intensity right channel can lead past the table's end; its last entry serves there.
float SegmentGain(const GranuleInfo& info, const BandSegment& segment, const ScaleFactors& factors) {
    const int exponent = 210 - static_cast<int>(info.globalGain) + GainOffset(info, segment, factors);
    const int index = std::min(exponent - kFirstGainExponent, static_cast<int>(std::size(tables::kGain)) - 1);
    return tables::kGain[index];
}

} // namespace

LineGains::LineGains(const GranuleInfo& info, const BandLayout& layout, const ScaleFactors& factors)
    : segmentOfPair_(layout.segmentOfPair.data()) {
    double(*gain)[2] = gain_;
    for (const BandSegment& segment : layout.Segments()) {
        const double value = SegmentGain(info, segment, factors);
        (*gain)[0] = -value;
        (*gain)[1] = value;
        ++gain;
    }
}

} // namespace trnmpa
