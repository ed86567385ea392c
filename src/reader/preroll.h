/// Where decoding must begin so that a frame comes out as if the stream had been decoded from its start.
#pragma once

#include "decoder/decoder_interface.h"
#include "index/index_format.h"

#include <cstdint>
#include <span>

namespace trnmpa {

/// Frames to go back before a target frame: the last `decodedFrames` of them are decoded, to fill the overlap
/// and the filter bank; the `reservoirFrames` before those are passed over, to fill the bit reservoir.
struct Preroll {
    std::int32_t reservoirFrames = 0;
    std::int32_t decodedFrames = 0;

    std::int64_t Frames() const { return std::int64_t{reservoirFrames} + decodedFrames; }
};

/// Main data of a layer III frame of `frameBytes`: less header, CRC word (counted whether there is one or
/// not) and side information. Below 1 for a length that no frame has.
std::int32_t MainDataBytes(const AMPFrameInfo& stream, std::int32_t frameBytes);

/// The pre-roll for frames of about `frameBytes`.
Preroll PrerollFor(const AMPFrameInfo& stream, std::int32_t frameBytes);

/// The frame from which to reach `target` in a stream whose frames are as long as the stream's first, give or
/// take the padding byte.
std::int64_t PrerollStart(const AMPFrameInfo& stream, const Preroll& preroll, std::int64_t target);

/// The frame from which to reach `target`, one of `frames`, whose lengths decide how far back the bit
/// reservoir's reach goes. `preroll` receives the counts that the lengths around the target give.
std::int64_t PrerollStart(const AMPFrameInfo& stream, std::span<const MpaIndexEntry> frames,
                          std::int64_t target, Preroll& preroll);

} // namespace trnmpa
