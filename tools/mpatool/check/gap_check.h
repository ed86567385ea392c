/// What lies between frames.
#pragma once

#include "mpa/source_window.h"
#include "mpatool/check/stream_check.h"
#include "mpatool/stream/frame_chain.h"

#include <cstdint>
#include <optional>

namespace mpatool {

/// Tells apart what a search passed over, and adds it to the findings: frames of another format, the rest of
/// frames that were cut short, junk.
class GapCheck {
public:
    GapCheck(trnmpa::SourceWindow& window, StreamCheckResult& result) : window_(window), result_(result) {}

    /// Looks at the bytes from `from`, where the frame `last` ends (none before the first frame), to `to`.
    void Look(const std::optional<trnmpa::MpaFrameHeader>& last, std::int64_t from, std::int64_t to);

private:
    void AddCutFrame(const trnmpa::MpaFrameHeader& last, const FrameChain& hidden);
    void AddForeignFrames(const FrameChain& chain);
    void AddJunk(std::int64_t from, std::int64_t to);

    trnmpa::SourceWindow& window_;
    StreamCheckResult& result_;
};

} // namespace mpatool
