/// Sliding over bytes to the next frame header.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/source_window.h"

#include <cstdint>
#include <optional>

namespace trnmpa {

/// Bytes that one search skips at most before it gives up (the last step may go 3 further).
inline constexpr std::int32_t kHeaderSearchBytes = 4096;

/// Slides from `offset` to the next header that IsValidFrameHeader accepts, puts it into `header` and gives
/// its position. Nothing when the data end before or the search has skipped its limit.
std::optional<std::int64_t> FindHeader(SourceWindow& window, std::int64_t offset, FrameHeaderBytes& header);

} // namespace trnmpa
