/// The frame that an encoder puts before the sound to describe it.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/source_window.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mpatool {

/// What such a frame says. Nothing of it is checked against the stream; what the frame does not tell, or has
/// no room for, is missing.
struct EncoderFrame {
    std::string name;        ///< "Info", "Xing" or "VBRI"
    std::int64_t offset = 0; ///< of the frame's header
    std::optional<std::int64_t> frames;
    std::optional<std::int64_t> bytes; ///< from this frame on, itself included
    std::optional<std::int64_t> quality;
    bool hasTableOfContents = false;
    std::string encoder;                 ///< printable ASCII, at most nine characters; empty: not told
    std::optional<std::int64_t> delay;   ///< samples per channel that the encoder put before the sound
    std::optional<std::int64_t> padding; ///< samples per channel behind it

    /// Samples per channel of the sound proper, when the frame tells enough; never negative.
    std::optional<std::int64_t> SoundSamples(std::int32_t samplesPerFrame) const;
};

/// Nothing when the Layer III frame `frame`, which begins at its firstFrameOffset, is no such frame.
std::optional<EncoderFrame> ReadEncoderFrame(trnmpa::SourceWindow& window,
                                             const trnmpa::MpaFrameHeader& frame);

} // namespace mpatool
