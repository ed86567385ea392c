#include "platform/pcm_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <random>

namespace test {

WAVEFORMATEX PcmFormat(std::uint32_t rate, int channels, int bits) {
    WAVEFORMATEX format{};
    format.wFormatTag = 1;
    format.nChannels = static_cast<std::uint16_t>(channels);
    format.nSamplesPerSec = rate;
    format.wBitsPerSample = static_cast<std::uint16_t>(bits);
    format.nBlockAlign = static_cast<std::uint16_t>(channels * bits / 8);
    format.nAvgBytesPerSec = rate * format.nBlockAlign;
    return format;
}

Bytes Tone(const WAVEFORMATEX& format, double frequency, double amplitude, std::size_t samples) {
    Bytes bytes;
    const double step = 2.0 * std::numbers::pi * frequency / static_cast<double>(format.nSamplesPerSec);
    for (std::size_t i = 0; i < samples; ++i) {
        const long value = std::lround(amplitude * 32768.0 * std::sin(step * static_cast<double>(i)));
        for (int channel = 0; channel < format.nChannels; ++channel) {
            bytes.push_back(static_cast<std::uint8_t>(value));
            bytes.push_back(static_cast<std::uint8_t>(value >> 8));
        }
    }
    return bytes;
}

Bytes Noise(std::size_t bytes, std::uint32_t seed) {
    std::mt19937 random(seed);
    Bytes noise(bytes);
    for (std::uint8_t& byte : noise)
        byte = static_cast<std::uint8_t>(random() >> 24);
    return noise;
}

std::vector<std::int16_t> Values(std::span<const std::uint8_t> bytes) {
    std::vector<std::int16_t> values(bytes.size() / 2);
    std::memcpy(values.data(), bytes.data(), values.size() * 2);
    return values;
}

Bytes ConvertSlices(TRN_PCMBasicProcess& process, std::span<const std::uint8_t> stream,
                    const WAVEFORMATEX& original, const WAVEFORMATEX& output, std::size_t from,
                    std::size_t to, std::size_t sliceSamples, LookAhead lookAhead) {
    const std::size_t block = original.nBlockAlign;
    const auto reach = static_cast<std::size_t>(TRN_PCMBasicProcess::LookAheadSamples(original, output));
    Bytes result;
    for (std::size_t at = from; at < to; at += sliceSamples) {
        const std::size_t end = std::min(to, at + sliceSamples);
        const std::size_t known =
            lookAhead == LookAhead::given ? std::min(stream.size() / block, end + reach) : end;
        std::uint8_t* converted = nullptr;
        std::int32_t length = 0;
        EXPECT_EQ(process.ReformatLPCM(original, stream.data() + at * block,
                                       static_cast<std::int32_t>((end - at) * block), output, converted,
                                       length, 1, stream.subspan(end * block, (known - end) * block)),
                  1);
        result.insert(result.end(), converted, converted + length);
    }
    return result;
}

Bytes ConvertAll(std::span<const std::uint8_t> stream, const WAVEFORMATEX& original,
                 const WAVEFORMATEX& output, std::size_t sliceSamples, LookAhead lookAhead) {
    TRN_PCMBasicProcess process(0, 262144);
    return ConvertSlices(process, stream, original, output, 0, stream.size() / original.nBlockAlign,
                         sliceSamples, lookAhead);
}

} // namespace test
