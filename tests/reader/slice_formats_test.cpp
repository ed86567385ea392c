/// Slices in other formats: the gain of layer III at each width, formats that are not served, ends of
/// streams.

#include "decoder/stream_decode.h"
#include "reader/reader_streams.h"
#include "reader/slices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <set>
#include <string>

namespace {

using namespace test;

constexpr std::int64_t kSliceTime = 400'000;
constexpr std::uint16_t kWidths[] = {8, 16, 24, 32};

/// Loud enough for the doubling to meet its limits.
bitstream::Stream LoudStream() {
    bitstream::StreamOptions options = SteadyOptions(25);
    options.layer3.level = 0.7;
    return bitstream::WriteStream(options);
}

class SliceFormats : public testing::Test {
protected:
    ScratchFolder scratch_;
    TRN_MpAudioFileReader reader_;

    static void SetFormat(TRN_MpAudioFileReader& reader, WAVEFORMATEX format) {
        ASSERT_EQ(reader.SetOutputWAVEFormat(format), 1);
    }
    static void SetFormat(TRN_MpAudioFileReader& reader, std::uint32_t rate, std::uint16_t channels,
                          std::uint16_t bits) {
        SetFormat(reader, test::PcmFormat(rate, channels, bits));
    }

    std::vector<Slice> All(const std::filesystem::path& path, const WAVEFORMATEX& format) {
        TRN_MpAudioFileReader reader;
        EXPECT_EQ(StartSlices(reader, path, kSliceTime), 1);
        SetFormat(reader, format);
        return ReadAllSlices(reader);
    }

    static void ExpectNone(const Slice& slice) {
        EXPECT_EQ(slice.result, 0);
        EXPECT_FALSE(slice.hasData);
    }
};

/// A 16-bit value brought to `bits` bits, halves rounded up.
std::int64_t AtWidth(std::int16_t value, int bits) {
    const std::int64_t scaled = std::int64_t{value} * 65536;
    const std::int64_t step = std::int64_t{1} << (32 - bits);
    const std::int64_t largest = (std::int64_t{1} << (bits - 1)) - 1;
    const auto nearest =
        static_cast<std::int64_t>(std::floor(static_cast<double>(scaled) / static_cast<double>(step) + 0.5));
    return std::min(nearest, largest);
}

void ExpectValues(const Bytes& bytes, const Pcm& decoded, std::size_t skipped, int bits, int gain) {
    const std::size_t width = static_cast<std::size_t>(bits) / 8;
    const std::int64_t largest = (std::int64_t{1} << (bits - 1)) - 1;
    const std::int64_t smallest = gain == 2 ? -largest : -largest - 1;
    ASSERT_GE(bytes.size(), 20'000 * width);
    std::set<std::int64_t> limitsMet;
    for (std::size_t i = 0; i < bytes.size() / width; ++i) {
        const std::int64_t value = gain * AtWidth(decoded.at(skipped + i), bits);
        const std::int64_t expected = std::clamp(value, smallest, largest);
        if (expected != value)
            limitsMet.insert(expected);
        ASSERT_EQ(SampleOf(std::span(bytes).subspan(i * width, width), bits), expected) << i;
    }
    if (gain == 2) {
        EXPECT_EQ(limitsMet, (std::set<std::int64_t>{smallest, largest})) << "the stream is not loud enough";
    }
}

TEST_F(SliceFormats, Layer3IsDoubledAtTheWidthThatIsDelivered) {
    const bitstream::Stream stream = LoudStream();
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    const Pcm decoded = DecodeStream(stream.bytes).pcm;
    for (const std::uint16_t bits : kWidths) {
        SCOPED_TRACE(bits);
        const auto slices = All(path, test::PcmFormat(44100, 2, bits));
        ExpectValues(Joined(slices), decoded, 2 * kDecoderDelay, bits, 2);
    }
}

TEST_F(SliceFormats, Layer2IsNotDoubled) {
    const bitstream::Stream stream = Layer2Stream(25);
    const auto path = scratch_.Add("a.mp2", stream.bytes);
    const Pcm decoded = DecodeStream(stream.bytes).pcm;
    for (const std::uint16_t bits : kWidths) {
        SCOPED_TRACE(bits);
        ExpectValues(Joined(All(path, test::PcmFormat(48000, 2, bits))), decoded, 0, bits, 1);
    }
}

/// The resampled sound too has the level that it has at its own rate.
TEST_F(SliceFormats, ResampledLayer3IsDoubledAtEveryWidth) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(30).bytes);
    const auto level = [](const Bytes& bytes, int bits) {
        const std::size_t width = static_cast<std::size_t>(bits) / 8;
        double power = 0.0;
        for (std::size_t at = 0; at + width <= bytes.size(); at += width) {
            const double value = SampleOf(std::span(bytes).subspan(at, width), bits);
            power += value * value;
        }
        const double fullScale = std::ldexp(1.0, bits - 1);
        return std::sqrt(power / static_cast<double>(bytes.size() / width)) / fullScale;
    };
    const double expected = level(Joined(All(path, test::PcmFormat(44100, 2, 16))), 16);
    ASSERT_GT(expected, 0.05);
    for (const std::uint16_t bits : kWidths)
        EXPECT_NEAR(level(Joined(All(path, test::PcmFormat(88200, 2, bits))), bits), expected, expected / 50)
            << bits;
}

