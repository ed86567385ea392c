/// `mpatool frames`.
#pragma once

#include "mpatool/command_line/command_line.h"

namespace mpatool {

/// Prints the frame table while it walks over the file. Throws ToolError, OutputClosed or Interrupted.
void RunFrames(const FramesOptions& options);

} // namespace mpatool
