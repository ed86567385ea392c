/// Where the sample reader begins in a file that has no index.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/header_source.h"

#include <optional>

namespace trnmpa {

struct AudioStart {
    std::int64_t dataStart = 0; ///< byte position of the first frame that is delivered
    MpaFrameHeader firstHeader; ///< of the first frame found, which is the "Info" frame if there is one
    bool hasInfoFrame = false;  ///< the first frame was passed over because it carries "Info"
};

/// Skips a leading tag by the sample reader's rule, finds the first frame and, in layer III, passes over an
/// "Info" frame. The decoder has then read the first frame: hand its header to FrameWalk as the reference.
/// Nothing when the file has no frame by these rules. That the first frame is whole is not looked at.
std::optional<AudioStart> LocateAudioStart(HeaderSource& source);

/// True when the layer III frame of `frameBytes` at `offset` is an "Info" frame, which describes the stream
/// and is never decoded. Only frames that carry the text where a stereo MPEG-1 frame has it are recognised.
/// Moves the source.
bool IsInfoFrame(HeaderSource& source, std::int64_t offset, std::int32_t frameBytes);

/// Samples per channel by which the built-in decoder's output of a layer lags behind the audio; the sample
/// reader leaves them out at the start.
constexpr std::int32_t BuiltInDecoderDelay(std::int32_t layer) noexcept {
    return layer == 3 ? 1100 : 0;
}

/// The same of the external decoder.
constexpr std::int32_t ExternalDecoderDelay(std::int32_t layer) noexcept {
    return layer == 3 ? 529 : 0;
}

} // namespace trnmpa
