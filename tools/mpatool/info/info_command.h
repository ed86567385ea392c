/// `mpatool info`.
#pragma once

#include "mpatool/command_line/command_line.h"

namespace mpatool {

/// Shows all files; those that cannot be shown are named on standard error. Gives the exit status. Throws
/// ToolError, OutputClosed or Interrupted when nothing more can be shown.
int RunInfo(const InfoOptions& options);

} // namespace mpatool
