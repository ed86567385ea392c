/// A stream in memory as the decoder's byte source.
#pragma once

#include "decoder/decoder_interface.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

class MemorySource final : public IAMPBitsource {
public:
    explicit MemorySource(const std::vector<char>& bytes) : bytes_(bytes) {}

    unsigned int Read(void* buffer, int count) override {
        const std::size_t copied = std::min(bytes_.size() - position_, static_cast<std::size_t>(count));
        std::memcpy(buffer, bytes_.data() + position_, copied);
        position_ += copied;
        return static_cast<unsigned int>(copied);
    }

private:
    const std::vector<char>& bytes_;
    std::size_t position_ = 0;
};
