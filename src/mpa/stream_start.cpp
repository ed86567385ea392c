#include "mpa/stream_start.h"

#include "mpa/first_frame_search.h"
#include "mpa/frame_walk.h"
#include "mpa/id3v2_tag.h"
#include "mpa/info_tag.h"

#include <algorithm>

namespace trnmpa {

namespace {

/// Only this one place is looked at, whatever the frame's side information; it may lie behind a short frame.
constexpr std::int32_t kInfoTextOffset = 36;

bool IsInfoFrame(HeaderSource& source, const MpaFrameHeader& header) {
    if (header.layer != 3 ||
        header.frameBytes < kInfoTextOffset + static_cast<std::int32_t>(kInfoText.size()))
        return false;
    return ReadFourBytes(source, header.firstFrameOffset + kInfoTextOffset) == kInfoText;
}

} // namespace

std::optional<AudioStart> LocateAudioStart(HeaderSource& source) {
    AudioStart start;
    if (!SkipTagAndPadding(source, start.firstHeader.firstFrameOffset) ||
        !FindFirstFrame(source, start.firstHeader))
        return std::nullopt;
    start.hasInfoFrame = IsInfoFrame(source, start.firstHeader);
    start.dataStart = start.firstHeader.firstFrameOffset;
    if (start.hasInfoFrame)
        start.dataStart += DecoderFrameBytes(start.firstHeader);
    return start;
}

} // namespace trnmpa
