#include "mpatool/output/tool_error.h"

#include "mpatool/output/shown_text.h"
#include "os/error_text.h"
#include "os/paths.h"

namespace mpatool {

ToolError::ToolError(const std::wstring& file, const std::string& reason)
    : std::runtime_error(ShownPath(file) + ": " + reason) {}

ToolError::ToolError(const std::wstring& file, const std::wstring& reason)
    : ToolError(file, os::NarrowToUtf8(reason)) {}

void RequireReadable(const std::wstring& path) {
    const std::wstring reason = os::WhyUnreadable(path);
    if (!reason.empty())
        throw ToolError(path, reason);
}

} // namespace mpatool
