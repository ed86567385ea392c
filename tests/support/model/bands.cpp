#include "support/model/bands.h"

#include "support/model/tables.h"

namespace test::model {

namespace {

constexpr int kMixedLongLines = 36;

void AddLongBands(const std::vector<int>& starts, int endLine, std::vector<Band>& bands) {
    for (int number = 0; number < 22; ++number) {
        const int first = starts[static_cast<std::size_t>(number)];
        const int width = starts[static_cast<std::size_t>(number) + 1] - first;
        if (first < endLine)
            bands.push_back({first, width, number, kLongWindow});
    }
}

void AddShortBands(const std::vector<int>& starts, int firstLine, int firstBand, std::vector<Band>& bands) {
    int line = firstLine;
    for (int number = firstBand; number < 13; ++number) {
        const int width =
            starts[static_cast<std::size_t>(number) + 1] - starts[static_cast<std::size_t>(number)];
        for (int window = 0; window < 3; ++window) {
            bands.push_back({line, width, number, window});
            line += width;
        }
    }
}

} // namespace

std::vector<Band> BandsOf(const Header& header, const GranuleInfo& granule) {
    const BandStarts& starts = StandardTables().bands[static_cast<std::size_t>(header.VersionIndex())]
                                                     [static_cast<std::size_t>(header.sampleRateIndex)];
    std::vector<Band> bands;
    if (!granule.ShortBlocks()) {
        AddLongBands(starts.longStarts, kLines, bands);
    } else if (granule.mixed) {
        AddLongBands(starts.longStarts, kMixedLongLines, bands);
        AddShortBands(starts.shortStarts, kMixedLongLines, 3, bands);
    } else {
        AddShortBands(starts.shortStarts, 0, 0, bands);
    }
    return bands;
}

} // namespace test::model
