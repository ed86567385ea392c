/// The search for damage in a file.
#pragma once

#include "mpa/frame_header.h"
#include "mpatool/check/findings.h"

#include <cstdint>
#include <string>

namespace mpatool {

struct StreamCheckResult {
    std::int64_t fileBytes = 0;
    trnmpa::MpaFrameHeader format;    ///< of the stream's first frame
    bool hasIndex = false;            ///< one lies beside the file
    bool opens = false;               ///< the module reads it without one
    std::int64_t frames = 0;          ///< delivered
    std::int32_t samplesPerFrame = 0; ///< per channel
    std::int32_t delaySamples = 0;    ///< left out before sample 0
    FindingList findings;

    /// Samples per channel that `frameCount` frames deliver without an index, and their time.
    std::int64_t SamplesOf(std::int64_t frameCount) const;
    double SecondsOf(std::int64_t frameCount) const;

    /// A finding behind the frames delivered so far, or behind fewer.
    Finding At(FindingKind kind, std::int64_t offset, std::int64_t end) const;
    Finding At(FindingKind kind, std::int64_t offset, std::int64_t end, std::int64_t framesBefore) const;
};

/// Walks over all frames that reading in order delivers, whatever index lies beside the file, and looks at
/// them and at what lies before, between and behind them; compares an index beside the file, and one that
/// would be built, with it. Only reads. Throws ToolError when the file cannot be read or holds no MPEG audio,
/// and Interrupted.
StreamCheckResult CheckStream(const std::wstring& path);

} // namespace mpatool
