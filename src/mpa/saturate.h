/// Conversion of computed times and positions to integers.
#pragma once

#include <cstdint>
#include <limits>

namespace trnmpa {

/// Truncates towards 0; what 64 bits cannot hold becomes the nearest that they can, and no number becomes 0.
constexpr std::int64_t SaturatingInt64(double value) noexcept {
    constexpr double kLimit = 9223372036854775808.0; // 2^63
    if (value != value)
        return 0;
    if (value >= kLimit)
        return std::numeric_limits<std::int64_t>::max();
    if (value < -kLimit)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

} // namespace trnmpa
