#include "decoder/layer3/requantise.h"

#include "decoder/tables/requantise_tables.h"

#include <algorithm>
#include <iterator>

namespace trnmpa {

namespace {

constexpr int kFirstGainExponent = -45;

constexpr int kLastGain = static_cast<int>(std::size(tables::kGain)) - 1;
constexpr int kShortBands = 13;
constexpr std::uint8_t kNoEmphasis[std::size(tables::kPreEmphasis)] = {};

} // namespace

/// Scale factors of an intensity right channel can lead past the table's end; its last entry serves there.
void LineGains::Set(int segment, int exponent) {
    const float gain = tables::kGain[std::min(exponent - kFirstGainExponent, kLastGain)];
    gain_[segment][0] = -static_cast<double>(gain);
    gain_[segment][1] = static_cast<double>(gain);
    single_[segment] = gain;
}

// The segments that there are get their gains, the others are never asked for.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
LineGains::LineGains(const GranuleInfo& info, const BandLayout& layout, const ScaleFactors& factors)
    : segmentOfPair_(layout.segmentOfPair.data()) {
    const int base = 210 - static_cast<int>(info.globalGain);
    const int shift = info.scaleFactorScale != 0 ? 2 : 1;
    const std::uint8_t* emphasis = info.preflag != 0 ? tables::kPreEmphasis : kNoEmphasis;
    int segment = 0;
    for (; segment < layout.longCount; ++segment)
        Set(segment, base + ((factors.longBand[segment] + emphasis[segment]) << shift));
    for (int band = layout.firstShortBand; band < kShortBands; ++band)
        for (int window = 0; window < 3; ++window, ++segment)
            Set(segment, base + (factors.shortBand[window][band] << shift) +
                             8 * static_cast<int>(info.subblockGain[window]));
}

} // namespace trnmpa
