#include "trnpcmprocenc/pcm_samples.h"

#include <algorithm>
#include <cmath>

namespace pcm {

namespace {

/// Both channels' sum, or one channel twice: a sample scaled to 33 bits.
std::int64_t MonoSum(const std::uint8_t* block, const Format& format) {
    const std::int64_t left = ReadSample(block, format.bits);
    return format.channels == 1 ? 2 * left : left + ReadSample(block + format.SampleBytes(), format.bits);
}

/// The nearest value of `bits` bits to one of 33.
std::int32_t Narrow(std::int64_t value, std::int32_t bits) {
    const std::int32_t shift = 33 - bits;
    const std::int64_t rounded = (value + (std::int64_t{1} << (shift - 1))) >> shift;
    return static_cast<std::int32_t>(std::min<std::int64_t>(rounded, LargestValue(bits)));
}

/// The nearest value of `bits` bits to a sample of full scale 1.
std::int32_t Quantise(float sample, std::int32_t bits) {
    const auto largest = static_cast<double>(LargestValue(bits));
    const double scaled = std::floor(static_cast<double>(sample) * (largest + 1.0) + 0.5);
    return static_cast<std::int32_t>(std::clamp(scaled, -largest - 1.0, largest));
}

} // namespace

std::size_t Conversion::ResampledChannels() const {
    return static_cast<std::size_t>(std::min(original.channels, output.channels));
}

std::vector<std::uint8_t> Repack(Bytes data, const Conversion& conversion) {
    const Format& from = conversion.original;
    const Format& to = conversion.output;
    const std::size_t samples = data.size() / from.BlockBytes();
    std::vector<std::uint8_t> result(samples * to.BlockBytes());
    const std::uint8_t* in = data.data();
    std::uint8_t* out = result.data();
    for (std::size_t i = 0; i < samples; ++i, in += from.BlockBytes())
        for (std::int32_t channel = 0; channel < to.channels; ++channel, out += to.SampleBytes()) {
            const bool mixed = from.channels != to.channels;
            const std::size_t offset = mixed ? 0 : static_cast<std::size_t>(channel) * from.SampleBytes();
            const std::int64_t value =
                mixed ? MonoSum(in, from) : 2 * std::int64_t{ReadSample(in + offset, from.bits)};
            WriteSample(out, to.bits, Narrow(value, to.bits));
        }
    return result;
}

std::vector<float> ToFloat(Bytes data, const Format& from, std::size_t channels) {
    constexpr float kFullScale = 2147483648.0F;
    std::vector<float> result;
    const std::size_t samples = data.size() / from.BlockBytes();
    result.reserve(samples * channels);
    for (std::size_t i = 0; i < samples; ++i) {
        const std::uint8_t* block = data.data() + i * from.BlockBytes();
        if (channels == 1)
            result.push_back(static_cast<float>(MonoSum(block, from)) / (2.0F * kFullScale));
        else
            for (std::size_t channel = 0; channel < channels; ++channel)
                result.push_back(
                    static_cast<float>(ReadSample(block + channel * from.SampleBytes(), from.bits)) /
                    kFullScale);
    }
    return result;
}

std::vector<std::uint8_t> FromFloat(std::span<const float> samples, std::size_t channels, const Format& to) {
    const std::size_t copies = static_cast<std::size_t>(to.channels) / channels;
    std::vector<std::uint8_t> result(samples.size() * copies * to.SampleBytes());
    std::uint8_t* out = result.data();
    for (const float sample : samples)
        for (std::size_t copy = 0; copy < copies; ++copy, out += to.SampleBytes())
            WriteSample(out, to.bits, Quantise(sample, to.bits));
    return result;
}

} // namespace pcm
