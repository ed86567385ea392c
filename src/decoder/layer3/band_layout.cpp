#include "decoder/layer3/band_layout.h"

#include "decoder/tables/band_tables.h"

namespace trnmpa {

namespace {

constexpr int kLines = 576;
constexpr int kMixedLongLines = 36;
constexpr int kMixedFirstShortBand = 3;
constexpr int kLastShortBand = 12;

constexpr void AddLongBands(BandLayout& layout, const std::uint16_t (&starts)[23], int endLine) {
    for (int band = 0; starts[band] < endLine; ++band) {
        const auto width = static_cast<std::uint16_t>(starts[band + 1] - starts[band]);
        layout.segment[static_cast<std::size_t>(layout.count++)] = {
            starts[band], width, static_cast<std::uint8_t>(band), 0, false};
    }
    layout.longCount = layout.count;
}

// At 8 kHz the short bands behind the long ones of a mixed block end before line 576; the last band takes the
// lines that remain.
constexpr void AddShortBands(BandLayout& layout, const std::uint16_t (&starts)[14], int firstBand, int line) {
    layout.firstShortBand = firstBand;
    for (int band = firstBand; band <= kLastShortBand; ++band) {
        const int width = band == kLastShortBand ? (kLines - line) / 3 : starts[band + 1] - starts[band];
        for (int window = 0; window < 3; ++window, line += width)
            layout.segment[static_cast<std::size_t>(layout.count++)] = {
                static_cast<std::uint16_t>(line), static_cast<std::uint16_t>(width),
                static_cast<std::uint8_t>(band), static_cast<std::uint8_t>(window), true};
    }
}

constexpr void MapPairs(BandLayout& layout) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(layout.count); ++i)
        for (int line = layout.segment[i].start; line < layout.segment[i].End(); line += 2)
            layout.segmentOfPair[static_cast<std::size_t>(line / 2)] = static_cast<std::uint8_t>(i);
}

enum Kind { kLong, kShort, kMixed, kKinds };

constexpr BandLayout MakeLayout(int row, int rate, int kind) {
    const auto& longStarts = tables::kLongBandStart[row][rate];
    const auto& shortStarts = tables::kShortBandStart[row][rate];
    BandLayout layout;
    layout.firstShortBand = kLastShortBand + 1;
    if (kind == kLong)
        AddLongBands(layout, longStarts, kLines);
    if (kind == kMixed)
        AddLongBands(layout, longStarts, kMixedLongLines);
    if (kind == kShort)
        AddShortBands(layout, shortStarts, 0, 0);
    if (kind == kMixed)
        AddShortBands(layout, shortStarts, kMixedFirstShortBand, kMixedLongLines);
    MapPairs(layout);
    return layout;
}

using LayoutTable = std::array<std::array<std::array<BandLayout, kKinds>, 3>, 3>;

constexpr LayoutTable MakeLayouts() {
    LayoutTable layouts = {};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t rate = 0; rate < 3; ++rate)
            for (std::size_t kind = 0; kind < kKinds; ++kind)
                layouts[row][rate][kind] =
                    MakeLayout(static_cast<int>(row), static_cast<int>(rate), static_cast<int>(kind));
    return layouts;
}

constexpr LayoutTable kLayouts = MakeLayouts();

constexpr bool AllStartsAreEven() {
    for (const auto& row : kLayouts)
        for (const auto& rate : row)
            for (const BandLayout& layout : rate)
                for (const BandSegment& segment : layout.segment)
                    if (segment.start % 2 != 0 || segment.width % 2 != 0)
                        return false;
    return true;
}
static_assert(AllStartsAreEven());

} // namespace

const BandLayout& LayoutOf(const DecoderHeader& header, const GranuleInfo& info) {
    const Kind kind = info.IsMixedShort() ? kMixed : info.IsShort() ? kShort : kLong;
    return kLayouts[static_cast<std::size_t>(header.BandTableRow())]
                   [static_cast<std::size_t>(header.sampleRateIndex)][kind];
}

} // namespace trnmpa
