#include "mpa/stream_start.h"

#include "fileio/frame_buffer_reader.h"
#include "mpa/first_frame_search.h"
#include "mpa/frame_walk.h"
#include "mpa/id3v2_tag.h"

#include <algorithm>
#include <array>
#include <span>

namespace trnmpa {

namespace {

/// As many bytes of a frame as the test for an "Info" frame looks at.
constexpr std::size_t kInfoFrameHeadBytes = 40;

} // namespace

bool IsInfoFrame(HeaderSource& source, std::int64_t offset, std::int32_t frameBytes) {
    std::array<std::uint8_t, kInfoFrameHeadBytes> head = {};
    const std::size_t wanted = std::min(head.size(), static_cast<std::size_t>(std::max(frameBytes, 0)));
    if (!source.SetPosition(offset))
        return false;
    const std::size_t read = source.Read(std::span(head).first(wanted));
    return CMpAudioFrameBufferReader::InfoTagKind(head.data(), static_cast<std::uint32_t>(read)) == kInfoTag;
}

std::optional<AudioStart> LocateAudioStart(HeaderSource& source) {
    AudioStart start;
    if (!SkipTagAndPadding(source, start.firstHeader.firstFrameOffset) ||
        !FindFirstFrame(source, start.firstHeader))
        return std::nullopt;
    start.dataStart = start.firstHeader.firstFrameOffset;
    start.hasInfoFrame =
        start.firstHeader.layer == 3 && IsInfoFrame(source, start.dataStart, start.firstHeader.frameBytes);
    if (start.hasInfoFrame)
        start.dataStart += DecoderFrameBytes(start.firstHeader);
    return start;
}

} // namespace trnmpa
