#include "decoder/stream_decode.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace test {

unsigned int MemorySource::Read(void* buffer, int count) {
    const std::size_t available = bytes_.size() - std::min(position_, bytes_.size());
    const std::size_t copied = std::min(available, static_cast<std::size_t>(std::max(count, 0)));
    if (copied > 0)
        std::memcpy(buffer, bytes_.data() + position_, copied);
    position_ += copied;
    return static_cast<unsigned int>(copied);
}

DecodedStream DecodeStream(std::span<const std::uint8_t> stream) {
    DecodedStream result;
    MemorySource source(stream);
    const std::unique_ptr<IAMPDecoder> decoder(AMPDecoderCreate());
    std::int16_t pcm[kMaximumFramePcmValues];
    decoder->SetBitsource(&source);
    decoder->SetOutputBuffer(pcm);
    decoder->Reset();
    try {
        for (;;) {
            decoder->ReadFrameHeader();
            AMPFrameInfo info;
            decoder->GetFrameInfo(&info);
            if (info.synced == 0)
                return result;
            decoder->DecodeFrame();
            result.frames.push_back(info);
            result.pcm.insert(result.pcm.end(), pcm, pcm + decoder->GetOutputSize());
        }
    } catch (int code) {
        result.thrown = code;
    }
    return result;
}

} // namespace test
