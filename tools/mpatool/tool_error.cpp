#include "mpatool/tool_error.h"

#include "os/paths.h"

namespace mpatool {

ToolError::ToolError(const std::wstring& file, const std::string& reason)
    : std::runtime_error(os::NarrowToUtf8(file) + ": " + reason) {}

ToolError::ToolError(const std::wstring& file, const std::wstring& reason)
    : ToolError(file, os::NarrowToUtf8(reason)) {}

} // namespace mpatool
