/// Synthetic media files with the PCM that one sequential decode of them gives.
#pragma once

#include "support/bitstream/stream.h"
#include "support/test_files.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace test {

struct ExpectedStream {
    std::filesystem::path path;
    std::vector<std::uint8_t> pcm; ///< of sample 0 to the end, at full scale
    int blockAlign = 0;
    std::int64_t samples = 0;         ///< per channel
    std::int64_t samplesPerFrame = 0; ///< per channel
    std::int64_t skippedSamples = 0;  ///< left out before sample 0

    /// What a request must bring: the PCM, or silence of the full length when it touches the end.
    std::vector<std::uint8_t> Answer(std::int64_t start, std::uint32_t count) const;
};

/// Writes the stream with an index of all its frames but the first beside it.
ExpectedStream AddIndexedStream(const ScratchFolder& folder, const bitstream::Stream& stream);

/// Writes the stream alone.
ExpectedStream AddPlainStream(const ScratchFolder& folder, const bitstream::Stream& stream);

/// True when every frame of the stream can be found by the sample reader's arithmetic: its estimate for frame
/// n lies behind header n - 1 and not behind header n.
bool IsFoundByArithmetic(const bitstream::Stream& stream);

} // namespace test
