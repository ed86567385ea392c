/// One frame in, one frame's PCM out, over libmpg123.
#pragma once

#include "trnlameMp3Decoder/frame_header.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct mpg123_handle_struct;

namespace mp3 {

class Mpg123Library;

class FrameDecoder {
public:
    /// False when there is no library or it gives no decoder. What was decoded so far is forgotten.
    bool Open();
    bool IsOpen() const { return handle_ != nullptr; }

    /// Forgets the signal; the next frame is number `frameNumber` of the stream.
    void Reset(std::int64_t frameNumber);

    /// Decodes a whole frame to `pcm`, which has the size that the frame's format gives. False when the
    /// library does not give so much. Throws std::bad_alloc.
    bool Decode(const FrameHeader& header, std::span<const std::uint8_t> frame, std::span<std::uint8_t> pcm);

private:
    struct Delete {
        const Mpg123Library* library;
        void operator()(mpg123_handle_struct* handle) const;
    };

    bool Create();
    bool Start(const FrameHeader& header, std::span<const std::uint8_t> frame, std::span<std::uint8_t> pcm);
    bool DecodeWithReservoir(const FrameHeader& header, std::span<const std::uint8_t> frame,
                             std::span<std::uint8_t> pcm);
    bool Pass(std::span<const std::uint8_t> frame, std::span<std::uint8_t> pcm);

    std::shared_ptr<const Mpg123Library> library_;
    std::unique_ptr<mpg123_handle_struct, Delete> handle_;
    /// A frame that is changed on its way to the library.
    std::vector<std::uint8_t> changed_;
    bool started_ = false;
    std::int64_t nextFrame_ = 0;
    /// Bytes of main data that the frames since the start have left for those that follow, as far as they can
    /// reach back.
    std::size_t reservoirBytes_ = 0;
};

} // namespace mp3
