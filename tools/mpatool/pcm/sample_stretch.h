/// A stretch of a stream, read through the module's sample reader.
#pragma once

#include "mpatool/command_line/time_parse.h"
#include "mpatool/module/module_host.h"
#include "mpatool/module/module_place.h"
#include "mpatool/pcm/pcm_conversion.h"
#include "mpatool/stream/stream_scan.h"

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

/// A file, opened by the module for reading the stretch that was chosen. What it is given must outlive it.
class SampleStretch {
public:
    /// Takes PCM and nothing else; the pieces follow each other.
    using Consume = std::function<void(std::span<const std::uint8_t> pcm)>;

    /// Says on standard error where positions are estimates. Throws ToolError when the file cannot be opened,
    /// is described in another way than its frames are, or has no such samples, UsageError for a length of 0.
    SampleStretch(ModuleHost& host, const ModulePlace& place, const std::wstring& file,
                  const StretchChoice& choice);

    const StreamScan& Scan() const { return scan_; }
    const PcmFormat& Format() const { return format_; }
    /// The samples that are meant.
    const SampleRange& Range() const { return range_; }

    /// Hands `range`, which may be wider than Range(), to `consume` in pieces of about a second and shows the
    /// progress. Reads from the start of the stream where a jump would not be exact. Throws ToolError or
    /// Interrupted.
    void Read(const SampleRange& range, const Consume& consume);

private:
    /// Takes PCM and the sample position behind it.
    using ConsumeAt = std::function<void(std::span<const std::uint8_t> pcm, std::int64_t position)>;
    void ReadPieces(const SampleRange& range, const ConsumeAt& consume);

    const std::wstring& file_;
    StreamScan scan_;
    ModuleReader module_;
    PcmFormat format_;
    SampleRange range_;
};

} // namespace mpatool
