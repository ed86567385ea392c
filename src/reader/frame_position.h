/// Where the frames of a stream lie, told without an index.
#pragma once

#include "decoder/decoder_interface.h"
#include "mpa/header_source.h"

#include <cstdint>
#include <optional>

namespace trnmpa {

/// What the place of a frame is computed from.
struct FrameLayout {
    AMPFrameInfo frame;             ///< the stream's first frame
    std::int64_t dataStart = 0;     ///< byte offset of frame 0
    bool isConstantBitRate = false; ///< all frames are taken to be as long as the first
};

/// Byte offset from which the decoder's search finds frame number `frame`: exact for frames of one length,
/// else an estimate from the bit rate. Nothing for a frame that cannot be in a file, or a layout with zeros
/// where it divides.
std::optional<std::int64_t> ComputedFrameOffset(const FrameLayout& layout, std::int64_t frame);

/// True when a header of the same bit rate stands in the middle of a file of `fileLength` bytes, if all its
/// frames were as long as the first. Moves the source.
bool MiddleFrameMatches(HeaderSource& source, std::int64_t fileLength, const FrameLayout& layout);

} // namespace trnmpa
