#include "decoder/kernels/kernel_sets.h"

#include <algorithm>
#include <cstring>

namespace trnmpa::plain {

namespace {

/// In 16 bits alone, so that compilers turn loops over it into vector code: 16384 and more give 32767.
inline std::int16_t Doubled(std::int16_t sample) {
    constexpr std::int16_t kLargest = 16383;
    constexpr std::int16_t kSmallest = -16384;
    const std::int16_t clipped = std::max(std::min(sample, kLargest), kSmallest);
    const auto twice = static_cast<std::int16_t>(2 * clipped + (sample > kLargest));
    return std::max(twice, static_cast<std::int16_t>(-32767));
}

template <std::size_t kCount>
inline void DoubleBlock(const std::uint8_t* samples, std::uint8_t* output) {
    std::int16_t block[kCount];
    std::memcpy(block, samples, sizeof block);
    for (std::int16_t& sample : block)
        sample = Doubled(sample);
    std::memcpy(output, block, sizeof block);
}

} // namespace

void DoubleSamples(const std::uint8_t* samples, std::size_t count, std::uint8_t* output) {
    constexpr std::size_t kBlock = 32;
    std::size_t i = 0;
    for (; i + kBlock <= count; i += kBlock)
        DoubleBlock<kBlock>(samples + 2 * i, output + 2 * i);
    for (; i < count; ++i)
        DoubleBlock<1>(samples + 2 * i, output + 2 * i);
}

} // namespace trnmpa::plain
