#include "mpatool/waveform/lettering.h"

#include <algorithm>

namespace mpatool {

namespace {

constexpr std::int32_t kNameLeft = 8;
/// Lower plots have room for their name alone, or for nothing.
constexpr std::int32_t kLeastForName = 10;
constexpr std::int32_t kLeastForValues = 36;

} // namespace

std::int32_t TextWidth(const std::string& text, std::int32_t scale) {
    return static_cast<std::int32_t>(Characters(text).size()) * kLetterWidth * scale;
}

std::string CutTo(const std::string& text, std::int32_t width, std::int32_t scale) {
    constexpr std::string_view kDots = "...";
    const auto room = static_cast<std::size_t>(std::max(width / (kLetterWidth * scale), 0));
    if (Characters(text).size() <= room)
        return text;
    std::string cut = text;
    while (!cut.empty() && Characters(cut).size() + kDots.size() > room) {
        // The bytes behind a character's first one go with it.
        while (cut.size() > 1 && (static_cast<unsigned char>(cut.back()) & 0xC0) == 0x80)
            cut.pop_back();
        cut.pop_back();
    }
    return cut.empty() ? cut : cut.append(kDots);
}

void DrawName(Drawing& drawing, const Layout& layout, const Box& plot, const std::string& name) {
    const std::int32_t scale = layout.scale;
    if (layout.hasLabels && plot.height >= kLeastForName * scale)
        drawing.Add(Text{kNameLeft * scale, plot.top + (plot.height + kLetterHeight * scale) / 2,
                         Anchor::kLeft, name});
}

void DrawValue(Drawing& drawing, const Layout& layout, const Box& plot, std::int32_t y,
               const std::string& value) {
    const std::int32_t scale = layout.scale;
    if (!layout.hasLabels || plot.height < kLeastForValues * scale)
        return;
    const std::int32_t baseline =
        std::clamp(y + kLetterHeight * scale / 2, plot.top + kLetterHeight * scale, plot.Bottom());
    drawing.Add(Text{plot.left - 6 * scale, baseline, Anchor::kRight, value});
}

} // namespace mpatool
