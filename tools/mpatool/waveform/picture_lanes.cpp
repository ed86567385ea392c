#include "mpatool/waveform/lettering.h"
#include "mpatool/waveform/picture_parts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <numeric>
#include <utility>

namespace mpatool {

namespace {

using SpreadOf = const Spread& (*)(const FrameColumn&);

const Spread& BitRateOf(const FrameColumn& column) {
    return column.bitRate;
}
const Spread& ReservoirOf(const FrameColumn& column) {
    return column.reservoir;
}

/// The lowest and the highest of all columns.
Spread Overall(const FrameColumns& frames, SpreadOf spreadOf) {
    Spread all;
    for (std::size_t column = 0; column < frames.Count(); ++column) {
        const Spread& spread = spreadOf(frames.At(column));
        if (spread.IsEmpty())
            continue;
        all.Add(spread.Lowest(), 1);
        all.Add(spread.Highest(), 1);
    }
    return all;
}

/// A plot of values from 0 at its bottom to `top`.
class ValuePlot {
public:
    ValuePlot(const Box& plot, double top, std::int32_t scale) : plot_(plot), top_(top), scale_(scale) {}

    std::int32_t RowOf(double value) const {
        const double share = std::clamp(value / top_, 0.0, 1.0);
        return plot_.Bottom() - 1 - static_cast<std::int32_t>(std::lround(share * (plot_.height - 1)));
    }

    /// The range of each column in one ink, a line through the means in the other.
    void DrawSpread(Drawing& drawing, const PictureFacts& facts, SpreadOf spreadOf, Ink rangeInk,
                    Ink meanInk) const {
        Boxes ranges{rangeInk, {}};
        Boxes means{meanInk, {}};
        std::int32_t before = -1;
        for (std::size_t column = 0; column < facts.columns.Count(); ++column) {
            const Spread& spread = spreadOf(facts.frames->At(column));
            if (spread.IsEmpty()) {
                before = -1;
                continue;
            }
            Box box = ColumnBox(plot_, facts.columns, column);
            box.top = RowOf(spread.Highest());
            box.height = RowOf(spread.Lowest()) - box.top + 1;
            ranges.boxes.push_back(box);
            const std::int32_t mean = RowOf(spread.Mean());
            means.boxes.push_back(LineFrom(before < 0 ? mean : before, mean, box));
            before = mean;
        }
        drawing.Add(std::move(ranges));
        drawing.Add(std::move(means));
    }

private:
    /// The column's piece of a line of two pixels, up or down from the row before.
    Box LineFrom(std::int32_t before, std::int32_t row, Box box) const {
        const std::int32_t thickness = 2 * scale_;
        const std::int32_t lowest = plot_.Bottom() - thickness;
        box.top = std::min({before, row, lowest});
        box.height = std::min(std::max(before, row), lowest) - box.top + thickness;
        return box;
    }

    Box plot_;
    double top_;
    std::int32_t scale_;
};

/// A line across the plot with its value beside it.
void DrawValueLine(Drawing& drawing, const Layout& layout, const Box& plot, std::int32_t row,
                   const std::string& value) {
    drawing.Add(Ink::kGrid, {plot.left, row, plot.width, layout.scale});
    DrawValue(drawing, layout, plot, row, value);
}

void DrawBitRate(Drawing& drawing, const Layout& layout, const PictureFacts& facts) {
    constexpr double kHeadroom = 1.15;
    const Box& plot = *layout.bitRate;
    DrawName(drawing, layout, plot, "kbit/s");
    const Spread all = Overall(*facts.frames, BitRateOf);
    if (all.IsEmpty())
        return;
    const ValuePlot values(plot, all.Highest() * kHeadroom, layout.scale);
    const std::int32_t highest = values.RowOf(all.Highest());
    const std::int32_t lowest = values.RowOf(all.Lowest());
    DrawValueLine(drawing, layout, plot, highest, std::to_string(all.Highest()));
    if (lowest - highest >= 2 * kLetterHeight * layout.scale)
        DrawValueLine(drawing, layout, plot, lowest, std::to_string(all.Lowest()));
    else
        DrawValue(drawing, layout, plot, plot.Bottom(), "0");
    values.DrawSpread(drawing, facts, BitRateOf, Ink::kRateRange, Ink::kRate);
}

void DrawReservoir(Drawing& drawing, const Layout& layout, const PictureFacts& facts) {
    const Box& plot = *layout.reservoir;
    DrawName(drawing, layout, plot, "reservoir");
    const std::int32_t limit = facts.frames->ReservoirLimit();
    if (limit == 0)
        return;
    DrawValue(drawing, layout, plot, plot.top, std::to_string(limit) + " B");
    DrawValue(drawing, layout, plot, plot.Bottom(), "0");
    const ValuePlot values(plot, limit, layout.scale);
    values.DrawSpread(drawing, facts, ReservoirOf, Ink::kReservoirRange, Ink::kReservoir);
}

/// The kinds that stand out, from the bottom up; the rest of a column's height is long blocks.
constexpr std::pair<BlockKind, Ink> kStacked[] = {{BlockKind::kShort, Ink::kShort},
                                                  {BlockKind::kMixed, Ink::kMixed},
                                                  {BlockKind::kStart, Ink::kStart},
                                                  {BlockKind::kStop, Ink::kStop}};

/// Shares of the granules by their kinds; what is there shows, however rare.
void DrawBlocks(Drawing& drawing, const Layout& layout, const PictureFacts& facts) {
    const Box& plot = *layout.blocks;
    DrawName(drawing, layout, plot, "blocks");
    std::array<Boxes, std::size(kStacked)> stacked;
    for (std::size_t i = 0; i < stacked.size(); ++i)
        stacked[i].ink = kStacked[i].second;
    Boxes ground{Ink::kLong, {}};
    for (std::size_t column = 0; column < facts.columns.Count(); ++column) {
        const auto& blocks = facts.frames->At(column).blocks;
        const auto all = static_cast<double>(std::accumulate(blocks.begin(), blocks.end(), std::int64_t{0}));
        if (all == 0)
            continue;
        Box box = ColumnBox(plot, facts.columns, column);
        ground.boxes.push_back(box);
        std::int32_t bottom = plot.Bottom();
        for (std::size_t i = 0; i < stacked.size(); ++i) {
            const std::int64_t samples = blocks[static_cast<std::size_t>(kStacked[i].first)];
            const auto rows =
                static_cast<std::int32_t>(std::ceil(static_cast<double>(samples) / all * plot.height));
            box.top = std::max(bottom - rows, plot.top);
            box.height = bottom - box.top;
            bottom = box.top;
            stacked[i].boxes.push_back(box);
        }
    }
    drawing.Add(std::move(ground));
    for (Boxes& boxes : stacked)
        drawing.Add(std::move(boxes));
}

} // namespace

void DrawLanes(Drawing& drawing, const Layout& layout, const PictureFacts& facts) {
    if (layout.bitRate)
        DrawBitRate(drawing, layout, facts);
    if (layout.blocks)
        DrawBlocks(drawing, layout, facts);
    if (layout.reservoir)
        DrawReservoir(drawing, layout, facts);
}

} // namespace mpatool
