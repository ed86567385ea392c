/// Decoding a whole elementary stream from memory through IAMPDecoder.
#pragma once

#include "decoder/decoder_interface.h"

#include <cstdint>
#include <span>
#include <vector>

namespace test {

/// A byte source over memory.
class MemorySource final : public IAMPBitsource {
public:
    explicit MemorySource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    unsigned int Read(void* buffer, int count) override;
    void SetPosition(std::size_t position) { position_ = position; }
    std::size_t Position() const { return position_; }

private:
    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
};

struct DecodedStream {
    std::vector<std::int16_t> pcm;
    std::vector<AMPFrameInfo> frames;
    int thrown = 0; ///< the code that ended the decode, 0 when the search ran out of data
};

/// Decodes frame after frame until the data ends.
DecodedStream DecodeStream(std::span<const std::uint8_t> stream);

} // namespace test
