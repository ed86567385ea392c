/// Runs of PCM: channels, bits and the way to floating point and back.
#pragma once

#include "trnpcmprocenc/pcm_format.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pcm {

using Bytes = std::span<const std::uint8_t>;

/// A pair of formats.
struct Conversion {
    Format original;
    Format output;

    bool ChangesRate() const { return original.rate != output.rate; }
    /// The channels that are resampled: as few as either side has.
    std::size_t ResampledChannels() const;

    bool operator==(const Conversion&) const = default;
};

/// Changes channels and bits, in whole numbers; the rate stays as it is.
std::vector<std::uint8_t> Repack(Bytes data, const Conversion& conversion);

/// Samples of full scale 1, of the one or two `channels` that are wanted.
std::vector<float> ToFloat(Bytes data, const Format& from, std::size_t channels);

/// Packs samples of `channels` channels; one is doubled where two are wanted.
std::vector<std::uint8_t> FromFloat(std::span<const float> samples, std::size_t channels, const Format& to);

} // namespace pcm
