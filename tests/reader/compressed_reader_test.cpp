/// The exported reader of compressed frames: its record and the places that it tells.

#include "reader/reader_streams.h"
#include "trnmpafileread/frame_readers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <optional>

namespace {

using namespace test;

constexpr unsigned long kFarthest = 0xFFFFFFFF;

class CompressedReader : public testing::Test {
protected:
    CComBSTR Name(const std::filesystem::path& path) const { return os::ToAutomationString(Wide(path)); }

    std::int32_t Start(TRN_MpaFileCompReader& reader, const std::filesystem::path& path) const {
        return reader.SetInputFile(Name(path)) == 1 ? reader.StartRead() : -1;
    }

    static tag_KW_MpaStreamInfo InfoOf(TRN_MpaFileCompReader& reader) {
        tag_KW_MpaStreamInfo info;
        std::memset(&info, 0xFF, sizeof info);
        EXPECT_EQ(reader.GetOriginalStreamInfo(info), 1);
        return info;
    }

    static unsigned long PlaceAt(TRN_MpaFileCompReader& reader, std::int64_t time) {
        unsigned long position = 12'345;
        EXPECT_EQ(reader.SeekTo(time, position), 1) << time;
        return position;
    }

    /// A time within the sound of frame `frame`, in 100 ns.
    static std::int64_t TimeWithin(std::size_t frame, int samplesPerFrame, int sampleRate, double part) {
        return static_cast<std::int64_t>((static_cast<double>(frame) + part) * samplesPerFrame * 1e7 /
                                         sampleRate);
    }

    /// The reader tells, for times in each frame, the frame's own place.
    static void ExpectPlaces(TRN_MpaFileCompReader& reader, const bitstream::Stream& stream,
                             std::size_t first) {
        const model::Header& header = stream.frames.front().header;
        const int samples = header.layer == 3 && header.lsf ? 576 : 1152;
        for (std::size_t frame = first; frame < stream.frames.size(); ++frame)
            for (const double part : {0.01, 0.5, 0.99}) {
                const std::int64_t time = TimeWithin(frame - first, samples, header.sampleRate, part);
                ASSERT_EQ(PlaceAt(reader, time), stream.frames[frame].offset) << "frame " << frame;
            }
    }

    ScratchFolder scratch_;
};

TEST_F(CompressedReader, TellsNothingBeforeStartRead) {
    TRN_MpaFileCompReader reader;
    unsigned long position = 99;
    EXPECT_EQ(reader.Initialize(), 1);
    EXPECT_EQ(reader.StartRead(), 0);
    const auto path = scratch_.Add("a.mp3", SteadyStream().bytes);
    ASSERT_EQ(reader.SetInputFile(Name(path)), 1);
    const tag_KW_MpaStreamInfo info = InfoOf(reader);
    EXPECT_EQ(info.version + info.layer + info.stereo, 0);
    EXPECT_EQ(info.bitRate + info.sampleRate + info.bitsPerSample, 0u);
    for (const std::int64_t time :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()})
        EXPECT_EQ(reader.SeekTo(time, position), 0);
    EXPECT_EQ(position, 99u);
    EXPECT_EQ(reader.SetInputFile(Name(scratch_.Path() / "missing.mp3")), 0);
    EXPECT_EQ(reader.StopRead(), 1);
}

TEST_F(CompressedReader, TheRecordDescribesTheFirstFrame) {
    bitstream::StreamOptions options = SteadyOptions();
    options.version = bitstream::Version::kMpeg2;
    options.mode = model::kSingleChannel;
    const bitstream::Stream streams[] = {SteadyStream(), Layer2Stream(), bitstream::WriteStream(options)};
    for (const bitstream::Stream& stream : streams)
        for (const bool hasIndex : {false, true}) {
            const auto path = scratch_.Add("a.mp3", stream.bytes);
            std::filesystem::remove(scratch_.Path() / "a.mp3.idx");
            if (hasIndex)
                scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
            TRN_MpaFileCompReader reader;
            ASSERT_EQ(Start(reader, path), 1);
            const model::Header& header = stream.frames.front().header;
            const tag_KW_MpaStreamInfo info = InfoOf(reader);
            EXPECT_EQ(info.version, header.lsf ? 2 : 1);
            EXPECT_EQ(info.layer, header.layer);
            EXPECT_EQ(info.bitRate, static_cast<unsigned>(header.kbps) * 1000);
            EXPECT_EQ(info.sampleRate, static_cast<unsigned>(header.sampleRate));
            EXPECT_EQ(info.bitsPerSample, 16u);
            EXPECT_EQ(info.stereo, header.channels == 2 ? 1 : 0);
        }
}

