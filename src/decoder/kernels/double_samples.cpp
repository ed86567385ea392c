#include "decoder/kernels/kernel_sets.h"

#include <algorithm>

namespace trnmpa::plain {

void DoubleSamples(const std::int16_t* samples, std::size_t count, std::int16_t* output) {
    constexpr int kLimit = 32767;
    for (std::size_t i = 0; i < count; ++i)
        output[i] = static_cast<std::int16_t>(std::clamp(2 * samples[i], -kLimit, kLimit));
}

} // namespace trnmpa::plain
