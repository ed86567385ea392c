/// A stretch of a stream, read through the module's sample reader.
#pragma once

#include "mpatool/module_host.h"
#include "mpatool/module_place.h"
#include "mpatool/pcm_conversion.h"
#include "mpatool/stream_scan.h"
#include "mpatool/time_parse.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace mpatool {

/// What --start and --length ask for.
struct StretchChoice {
    StreamLength start;
    std::optional<StreamLength> length; ///< none: to the end
};

/// The samples that are meant. Throws ToolError when there are none, UsageError for a length of 0.
SampleRange ChooseRange(const std::wstring& file, const StretchChoice& choice, const StreamScan& scan,
                        std::uint32_t sampleRate);

/// The file, opened for reading samples. Throws ToolError.
ModuleReader OpenSampleReader(ModuleHost& host, const ModulePlace& place, const std::wstring& file);

/// The format of its samples. Throws ToolError when it is not that of the frames.
PcmFormat RequireFormat(ModuleReader& reader, const StreamScan& scan, const std::wstring& file);

/// Says on standard error that jumps are estimates, where they are.
void NoteEstimates(const StreamScan& scan, const std::wstring& file);

/// Where reading has to begin so that `begin` is delivered to the bit: a jump is exact only by an index that
/// lists the very frames of the file.
std::int64_t ReadFrom(const StreamScan& scan, std::int64_t begin);

/// Reads a stretch of the stream in requests of about a second. The module answers a request that crosses the
/// end with silence as a whole, so none does.
class StretchReader {
public:
    /// Takes PCM and the sample position behind it.
    using Consume = std::function<void(std::span<const std::uint8_t> pcm, std::int64_t position)>;

    /// What it is given must outlive it.
    StretchReader(ModuleReader& reader, const PcmFormat& format, const std::wstring& file)
        : reader_(reader), format_(format), file_(file) {}

    /// Throws ToolError or Interrupted.
    void Read(const SampleRange& range, const Consume& consume);

private:
    ModuleReader& reader_;
    PcmFormat format_;
    const std::wstring& file_;
};

} // namespace mpatool
