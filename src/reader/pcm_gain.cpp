#include "reader/pcm_gain.h"

#include <algorithm>
#include <cstring>

namespace trnmpa {

void DoubleAmplitude(std::span<const std::uint8_t> pcm, std::uint8_t* output) {
    constexpr int kLimit = 32767;
    const std::size_t samples = pcm.size() / 2;
    for (std::size_t i = 0; i < samples; ++i) {
        std::int16_t sample = 0;
        std::memcpy(&sample, pcm.data() + 2 * i, sizeof sample);
        const auto doubled = static_cast<std::int16_t>(std::clamp(2 * sample, -kLimit, kLimit));
        std::memcpy(output + 2 * i, &doubled, sizeof doubled);
    }
    if (pcm.size() % 2 != 0)
        output[pcm.size() - 1] = pcm.back();
}

} // namespace trnmpa
