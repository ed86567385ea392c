/// What the command line asks for.
#pragma once

#include "mpatool/command_line/time_parse.h"
#include "mpatool/module/decoder_choice.h"
#include "mpatool/pcm/pcm_choice.h"

#include <cstdint>
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

struct OutputOptions {
    std::wstring path;                  ///< "-" for standard output; empty: by the input's name
    std::optional<OutputFormat> format; ///< none: the output's name decides
    bool force = false;
};

struct DecodeOptions {
    std::wstring file;
    std::wstring module; ///< empty: the one beside this program
    OutputOptions output;
    PcmChoice pcm;
    std::optional<Decoder> decoder;       ///< none: as the module's settings say
    std::optional<std::uint32_t> kernels; ///< TRNMPA_KERNELS_*; none: as the module chooses
    StreamLength start;
    std::optional<StreamLength> length; ///< none: to the end
    bool index = false;                 ///< build an index first when there is none
};

struct SlicesOptions {
    std::wstring file;
    std::wstring module; ///< empty: the one beside this program
    OutputOptions output;
    PcmChoice pcm;
    std::int64_t sliceTime = 0; ///< 100 ns
    std::uint32_t start = 0;    ///< number of the first slice
    std::optional<std::uint32_t> count;
};

struct IndexOptions {
    std::vector<std::wstring> files;
    std::wstring module; ///< empty: the one beside this program
    bool force = false;  ///< replace existing indexes
    bool verify = false; ///< compare instead of build
    bool recurse = false;
    bool json = false;
    int jobs = 1;
};

struct CheckOptions {
    std::vector<std::wstring> files;
    std::wstring module; ///< empty: the one beside this program
    bool json = false;
};

enum class TableForm { kReadable, kCsv, kJson };

struct FramesOptions {
    std::wstring file;
    std::wstring module; ///< empty: the one beside this program
    TableForm form = TableForm::kReadable;
};

enum class PictureFormat { kSvg, kPng };

struct WaveformOptions {
    std::wstring file;
    std::wstring module;                 ///< empty: the one beside this program
    std::wstring output;                 ///< "-" for standard output; empty: by the input's name
    std::optional<PictureFormat> format; ///< none: the output's name decides
    bool force = false;
    std::int32_t width = 0; ///< pixels
    std::optional<std::int32_t> height;
    StreamLength start;
    std::optional<StreamLength> length; ///< none: to the end
    bool bitRate = false;               ///< a lane for it
    bool frames = false;                ///< lanes for block types and reservoir
};

struct SelftestOptions {
    std::wstring module;  ///< empty: the one beside this program
    std::wstring streams; ///< folder with the built-in streams, for the process that runs the checks
    bool json = false;
};

using Command = std::variant<ShowText, InfoOptions, DecodeOptions, SlicesOptions, IndexOptions, FramesOptions,
                             CheckOptions, SelftestOptions, WaveformOptions>;

/// Reads the arguments (UTF-8, the program's name first). Throws UsageError.
Command ParseCommandLine(const std::vector<std::string>& arguments);

} // namespace mpatool
