#include "platform/pcm_stream.h"
#include "support/digest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ostream>
#include <string>

namespace {

using test::Bytes;
using test::LookAhead;

constexpr double kMinusOneDecibel = 0.8912509381337456;

struct RatePair {
    std::uint32_t from;
    std::uint32_t to;
};

std::ostream& operator<<(std::ostream& out, const RatePair& pair) {
    return out << pair.from << " to " << pair.to;
}

/// Common ratios, odd ones, and rates without a common factor.
constexpr RatePair kPairs[] = {{44100, 48000}, {44100, 32000}, {44100, 22050}, {48000, 44100}, {48000, 8000},
                               {22050, 48000}, {11025, 44101}, {44101, 44100}, {32000, 47999}, {44099, 8009}};

/// Nearly as far apart as is served.
constexpr RatePair kFarPairs[] = {{250, 64000}, {44100, 173}};

WAVEFORMATEX Mono(std::uint32_t rate) {
    return test::PcmFormat(rate, 1, 16);
}

/// The number of the first output sample at or behind an input position, by plain division.
std::size_t OutputBefore(std::size_t position, const RatePair& pair) {
    return (position * pair.to + pair.from - 1) / pair.from;
}

/// Decibels between a tone of that frequency and amplitude that starts with phase 0 at sample 0, and what of
/// `bytes` is something else; the samples near the tone's start and end are left out.
double SignalToNoise(const Bytes& bytes, std::uint32_t rate, double frequency, double amplitude) {
    const std::vector<std::int16_t> values = test::Values(bytes);
    const std::size_t margin = rate / 20;
    double signal = 0.0;
    double noise = 0.0;
    for (std::size_t i = margin; i + margin < values.size(); ++i) {
        const double phase = 2.0 * std::numbers::pi * frequency * static_cast<double>(i) / rate;
        const double wanted = amplitude * 32768.0 * std::sin(phase);
        signal += wanted * wanted;
        noise += (wanted - values[i]) * (wanted - values[i]);
    }
    return 10.0 * std::log10(signal / noise);
}

/// Power of the samples relative to a tone of that amplitude, in decibels.
double LevelBelow(const Bytes& bytes, double amplitude, std::size_t margin) {
    const std::vector<std::int16_t> values = test::Values(bytes);
    double power = 0.0;
    for (std::size_t i = margin; i + margin < values.size(); ++i)
        power += static_cast<double>(values[i]) * values[i];
    power /= static_cast<double>(values.size() - 2 * margin);
    return 10.0 * std::log10(std::max(power, 1e-9) / (amplitude * 32768.0 * amplitude * 32768.0 / 2.0));
}

std::size_t FortyMilliseconds(std::uint32_t rate) {
    return rate / 25;
}

TEST(Resampling, KeepsAToneInPlaceAndClean) {
    const Bytes tone = test::Tone(Mono(44100), 1000.0, kMinusOneDecibel, 44100);
    for (const std::uint32_t rate : {48000U, 32000U, 22050U, 96000U, 44101U, 37813U}) {
        const Bytes converted = test::ConvertAll(tone, Mono(44100), Mono(rate), FortyMilliseconds(44100));
        const double ratio = SignalToNoise(converted, rate, 1000.0, kMinusOneDecibel);
        RecordProperty("decibels_to_" + std::to_string(rate), std::to_string(ratio));
        EXPECT_GE(ratio, 88.0) << rate;
    }
}

TEST(Resampling, KeepsAHighToneInPlace) {
    const Bytes tone = test::Tone(Mono(44100), 14000.0, kMinusOneDecibel, 44100);
    for (const std::uint32_t rate : {48000U, 32000U, 96000U}) {
        const Bytes converted = test::ConvertAll(tone, Mono(44100), Mono(rate), FortyMilliseconds(44100));
        EXPECT_GE(SignalToNoise(converted, rate, 14000.0, kMinusOneDecibel), 88.0) << rate;
    }
}

TEST(Resampling, LeavesNoAliases) {
    const Bytes tone = test::Tone(Mono(44100), 20000.0, kMinusOneDecibel, 44100);
    const Bytes converted = test::ConvertAll(tone, Mono(44100), Mono(32000), FortyMilliseconds(44100));
    const double level = LevelBelow(converted, kMinusOneDecibel, 1600);
    RecordProperty("alias_decibels", std::to_string(level));
    EXPECT_LT(level, -80.0);
}

/// Converts a stream in slices and expects each to end where the ratio puts it.
void ExpectExactCounts(const RatePair& pair, std::size_t samples, std::size_t slice) {
    const Bytes stream = test::Noise(2 * samples);
    TRN_PCMBasicProcess process(0, 262144);
    std::size_t total = 0;
    for (std::size_t at = 0; at < samples; at += slice) {
        const std::size_t end = std::min(samples, at + slice);
        const Bytes converted =
            test::ConvertSlices(process, stream, Mono(pair.from), Mono(pair.to), at, end, slice);
        total += converted.size() / 2;
        ASSERT_EQ(total, OutputBefore(end, pair)) << pair << ", slices of " << slice << ", at " << at;
    }
}

TEST(Resampling, CountsDoNotDrift) {
    for (const RatePair& pair : kPairs) {
        ExpectExactCounts(pair, 50, 1);
        ExpectExactCounts(pair, 1500, 44);
        ExpectExactCounts(pair, 15000, 1471);
    }
    ExpectExactCounts(kFarPairs[0], 200, 30);
    ExpectExactCounts(kFarPairs[1], 15000, 7000);
}

TEST(Resampling, SeamsCannotBeSeen) {
    const Bytes stream = test::Noise(2 * 4000);
    for (const RatePair& pair : kPairs) {
        const Bytes whole = test::ConvertAll(stream, Mono(pair.from), Mono(pair.to), 4000);
        for (const std::size_t slice : {97U, 1764U})
            EXPECT_EQ(test::ConvertAll(stream, Mono(pair.from), Mono(pair.to), slice), whole)
                << pair << ", " << slice;
    }
}

/// Goes to a position with what the filter reaches before it, and expects the bytes of reading through.
void ExpectSameAfterJump(TRN_PCMBasicProcess& process, const Bytes& stream, const RatePair& pair,
                         const Bytes& whole, std::size_t position) {
    const WAVEFORMATEX from = Mono(pair.from);
    const WAVEFORMATEX to = Mono(pair.to);
    const auto reach = static_cast<std::size_t>(TRN_PCMBasicProcess::LookAheadSamples(from, to));
    const std::size_t primed = std::min(position, reach);
    ASSERT_EQ(process.SetResampleParater(stream.data() + (position - primed) * 2,
                                         static_cast<std::int32_t>(primed * 2), from, to, 1,
                                         static_cast<std::int64_t>(position)),
              1);
    const std::size_t end = position + 1000;
    const Bytes slices = test::ConvertSlices(process, stream, from, to, position, end, 700);
    const std::size_t first = OutputBefore(position, pair) * 2;
    ASSERT_EQ(slices.size(), OutputBefore(end, pair) * 2 - first);
    EXPECT_TRUE(std::equal(slices.begin(), slices.end(), whole.begin() + static_cast<std::ptrdiff_t>(first)))
        << pair << ", " << position;
}

TEST(Resampling, AJumpBringsWhatReadingThroughBrings) {
    const Bytes stream = test::Noise(2 * 20000);
    for (const RatePair& pair : kPairs) {
        const Bytes whole = test::ConvertAll(stream, Mono(pair.from), Mono(pair.to), 1764);
        TRN_PCMBasicProcess process(0, 262144);
        for (const std::size_t position : {18765U, 13231U, 0U, 1U, 5001U})
            ExpectSameAfterJump(process, stream, pair, whole, position);
    }
}

TEST(Resampling, AJumpWithoutPrimingKeepsThePlace) {
    const Bytes tone = test::Tone(Mono(44100), 1000.0, kMinusOneDecibel, 44100);
    TRN_PCMBasicProcess process(0, 262144);
    const Bytes whole = test::ConvertAll(tone, Mono(44100), Mono(48000), 44100);
    ASSERT_EQ(process.SetResampleParater(nullptr, 0, Mono(44100), Mono(48000), 1, 10001), 1);
    const Bytes slice = test::ConvertSlices(process, tone, Mono(44100), Mono(48000), 10001, 12001, 2000);
    const std::size_t start = OutputBefore(10001, {44100, 48000});
    const std::size_t reach = 200;
    for (std::size_t i = 2 * reach; i < slice.size(); ++i)
        ASSERT_EQ(slice[i], whole[2 * start + i]) << i;
}

TEST(Resampling, GuessesWhatFollowsWhenNobodyTells) {
    const Bytes tone = test::Tone(Mono(44100), 9001.0, kMinusOneDecibel, 44100);
    const Bytes guessed =
        test::ConvertAll(tone, Mono(44100), Mono(48000), FortyMilliseconds(44100), LookAhead::none);
    const double ratio = SignalToNoise(guessed, 48000, 9001.0, kMinusOneDecibel);
    RecordProperty("decibels", std::to_string(ratio));
    EXPECT_GE(ratio, 40.0);
    EXPECT_LT(ratio, 80.0) << "if this is so good, nobody need hand over what follows";
}

TEST(Resampling, StartsAfreshForOtherFormats) {
    const Bytes stream = test::Noise(2 * 3000);
    TRN_PCMBasicProcess process(0, 262144);
    const auto slice = [&](std::uint32_t rate) {
        return test::ConvertSlices(process, stream, Mono(44100), Mono(rate), 0, 1764, 1764);
    };
    const Bytes first = slice(48000);
    EXPECT_NE(slice(48000), first) << "sound precedes it now";
    slice(32000);
    EXPECT_EQ(slice(48000), first);
    slice(44100);
    EXPECT_EQ(slice(48000), first);
    ASSERT_EQ(process.SetResampleParater(nullptr, 0, Mono(44100), Mono(48000), 1), 1);
    EXPECT_EQ(slice(48000), first);
}

TEST(Resampling, ChannelsKeepApartAndMix) {
    const WAVEFORMATEX stereo = test::PcmFormat(44100, 2, 16);
    Bytes stream = test::Tone(stereo, 1000.0, 0.5, 8820);
    for (std::size_t i = 2; i < stream.size(); i += 4)
        stream[i] = stream[i + 1] = 0;
    const Bytes tone = test::Tone(Mono(44100), 1000.0, 0.5, 8820);
    const auto convert = [](const Bytes& bytes, const WAVEFORMATEX& from, const WAVEFORMATEX& to) {
        return test::Values(test::ConvertAll(bytes, from, to, 1764));
    };
    const std::vector<std::int16_t> alone = convert(tone, Mono(44100), Mono(48000));
    const std::vector<std::int16_t> both = convert(stream, stereo, test::PcmFormat(48000, 2, 16));
    const std::vector<std::int16_t> mixed = convert(stream, stereo, Mono(48000));
    const std::vector<std::int16_t> doubled = convert(tone, Mono(44100), test::PcmFormat(48000, 2, 16));
    ASSERT_EQ(mixed.size(), alone.size());
    ASSERT_EQ(both.size(), 2 * alone.size());
    ASSERT_EQ(doubled.size(), 2 * alone.size());
    for (std::size_t i = 0; i < alone.size(); ++i) {
        ASSERT_EQ(both[2 * i], alone[i]);
        ASSERT_EQ(both[2 * i + 1], 0);
        ASSERT_NEAR(mixed[i], alone[i] / 2.0, 1.0);
        ASSERT_EQ(doubled[2 * i], alone[i]);
        ASSERT_EQ(doubled[2 * i + 1], alone[i]);
    }
}

// The figures were taken on Linux; the same ones on Windows show that the library is built to the same
// results.
TEST(Resampling, BitsAreTheSameOnEverySystem) {
    struct Golden {
        WAVEFORMATEX from;
        WAVEFORMATEX to;
        const char* digest;
    };
    const Golden goldens[] = {
        {test::PcmFormat(44100, 2, 16), test::PcmFormat(48000, 2, 16), "087ea1f6a0a0105e"},
        {test::PcmFormat(44100, 1, 24), test::PcmFormat(32000, 2, 24), "3c11397309058d5b"},
        {test::PcmFormat(22050, 2, 16), test::PcmFormat(96000, 1, 32), "6e086ce4389c1316"},
        {test::PcmFormat(48000, 1, 32), test::PcmFormat(8000, 1, 8), "c794b248d087052c"},
    };
    for (const Golden& golden : goldens) {
        const Bytes stream = test::Noise(golden.from.nBlockAlign * std::size_t{20000});
        const std::string digest = test::Digest(test::ConvertAll(stream, golden.from, golden.to, 1764));
        EXPECT_EQ(digest, golden.digest) << golden.from.nSamplesPerSec << " to " << golden.to.nSamplesPerSec;
    }
}

} // namespace
