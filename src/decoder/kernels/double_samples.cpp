#include "decoder/kernels/kernel_sets.h"

#include <algorithm>
#include <cstring>

namespace trnmpa::plain {

void DoubleSamples(const std::uint8_t* samples, std::size_t count, std::uint8_t* output) {
    constexpr int kLimit = 32767;
    for (std::size_t i = 0; i < count; ++i) {
        std::int16_t sample = 0;
        std::memcpy(&sample, samples + 2 * i, sizeof sample);
        const auto doubled = static_cast<std::int16_t>(std::clamp(2 * sample, -kLimit, kLimit));
        std::memcpy(output + 2 * i, &doubled, sizeof doubled);
    }
}

} // namespace trnmpa::plain
