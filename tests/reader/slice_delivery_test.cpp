/// Slices in order and after jumps, in the stream's own format.

#include "reader/reader_streams.h"
#include "reader/slices.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

namespace {

using namespace test;

constexpr std::int64_t kMillisecond = 10'000;
const std::int64_t kSliceTimes[] = {1 * kMillisecond,   13 * kMillisecond,  26 * kMillisecond,    400'000,
                                    137 * kMillisecond, 500 * kMillisecond, 10'000 * kMillisecond};

Bytes BytesOf(const Pcm& pcm) {
    Bytes bytes(pcm.size() * sizeof(std::int16_t));
    if (!bytes.empty())
        std::memcpy(bytes.data(), pcm.data(), bytes.size());
    return bytes;
}

/// Bytes before slice `k`, by the rule's own words.
std::int64_t BytesBefore(std::int64_t k, std::int64_t sliceTime, const WAVEFORMATEX& format) {
    const std::int64_t bytes = k * sliceTime * format.nAvgBytesPerSec / 10'000'000;
    return bytes / format.nBlockAlign * format.nBlockAlign;
}

class SliceDelivery : public testing::Test {
protected:
    ScratchFolder scratch_;

    /// Reads through, and compares with `expected` from its start; gives the slices.
    std::vector<Slice> ExpectStream(const std::filesystem::path& path, const Pcm& expected,
                                    std::int64_t sliceTime) {
        TRN_MpAudioFileReader reader;
        EXPECT_EQ(StartSlices(reader, path, sliceTime), 1);
        std::vector<Slice> slices = ReadAllSlices(reader);
        const Bytes all = BytesOf(expected);
        Bytes read = Joined(slices);
        EXPECT_LE(read.size(), all.size());
        EXPECT_TRUE(std::equal(read.begin(), read.end(), all.begin()));
        WAVEFORMATEX format = {};
        reader.GetOriginalStreamInfo(format);
        for (std::size_t k = 0; k < slices.size(); ++k) {
            const auto number = static_cast<std::int64_t>(k);
            EXPECT_EQ(static_cast<std::int64_t>(slices[k].bytes.size()),
                      BytesBefore(number + 1, sliceTime, format) - BytesBefore(number, sliceTime, format));
            EXPECT_EQ(std::memcmp(&slices[k].format, &format, sizeof format), 0);
            EXPECT_EQ(slices[k].atEnd, 0);
        }
        // What is missing does not fill a slice.
        const auto next = static_cast<std::int64_t>(slices.size()) + 1;
        EXPECT_GT(BytesBefore(next, sliceTime, format), static_cast<std::int64_t>(all.size()));
        return slices;
    }

    void ExpectExactJumps(const std::filesystem::path& path, const std::vector<Slice>& slices,
                          std::int64_t sliceTime) {
        ASSERT_FALSE(slices.empty());
        TRN_MpAudioFileReader reader;
        ASSERT_EQ(StartSlices(reader, path, sliceTime), 1);
        std::mt19937 random(42);
        for (int i = 0; i < 40; ++i) {
            const auto number = static_cast<std::uint32_t>(random() % slices.size());
            const Slice slice = ReadSliceAt(reader, number);
            ASSERT_EQ(slice.result, 1) << number;
            ASSERT_EQ(slice.bytes, slices[number].bytes) << number;
            if (random() % 2 == 0 && number + 1 < slices.size()) {
                ASSERT_EQ(ReadSlice(reader).bytes, slices[number + 1].bytes) << number;
            }
        }
    }
};

TEST_F(SliceDelivery, Layer3IsTheStreamBehindTheDelay) {
    const bitstream::Stream stream = SteadyStream(60);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    const Pcm expected = Delivered(stream.bytes, kDecoderDelay);
    for (const std::int64_t time : kSliceTimes) {
        SCOPED_TRACE(time);
        ExpectStream(path, expected, time);
    }
}

TEST_F(SliceDelivery, JumpsAreExactAtConstantBitRate) {
    const bitstream::Stream stream = SteadyStream(60);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    const Pcm expected = Delivered(stream.bytes, kDecoderDelay);
    for (const std::int64_t time : kSliceTimes) {
        if (time > 500 * kMillisecond)
            continue; // longer than the stream
        SCOPED_TRACE(time);
        ExpectExactJumps(path, ExpectStream(path, expected, time), time);
    }
}

TEST_F(SliceDelivery, JumpsAreExactWithAnIndex) {
    const bitstream::Stream stream = ChangingStream(80);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
    const Pcm expected = DeliveredFrom(stream, 1, 0);
    for (const std::int64_t time : kSliceTimes) {
        if (time > 500 * kMillisecond)
            continue;
        SCOPED_TRACE(time);
        ExpectExactJumps(path, ExpectStream(path, expected, time), time);
    }
}

TEST_F(SliceDelivery, Layer2HasNoDelay) {
    const bitstream::Stream stream = Layer2Stream(40);
    const auto path = scratch_.Add("a.mp2", stream.bytes);
    ExpectExactJumps(path, ExpectStream(path, Delivered(stream.bytes, 0), 400'000), 400'000);
}

TEST_F(SliceDelivery, LowSamplingFrequenciesDropHalfOfTheDelayInOrderAndCountAllOfItInJumps) {
    bitstream::StreamOptions options = SteadyOptions(80);
    options.version = bitstream::Version::kMpeg2;
    const bitstream::Stream stream = bitstream::WriteStream(options);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    const auto slices = ExpectStream(path, Delivered(stream.bytes, kDecoderDelay / 2), 400'000);
    ASSERT_GE(slices.size(), 8u);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 400'000), 1);
    const Slice jumped = ReadSliceAt(reader, 6);
    const Bytes whole = BytesOf(Delivered(stream.bytes, kDecoderDelay));
    const auto start = static_cast<std::ptrdiff_t>(BytesBefore(6, 400'000, jumped.format));
    ASSERT_EQ(jumped.result, 1);
    EXPECT_TRUE(std::equal(jumped.bytes.begin(), jumped.bytes.end(), whole.begin() + start));
}

TEST_F(SliceDelivery, ADescribingFrameIsNotDelivered) {
    const bitstream::Stream stream = SteadyStream(30);
    const auto path = scratch_.Add("a.mp3", Joined({DescribingFrame(stream, "Info"), stream.bytes}));
    ExpectStream(path, Delivered(stream.bytes, kDecoderDelay), 400'000);
}

TEST_F(SliceDelivery, GoingBackToTheStartDropsTheDelayOnce) {
    const bitstream::Stream stream = SteadyStream(40);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 400'000), 1);
    const Slice first = ReadSlice(reader);
    for (const std::uint32_t number : {10u, 0u, 2u, 1u, 0u})
        ReadSliceAt(reader, number);
    EXPECT_EQ(ReadSliceAt(reader, 0).bytes, first.bytes);
}

TEST_F(SliceDelivery, TheEndGivesAnEmptySliceAgainAndAgain) {
    const bitstream::Stream stream = SteadyStream(20);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 400'000), 1);
    ReadAllSlices(reader);
    for (int i = 0; i < 3; ++i) {
        const Slice slice = ReadSlice(reader);
        EXPECT_EQ(slice.result, 0);
        EXPECT_FALSE(slice.hasData);
        EXPECT_EQ(slice.atEnd, 1);
    }
    for (const std::uint32_t number : {1000u, 1'000'000u, 0xFFFFFFFFu}) {
        const Slice slice = ReadSliceAt(reader, number);
        EXPECT_EQ(slice.result, 0) << number;
        EXPECT_FALSE(slice.hasData) << number;
        EXPECT_EQ(slice.atEnd, 1) << number;
    }
    ReadSliceAt(reader, 500);
    EXPECT_EQ(ReadSlice(reader).result, 0) << "nothing comes behind the end";
}

TEST_F(SliceDelivery, SliceTimesThatMakeNoSenseGiveNothing) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(20).bytes);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 400'000), 1);
    for (const std::int64_t time :
         {std::int64_t{0}, std::int64_t{-1}, std::int64_t{-400'000}, std::numeric_limits<std::int64_t>::min(),
          std::numeric_limits<std::int64_t>::max(), std::int64_t{1} << 56}) {
        EXPECT_EQ(reader.SetPerPCMFrameTime(time), 1);
        for (const std::uint32_t number : {0u, 1u, 77u, 0xFFFFFFFFu}) {
            const Slice slice = ReadSliceAt(reader, number);
            EXPECT_EQ(slice.result, 0) << time;
            EXPECT_FALSE(slice.hasData) << time;
        }
    }
}

TEST_F(SliceDelivery, ARefusedSliceCountsToo) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(20).bytes);
    TRN_MpAudioFileReader ordered;
    ASSERT_EQ(StartSlices(ordered, path, 400'000), 1);
    const std::vector<Slice> slices = ReadAllSlices(ordered);
    ASSERT_GE(slices.size(), 4u);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 400'000), 1);
    EXPECT_EQ(ReadSlice(reader).bytes, slices[0].bytes);
    reader.SetPerPCMFrameTime(0);
    EXPECT_EQ(ReadSlice(reader).result, 0);
    reader.SetPerPCMFrameTime(400'000);
    EXPECT_EQ(ReadSlice(reader).bytes, slices[2].bytes);
    EXPECT_EQ(ReadSlice(reader).bytes, slices[3].bytes);
}

TEST_F(SliceDelivery, TheEndIsLeftByAnyOtherNumberOrTime) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(20).bytes);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 400'000), 1);
    const std::vector<Slice> slices = ReadAllSlices(reader);
    ASSERT_GE(slices.size(), 4u);
    // Behind the greatest number comes 0 again.
    EXPECT_EQ(ReadSliceAt(reader, 0xFFFFFFFF).atEnd, 1);
    EXPECT_EQ(ReadSliceAt(reader, 0).bytes, slices[0].bytes);
    EXPECT_EQ(ReadSlice(reader).bytes, slices[1].bytes);
    // The number behind the last is a good one for shorter slices.
    const auto last = static_cast<std::uint32_t>(slices.size());
    EXPECT_EQ(ReadSliceAt(reader, last).atEnd, 1);
    reader.SetPerPCMFrameTime(200'000);
    const Slice shorter = ReadSliceAt(reader, last + 1);
    EXPECT_EQ(shorter.result, 1);
    EXPECT_EQ(shorter.bytes.size(), slices[0].bytes.size() / 2);
}

TEST_F(SliceDelivery, ASliceOfLessThanASampleIsEmptyAndGood) {
    const auto path = scratch_.Add("a.mp3", SteadyStream(20).bytes);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 1), 1);
    const Slice slice = ReadSlice(reader);
    EXPECT_EQ(slice.result, 1);
    EXPECT_TRUE(slice.bytes.empty());
}

TEST_F(SliceDelivery, AFaultAfterAJumpLeavesTheNextSliceRight) {
    bitstream::StreamOptions options = SteadyOptions(20);
    options.crc = true;
    const bitstream::Stream stream = bitstream::WriteStream(options);
    // The last frame ends within its CRC word, which the decoder answers with another code than the end's.
    Bytes cut = stream.bytes;
    cut.resize(stream.frames.back().offset + 5);
    const auto path = scratch_.Add("a.mp3", cut);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 20 * kMillisecond), 1);
    const std::vector<Slice> slices = ReadAllSlices(reader);
    ASSERT_GE(slices.size(), 8u);
    const auto last = static_cast<std::uint32_t>(slices.size());
    const Slice sequential = ReadSliceAt(reader, last);
    EXPECT_FALSE(sequential.hasData);
    // Slices before the fault were read on the way, and their result stands.
    EXPECT_EQ(sequential.result, 1);
    EXPECT_EQ(sequential.atEnd, 0);
    EXPECT_FALSE(ReadSlice(reader).hasData);
    EXPECT_EQ(ReadSliceAt(reader, last - 2).bytes, slices[last - 2].bytes);
}

} // namespace
