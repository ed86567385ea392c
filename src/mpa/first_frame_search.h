/// Finding the first frame of a stream.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/header_source.h"

namespace trnmpa {

/// Bytes that one run of the search skips at most before it gives up (the last step may go 3 further).
inline constexpr std::int32_t kFirstFrameSearchBytes = 4096;

/// Searches from `header.firstFrameOffset` for the first frame, which is a layer III header, or a layer II
/// header followed by another valid header where its frame ends. On success `firstFrameOffset` is the frame's
/// position, the other fields are its decoded header, and the source stands behind its 4 header bytes.
/// Otherwise false: the data end, or the search has skipped its limit, which starts afresh behind each layer
/// II header that is not followed by another.
bool FindFirstFrame(HeaderSource& source, MpaFrameHeader& header);

} // namespace trnmpa
