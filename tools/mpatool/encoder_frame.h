/// The frame that an encoder puts before the sound to describe it.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/source_window.h"

#include <cstdint>
#include <optional>

namespace mpatool {

/// How long the stream is from its "Info" or "Xing" frame on, that frame included, as the encoder wrote it.
/// Nothing when the frame is no such frame or does not tell.
std::optional<std::int64_t> EncodersStreamBytes(trnmpa::SourceWindow& window,
                                                const trnmpa::MpaFrameHeader& frame);

} // namespace mpatool
