/// Slices at other rates: where they end, what they hold, and that a jump leads to the same.

#include "decoder/stream_decode.h"
#include "platform/pcm_stream.h"
#include "reader/reader_streams.h"
#include "reader/slices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <random>

namespace {

using namespace test;

constexpr std::int64_t kMillisecond = 10'000;

struct Output {
    std::uint32_t rate;
    std::uint16_t channels;
    std::uint16_t bits;

    WAVEFORMATEX Format() const { return test::PcmFormat(rate, channels, bits); }
};

std::ostream& operator<<(std::ostream& out, const Output& output) {
    return out << output.rate << " Hz, " << output.channels << " channels, " << output.bits << " bits";
}

constexpr Output kResampled[] = {
    {48000, 2, 16}, {32000, 1, 24}, {22050, 2, 8}, {96000, 1, 32}, {44101, 2, 16}};

/// Two units of 16 bits, in units of another width.
constexpr std::int64_t TwoUnits(int bits) {
    return bits > 16 ? std::int64_t{2} << (bits - 16) : 2;
}

bitstream::Stream MonoStream(int frames) {
    bitstream::StreamOptions options = SteadyOptions(frames);
    options.mode = model::kSingleChannel;
    options.sampleRateIndex = 2;
    return bitstream::WriteStream(options);
}

bitstream::Stream LowRateStream(int frames) {
    bitstream::StreamOptions options = SteadyOptions(frames);
    options.version = bitstream::Version::kMpeg2;
    return bitstream::WriteStream(options);
}

class SliceConversion : public testing::Test {
protected:
    ScratchFolder scratch_;
    TRN_MpAudioFileReader reader_;

    void Start(TRN_MpAudioFileReader& reader, const std::filesystem::path& path, std::int64_t sliceTime,
               const Output& output) {
        WAVEFORMATEX format = output.Format();
        ASSERT_EQ(StartSlices(reader, path, sliceTime), 1);
        ASSERT_EQ(reader.SetOutputWAVEFormat(format), 1);
    }

    std::vector<Slice> All(const std::filesystem::path& path, std::int64_t sliceTime, const Output& output) {
        Start(reader_, path, sliceTime, output);
        return ReadAllSlices(reader_);
    }

    static WAVEFORMATEX OriginalOf(TRN_MpAudioFileReader& reader) {
        WAVEFORMATEX format = {};
        reader.GetOriginalStreamInfo(format);
        return format;
    }

    /// Each slice's end against the number of samples of the stream before it, times the ratio.
    void ExpectEnds(const std::filesystem::path& path, std::int64_t sliceTime, const Output& output) {
        const std::vector<Slice> slices = All(path, sliceTime, output);
        const WAVEFORMATEX original = OriginalOf(reader_);
        const WAVEFORMATEX wanted = output.Format();
        ASSERT_GE(slices.size(), 2u);
        std::int64_t delivered = 0;
        for (std::size_t k = 0; k < slices.size(); ++k) {
            ASSERT_EQ(slices[k].bytes.size() % wanted.nBlockAlign, 0u);
            ASSERT_EQ(std::memcmp(&slices[k].format, &wanted, sizeof wanted), 0);
            ASSERT_EQ(slices[k].atEnd, 0);
            delivered += static_cast<std::int64_t>(slices[k].bytes.size() / wanted.nBlockAlign);
            const std::int64_t time = static_cast<std::int64_t>(k + 1) * sliceTime;
            const std::int64_t samples = time * original.nAvgBytesPerSec / 10'000'000 / original.nBlockAlign;
            const double end = static_cast<double>(samples) * output.rate / original.nSamplesPerSec;
            ASSERT_LE(std::abs(static_cast<double>(delivered) - end), 1.0) << "slice " << k;
        }
    }

