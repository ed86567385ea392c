/// Pictures as SVG.
#pragma once

#include "mpatool/waveform/drawing.h"

#include <string_view>

namespace mpatool {

/// ASCII; the shapes are classes by the names of their inks. `title` is UTF-8.
void WriteSvg(const Drawing& drawing, std::string_view title, const WriteBytes& write);

} // namespace mpatool
