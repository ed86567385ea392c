/// The PCM format that the command line asks for.
#pragma once

#include "mpatool/pcm/wave_writer.h"

#include <cstdint>
#include <optional>

namespace mpatool {

/// Rates that any stream can be converted to: none is more than 48 times another's.
inline constexpr std::uint32_t kLowestRate = 4000;
inline constexpr std::uint32_t kHighestRate = 384'000;

/// What is not asked for stays as the stream has it.
struct PcmChoice {
    std::optional<std::uint32_t> sampleRate; ///< Hz
    std::optional<std::uint16_t> channels;
    std::optional<std::uint16_t> bitsPerSample;

    PcmFormat Applied(const PcmFormat& stream) const {
        return {sampleRate.value_or(stream.sampleRate), channels.value_or(stream.channels),
                bitsPerSample.value_or(stream.bitsPerSample)};
    }
};

} // namespace mpatool
