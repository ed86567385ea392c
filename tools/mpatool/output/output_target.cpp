#include "mpatool/output/output_target.h"

#include "mpatool/output/shown_text.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "os/console.h"
#include "os/paths.h"

#include <algorithm>
#include <cwctype>
#include <string_view>

namespace mpatool {

namespace {

constexpr std::wstring_view kStandardOutput = L"-";

/// The place of the dot before the extension, or the end of the name. A dot at its start begins no extension.
std::size_t ExtensionStart(const std::wstring& name) {
    const std::size_t dot = name.rfind(L'.');
    return dot == std::wstring::npos || dot == 0 ? name.size() : dot;
}

OutputFormat FormatByName(const std::wstring& path) {
    const std::wstring extension = LowerExtension(path);
    if (extension == L".wav" || extension == L".wave")
        return OutputFormat::kWave;
    if (extension == L".raw" || extension == L".pcm")
        return OutputFormat::kRaw;
    if (path == kStandardOutput || os::KindOfPath(path) == os::PathKind::kDevice)
        return OutputFormat::kWave;
    throw UsageError("-o " + ShownPath(path) + ": the name ends neither in .wav nor in .raw; say --format");
}

} // namespace

std::wstring FileName(const std::wstring& path) {
    const std::size_t separator = path.find_last_of(std::wstring(L"/") + os::kPathSeparator);
    return separator == std::wstring::npos ? path : path.substr(separator + 1);
}

std::wstring LowerExtension(const std::wstring& path) {
    const std::wstring name = FileName(path);
    std::wstring extension = name.substr(ExtensionStart(name));
    std::ranges::transform(extension, extension.begin(), [](wchar_t c) {
        return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
    });
    return extension;
}

std::wstring NamedAfter(const std::wstring& input, const wchar_t* extension) {
    const std::wstring name = FileName(input);
    return name.substr(0, ExtensionStart(name)) + extension;
}

OutputChoice ChooseOutput(const std::wstring& input, const OutputOptions& options) {
    if (options.path.empty()) {
        const OutputFormat format = options.format.value_or(OutputFormat::kWave);
        return {NamedAfter(input, format == OutputFormat::kWave ? L".wav" : L".raw"), format};
    }
    return {options.path, options.format ? *options.format : FormatByName(options.path)};
}

OutputTarget::OutputTarget(const std::wstring& path, const std::wstring& input, bool force)
    : name_(path), path_(path), replace_(force) {
    if (path == kStandardOutput)
        OpenStandardOutput(force);
    else
        OpenFile(input, force);
}

OutputTarget::~OutputTarget() {
    file_.Close();
    if (!temporary_.empty())
        os::DeleteFileAt(temporary_);
}

void OutputTarget::OpenStandardOutput(bool force) {
    name_ = L"standard output";
    if (os::IsOutputTerminal() && !force)
        throw ToolError(name_, "a terminal; use -o or a pipe, or --force to write to it all the same");
    if (!file_.OpenStandardOutput())
        throw ToolError(name_, file_.ErrorText());
}

void OutputTarget::OpenFile(const std::wstring& input, bool force) {
    switch (os::KindOfPath(path_)) {
    case os::PathKind::kFolder:
        throw ToolError(name_, "Is a directory");
    case os::PathKind::kDevice:
        if (!file_.OpenExisting(path_))
            throw ToolError(name_, file_.ErrorText());
        return;
    case os::PathKind::kFile:
        if (os::IsSameFile(path_, input))
            throw ToolError(name_, "is the input file");
        if (!force)
            throw ToolError(name_, "exists already; use --force to overwrite it");
        // A link keeps pointing to what it names.
        path_ = os::ResolveLinks(path_);
        break;
    case os::PathKind::kMissing:
        break;
    }
    const std::wstring temporary = os::TemporaryNameBeside(path_);
    if (!file_.Create(temporary))
        throw ToolError(name_, file_.ErrorText());
    temporary_ = temporary;
}

void OutputTarget::Write(std::span<const std::uint8_t> bytes) {
    RequireWritten(file_.Write(bytes), file_, name_);
}

void OutputTarget::Commit() {
    if (!file_.Close())
        throw ToolError(name_, file_.ErrorText());
    if (temporary_.empty())
        return;
    const std::wstring failure = os::MoveFileTo(temporary_, path_, replace_);
    if (!failure.empty())
        throw ToolError(name_, failure);
    temporary_.clear();
}

} // namespace mpatool
