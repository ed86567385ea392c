/// Media files of known frames with the PCM that one sequential decode of them gives.
#pragma once

#include "support/bitstream/stream.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include <cstdint>
#include <filesystem>

namespace test {

struct ExpectedStream {
    std::filesystem::path path;
    Pcm pcm; ///< of sample 0 to the end, at full scale
    int channels = 0;
    std::int64_t samples = 0;         ///< per channel
    std::int64_t samplesPerFrame = 0; ///< per channel
    std::int64_t skippedSamples = 0;  ///< left out before sample 0

    /// What a request must bring: the PCM, or silence of the full length when it touches the end.
    Pcm Answer(std::int64_t start, std::uint32_t count) const;
};

/// Has the module's own builder index a media file; gives the index.
Bytes BuildIndex(const std::filesystem::path& media);

/// Writes the file and has it indexed. The index must list all its frames but the first, and no other.
ExpectedStream AddIndexedStream(const ScratchFolder& folder, const bitstream::Stream& file);

/// Writes the file alone.
ExpectedStream AddPlainStream(const ScratchFolder& folder, const bitstream::Stream& file);

/// True when every frame of the stream can be found by the sample reader's arithmetic: its estimate for frame
/// n lies behind header n - 1 and not behind header n.
bool IsFoundByArithmetic(const bitstream::Stream& stream);

} // namespace test