TEST_F(CompressedReader, PlacesAreExactAtConstantBitRate) {
    for (const bitstream::Stream& stream : {SteadyStream(40), Layer2Stream(40)}) {
        TRN_MpaFileCompReader reader;
        ASSERT_EQ(Start(reader, scratch_.Add("a.mp3", stream.bytes)), 1);
        ExpectPlaces(reader, stream, 0);
    }
}

TEST_F(CompressedReader, PlacesAreExactWithAnIndex) {
    const bitstream::Stream stream = ChangingStream(60);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
    TRN_MpaFileCompReader reader;
    ASSERT_EQ(Start(reader, path), 1);
    ExpectPlaces(reader, stream, 1);
    // The index is read from its start again.
    ASSERT_EQ(reader.StartRead(), 1);
    ExpectPlaces(reader, stream, 1);
    EXPECT_EQ(reader.StopRead(), 1);
    ExpectPlaces(reader, stream, 1);
}

/// Samples before the frame, at the first frame's bit rate, and one byte less, as the search goes on from
/// there.
TEST_F(CompressedReader, PlacesOfAVariableBitRateAreEstimated) {
    const bitstream::Stream stream = ChangingStream(60);
    const auto path = scratch_.Add(
        "a.mp3", Joined({Bytes{'I', 'D', '3', 3, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0}, stream.bytes}));
    TRN_MpaFileCompReader reader;
    ASSERT_EQ(Start(reader, path), 1);
    const std::int64_t start = 16;
    for (const int frame : {1, 7, 59, 200}) {
        const double bytes = 1152.0 / 44100 * frame * stream.frames.front().header.kbps * 1000 / 8;
        EXPECT_EQ(static_cast<std::int64_t>(
                      PlaceAt(reader, TimeWithin(static_cast<std::size_t>(frame), 1152, 44100, 0.5))),
                  static_cast<std::int64_t>(bytes) + start - 1);
    }
    EXPECT_EQ(PlaceAt(reader, 0), 15u);
}

TEST_F(CompressedReader, TimesOutsideTheStreamDoNoHarm) {
    const bitstream::Stream stream = SteadyStream(30);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    TRN_MpaFileCompReader reader;
    ASSERT_EQ(Start(reader, path), 1);
    EXPECT_EQ(PlaceAt(reader, -1), 0u);
    EXPECT_EQ(PlaceAt(reader, std::numeric_limits<std::int64_t>::min()), 0u);
    EXPECT_EQ(PlaceAt(reader, std::numeric_limits<std::int64_t>::max()), kFarthest);
    // Behind the end arithmetic goes on.
    EXPECT_EQ(PlaceAt(reader, TimeWithin(1000, 1152, 44100, 0.5)), 417'000u);
    scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
    ASSERT_EQ(Start(reader, path), 1);
    EXPECT_EQ(PlaceAt(reader, -1), stream.frames[1].offset);
    EXPECT_EQ(PlaceAt(reader, std::numeric_limits<std::int64_t>::min()), stream.frames[1].offset);
    EXPECT_EQ(PlaceAt(reader, std::numeric_limits<std::int64_t>::max()), kFarthest);
    // Behind the last entry an estimate: frame 1000 at 128 kbit/s.
    EXPECT_EQ(PlaceAt(reader, TimeWithin(1000, 1152, 44100, 0.5)), 417'958u);
}

TEST_F(CompressedReader, ReadAudioSampleIsNotProvidedInAnyState) {
    TRN_MpaFileCompReader reader;
    std::int32_t length = 7;
    unsigned char byte = 3;
    for (int state = 0; state < 3; ++state) {
        EXPECT_EQ(reader.ReadAudioSample(&byte, length), 0);
        EXPECT_EQ(reader.ReadAudioSample(nullptr, length), 0);
        EXPECT_EQ(length, 7);
        EXPECT_EQ(byte, 3);
        if (state == 0)
            ASSERT_EQ(Start(reader, scratch_.Add("a.mp3", SteadyStream().bytes)), 1);
        else
            reader.StopRead();
    }
}

TEST_F(CompressedReader, CopiesMayGoInAnyOrder) {
    const bitstream::Stream stream = SteadyStream(30);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    std::optional<TRN_MpaFileCompReader> original(std::in_place);
    ASSERT_EQ(Start(*original, path), 1);
    std::optional<TRN_MpaFileCompReader> copy(*original);
    TRN_MpaFileCompReader assigned;
    assigned = *copy;
    assigned = *&assigned;
    original.reset();
    ExpectPlaces(*copy, stream, 0);
    copy.reset();
    ExpectPlaces(assigned, stream, 0);
    assigned = TRN_MpaFileCompReader();
    unsigned long position = 0;
    EXPECT_EQ(assigned.SeekTo(0, position), 0);
    EXPECT_TRUE(std::filesystem::remove(path)) << "closed";
}

} // namespace
