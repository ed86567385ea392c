#include "decoder/layer3/spectrum.h"

#include "decoder/layer3/huffman.h"
#include "decoder/tables/band_tables.h"

#include <algorithm>

namespace trnmpa {

namespace {

struct RegionStarts {
    int region1 = 0;
    int region2 = 0;
};

int LongBandStart(const DecoderHeader& header, std::uint32_t band) {
    constexpr std::uint32_t kLastIndex = 22;
    return tables::kLongBandStart[header.BandTableRow()][header.sampleRateIndex][std::min(band, kLastIndex)];
}

/// Where the second and third big-value regions begin, in lines, the third never before the second. With
/// window switching the lower sampling frequencies have fixed starts.
RegionStarts FindRegionStarts(const DecoderHeader& header, const GranuleInfo& info, int bigValueLines) {
    const bool isSwitched = info.windowSwitching != 0;
    const bool isMpeg25 = header.mpeg25 != 0;
    RegionStarts starts;
    if (isSwitched && info.IsShort()) {
        const int shortBand3 = tables::kShortBandStart[header.BandTableRow()][header.sampleRateIndex][3];
        starts = isMpeg25 ? RegionStarts{3 * shortBand3, bigValueLines} : RegionStarts{36, kGranuleLines};
    } else if (isSwitched && header.lowSamplingFrequency != 0) {
        starts = isMpeg25 ? RegionStarts{LongBandStart(header, 8), bigValueLines}
                          : RegionStarts{54, kGranuleLines};
    } else {
        starts = {LongBandStart(header, info.region0Count + 1),
                  LongBandStart(header, info.region0Count + info.region1Count + 2)};
    }
    return {std::min(starts.region1, bigValueLines), std::min(starts.region2, bigValueLines)};
}

/// The index behind the last of the first `count` lines that is not zero.
int TrimZeros(Spectrum spectrum, int count) {
    while (count > 0 && spectrum[static_cast<std::size_t>(count - 1)] == 0.0f)
        --count;
    return count;
}

} // namespace

int ReadSpectrum(BitReader& bits, const DecoderHeader& header, const GranuleInfo& info,
                 const LineGains& gains, int end, Spectrum spectrum) {
    const int bigValueLines = static_cast<int>(2 * info.bigValues);
    const RegionStarts starts = FindRegionStarts(header, info, bigValueLines);
    const int edges[4] = {0, starts.region1, starts.region2, bigValueLines};
    BitWindow window(bits);
    for (int region = 0; region < 3; ++region) {
        const int pairs = (edges[region + 1] - edges[region]) / 2;
        if (pairs > 0)
            ReadPairs(window, info.tableSelect[region], gains, edges[region] / 2, pairs, spectrum);
    }
    const int count = TrimZeros(
        spectrum, ReadQuadruples(window, info.count1TableSelect != 0, gains, bigValueLines, end, spectrum));
    bits.SetPosition(window.Position());
    std::fill(spectrum.begin() + count, spectrum.end(), 0.0f);
    return count;
}

} // namespace trnmpa
