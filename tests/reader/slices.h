/// The exported slice reader, linked from the shared library, as tests drive it.
#pragma once

#include "support/loaded_module.h"
#include "support/test_files.h"
#include "trnmpafileread/frame_readers.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace test {

/// A slice, copied out of the engine.
struct Slice {
    std::int32_t result = 0;
    bool hasData = false;
    Bytes bytes;
    WAVEFORMATEX format = {};
    std::int32_t atEnd = -1;

    /// The bytes as 16-bit samples.
    Pcm Samples() const;
};

Slice ReadSlice(TRN_MpAudioFileReader& reader);
Slice ReadSliceAt(TRN_MpAudioFileReader& reader, std::uint32_t number);

/// Initialize, the slice time (100 ns), SetInputFile, StartRead; the result of the last.
std::int32_t StartSlices(TRN_MpAudioFileReader& reader, const std::filesystem::path& path,
                         std::int64_t sliceTime);

/// All slices from the present one up to the first that fails.
std::vector<Slice> ReadAllSlices(TRN_MpAudioFileReader& reader);

Bytes Joined(const std::vector<Slice>& slices);

/// How far samples of `bits` bits (8: unsigned) are apart at most; fails the running test when there are not
/// as many of them on both sides.
std::int64_t LargestDistance(std::span<const std::uint8_t> left, std::span<const std::uint8_t> right,
                             int bits);
/// The first of these samples, as a signed number.
std::int32_t SampleOf(std::span<const std::uint8_t> bytes, int bits);

/// PCM as a format record.
WAVEFORMATEX PcmFormat(std::uint32_t rate, std::uint16_t channels, std::uint16_t bits);

} // namespace test
