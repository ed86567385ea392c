/// A decoder together with the file that feeds it.
#pragma once

#include "decoder/decoder_interface.h"
#include "mpa/header_source.h"

#include <cstdint>
#include <string>

namespace trnmpa {

/// The frames of one media file, one after another, as one of the two decoders gives them. Frames that do not
/// agree with the stream are passed over. The operations may throw what a decoder throws.
class FrameSource {
public:
    /// What became of a frame.
    struct Outcome {
        std::int32_t bytes = 0; ///< of PCM; 0: there was no frame to decode
        bool isGood = true;     ///< false when the decoder reports a failure
    };

    virtual ~FrameSource() = default;

    /// Takes the file that Open opens. The built-in decoder's is read in blocks of `blockKiB` KiB (0: the
    /// file library's default).
    virtual void SetFile(const std::wstring& path, std::uint32_t blockKiB) = 0;
    /// False when it is known by now that the file cannot be opened.
    virtual bool Open() = 0;

    /// The file's bytes, by position; moves the place where decoding goes on.
    virtual HeaderSource& Bytes() = 0;
    virtual std::int64_t Length() = 0;

    /// Describes the stream's first frame and stores its place. False when there is none.
    virtual bool FindFirstFrame(AMPFrameInfo& frame, std::int64_t& offset) = 0;
    /// Describes the frame at `offset`; `synced` is 0 when there is none.
    virtual AMPFrameInfo DescribeFrameAt(std::int64_t offset) = 0;

    /// Goes on at `offset`, in order.
    virtual void MoveTo(std::int64_t offset) = 0;
    /// Goes on at `offset`, after a jump to `frame`.
    virtual void JumpTo(std::int64_t offset, std::int64_t frame) = 0;

    /// Passes the next frame; its main data still serve the frames behind it.
    virtual void Skip(const AMPFrameInfo& stream) = 0;
    /// Decodes the next frame to `pcm`, room for kMaximumFramePcmValues.
    virtual Outcome Decode(const AMPFrameInfo& stream, std::int16_t* pcm) = 0;

    /// Samples per channel by which the output of a layer lags behind.
    virtual std::int32_t Delay(std::int32_t layer) const = 0;
    /// True when layer III comes at half of its amplitude.
    virtual bool HalvesLayer3() const = 0;
    /// True when an Outcome without bytes may be a passing fault, so that another try makes sense.
    virtual bool DeservesRetries() const = 0;
};

} // namespace trnmpa
