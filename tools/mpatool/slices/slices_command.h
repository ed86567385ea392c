/// `mpatool slices`.
#pragma once

#include "mpatool/command_line/command_line.h"

namespace mpatool {

/// Writes the slices one after another. Throws ToolError, UsageError, OutputClosed or Interrupted; nothing is
/// left under the output's name then.
void RunSlices(const SlicesOptions& options);

} // namespace mpatool
