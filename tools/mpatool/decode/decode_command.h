/// `mpatool decode`.
#pragma once

#include "mpatool/command_line/command_line.h"

namespace mpatool {

/// Decodes the file. Throws ToolError, UsageError, OutputClosed or Interrupted; nothing is left under the
/// output's name then.
void RunDecode(const DecodeOptions& options);

} // namespace mpatool
