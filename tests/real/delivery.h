/// Reading whole streams from the module, and comparing PCM.
#pragma once

#include "support/loaded_module.h"
#include "support/test_files.h"

#include <cstdint>
#include <filesystem>
#include <span>

namespace test {

/// How far two runs of samples of one length are apart.
struct PcmDistance {
    int largest = 0;
    double rms = 0.0;
    /// Power of the first over power of the difference, in decibels; infinite when they are equal.
    double signalToNoise = 0.0;
};
PcmDistance Distance(std::span<const std::int16_t> left, std::span<const std::int16_t> right);

/// All `samples` (per channel) from the start, in reads of `chunk` that never cross the end. Reports a failed
/// read to the running test and gives what was read so far.
Pcm ReadThrough(PLUGIN_FILE_READER_CLASS& reader, std::int64_t samples, std::uint32_t chunk);

/// The samples from `start` on that a request of `count` must bring (both per channel): those of `whole`, or
/// silence of the full length when any of them lies behind its end.
Pcm ExpectedAnswer(const Pcm& whole, int channels, std::int64_t start, std::uint32_t count);

/// Has the module build the index beside a file and gives it; reports a failure to the running test.
Bytes BuildIndexBeside(LoadedModule& module, std::filesystem::path media);

} // namespace test
