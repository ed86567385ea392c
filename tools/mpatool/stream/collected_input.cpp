#include "mpatool/stream/collected_input.h"

#include "mpatool/output/shown_text.h"
#include "mpatool/output/text_output.h"
#include "os/console.h"
#include "os/error_text.h"
#include "os/output_file.h"

#include <cstdint>
#include <vector>

namespace mpatool {

namespace {

void CopyStandardInput(os::OutputFile& file) {
    constexpr std::size_t kPieceBytes = 64 * 1024;
    const std::wstring copy = L"the temporary copy of standard input";
    std::vector<std::uint8_t> piece(kPieceBytes);
    for (;;) {
        const auto bytes = os::ReadStandardInput(piece);
        if (os::InterruptRequested())
            throw Interrupted();
        if (!bytes)
            throw ToolError(kStandardInput, os::LastErrorText());
        if (*bytes == 0)
            break;
        RequireWritten(file.Write(std::span(piece).first(*bytes)), file, copy);
    }
    if (!file.Close())
        throw ToolError(copy, file.ErrorText());
}

} // namespace

InputFile::InputFile(const std::wstring& name) : name_(name), path_(name) {
    if (name != kStandardInput)
        return;
    os::OutputFile file;
    if (!folder_.Create(L"mpatool-") || !folder_.AddFile(L"standard-input", file))
        throw ToolError(name, L"no place for a temporary copy: " + folder_.ErrorText());
    path_ = folder_.PathOf(L"standard-input");
    CopyStandardInput(file);
}

ToolError InputFile::ByName(const ToolError& error) const {
    const std::string message = error.what();
    const std::string path = ShownPath(path_);
    return message.starts_with(path) ? ToolError(ShownPath(name_) + message.substr(path.size())) : error;
}

} // namespace mpatool
