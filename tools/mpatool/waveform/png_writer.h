/// Pictures as PNG.
#pragma once

#include "mpatool/waveform/drawing.h"

namespace mpatool {

/// One byte a pixel with a palette. Memory grows with the width only. Throws ToolError when libpng fails.
void WritePng(const Drawing& drawing, const WriteBytes& write);

} // namespace mpatool