    void ExpectEndsOfAll(const std::filesystem::path& path) {
        for (const Output& output : kResampled)
            for (const std::int64_t sliceTime : {40 * kMillisecond, std::int64_t{73'000}}) {
                SCOPED_TRACE(testing::Message() << output << ", slices of " << sliceTime);
                ASSERT_NO_FATAL_FAILURE(ExpectEnds(path, sliceTime, output));
            }
    }
};

TEST_F(SliceConversion, SlicesEndWhereTheRatioPutsThem) {
    ExpectEndsOfAll(scratch_.Add("a.mp3", SteadyStream(30).bytes));
}

TEST_F(SliceConversion, SlicesOfOneChannelEndWhereTheRatioPutsThem) {
    ExpectEndsOfAll(scratch_.Add("a.mp3", MonoStream(25).bytes));
}

TEST_F(SliceConversion, SlicesOfLowRatesEndWhereTheRatioPutsThem) {
    ExpectEndsOfAll(scratch_.Add("a.mp3", LowRateStream(30).bytes));
}

TEST_F(SliceConversion, SlicesOfLayer2EndWhereTheRatioPutsThem) {
    ExpectEndsOfAll(scratch_.Add("a.mp2", Layer2Stream(30).bytes));
}

TEST_F(SliceConversion, NothingDriftsOverManySmallSlices) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(120).bytes);
    ExpectEnds(path, 1 * kMillisecond, {48000, 1, 16});
    ExpectEnds(path, 1 * kMillisecond, {8000, 1, 16});
}

TEST_F(SliceConversion, ASliceMayHoldTenSeconds) {
    const auto path = scratch_.Add("a.mp2", Layer2Stream(850).bytes);
    ExpectEnds(path, 10'000 * kMillisecond, {32000, 1, 16});
}

/// Whatever the slices, they are one conversion of the whole stream.
TEST_F(SliceConversion, TheSlicesAreOneConversionOfTheStream) {
    const bitstream::Stream stream = Layer2Stream(30);
    const auto path = scratch_.Add("a.mp2", stream.bytes);
    const Pcm pcm = DecodeStream(stream.bytes).pcm;
    Bytes whole(pcm.size() * sizeof(std::int16_t));
    std::memcpy(whole.data(), pcm.data(), whole.size());
    for (const Output& output : kResampled) {
        if (output.rate == 48000)
            continue;
        const Bytes expected = ConvertAll(whole, PcmFormat(48000, 2, 16), output.Format(), pcm.size() / 2);
        for (const std::int64_t sliceTime :
             {1 * kMillisecond, std::int64_t{73'000}, 40 * kMillisecond, 300 * kMillisecond}) {
            SCOPED_TRACE(testing::Message() << output << ", slices of " << sliceTime);
            const Bytes joined = Joined(All(path, sliceTime, output));
            ASSERT_GT(joined.size(), expected.size() / 2);
            ASSERT_LE(joined.size(), expected.size());
            EXPECT_LE(LargestDistance(joined, std::span(expected).first(joined.size()), output.bits),
                      TwoUnits(output.bits));
        }
    }
}

/// Forwards, backwards, to the first three slices and to the one that comes anyway.
class SliceConversionJumps : public SliceConversion {
protected:
    void ExpectJumps(const std::filesystem::path& path, std::int64_t sliceTime, const Output& output,
                     std::int64_t apart) {
        SCOPED_TRACE(testing::Message() << output << ", slices of " << sliceTime);
        const std::vector<Slice> slices = All(path, sliceTime, output);
        ASSERT_GE(slices.size(), 8u);
        const auto count = static_cast<std::uint32_t>(slices.size());
        std::vector<std::uint32_t> numbers = {0, count - 1, 2, 1, 3, 0, count / 2, 2, 4, 5, count - 2, 1};
        std::mt19937 random(7);
        for (int i = 0; i < 8; ++i)
            numbers.push_back(static_cast<std::uint32_t>(random() % count));
        TRN_MpAudioFileReader reader;
        Start(reader, path, sliceTime, output);
        for (const std::uint32_t number : numbers) {
            ASSERT_NO_FATAL_FAILURE(ExpectSlice(ReadSliceAt(reader, number), slices, number, apart));
            if (number + 1 < count) {
                ASSERT_NO_FATAL_FAILURE(ExpectSlice(ReadSlice(reader), slices, number + 1, apart));
            }
        }
    }

    static void ExpectSlice(const Slice& slice, const std::vector<Slice>& slices, std::uint32_t number,
                            std::int64_t apart) {
        ASSERT_EQ(slice.result, 1) << number;
        ASSERT_EQ(slice.bytes.size(), slices[number].bytes.size()) << number;
        ASSERT_LE(LargestDistance(slice.bytes, slices[number].bytes, slice.format.wBitsPerSample), apart)
            << number;
    }
};

TEST_F(SliceConversionJumps, AreNearlyExactWhenResampling) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(30).bytes);
    for (const Output& output : kResampled)
        for (const std::int64_t sliceTime : {40 * kMillisecond, std::int64_t{73'000}})
            ExpectJumps(path, sliceTime, output, TwoUnits(output.bits));
    ExpectJumps(path, 1 * kMillisecond, {48000, 1, 16}, 2);
}

TEST_F(SliceConversionJumps, AreNearlyExactWithAnIndex) {
    const bitstream::Stream stream = ChangingStream(50);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
    ExpectJumps(path, 40 * kMillisecond, {48000, 2, 16}, 2);
    ExpectJumps(path, 5 * kMillisecond, {32000, 1, 24}, TwoUnits(24));
}

TEST_F(SliceConversionJumps, AreExactWhenOnlyReformatting) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(30).bytes);
    for (const Output& output : {Output{44100, 1, 16}, {44100, 2, 24}, {44100, 1, 8}, {44100, 2, 32}})
        for (const std::int64_t sliceTime : {40 * kMillisecond, std::int64_t{73'000}, 1 * kMillisecond})
            ExpectJumps(path, sliceTime, output, 0);
}

} // namespace
