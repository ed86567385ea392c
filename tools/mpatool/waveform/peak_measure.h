/// Extremes and energy of PCM.
#pragma once

#include <cstdint>
#include <limits>
#include <span>

namespace mpatool {

/// A value at either end of 16 bits. The reader's doubled samples never reach -32768.
inline constexpr std::int16_t kFullScale = std::numeric_limits<std::int16_t>::max();

struct Extent {
    std::int16_t lowest = std::numeric_limits<std::int16_t>::max();
    std::int16_t highest = std::numeric_limits<std::int16_t>::min();
    double squares = 0;         ///< their sum
    std::int64_t samples = 0;   ///< none: the rest means nothing
    std::int64_t fullScale = 0; ///< samples at full scale

    bool ReachesTop() const { return highest >= kFullScale; }
    bool ReachesBottom() const { return lowest <= -kFullScale; }

    /// Root of the mean square.
    double Rms() const;
};

/// Adds interleaved samples, first channel first, whole sample frames, to `channels`, one extent or two.
void Measure(std::span<const std::int16_t> values, std::span<Extent> channels);

} // namespace mpatool
