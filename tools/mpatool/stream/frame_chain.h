/// Frames that follow each other, wherever they lie.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/source_window.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mpatool {

/// The header at `offset`, with `firstFrameOffset` set to it; nothing where none lies.
std::optional<trnmpa::MpaFrameHeader> HeaderAt(trnmpa::SourceWindow& window, std::int64_t offset);

/// The frames can belong to one stream: equal in layer, version, sample rate, and single channel or not.
bool HaveOneFormat(const trnmpa::MpaFrameHeader& x, const trnmpa::MpaFrameHeader& y);

/// MPEG 2.5 is MPEG-2 at the lowest sample rates.
bool IsMpeg25(const trnmpa::MpaFrameHeader& header);

/// "MPEG-1", "MPEG-2" or "MPEG 2.5".
const char* VersionText(const trnmpa::MpaFrameHeader& header);

/// "MPEG-1 layer III, 44100 Hz, stereo".
std::string FormatText(const trnmpa::MpaFrameHeader& header);

/// Frames of one format, each beginning where the one before ends.
struct FrameChain {
    trnmpa::MpaFrameHeader first;
    std::int64_t offset = 0;
    std::int64_t end = 0;
    std::int64_t frames = 0;
};

/// The first chain from `begin` on that lies before `end` as a whole and is no accident: it has two frames or
/// more, or its one frame ends at `end`. With `least` it must have so many, or end there.
std::optional<FrameChain> FindChain(trnmpa::SourceWindow& window, std::int64_t begin, std::int64_t end,
                                    std::int64_t least = 2);

/// The frames of the format of `frame` that begin within it, behind its header, and end one after the other
/// just at `next`: then it is no whole frame itself.
std::optional<FrameChain> FindChainWithin(trnmpa::SourceWindow& window, const trnmpa::MpaFrameHeader& frame,
                                          std::int64_t next);

} // namespace mpatool
