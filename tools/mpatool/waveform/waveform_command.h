/// `mpatool waveform`.
#pragma once

#include "mpatool/command_line/command_line.h"

namespace mpatool {

/// Draws the sound of a file. Throws ToolError, UsageError, OutputClosed or Interrupted.
void RunWaveform(const WaveformOptions& options);

} // namespace mpatool
