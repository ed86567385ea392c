#include "mpatool/output/count_text.h"
#include "mpatool/waveform/lettering.h"
#include "mpatool/waveform/picture_parts.h"

namespace mpatool {

namespace {

// In pixels of scale 1.
constexpr std::int32_t kTitleLeft = 8;
constexpr std::int32_t kTitleBaseline = 19;
constexpr std::int32_t kLeastTitle = 160;
constexpr std::int32_t kSwatch = 9;
constexpr std::int32_t kSwatchGap = 5;
constexpr std::int32_t kEntryGap = 16;

struct LegendEntry {
    Ink ink;
    std::string text;
};

std::string FullScaleText(const PeakColumns& peaks) {
    std::int64_t samples = 0;
    for (std::size_t channel = 0; channel < peaks.Channels(); ++channel)
        samples += peaks.FullScale(channel);
    return "full scale: " + (samples == 0 ? "none" : FormatCount(samples));
}

std::vector<LegendEntry> LegendFor(const Layout& layout, const PictureFacts& facts) {
    std::vector<LegendEntry> entries = {
        {Ink::kPeaks, "peaks"}, {Ink::kRms, "RMS"}, {Ink::kFullScale, FullScaleText(facts.peaks)}};
    if (layout.blocks)
        entries.insert(entries.end(), {{Ink::kLong, "long"},
                                       {Ink::kStart, "start"},
                                       {Ink::kShort, "short"},
                                       {Ink::kStop, "stop"},
                                       {Ink::kMixed, "mixed"}});
    return entries;
}

std::int32_t WidthOf(const std::vector<LegendEntry>& entries, std::int32_t scale) {
    std::int32_t width = -kEntryGap * scale;
    for (const LegendEntry& entry : entries)
        width += (kSwatch + kSwatchGap + kEntryGap) * scale + TextWidth(entry.text, scale);
    return width;
}

void DrawLegend(Drawing& drawing, const std::vector<LegendEntry>& entries, std::int32_t x) {
    const std::int32_t scale = drawing.TextScale();
    const std::int32_t top = (kTitleBaseline - kSwatch + 1) * scale;
    for (const LegendEntry& entry : entries) {
        drawing.Add(entry.ink, {x, top, kSwatch * scale, kSwatch * scale});
        x += (kSwatch + kSwatchGap) * scale;
        drawing.Add(Text{x, kTitleBaseline * scale, Anchor::kLeft, entry.text});
        x += TextWidth(entry.text, scale) + kEntryGap * scale;
    }
}

void DrawMark(Drawing& drawing, const Layout& layout, const TimeMark& mark) {
    const std::int32_t scale = layout.scale;
    const std::int32_t x = layout.Left() + mark.pixel;
    const std::int32_t axis = layout.Bottom() + 3 * scale;
    drawing.Add(Ink::kAxis, {x, axis, scale, (mark.isMajor ? 6 : 3) * scale});
    const std::int32_t half = TextWidth(mark.label, scale) / 2;
    if (mark.isMajor && x >= half && x + half <= drawing.Width())
        drawing.Add(Text{x, axis + 18 * scale, Anchor::kCentre, mark.label});
}

} // namespace

void DrawTitle(Drawing& drawing, const Layout& layout, const PictureFacts& facts) {
    const std::int32_t scale = layout.scale;
    const std::int32_t left = layout.hasLabels ? kTitleLeft * scale : layout.Left();
    const std::int32_t right = layout.Left() + layout.PlotWidth();
    const std::vector<LegendEntry> legend = LegendFor(layout, facts);
    const std::int32_t legendLeft = right - WidthOf(legend, scale);
    const bool hasLegend = legendLeft >= left + kLeastTitle * scale;
    if (hasLegend)
        DrawLegend(drawing, legend, legendLeft);
    const std::int32_t end = hasLegend ? legendLeft - kEntryGap * scale : right;
    drawing.Add(Text{left, kTitleBaseline * scale, Anchor::kLeft, CutTo(facts.title, end - left, scale)});
}

void DrawTimeAxis(Drawing& drawing, const Layout& layout, const std::vector<TimeMark>& marks) {
    const std::int32_t scale = layout.scale;
    drawing.Add(Ink::kAxis, {layout.Left(), layout.Bottom() + 3 * scale, layout.PlotWidth(), scale});
    for (const TimeMark& mark : marks)
        DrawMark(drawing, layout, mark);
}

} // namespace mpatool
