/// `mpatool index`.
#pragma once

#include "mpatool/command_line/command_line.h"

namespace mpatool {

/// Builds or verifies indexes and gives the exit status. What fails for one file is reported and does not
/// keep the others. Throws ToolError when the module cannot be used, OutputClosed or Interrupted.
int RunIndex(const IndexOptions& options);

} // namespace mpatool
