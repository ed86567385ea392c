/// Standard output and standard error as text.
#pragma once

#include "os/output_file.h"

#include <string>
#include <string_view>

namespace mpatool {

/// Writes UTF-8 text to standard output. Throws OutputClosed, Interrupted or ToolError.
void Print(std::string_view text);

/// Writes "mpatool: MESSAGE" as a line to standard error, as ShownText has it.
void PrintError(std::string_view message);

/// Throws what a failed write to the output called `name` means.
void RequireWritten(os::WriteResult result, const os::OutputFile& file, const std::wstring& name);

} // namespace mpatool
