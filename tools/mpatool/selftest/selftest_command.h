/// `mpatool selftest`: holds a module to the contract between it and its hosts.
#pragma once

#include "mpatool/command_line/command_line.h"

namespace mpatool {

/// Runs all checks and prints a verdict for each. The checks run in a process of their own, which a module
/// may bring down. Gives the exit status: 0 when all are good. Throws ToolError.
int RunSelftest(const SelftestOptions& options);

} // namespace mpatool
