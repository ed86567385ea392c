/// `mpatool check`.
#pragma once

#include "mpatool/command_line/command_line.h"

namespace mpatool {

/// Prints what is wrong with the files; gives the exit status. What cannot be checked is told on standard
/// error, the rest goes on. Throws ToolError, OutputClosed or Interrupted.
int RunCheck(const CheckOptions& options);

} // namespace mpatool
