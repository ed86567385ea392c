/// PCM that tells where it comes from.
#pragma once

#include <cstdint>

namespace test {

/// A value that differs from its neighbours' and does not repeat within any stretch that a test looks at.
constexpr std::int16_t CountedSample(std::int64_t sample, int channel) {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(sample * 24683 + channel * 12345));
}

} // namespace test
