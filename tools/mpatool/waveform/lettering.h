/// Room that text takes, and the words beside the plots.
#pragma once

#include "mpatool/waveform/drawing.h"
#include "mpatool/waveform/layout.h"

#include <cstdint>
#include <string>

namespace mpatool {

/// Of a character at scale 1, at most, whatever the writer.
inline constexpr std::int32_t kLetterWidth = 7;
/// Of a digit above its baseline.
inline constexpr std::int32_t kLetterHeight = 8;

std::int32_t TextWidth(const std::string& text, std::int32_t scale);

/// The front of a text that fits into `width` pixels.
std::string CutTo(const std::string& text, std::int32_t width, std::int32_t scale);

/// The name of a plot, beside its middle, where there is room.
void DrawName(Drawing& drawing, const Layout& layout, const Box& plot, const std::string& name);

/// A value on the scale of a plot, beside the height `y`, kept within the plot's, where there is room.
void DrawValue(Drawing& drawing, const Layout& layout, const Box& plot, std::int32_t y,
               const std::string& value);

} // namespace mpatool
