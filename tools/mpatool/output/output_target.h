/// Where a run's result goes.
#pragma once

#include "mpatool/command_line/command_line.h"
#include "os/output_file.h"

#include <cstdint>
#include <span>
#include <string>

namespace mpatool {

/// What stands behind the last separator. A slash separates on every system.
std::wstring FileName(const std::wstring& path);

/// The extension of a path's last part, in lower case with its dot; empty when there is none.
std::wstring LowerExtension(const std::wstring& path);

/// The name of `input` with another extension, in the current folder.
std::wstring NamedAfter(const std::wstring& input, const wchar_t* extension);

/// The output's name and format, with the defaults for what the command line left open. Throws UsageError
/// when the name does not tell the format.
struct OutputChoice {
    std::wstring path; ///< "-" for standard output
    OutputFormat format = OutputFormat::kWave;
};
OutputChoice ChooseOutput(const std::wstring& input, const OutputOptions& options);

/// An output file that exists under its name either whole or not at all: it is made under a temporary name
/// beside it and renamed by Commit. Devices, pipes and standard output are written to directly.
class OutputTarget {
public:
    /// Opens the output. An existing file stops it unless `force`; `input` is never written to. Throws
    /// ToolError.
    OutputTarget(const std::wstring& path, const std::wstring& input, bool force);
    /// Removes what was not committed.
    ~OutputTarget();
    OutputTarget(const OutputTarget&) = delete;
    OutputTarget& operator=(const OutputTarget&) = delete;

    /// Writes all bytes. Throws ToolError, OutputClosed or Interrupted.
    void Write(std::span<const std::uint8_t> bytes);

    /// Says that everything is written; the file gets its name. Throws ToolError.
    void Commit();

private:
    void OpenStandardOutput(bool force);
    void OpenFile(const std::wstring& input, bool force);

    std::wstring name_;      ///< as the user knows it
    std::wstring path_;      ///< of the finished file
    std::wstring temporary_; ///< of the unfinished file; empty when there is none
    bool replace_ = false;
    os::OutputFile file_;
};

} // namespace mpatool
