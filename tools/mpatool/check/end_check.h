/// How the sound of a file ends.
#pragma once

#include "mpa/source_window.h"
#include "mpatool/check/stream_check.h"

#include <cstdint>

namespace mpatool {

/// Where a last frame begins that reaches behind `end`, where the sound ends, at or behind `position`, the
/// end of the last whole frame `last`. `end` when there is none.
std::int64_t FindCutFrame(trnmpa::SourceWindow& window, const trnmpa::MpaFrameHeader& last,
                          std::int64_t position, std::int64_t end);

/// Adds the finding that a frame at `offset` reaches behind `end`.
void AddCutEnd(trnmpa::SourceWindow& window, std::int64_t offset, std::int64_t end,
               StreamCheckResult& result);

/// Adds the finding that the encoder's frame, if the stream begins with one, tells of more bytes than there
/// are before `end`.
void CompareWithEncoder(trnmpa::SourceWindow& window, std::int64_t end, StreamCheckResult& result);

} // namespace mpatool
