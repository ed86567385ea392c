/// Packed PCM of the formats that are served, and single samples of it.
#pragma once

#include "os/wave_format.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace pcm {

struct Format {
    std::uint32_t rate = 0; ///< Hz
    std::int32_t channels = 0;
    std::int32_t bits = 0;

    std::size_t SampleBytes() const { return static_cast<std::size_t>(bits) / 8; }
    /// One sample of all channels.
    std::size_t BlockBytes() const { return SampleBytes() * static_cast<std::size_t>(channels); }

    bool operator==(const Format&) const = default;
};

/// Nothing when the format is not served.
std::optional<Format> Understand(const WAVEFORMATEX& format);

/// The sample at `bytes`, scaled to 32 bits.
std::int32_t ReadSample(const std::uint8_t* bytes, std::int32_t bits);

/// Writes a value that has `bits` significant bits.
void WriteSample(std::uint8_t* bytes, std::int32_t bits, std::int32_t value);

/// The largest value of that many bits; the smallest is one below its negative.
constexpr std::int32_t LargestValue(std::int32_t bits) {
    return static_cast<std::int32_t>((std::int64_t{1} << (bits - 1)) - 1);
}

} // namespace pcm
