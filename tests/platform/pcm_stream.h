/// PCM as test signals, and streams of it that are converted slice by slice.
#pragma once

#include "os/wave_format.h"
#include "support/test_files.h"
#include "trnpcmprocenc/pcm_basic_process.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace test {

WAVEFORMATEX PcmFormat(std::uint32_t rate, int channels, int bits);

/// A tone of 16 bits, the same on all channels: `samples` per channel.
Bytes Tone(const WAVEFORMATEX& format, double frequency, double amplitude, std::size_t samples);
/// Noise that uses all values, the same on every system.
Bytes Noise(std::size_t bytes, std::uint32_t seed = 1);

/// The 16-bit values of `bytes`.
std::vector<std::int16_t> Values(std::span<const std::uint8_t> bytes);

/// What a slice's conversion needs besides the slice.
enum class LookAhead { given, none };

/// Converts the samples [from, to) of a stream in slices of so many samples; the last one is shorter. Fails
/// the running test when a slice is refused.
Bytes ConvertSlices(TRN_PCMBasicProcess& process, std::span<const std::uint8_t> stream,
                    const WAVEFORMATEX& original, const WAVEFORMATEX& output, std::size_t from,
                    std::size_t to, std::size_t sliceSamples, LookAhead lookAhead = LookAhead::given);

/// The whole stream in slices, by a converter of its own.
Bytes ConvertAll(std::span<const std::uint8_t> stream, const WAVEFORMATEX& original,
                 const WAVEFORMATEX& output, std::size_t sliceSamples,
                 LookAhead lookAhead = LookAhead::given);

} // namespace test
