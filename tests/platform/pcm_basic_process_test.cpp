#include "platform/pcm_stream.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>

namespace {

using test::Bytes;

constexpr int kBits[] = {8, 16, 24, 32};

/// Little-endian packed samples.
Bytes Pack(int bits, std::initializer_list<std::int64_t> values) {
    Bytes bytes;
    for (const std::int64_t value : values)
        for (int shift = 0; shift < bits; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    return bytes;
}

Bytes Convert(const Bytes& bytes, const WAVEFORMATEX& from, const WAVEFORMATEX& to) {
    return test::ConvertAll(bytes, from, to, bytes.size());
}

Bytes Convert(const Bytes& bytes, int fromChannels, int fromBits, int toChannels, int toBits) {
    return Convert(bytes, test::PcmFormat(44100, fromChannels, fromBits),
                   test::PcmFormat(44100, toChannels, toBits));
}

TEST(PcmBasicProcess, EqualFormatsLeaveTheBytes) {
    for (const int bits : kBits)
        for (const int channels : {1, 2}) {
            const Bytes noise = test::Noise(2400);
            EXPECT_EQ(Convert(noise, channels, bits, channels, bits), noise) << bits << " bits, " << channels;
        }
}

TEST(PcmBasicProcess, MoreBitsKeepTheValue) {
    EXPECT_EQ(Convert(Pack(8, {0, 127, 128, 129, 255}), 1, 8, 1, 16),
              Pack(16, {-32768, -256, 0, 256, 32512}));
    EXPECT_EQ(Convert(Pack(16, {-32768, -1, 0, 1, 32767}), 1, 16, 1, 24),
              Pack(24, {-8388608, -256, 0, 256, 8388352}));
    EXPECT_EQ(Convert(Pack(24, {-8388608, -1, 1, 8388607}), 1, 24, 1, 32),
              Pack(32, {INT32_MIN, -256, 256, 2147483392}));
    const Bytes noise = test::Noise(3000);
    for (const int narrow : kBits)
        for (const int wide : kBits)
            if (narrow < wide) {
                const Bytes whole(noise.begin(), noise.begin() + narrow / 8 * 700);
                EXPECT_EQ(Convert(Convert(whole, 1, narrow, 1, wide), 1, wide, 1, narrow), whole);
            }
}

TEST(PcmBasicProcess, FewerBitsAreRoundedAndClamped) {
    EXPECT_EQ(Convert(Pack(16, {0, 127, 128, -128, -129, 32639, 32640, 32767, -32768}), 1, 16, 1, 8),
              Pack(8, {128, 128, 129, 128, 127, 255, 255, 255, 0}));
    EXPECT_EQ(Convert(Pack(24, {127, 128, -128, -129, 8388607, -8388608}), 1, 24, 1, 16),
              Pack(16, {0, 1, 0, -1, 32767, -32768}));
    EXPECT_EQ(Convert(Pack(32, {0x7FFF, 0x8000, INT32_MAX, INT32_MIN}), 1, 32, 1, 16),
              Pack(16, {0, 1, 32767, -32768}));
}

TEST(PcmBasicProcess, ChannelsAreMixedAndDoubled) {
    EXPECT_EQ(Convert(Pack(16, {100, 200, -5, -6, 32767, 32767, -32768, -32768, 1, -1}), 2, 16, 1, 16),
              Pack(16, {150, -5, 32767, -32768, 0}));
    EXPECT_EQ(Convert(Pack(16, {7, -8}), 1, 16, 2, 16), Pack(16, {7, 7, -8, -8}));
    // The half that mixing leaves is not lost where there is room for it.
    EXPECT_EQ(Convert(Pack(16, {0, 1}), 2, 16, 1, 24), Pack(24, {128}));
    EXPECT_EQ(Convert(Pack(8, {128, 129, 0, 255}), 2, 8, 1, 8), Pack(8, {129, 128}));
    EXPECT_EQ(Convert(Pack(32, {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN}), 2, 32, 1, 32),
              Pack(32, {INT32_MAX, INT32_MIN}));
}

/// Offers a slice and expects a refusal that leaves the outputs alone.
void ExpectRefused(const WAVEFORMATEX& from, const WAVEFORMATEX& to, const std::uint8_t* data,
                   std::int32_t length, const std::string& what) {
    TRN_PCMBasicProcess process(0, 262144);
    std::uint8_t mark = 0;
    std::uint8_t* converted = &mark;
    std::int32_t convertedLength = -7;
    EXPECT_EQ(process.ReformatLPCM(from, data, length, to, converted, convertedLength, 1), 0) << what;
    EXPECT_EQ(converted, &mark) << what;
    EXPECT_EQ(convertedLength, -7) << what;
}

TEST(PcmBasicProcess, RefusesOtherFormats) {
    const WAVEFORMATEX good = test::PcmFormat(44100, 2, 16);
    const Bytes noise = test::Noise(2400);
    const auto refused = [&](const std::string& what, auto change) {
        WAVEFORMATEX bad = good;
        change(bad);
        for (const std::uint32_t rate : {44100U, 48000U}) {
            WAVEFORMATEX other = good;
            other.nSamplesPerSec = rate;
            ExpectRefused(bad, other, noise.data(), 2400, what + " of the original");
            ExpectRefused(other, bad, noise.data(), 2400, what + " of the output");
            EXPECT_EQ(TRN_PCMBasicProcess::LookAheadSamples(bad, other), 0);
            TRN_PCMBasicProcess process(0, 262144);
            EXPECT_EQ(process.SetResampleParater(noise.data(), 2400, bad, other, 1), 0) << what;
            EXPECT_EQ(process.SetResampleParater(noise.data(), 2400, other, bad, 1), 0) << what;
        }
    };
    refused("no channels", [](WAVEFORMATEX& f) { f.nChannels = 0; });
    refused("three channels", [](WAVEFORMATEX& f) { f.nChannels = 3; });
    refused("no rate", [](WAVEFORMATEX& f) { f.nSamplesPerSec = 0; });
    refused("a far rate", [](WAVEFORMATEX& f) { f.nSamplesPerSec = 100; });
    refused("the largest rate", [](WAVEFORMATEX& f) { f.nSamplesPerSec = UINT32_MAX; });
    refused("tag 0", [](WAVEFORMATEX& f) { f.wFormatTag = 0; });
    refused("tag 3", [](WAVEFORMATEX& f) { f.wFormatTag = 3; });
    for (const int bits : {0, 1, 12, 20, 40, 64, 65535})
        refused(std::to_string(bits) + " bits", [bits](WAVEFORMATEX& f) {
            f.wBitsPerSample = static_cast<std::uint16_t>(bits);
            f.nBlockAlign = 0;
        });
    refused("another block", [](WAVEFORMATEX& f) { f.nBlockAlign = 8; });
    refused("nothing at all", [](WAVEFORMATEX& f) { f = {}; });
}

TEST(PcmBasicProcess, TakesABlockSizeOfZeroAsThePackedOne) {
    WAVEFORMATEX format = test::PcmFormat(44100, 2, 16);
    const Bytes noise = test::Noise(400);
    WAVEFORMATEX bare = format;
    bare.nBlockAlign = 0;
    bare.nAvgBytesPerSec = 0;
    EXPECT_EQ(Convert(noise, format, bare), noise);
}

TEST(PcmBasicProcess, RefusesWhatIsNoWholeNumberOfSamples) {
    const WAVEFORMATEX stereo = test::PcmFormat(44100, 2, 16);
    const Bytes noise = test::Noise(64);
    for (const std::uint32_t rate : {44100U, 48000U}) {
        const WAVEFORMATEX output = test::PcmFormat(rate, 2, 16);
        for (const std::int32_t length : {0, -4, INT_MIN, 1, 2, 3, 61})
            ExpectRefused(stereo, output, noise.data(), length, std::to_string(length));
        ExpectRefused(stereo, output, nullptr, 4, "no data");
        TRN_PCMBasicProcess process(0, 262144);
        for (const std::int32_t length : {-4, INT_MIN, 1, 63})
            EXPECT_EQ(process.SetResampleParater(noise.data(), length, stereo, output, 1), 0) << length;
        EXPECT_EQ(process.SetResampleParater(nullptr, 4, stereo, output, 1), 0);
        EXPECT_EQ(process.SetResampleParater(noise.data(), 4, stereo, output, 1, -1), 0);
        EXPECT_EQ(process.SetResampleParater(noise.data(), 4, stereo, output, 1, INT64_MAX), 0);
        EXPECT_EQ(process.SetResampleParater(noise.data(), 4, stereo, output, 1, (std::int64_t{1} << 53) + 1),
                  0);
    }
}

TEST(PcmBasicProcess, ARefusalDoesNotMoveTheStream) {
    const WAVEFORMATEX from = test::PcmFormat(44100, 1, 16);
    const WAVEFORMATEX to = test::PcmFormat(48000, 1, 16);
    const Bytes noise = test::Noise(8000);
    TRN_PCMBasicProcess process(0, 262144);
    Bytes result = test::ConvertSlices(process, noise, from, to, 0, 1000, 500);
    std::uint8_t* converted = nullptr;
    std::int32_t length = 0;
    EXPECT_EQ(process.ReformatLPCM(from, noise.data(), 3, to, converted, length, 1), 0);
    EXPECT_EQ(process.ReformatLPCM(from, nullptr, 0, to, converted, length, 1), 0);
    EXPECT_EQ(process.SetResampleParater(noise.data(), 3, from, to, 1, 5), 0);
    const Bytes rest = test::ConvertSlices(process, noise, from, to, 1000, 4000, 500);
    result.insert(result.end(), rest.begin(), rest.end());
    EXPECT_EQ(result, test::ConvertAll(noise, from, to, 4000));
}

TEST(PcmBasicProcess, WorksAtTheLastPosition) {
    const WAVEFORMATEX from = test::PcmFormat(44101, 2, 16);
    const WAVEFORMATEX to = test::PcmFormat(44101 * 256, 2, 16);
    const Bytes noise = test::Noise(4000);
    TRN_PCMBasicProcess process(0, 262144);
    const std::int64_t last = std::int64_t{1} << 53;
    std::uint8_t* converted = nullptr;
    std::int32_t length = 0;
    ASSERT_EQ(process.SetResampleParater(noise.data(), 400, from, to, 1, last - 10), 1);
    ASSERT_EQ(process.ReformatLPCM(from, noise.data(), 40, to, converted, length, 1), 1);
    EXPECT_EQ(length, 40 * 256);
    EXPECT_EQ(process.ReformatLPCM(from, noise.data(), 40, to, converted, length, 1), 0);
}

TEST(PcmBasicProcess, SurvivesAnything) {
    std::mt19937 random(7);
    const Bytes noise = test::Noise(4096);
    constexpr std::uint32_t kRates[] = {
        0, 1, 2, 250, 8000, 44100, 48000, 96000, 5000000, UINT32_MAX - 1, UINT32_MAX};
    const auto format = [&] {
        WAVEFORMATEX result = test::PcmFormat(kRates[random() % std::size(kRates)], 1 + random() % 2,
                                              kBits[random() % std::size(kBits)]);
        if (random() % 8 == 0)
            result.nChannels = static_cast<std::uint16_t>(random() % 4);
        if (random() % 8 == 0)
            result.nBlockAlign = static_cast<std::uint16_t>(random());
        return result;
    };
    TRN_PCMBasicProcess process(0, 262144);
    int served = 0;
    for (int i = 0; i < 3000; ++i) {
        const WAVEFORMATEX from = format();
        const WAVEFORMATEX to = format();
        const auto length = static_cast<std::int32_t>(random() % 60) * 8;
        if (random() % 4 == 0)
            process.SetResampleParater(noise.data(), length, from, to, 1,
                                       static_cast<std::int64_t>(random()));
        std::uint8_t* converted = nullptr;
        std::int32_t convertedLength = -1;
        if (process.ReformatLPCM(from, noise.data(), length, to, converted, convertedLength, 1,
                                 std::span(noise).first(random() % 4096)) != 1)
            continue;
        ++served;
        ASSERT_GE(convertedLength, 0);
        unsigned sum = 0;
        for (const std::uint8_t byte : std::span(converted, static_cast<std::size_t>(convertedLength)))
            sum += byte;
        ASSERT_LE(sum, 255U * static_cast<unsigned>(convertedLength));
    }
    EXPECT_GT(served, 300);
}

} // namespace
