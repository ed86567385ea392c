/// Finding the first frame of a stream.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/header_source.h"

namespace trnmpa {

/// Searches from `header.firstFrameOffset` for the first frame, which is a layer III header, or a layer II
/// header followed by another valid header where its frame ends. On success `firstFrameOffset` is the frame's
/// position, the other fields are its decoded header, and the source stands behind its 4 header bytes.
/// Otherwise false: the data end, or FindHeader has skipped its limit, which starts afresh behind each layer
/// II header that is not followed by another.
bool FindFirstFrame(HeaderSource& source, MpaFrameHeader& header);

} // namespace trnmpa