TEST_F(SliceFormats, EightBitsAreUnsignedAndSilenceIs128) {
    const auto path = scratch_.Add("a.mp3", DescribingFrame(SteadyStream(), ""));
    Bytes silence;
    for (int i = 0; i < 12; ++i) {
        const Bytes frame = ReadFile(path);
        silence.insert(silence.end(), frame.begin(), frame.end());
    }
    const auto slices = All(scratch_.Add("b.mp3", silence), test::PcmFormat(44100, 2, 8));
    ASSERT_FALSE(slices.empty());
    EXPECT_TRUE(std::ranges::all_of(slices.front().bytes, [](std::uint8_t byte) { return byte == 128; }));
}

TEST_F(SliceFormats, OneChannelIsTheMeanOfTwo) {
    const bitstream::Stream stream = Layer2Stream(25);
    const auto path = scratch_.Add("a.mp2", stream.bytes);
    const Pcm decoded = DecodeStream(stream.bytes).pcm;
    const Bytes mono = Joined(All(path, test::PcmFormat(48000, 1, 16)));
    ASSERT_GE(mono.size(), 40'000u);
    for (std::size_t i = 0; i < mono.size() / 2; ++i) {
        const int sum = decoded[2 * i] + decoded[2 * i + 1];
        ASSERT_EQ(SampleOf(std::span(mono).subspan(2 * i, 2), 16), (sum + 1) >> 1) << i;
    }
}

std::string Text(const WAVEFORMATEX& format) {
    return "tag " + std::to_string(format.wFormatTag) + ", " + std::to_string(format.nChannels) +
           " channels, " + std::to_string(format.nSamplesPerSec) + " Hz, " +
           std::to_string(format.wBitsPerSample) + " bits";
}

/// Formats that are not served.
std::vector<WAVEFORMATEX> Unserved() {
    std::vector<WAVEFORMATEX> formats;
    for (const auto& [rate, channels, bits] : std::initializer_list<std::array<std::uint32_t, 3>>{
             {44100, 0, 16}, {0, 2, 16}, {44100, 3, 16}, {44100, 2, 12}, {48000, 2, 0}, {48000, 65535, 16}})
        formats.push_back(
            test::PcmFormat(rate, static_cast<std::uint16_t>(channels), static_cast<std::uint16_t>(bits)));
    constexpr std::uint16_t kOtherTags[] = {0, 2, 3, 0x55, 0xFFFE};
    for (const std::uint16_t tag : kOtherTags) {
        formats.push_back(test::PcmFormat(48000, 2, 16));
        formats.back().wFormatTag = tag;
    }
    formats.push_back(test::PcmFormat(48000, 2, 16));
    formats.back().nBlockAlign = 3;
    formats.push_back(test::PcmFormat(1, 2, 16));
    formats.push_back(test::PcmFormat(0xFFFFFFFF, 2, 16));
    WAVEFORMATEX all;
    std::memset(&all, 0xFF, sizeof all);
    formats.push_back(all);
    return formats;
}

TEST_F(SliceFormats, UnservedFormatsGiveAnEmptySliceAndTheNextOneWorks) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(40).bytes);
    for (const WAVEFORMATEX& good :
         {WAVEFORMATEX{}, test::PcmFormat(44100, 1, 24), test::PcmFormat(48000, 2, 16)}) {
        const std::vector<Slice> expected = All(path, good);
        ASSERT_GE(expected.size(), 20u);
        for (const WAVEFORMATEX& bad : Unserved()) {
            SCOPED_TRACE("to " + Text(good) + " after " + Text(bad));
            ASSERT_EQ(StartSlices(reader_, path, kSliceTime), 1);
            SetFormat(reader_, good);
            ReadSlice(reader_);
            ReadSlice(reader_);
            SetFormat(reader_, bad);
            const Slice none = ReadSlice(reader_);
            ExpectNone(none);
            EXPECT_EQ(none.atEnd, 0);
            ExpectNone(ReadSliceAt(reader_, 10));
            SetFormat(reader_, good);
            for (std::uint32_t number = 11; number < 14; ++number) {
                const Slice slice = ReadSlice(reader_);
                ASSERT_EQ(slice.result, 1);
                const int bits = slice.format.wBitsPerSample;
                ASSERT_EQ(slice.bytes.size(), expected[number].bytes.size());
                EXPECT_LE(LargestDistance(slice.bytes, expected[number].bytes, bits), 2) << number;
            }
        }
    }
}

