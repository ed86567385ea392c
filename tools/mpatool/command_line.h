/// What the command line asks for.
#pragma once

#include "mpatool/time_parse.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace mpatool {

/// `--help`, `--version`: a text to print, nothing else to do.
struct ShowText {
    std::string text;
};

struct InfoOptions {
    std::vector<std::wstring> files;
    std::wstring module; ///< empty: the one beside this program
    bool json = false;
};

enum class OutputFormat { kWave, kRaw };

struct DecodeOptions {
    std::wstring file;
    std::wstring module;                ///< empty: the one beside this program
    std::wstring output;                ///< "-" for standard output
    std::optional<OutputFormat> format; ///< none: the output's name decides
    StreamLength start;
    std::optional<StreamLength> length; ///< none: to the end
    bool force = false;
    bool index = false; ///< build an index first when there is none
};

struct IndexOptions {
    std::vector<std::wstring> files;
    std::wstring module; ///< empty: the one beside this program
    bool force = false;  ///< replace existing indexes
    bool verify = false; ///< compare instead of build
    bool recurse = false;
    int jobs = 1;
};

enum class TableForm { kReadable, kCsv, kJson };

struct FramesOptions {
    std::wstring file;
    TableForm form = TableForm::kReadable;
};

using Command = std::variant<ShowText, InfoOptions, DecodeOptions, IndexOptions, FramesOptions>;

/// Reads the arguments (UTF-8, the program's name first). Throws UsageError.
Command ParseCommandLine(const std::vector<std::string>& arguments);

} // namespace mpatool
