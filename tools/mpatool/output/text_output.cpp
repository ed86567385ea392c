#include "mpatool/output/text_output.h"

#include "mpatool/output/shown_text.h"
#include "mpatool/output/tool_error.h"
#include "os/console.h"

#include <cstdint>
#include <span>

namespace mpatool {

void Print(std::string_view text) {
    const std::wstring name = L"standard output";
    os::OutputFile output;
    if (!output.OpenStandardOutput())
        throw ToolError(name, output.ErrorText());
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    RequireWritten(output.Write(bytes), output, name);
}

void PrintError(std::string_view message) {
    os::WriteErrorText("mpatool: " + ShownText(message) + "\n");
}

void RequireWritten(os::WriteResult result, const os::OutputFile& file, const std::wstring& name) {
    switch (result) {
    case os::WriteResult::kDone:
        return;
    case os::WriteResult::kClosedPipe:
        throw OutputClosed();
    case os::WriteResult::kInterrupted:
        throw Interrupted();
    case os::WriteResult::kFailed:
        throw ToolError(name, file.ErrorText());
    }
}

} // namespace mpatool
