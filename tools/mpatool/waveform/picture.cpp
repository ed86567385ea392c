#include "mpatool/waveform/picture.h"

#include "mpatool/waveform/picture_parts.h"

namespace mpatool {

namespace {

std::vector<TimeMark> MarksFor(const Layout& layout, const PictureFacts& facts) {
    constexpr std::int32_t kMajorPixels = 90;
    constexpr std::int32_t kMinorPixels = 9;
    const SampleRange& range = facts.columns.Range();
    const double rate = facts.sampleRate;
    return TimeMarks(
        {static_cast<double>(range.begin) / rate, static_cast<double>(range.end) / rate, layout.PlotWidth()},
        kMajorPixels * layout.scale, kMinorPixels * layout.scale);
}

/// The ground of a plot, with a line at each round time.
void DrawPanel(Drawing& drawing, const Layout& layout, const Box& plot, const std::vector<TimeMark>& marks) {
    drawing.Add(Ink::kPanel, plot);
    for (const TimeMark& mark : marks)
        if (mark.isMajor && mark.pixel < plot.width)
            drawing.Add(Ink::kGrid, {plot.left + mark.pixel, plot.top, layout.scale, plot.height});
}

} // namespace

Box ColumnBox(const Box& plot, const Columns& columns, std::size_t column) {
    const std::int32_t left = columns.Left(column);
    return {plot.left + left, plot.top, columns.Left(column + 1) - left, plot.height};
}

Drawing DrawPicture(std::int32_t width, std::int32_t height, const Layout& layout,
                    const PictureFacts& facts) {
    Drawing drawing(width, height, layout.scale);
    const std::vector<TimeMark> marks = MarksFor(layout, facts);
    for (const Box& channel : layout.channels)
        DrawPanel(drawing, layout, channel, marks);
    for (const auto& lane : {layout.bitRate, layout.blocks, layout.reservoir})
        if (lane)
            DrawPanel(drawing, layout, *lane, marks);
    DrawChannels(drawing, layout, facts);
    if (facts.frames != nullptr)
        DrawLanes(drawing, layout, facts);
    if (layout.hasTitle)
        DrawTitle(drawing, layout, facts);
    if (layout.hasAxis)
        DrawTimeAxis(drawing, layout, marks);
    return drawing;
}

} // namespace mpatool
