/// Opening for slices: order of calls, files, indexes; the positions of the reader of compressed frames.

#include "reader/reader_streams.h"
#include "reader/slices.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace test;

class SliceOpen : public testing::Test {
protected:
    ScratchFolder scratch_;

    CComBSTR Name(const std::filesystem::path& path) { return os::ToAutomationString(Wide(path)); }
};

TEST_F(SliceOpen, NothingWorksBeforeInitialize) {
    TRN_MpAudioFileReader reader;
    WAVEFORMATEX format = {};
    EXPECT_EQ(reader.SetPerPCMFrameTime(400'000), 0);
    EXPECT_EQ(reader.SetInputFile(L"a.mp3"), 0);
    EXPECT_EQ(reader.GetOriginalStreamInfo(format), 0);
    EXPECT_EQ(reader.SetOutputWAVEFormat(format), 0);
    EXPECT_EQ(reader.StartRead(), 0);
    EXPECT_EQ(reader.SeekTo(3), 0);
    EXPECT_EQ(ReadSlice(reader).result, 0);
    EXPECT_EQ(reader.StopRead(), 0);
}

TEST_F(SliceOpen, NothingIsReadBeforeStartRead) {
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(reader.Initialize(), 1);
    EXPECT_EQ(ReadSlice(reader).result, 0);
    EXPECT_EQ(reader.StartRead(), 0);
    ASSERT_EQ(reader.SetInputFile(Name(scratch_.Add("a.mp3", SteadyStream().bytes))), 1);
    EXPECT_EQ(ReadSliceAt(reader, 5).result, 0);
}

TEST_F(SliceOpen, InitializeTwiceKeepsTheEngine) {
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, scratch_.Add("a.mp3", SteadyStream().bytes), 400'000), 1);
    const Slice first = ReadSlice(reader);
    EXPECT_EQ(reader.Initialize(), 1);
    EXPECT_NE(ReadSlice(reader).bytes, first.bytes);
    EXPECT_EQ(ReadSliceAt(reader, 0).bytes, first.bytes);
}

TEST_F(SliceOpen, StopReadLeavesTheFileOpen) {
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, scratch_.Add("a.mp3", SteadyStream().bytes), 400'000), 1);
    EXPECT_EQ(reader.StopRead(), 1);
    EXPECT_EQ(ReadSlice(reader).result, 1);
}

TEST_F(SliceOpen, FilesThatAreNoStreamsFail) {
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(reader.Initialize(), 1);
    EXPECT_EQ(reader.SetInputFile(Name(scratch_.Path() / "missing.mp3")), 0);
    const Bytes noise(5000, 0x11);
    for (const Bytes& bytes : {Bytes(), noise, Bytes{'I', 'D', '3', 3, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}}) {
        ASSERT_EQ(reader.SetInputFile(Name(scratch_.Add("a.mp3", bytes))), 1);
        EXPECT_EQ(reader.StartRead(), 0);
        EXPECT_EQ(ReadSlice(reader).result, 0);
    }
}

TEST_F(SliceOpen, ATagIsPassedWithAllBitsOfItsSize) {
    const bitstream::Stream stream = SteadyStream();
    Bytes tag(10 + 128, 0);
    // 0x80 counts as 128 here; the sample reader would take it as 0.
    const Bytes head = {'i', 'd', '3', 3, 0, 0, 0, 0, 0, 0x80};
    std::copy(head.begin(), head.end(), tag.begin());
    tag[60] = 0xFF;
    tag[61] = 0xFB;
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, scratch_.Add("a.mp3", Joined({tag, stream.bytes})), 400'000), 1);
    TRN_MpAudioFileReader plain;
    ASSERT_EQ(StartSlices(plain, scratch_.Add("b.mp3", stream.bytes), 400'000), 1);
    EXPECT_EQ(ReadSlice(reader).bytes, ReadSlice(plain).bytes);
}

TEST_F(SliceOpen, AnIndexHeaderIsTakenAsItStands) {
    const bitstream::Stream stream = SteadyStream();
    Index index = IndexOf(stream);
    index.header.sampleRate = 12'345;
    index.header.bitRate = 77;
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    scratch_.Add("a.mp3.idx", index.ToBytes());
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 400'000), 1);
    WAVEFORMATEX format = {};
    EXPECT_EQ(reader.GetOriginalStreamInfo(format), 1);
    EXPECT_EQ(format.nSamplesPerSec, 12'345u);
    EXPECT_EQ(format.cbSize, 18);
    TRN_MpaFileCompReader comp;
    ASSERT_EQ(comp.SetInputFile(Name(path)), 1);
    ASSERT_EQ(comp.StartRead(), 1);
    tag_KW_MpaStreamInfo info = {};
    EXPECT_EQ(comp.GetOriginalStreamInfo(info), 1);
    EXPECT_EQ(info.sampleRate, 12'345u);
    EXPECT_EQ(info.bitRate, 77u);
    EXPECT_EQ(info.layer, 3);
    EXPECT_EQ(info.version, 1);
    EXPECT_EQ(info.bitsPerSample, 16u);
    EXPECT_EQ(info.stereo, 1);
}

TEST_F(SliceOpen, IndexesWithoutEntriesOrFormatGiveNoSlices) {
    const bitstream::Stream stream = SteadyStream();
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    Index noEntries = IndexOf(stream);
    noEntries.header.frameCount = 0;
    noEntries.entries.clear();
    Index oddBits = IndexOf(stream);
    oddBits.header.bitsPerSample = 4;
    for (const Bytes& bytes :
         {Bytes(), Bytes(28, 0), Bytes(200, 0), noEntries.ToBytes(), oddBits.ToBytes()}) {
        scratch_.Add("a.mp3.idx", bytes);
        TRN_MpAudioFileReader reader;
        StartSlices(reader, path, 400'000);
        for (const std::uint32_t number : {0u, 7u, 0xFFFFFFFFu})
            EXPECT_EQ(ReadSliceAt(reader, number).result, 0) << bytes.size();
        TRN_MpaFileCompReader comp;
        comp.SetInputFile(Name(path));
        comp.StartRead();
        unsigned long position = 5;
        const std::int32_t found = comp.SeekTo(12'345'678, position);
        EXPECT_TRUE(found == 1 || (found == 0 && position == 5)) << bytes.size();
    }
}

TEST_F(SliceOpen, ASecondStartReadsTheIndexFromItsStart) {
    const bitstream::Stream stream = ChangingStream();
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, path, 400'000), 1);
    const Slice first = ReadSlice(reader);
    ReadSlice(reader);
    ASSERT_EQ(reader.StartRead(), 1);
    EXPECT_EQ(ReadSlice(reader).bytes, first.bytes);
}

TEST_F(SliceOpen, AnotherFileOfAnotherFormatMayFollow) {
    const bitstream::Stream one = ChangingStream();
    const bitstream::Stream two = Layer2Stream();
    const auto first = scratch_.Add("a.mp3", one.bytes);
    scratch_.Add("a.mp3.idx", IndexOf(one).ToBytes());
    const auto second = scratch_.Add("b.mp2", two.bytes);
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, first, 400'000), 1);
    ReadSlice(reader);
    ASSERT_EQ(StartSlices(reader, second, 400'000), 1);
    const Pcm expected = Delivered(two.bytes, 0);
    const Pcm samples = ReadSlice(reader).Samples();
    ASSERT_FALSE(samples.empty());
    EXPECT_TRUE(std::equal(samples.begin(), samples.end(), expected.begin()));
}

TEST_F(SliceOpen, CopiesShareOneEngine) {
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(StartSlices(reader, scratch_.Add("a.mp3", SteadyStream().bytes), 400'000), 1);
    const Slice first = ReadSlice(reader);
    TRN_MpAudioFileReader assigned;
    {
        TRN_MpAudioFileReader copy(reader);
        EXPECT_NE(ReadSlice(copy).bytes, first.bytes);
        assigned = copy;
        assigned = *&assigned;
    }
    EXPECT_EQ(ReadSliceAt(assigned, 0).bytes, first.bytes);
    reader = TRN_MpAudioFileReader();
    EXPECT_EQ(ReadSlice(assigned).result, 1);
    EXPECT_EQ(ReadSlice(reader).result, 0);
}

TEST_F(SliceOpen, TheCompressedReaderTellsPlacesByTime) {
    const bitstream::Stream stream = SteadyStream(60);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    TRN_MpaFileCompReader reader;
    unsigned long position = 99;
    EXPECT_EQ(reader.Initialize(), 1);
    EXPECT_EQ(reader.SeekTo(0, position), 0);
    ASSERT_EQ(reader.SetInputFile(Name(path)), 1);
    ASSERT_EQ(reader.StartRead(), 1);
    // Half a second is sample 22050, in frame 19, the delay not counted.
    EXPECT_EQ(reader.SeekTo(5'000'000, position), 1);
    EXPECT_EQ(position, stream.frames[19].offset);
    EXPECT_EQ(reader.SeekTo(-5'000'000, position), 1);
    EXPECT_EQ(position, 0u);
    EXPECT_EQ(reader.SeekTo(std::numeric_limits<std::int64_t>::min(), position), 1);
    EXPECT_EQ(position, 0u);
    EXPECT_EQ(reader.SeekTo(std::numeric_limits<std::int64_t>::max(), position), 1);
    EXPECT_EQ(position, 0xFFFFFFFFu) << "at most";
    std::int32_t length = 7;
    unsigned char byte = 3;
    EXPECT_EQ(reader.ReadAudioSample(&byte, length), 0);
    EXPECT_EQ(length, 7);
    EXPECT_EQ(byte, 3);
    EXPECT_EQ(reader.StopRead(), 1);
    TRN_MpaFileCompReader copy(reader);
    reader = copy;
    EXPECT_EQ(copy.SeekTo(0, position), 1);
}

TEST_F(SliceOpen, ThePlacesOfAnIndexComeFirst) {
    const bitstream::Stream stream = ChangingStream();
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
    TRN_MpaFileCompReader reader;
    ASSERT_EQ(reader.SetInputFile(Name(path)), 1);
    ASSERT_EQ(reader.StartRead(), 1);
    unsigned long position = 0;
    EXPECT_EQ(reader.SeekTo(5'000'000, position), 1);
    EXPECT_EQ(position, stream.frames[20].offset) << "entry 19 is frame 20";
    // Behind the last entry an estimate from the first frame's bit rate.
    EXPECT_EQ(reader.SeekTo(50'000'000, position), 1);
    const auto header = IndexOf(stream).header;
    const std::uint32_t frame = 5 * header.sampleRate / header.samplesPerFrame;
    const double bytes =
        static_cast<double>(header.samplesPerFrame) / header.sampleRate * frame * header.bitRate / 8;
    EXPECT_EQ(position, static_cast<unsigned long>(bytes) - 1) << "from the byte before";
}

} // namespace