TEST_F(SliceFormats, AnotherFormatMayBeSetBetweenSlices) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(40).bytes);
    ASSERT_EQ(StartSlices(reader_, path, kSliceTime), 1);
    const WAVEFORMATEX formats[] = {test::PcmFormat(48000, 2, 16), {},
                                    test::PcmFormat(22050, 1, 16), test::PcmFormat(44100, 2, 16),
                                    test::PcmFormat(48000, 2, 16), test::PcmFormat(48000, 1, 16)};
    for (std::size_t number = 0; number < 18; ++number) {
        const WAVEFORMATEX& format = formats[number / 3];
        SetFormat(reader_, format);
        const Slice slice = ReadSlice(reader_);
        const Slice expected = All(path, format).at(number);
        ASSERT_EQ(slice.result, 1);
        ASSERT_EQ(slice.bytes.size(), expected.bytes.size()) << number;
        EXPECT_LE(LargestDistance(slice.bytes, expected.bytes, 16), 2) << number;
    }
}

TEST_F(SliceFormats, TheEndComesAfterAsManySlicesAsWithoutConversion) {
    for (const bitstream::Stream& stream : {SteadyStream(30), Layer2Stream(30)}) {
        const auto path = scratch_.Add("a.mp3", stream.bytes);
        const std::size_t slices = All(path, {}).size();
        for (const std::uint32_t rate : {44100u, 48000u, 8000u, 96000u}) {
            SCOPED_TRACE(rate);
            ASSERT_EQ(StartSlices(reader_, path, kSliceTime), 1);
            SetFormat(reader_, rate, 2, 16);
            EXPECT_EQ(ReadAllSlices(reader_).size(), slices);
            for (int i = 0; i < 2; ++i) {
                const Slice slice = ReadSlice(reader_);
                ExpectNone(slice);
                EXPECT_EQ(slice.atEnd, 1);
            }
            const Slice behind = ReadSliceAt(reader_, 5000);
            ExpectNone(behind);
            EXPECT_EQ(behind.atEnd, 1);
            EXPECT_EQ(ReadSliceAt(reader_, static_cast<std::uint32_t>(slices - 1)).result, 1);
        }
    }
}

/// The converter looks into the slice behind; what the decoder meets there is told with that slice alone.
TEST_F(SliceFormats, AFaultAtTheEndIsToldWithItsOwnSlice) {
    // Behind the last slice there are 160 samples, fewer than the converter wants to see.
    bitstream::StreamOptions options = SteadyOptions(22);
    options.crc = true;
    const bitstream::Stream stream = bitstream::WriteStream(options);
    // The last frame ends within its CRC word, which the decoder answers with another code than the end's.
    const Bytes cut(stream.bytes.begin(),
                    stream.bytes.begin() + static_cast<std::ptrdiff_t>(stream.frames.back().offset + 5));
    const auto path = scratch_.Add("a.mp3", cut);
    const std::size_t slices = All(path, {}).size();
    ASSERT_GE(slices, 8u);
    for (const std::uint32_t rate : {44100u, 48000u, 22050u}) {
        SCOPED_TRACE(rate);
        ASSERT_EQ(StartSlices(reader_, path, kSliceTime), 1);
        SetFormat(reader_, rate, 2, 16);
        for (std::size_t i = 0; i < slices; ++i) {
            const Slice slice = ReadSlice(reader_);
            ASSERT_EQ(slice.result, 1) << i;
            ASSERT_FALSE(slice.bytes.empty()) << i;
            ASSERT_EQ(slice.atEnd, 0) << i;
        }
        const Slice failed = ReadSlice(reader_);
        ExpectNone(failed);
        EXPECT_EQ(failed.atEnd, 0);
        // The place is lost, and the way to the next slice leads through the fault.
        EXPECT_FALSE(ReadSlice(reader_).hasData);
        EXPECT_EQ(ReadSliceAt(reader_, 0).result, 1);
    }
}

} // namespace
