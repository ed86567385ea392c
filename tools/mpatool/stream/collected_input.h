/// A file to look at, which may come by standard input.
#pragma once

#include "mpatool/output/tool_error.h"
#include "os/private_folder.h"

#include <string>

namespace mpatool {

/// How the command line names standard input.
inline constexpr const wchar_t* kStandardInput = L"-";

/// The file of that name. Of standard input, which can be read once and in order only, it makes a private
/// temporary file, as long as what arrives, that goes at the end of the object's life.
class InputFile {
public:
    /// Reads all of standard input when that is named. Throws ToolError, Interrupted.
    explicit InputFile(const std::wstring& name);

    /// Calls `work` with the path to open. Failures that it throws name the file as the user did.
    template <typename Work>
    auto Use(Work work) const {
        try {
            return work(path_);
        } catch (const ToolError& error) {
            throw ByName(error);
        }
    }

private:
    ToolError ByName(const ToolError& error) const;

    std::wstring name_;
    std::wstring path_;
    os::PrivateFolder folder_;
};

} // namespace mpatool
