/// The frames of a stream that the built-in decoder will deliver, found without decoding.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/source_window.h"

#include <optional>

namespace trnmpa {

/// One frame that will be delivered.
struct WalkedFrame {
    std::int64_t offset = 0;          ///< byte position of the header
    std::int32_t frameBytes = 0;      ///< whole frame as the decoder measures it
    std::int32_t samplesPerFrame = 0; ///< per channel
    bool isProtected = false;         ///< a CRC word follows the header
    MpaFrameHeader header; ///< `frameBytes` in it is the analysis' measure; `firstFrameOffset` is `offset`
};

/// Length of a frame, header included, as the decoder measures it; it differs from
/// `MpaFrameHeader::frameBytes` for layer II at the lower sampling frequencies, where this is the standard's.
std::int32_t DecoderFrameBytes(const MpaFrameHeader& header) noexcept;

/// Size of the side information of a layer III frame, 0 for other layers.
std::int32_t SideInformationBytes(const MpaFrameHeader& header) noexcept;

/// Walks from frame to frame the way the decoder and the sample reader do together:
/// - A header passes that is valid and agrees with the first one of the decoder's life in version bit, layer
///   and sample-rate index; bytes that cannot begin one are stepped over.
/// - A frame that also agrees with the stream's format (sample rate, single channel or not) is delivered, and
///   the search goes on at its end.
/// - Of another frame the header, the CRC word and the side information are consumed, and the search goes on
///   behind them.
/// - A frame that the end of the data cuts off ends the walk.
///
///     FrameWalk walk(source, start);
///     while (const auto frame = walk.Next())
///         samples += frame->samplesPerFrame;
class FrameWalk {
public:
    /// The first frame found from `start` on sets the format.
    FrameWalk(HeaderSource& source, std::int64_t start);

    /// The format is that of `reference`, a frame that the decoder has read before it came to `start`.
    FrameWalk(HeaderSource& source, std::int64_t start, const MpaFrameHeader& reference);

    /// The next frame, or nothing at the end of the data (and ever after).
    std::optional<WalkedFrame> Next();

private:
    std::optional<FrameHeaderBytes> FindHeader();
    bool Passes(const FrameHeaderBytes& bytes) const;
    bool MatchesFormat(const MpaFrameHeader& header) const;
    bool HasBytesBefore(std::int64_t end);

    SourceWindow window_;
    std::int64_t position_;
    std::optional<MpaFrameHeader> reference_;
    bool ended_ = false;
};

} // namespace trnmpa
