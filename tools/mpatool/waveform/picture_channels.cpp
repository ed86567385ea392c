#include "mpatool/waveform/lettering.h"
#include "mpatool/waveform/picture_parts.h"

#include <algorithm>
#include <optional>

namespace mpatool {

namespace {

constexpr double kUnit = 32768;
/// Lower plots have no room for the words of five levels.
constexpr std::int32_t kLeastForLevels = 60;

/// The values of one channel over the rows of its plot.
class ChannelPlot {
public:
    ChannelPlot(const Box& plot, const PictureFacts& facts, std::size_t channel, std::int32_t scale)
        : plot_(plot), facts_(facts), channel_(channel), scale_(scale) {}

    /// The row of a value: the highest shows in the first row, the lowest in the last.
    std::int32_t RowOf(double value) const {
        const double share = (kUnit - value) / (2 * kUnit);
        return plot_.top + std::clamp(static_cast<std::int32_t>(share * plot_.height), 0, plot_.height - 1);
    }

    Box Between(std::size_t column, double highest, double lowest) const {
        Box box = ColumnBox(plot_, facts_.columns, column);
        box.top = RowOf(highest);
        box.height = RowOf(lowest) - box.top + 1;
        return box;
    }

    /// A column that does not meet the one before reaches to it, so that steep slopes have no gaps.
    Box Peaks(std::size_t column) const {
        const Extent& extent = At(column);
        std::int16_t highest = extent.highest;
        std::int16_t lowest = extent.lowest;
        if (column > 0) {
            highest = std::max(highest, At(column - 1).lowest);
            lowest = std::min(lowest, At(column - 1).highest);
        }
        Box box = Between(column, highest, lowest);
        box.height = std::max(box.height, LeastHeight());
        box.top = std::min(box.top, plot_.Bottom() - box.height);
        return box;
    }

    /// Around zero, as far as the peaks reach.
    std::optional<Box> Rms(std::size_t column) const {
        const Extent& extent = At(column);
        const double rms = extent.Rms();
        const double highest = std::min<double>(extent.highest, rms);
        const double lowest = std::max<double>(extent.lowest, -rms);
        if (facts_.columns.IsOneSampleEach() || highest <= lowest)
            return std::nullopt;
        return Between(column, highest, lowest);
    }

    /// At the edge that is reached, wide enough to be seen.
    void AddMarks(std::size_t column, std::vector<Box>& marks) const {
        const Extent& extent = At(column);
        Box mark = ColumnBox(plot_, facts_.columns, column);
        const std::int32_t more = std::max(3 * scale_ - mark.width, 0);
        mark.left = std::max(mark.left - more / 2, plot_.left);
        mark.width = std::min(mark.width + more, plot_.Right() - mark.left);
        mark.height = std::min(5 * scale_, plot_.height / 2);
        if (extent.ReachesTop())
            marks.push_back(mark);
        mark.top = plot_.Bottom() - mark.height;
        if (extent.ReachesBottom())
            marks.push_back(mark);
    }

private:
    /// Columns of one sample each make a line.
    std::int32_t LeastHeight() const { return facts_.columns.IsOneSampleEach() ? 2 * scale_ : 1; }

    const Extent& At(std::size_t column) const { return facts_.peaks.At(channel_, column); }

    Box plot_;
    const PictureFacts& facts_;
    std::size_t channel_;
    std::int32_t scale_;
};

void DrawLevels(Drawing& drawing, const Layout& layout, const Box& plot, const ChannelPlot& channel) {
    struct Level {
        double value;
        const char* name; ///< in decibels; zero has none
    };
    constexpr Level kLevels[] = {
        {kUnit, "0 dB"}, {kUnit / 2, "-6"}, {0, nullptr}, {-kUnit / 2, "-6"}, {-kUnit, "0 dB"}};
    for (const Level& level : kLevels) {
        const std::int32_t row = channel.RowOf(level.value);
        drawing.Add(Ink::kGrid, {plot.left, row, plot.width, layout.scale});
        if (level.name != nullptr && plot.height >= kLeastForLevels * layout.scale)
            DrawValue(drawing, layout, plot, row, level.name);
    }
}

std::string NameOfChannel(std::size_t channel, std::size_t channels) {
    return channels == 1 ? "mono" : channel == 0 ? "left" : "right";
}

void DrawChannel(Drawing& drawing, const Layout& layout, const PictureFacts& facts, std::size_t number) {
    const Box& plot = layout.channels[number];
    const ChannelPlot channel(plot, facts, number, layout.scale);
    DrawLevels(drawing, layout, plot, channel);
    Boxes peaks{Ink::kPeaks, {}};
    Boxes rms{Ink::kRms, {}};
    Boxes marks{Ink::kFullScale, {}};
    for (std::size_t column = 0; column < facts.columns.Count(); ++column) {
        peaks.boxes.push_back(channel.Peaks(column));
        if (const auto box = channel.Rms(column))
            rms.boxes.push_back(*box);
        channel.AddMarks(column, marks.boxes);
    }
    drawing.Add(std::move(peaks));
    drawing.Add(std::move(rms));
    drawing.Add(std::move(marks));
    DrawName(drawing, layout, plot, NameOfChannel(number, facts.peaks.Channels()));
}

} // namespace

void DrawChannels(Drawing& drawing, const Layout& layout, const PictureFacts& facts) {
    for (std::size_t number = 0; number < layout.channels.size(); ++number)
        DrawChannel(drawing, layout, facts, number);
}

} // namespace mpatool
