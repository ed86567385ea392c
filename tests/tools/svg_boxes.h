/// Boxes and text of pictures.
#pragma once

#include "mpatool/waveform/drawing.h"

#include <string>
#include <vector>

namespace test {

/// All boxes of an ink in a drawing, or in an SVG file that the tool wrote; in their order.
std::vector<mpatool::Box> BoxesOf(const mpatool::Drawing& drawing, mpatool::Ink ink);
std::vector<mpatool::Box> BoxesOf(const std::string& svg, mpatool::Ink ink);

/// All lines of text of an SVG file.
std::vector<std::string> TextsOf(const std::string& svg);

} // namespace test
