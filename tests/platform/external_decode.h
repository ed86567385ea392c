/// Files decoded by the external decoder.
#pragma once

#include "support/test_files.h"
#include "trnlameMp3Decoder/lame_mp3_decoder.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace test {

using Pcm = std::vector<std::int16_t>;

/// A decoder on a file, driven as an engine drives it: initialised, with an output buffer.
class ExternalDecode {
public:
    explicit ExternalDecode(const std::filesystem::path& path);

    TRN_LameMp3Dec& operator*() { return decoder_; }
    TRN_LameMp3Dec* operator->() { return &decoder_; }

    /// Finds the stream and goes to its first frame; false when there is none.
    bool Start();

    /// One frame; empty when there is none. Fails the running test when result and size disagree.
    Pcm Frame();

    /// All frames from the position on.
    std::vector<Pcm> Rest();

    /// Goes to a frame at a byte position.
    void GoTo(std::int64_t position, std::int64_t frameNumber);

private:
    std::array<unsigned char, 15360> output_{};
    TRN_LameMp3Dec decoder_;
};

/// One frame after the other as they stand in a stream without anything between, behind `start`.
struct PlacedFrame {
    std::int64_t position = 0;
    std::int64_t bytes = 0;
};
std::vector<PlacedFrame> PlaceFrames(const Bytes& stream, std::size_t start = 0);

} // namespace test
