/// The command line between its parser and the commands.
#pragma once

#include "mpatool/command_line/command_line.h"
#include "mpatool/waveform/layout.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mpatool {

inline constexpr const char* kWaveName = "wav";
inline constexpr const char* kRawName = "raw";
inline constexpr const char* kSvgName = "svg";
inline constexpr const char* kPngName = "png";
inline constexpr const char* kBuiltInName = "builtin";
inline constexpr const char* kExternalName = "external";

/// The values as CLI11 stores them.
struct RawOptions {
    std::string module;
    std::vector<std::string> files;
    bool json = false;
    bool csv = false;
    std::string file;
    std::string output;
    std::string format;
    std::string start;
    std::string length;
    bool force = false;
    bool index = false;
    bool verify = false;
    bool recurse = false;
    int jobs = 1;
    std::string decoder;
    std::string kernels;
    std::optional<std::uint32_t> rate;
    std::optional<int> channels;
    std::optional<int> bits;
    std::string sliceTime;
    std::int64_t firstSlice = 0;
    std::optional<std::int64_t> sliceCount;
    std::string streams;
    std::int32_t width = kUsualWidth;
    std::optional<std::int32_t> height;
    bool bitRate = false;
    bool frames = false;
};

/// What the values mean. They throw UsageError for those that mean nothing.
DecodeOptions ToDecodeOptions(const RawOptions& raw);
SlicesOptions ToSlicesOptions(const RawOptions& raw);
InfoOptions ToInfoOptions(const RawOptions& raw);
IndexOptions ToIndexOptions(const RawOptions& raw);
FramesOptions ToFramesOptions(const RawOptions& raw);
SelftestOptions ToSelftestOptions(const RawOptions& raw);
CheckOptions ToCheckOptions(const RawOptions& raw);
WaveformOptions ToWaveformOptions(const RawOptions& raw);

} // namespace mpatool
