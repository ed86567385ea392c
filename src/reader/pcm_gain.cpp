#include "reader/pcm_gain.h"

#include "decoder/kernels/kernel_table.h"

#include <algorithm>
#include <cstddef>

namespace trnmpa {

namespace {

/// 24 and 32 bits, little-endian.
void DoubleWide(std::span<const std::uint8_t> pcm, std::size_t bytes, std::uint8_t* output) {
    const std::size_t shift = 64 - 8 * bytes;
    const std::int64_t limit = (std::int64_t{1} << (8 * bytes - 1)) - 1;
    for (std::size_t i = 0; i + bytes <= pcm.size(); i += bytes) {
        std::uint64_t raw = 0;
        for (std::size_t k = 0; k < bytes; ++k)
            raw |= std::uint64_t{pcm[i + k]} << (8 * k);
        const std::int64_t sample = static_cast<std::int64_t>(raw << shift) >> shift;
        const auto doubled = static_cast<std::uint64_t>(std::clamp(2 * sample, -limit, limit));
        for (std::size_t k = 0; k < bytes; ++k)
            output[i + k] = static_cast<std::uint8_t>(doubled >> (8 * k));
    }
}

void Double8(std::span<const std::uint8_t> pcm, std::uint8_t* output) {
    constexpr int kZero = 128;
    constexpr int kLimit = 127;
    for (std::size_t i = 0; i < pcm.size(); ++i)
        output[i] = static_cast<std::uint8_t>(std::clamp(2 * (pcm[i] - kZero), -kLimit, kLimit) + kZero);
}

} // namespace

void DoubleAmplitude(std::span<const std::uint8_t> pcm, std::uint16_t bitsPerSample, std::uint8_t* output) {
    const std::size_t bytes = bitsPerSample / 8;
    const std::size_t rest = bytes != 0 ? pcm.size() % bytes : 0;
    std::copy_n(pcm.end() - static_cast<std::ptrdiff_t>(rest), rest, output + (pcm.size() - rest));
    switch (bitsPerSample) {
    case 8:
        return Double8(pcm, output);
    case 16:
        return Kernels().doubleSamples(pcm.data(), pcm.size() / 2, output);
    case 24:
    case 32:
        return DoubleWide(pcm, bytes, output);
    default:
        std::ranges::copy(pcm, output);
    }
}

} // namespace trnmpa
