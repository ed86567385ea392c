#include "platform/external_decode.h"
#include "platform/path_samples.h"
#include "support/bitstream/stream.h"
#include "trcommontoolsr/file_access.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

namespace {

using test::Bytes;
using test::ExternalDecode;
using test::Pcm;
using test::bitstream::Stream;
using test::bitstream::StreamOptions;

Stream Written(int layer = 3, int frames = 30, std::uint64_t seed = 1) {
    StreamOptions options;
    options.layer = layer;
    options.frames = frames;
    options.seed = seed;
    return test::bitstream::WriteStream(options);
}

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

/// An ID3v2 tag of `body` bytes behind its header.
Bytes Tag(std::size_t body, std::uint8_t flags = 0) {
    Bytes tag{'I', 'D', '3', 4, 0, flags};
    for (int shift = 21; shift >= 0; shift -= 7)
        tag.push_back(static_cast<std::uint8_t>(body >> shift & 0x7F));
    tag.resize(tag.size() + body + ((flags & 0x10) != 0 ? 10 : 0), 'x');
    return tag;
}

class ExternalDecoder : public testing::Test {
protected:
    test::ScratchFolder scratch_;

    std::filesystem::path File(const Bytes& bytes, const char* name = "a.mp3") {
        return scratch_.Add(name, bytes);
    }

    /// All frames of a file.
    std::vector<Pcm> Decode(const Bytes& bytes) {
        ExternalDecode decode(File(bytes));
        EXPECT_TRUE(decode.Start());
        return decode.Rest();
    }
};

TEST_F(ExternalDecoder, GivesOneWholeFrameACall) {
    for (const int layer : {2, 3}) {
        const Stream stream = Written(layer);
        const std::vector<Pcm> frames = Decode(stream.bytes);
        EXPECT_EQ(frames.size(), stream.frames.size()) << layer;
        for (const Pcm& frame : frames)
            EXPECT_EQ(frame.size(), 2304U);
        EXPECT_TRUE(std::ranges::any_of(frames.back(), [](std::int16_t sample) { return sample != 0; }));
    }
}

TEST_F(ExternalDecoder, MovesTheFilePositionFrameByFrame) {
    const Stream stream = Written();
    ExternalDecode decode(File(stream.bytes));
    ASSERT_TRUE(decode.Start());
    for (const auto& frame : stream.frames) {
        ASSERT_EQ(decode.Frame().size(), 2304U);
        Bytes header(4);
        const std::size_t next = frame.offset + static_cast<std::size_t>(frame.length);
        if (next == stream.bytes.size())
            break;
        ASSERT_EQ(decode->ReadFromFile(header.data(), 4), 1);
        EXPECT_TRUE(std::equal(header.begin(), header.end(),
                               stream.bytes.begin() + static_cast<std::ptrdiff_t>(next)));
        ASSERT_EQ(decode->SetNewFilePos(static_cast<std::int64_t>(next)), 1);
    }
}

TEST_F(ExternalDecoder, DescribesTheFirstFrame) {
    StreamOptions options;
    options.version = test::bitstream::Version::kMpeg2;
    options.mode = test::model::kSingleChannel;
    options.bitrateIndices = {8};
    ExternalDecode decode(File(test::bitstream::WriteStream(options).bytes));
    Mp3StreamInfo info;
    EXPECT_EQ(decode->GetStreamInfo(&info), 0);
    EXPECT_EQ(info.synced, 0);
    ASSERT_EQ(decode->StartDec(), 1);
    ASSERT_EQ(decode->GetStreamInfo(&info), 1);
    EXPECT_EQ(info.synced, 1);
    EXPECT_EQ(info.layer, 3);
    EXPECT_EQ(info.version, 2);
    EXPECT_EQ(info.bitRate, 64000);
    EXPECT_EQ(info.sampleRate, 22050);
    EXPECT_EQ(info.stereo, 0);
    EXPECT_EQ(info.bitsPerSample, 16);
    EXPECT_EQ(info.pcmBytes, 1152);
    EXPECT_NEAR(info.frameBytes, 208, 1);
    EXPECT_EQ(decode->GetStreamInfo(nullptr), 0);
}

TEST_F(ExternalDecoder, CountsWhatLiesBeforeTheFirstFrame) {
    const Bytes stream = Written().bytes;
    const Bytes padding(33, 0);
    const struct {
        Bytes front;
        std::size_t size;
    } cases[] = {
        {{}, 0},
        {Tag(0), 10},
        {Tag(257), 267},
        {Tag(200'000), 200'010},
        {Joined({Tag(257), padding}), 300},
        {Joined({Tag(20), Tag(30, 0x10)}), 80},
        {padding, 33},
        // A header with no frame behind it.
        {Joined({Tag(20), {0xFF, 0xFB, 0x90, 0x00, 0, 0}}), 36},
    };
    for (const auto& front : cases) {
        ExternalDecode decode(File(Joined({front.front, stream})));
        EXPECT_EQ(decode->GetTagSize(), static_cast<std::int32_t>(front.size));
        EXPECT_EQ(decode->StartDec(), 1);
        EXPECT_EQ(decode->GetTagSize(), static_cast<std::int32_t>(front.size));
        EXPECT_TRUE(decode.Start());
        EXPECT_EQ(decode.Rest().size(), 30U);
    }
}

TEST_F(ExternalDecoder, TheSearchesLeaveTheFilePosition) {
    const Bytes bytes = Joined({Tag(100), Written().bytes});
    ExternalDecode decode(File(bytes));
    for (const std::int64_t position : {0, 7}) {
        ASSERT_EQ(decode->SetNewFilePos(position), 1);
        decode->StartDec();
        decode->GetTagSize();
        unsigned char byte = 0;
        ASSERT_EQ(decode->ReadFromFile(&byte, 1), 1);
        EXPECT_EQ(byte, bytes[static_cast<std::size_t>(position)]);
    }
}

TEST_F(ExternalDecoder, FindsNothingWhereThereIsNothing) {
    for (const Bytes& bytes : {Bytes(), Bytes(3, 0xFF), Bytes(200'000, 0), Bytes(100'000, 0xFF), Tag(500),
                               Bytes{'I', 'D', '3', 4, 0, 0, 0x7F, 0x7F, 0x7F, 0x7F}}) {
        ExternalDecode decode(File(bytes));
        Mp3StreamInfo info;
        info.synced = 7;
        EXPECT_EQ(decode->StartDec(), 0);
        EXPECT_EQ(decode->GetStreamInfo(&info), 0);
        EXPECT_EQ(info.synced, 0);
        EXPECT_EQ(decode->GetTagSize(), 0);
        EXPECT_TRUE(decode.Frame().empty());
        EXPECT_EQ(decode->GetFileLen(), static_cast<std::int64_t>(bytes.size()));
    }
}

TEST_F(ExternalDecoder, EndsAtTheLastWholeFrame) {
    Bytes bytes = Written().bytes;
    bytes.pop_back();
    ExternalDecode decode(File(bytes));
    ASSERT_TRUE(decode.Start());
    EXPECT_EQ(decode.Rest().size(), 29U);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(decode.Frame().empty());
    decode.GoTo(0, 0);
    EXPECT_EQ(decode.Rest().size(), 29U);
    decode.GoTo(INT64_MAX, 0);
    EXPECT_TRUE(decode.Frame().empty());
}

TEST_F(ExternalDecoder, PassesWhatIsNoFrame) {
    const Stream stream = Written();
    const Bytes other = Written(2).bytes;
    const auto cut = stream.bytes.begin() + static_cast<std::ptrdiff_t>(stream.frames[10].offset);
    const Bytes head(stream.bytes.begin(), cut);
    const Bytes tail(cut, stream.bytes.end());
    const std::vector<Pcm> whole = Decode(stream.bytes);
    EXPECT_EQ(Decode(Joined({head, Bytes(5000, 0), tail})), whole);
    EXPECT_EQ(Decode(Joined({head, other, tail})), whole);
    EXPECT_EQ(Decode(Joined({head, tail, Bytes(128, 'T')})), whole);
}

TEST_F(ExternalDecoder, TagFramesAreFrames) {
    const Stream stream = Written();
    for (const char* text : {"Info", "Xing", "VBRI"}) {
        Bytes tag(stream.bytes.begin(), stream.bytes.begin() + stream.frames[0].length);
        std::fill(tag.begin() + 4, tag.end(), std::uint8_t{0});
        std::memcpy(tag.data() + 36, text, 4);
        tag[43] = 3; // frames and bytes are said
        tag[47] = 2; // too few frames
        const std::vector<Pcm> frames = Decode(Joined({tag, stream.bytes}));
        ASSERT_EQ(frames.size(), 31U) << text;
        EXPECT_EQ(frames[0], Pcm(2304, 0)) << text;
    }
}

TEST_F(ExternalDecoder, MissingMainDataIsSilence) {
    StreamOptions options;
    options.frames = 40;
    options.layer3.reservoir = test::bitstream::ReservoirUse::kFull;
    const Stream stream = test::bitstream::WriteStream(options);
    ExternalDecode decode(File(stream.bytes));
    ASSERT_TRUE(decode.Start());
    const std::vector<Pcm> whole = decode.Rest();
    ASSERT_EQ(whole.size(), 40U);
    int silent = 0;
    for (std::size_t start = 1; start < 32; ++start) {
        decode.GoTo(static_cast<std::int64_t>(stream.frames[start].offset), static_cast<std::int64_t>(start));
        const Pcm first = decode.Frame();
        ASSERT_EQ(first.size(), 2304U);
        if (stream.frames[start].mainDataBegin > 0) {
            EXPECT_EQ(first, Pcm(2304, 0)) << start;
            ++silent;
        }
        EXPECT_EQ(decode.Rest().size(), 39 - start);
    }
    EXPECT_GT(silent, 20);
}

TEST_F(ExternalDecoder, OpensHardPaths) {
    const Bytes bytes = Written().bytes;
    for (const std::filesystem::path& name : test::UnicodeNames()) {
        ExternalDecode decode(scratch_.Add(name, bytes));
        EXPECT_TRUE(decode.Start());
        EXPECT_EQ(decode.Rest().size(), 30U);
    }
    const test::LongPathFile file(bytes);
    ExternalDecode decode(test::Plain(file.Path()));
    EXPECT_TRUE(decode.Start());
}

TEST_F(ExternalDecoder, OpensStoragePaths) {
    File(Written().bytes);
    TRN_LameMp3Dec decoder;
    ASSERT_EQ(decoder.Initialize(), 1);
    EXPECT_EQ(decoder.SetInputFile(L"dqs:\\a.mp3"), 0);
    TRCT_FileAccess::SetStorageFolder(test::Wide(scratch_.Path()));
    EXPECT_EQ(decoder.SetInputFile(L"dqs:\\a.mp3"), 1);
    EXPECT_EQ(decoder.StartDec(), 1);
    TRCT_FileAccess::SetStorageFolder(L"");
}

TEST_F(ExternalDecoder, DoesNothingBeforeItIsSetUp) {
    TRN_LameMp3Dec decoder;
    std::int32_t size = 5;
    unsigned char buffer[4608] = {};
    EXPECT_EQ(decoder.DecodeMP3(size), 0);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(decoder.StartDec(), 0);
    EXPECT_EQ(decoder.GetTagSize(), 0);
    EXPECT_EQ(decoder.GetFileLen(), 0);
    EXPECT_EQ(decoder.SetNewFilePos(0), 0);
    EXPECT_EQ(decoder.ReadFromFile(buffer, 1), 0);
    EXPECT_EQ(decoder.ResetDecodeBuf(), 1);
    EXPECT_EQ(decoder.SetInputFile(CComBSTR()), 0);
    ASSERT_EQ(decoder.SetInputFile(os::ToAutomationString(test::Wide(File(Written().bytes)))), 1);
    EXPECT_EQ(decoder.DecodeMP3(size), 0) << "no output, no decoder";
    EXPECT_EQ(decoder.SetOutBuf(buffer), 1);
    EXPECT_EQ(decoder.DecodeMP3(size), 0) << "no decoder";
    ASSERT_EQ(decoder.Initialize(), 1);
    EXPECT_EQ(decoder.DecodeMP3(size), 1) << "without StartDec the first frame fixes the format";
    EXPECT_EQ(size, 4608);
    EXPECT_EQ(decoder.SetOutBuf(nullptr), 1);
    EXPECT_EQ(decoder.DecodeMP3(size), 0);
}

TEST_F(ExternalDecoder, ReadsRawBytes) {
    const Bytes bytes = test::NumberedBytes(1000);
    ExternalDecode decode(File(bytes));
    EXPECT_EQ(decode->GetFileLen(), 1000);
    Bytes read(990);
    ASSERT_EQ(decode->ReadFromFile(read.data(), 990), 1);
    EXPECT_TRUE(std::equal(read.begin(), read.end(), bytes.begin()));
    EXPECT_EQ(decode->ReadFromFile(read.data(), 11), 0) << "ten are left";
    EXPECT_EQ(decode->SetNewFilePos(999), 1);
    EXPECT_EQ(decode->ReadFromFile(read.data(), 1), 1);
    EXPECT_EQ(read[0], bytes[999]);
    EXPECT_EQ(decode->ReadFromFile(read.data(), 0), 1);
    EXPECT_EQ(decode->ReadFromFile(read.data(), -1), 0);
    EXPECT_EQ(decode->ReadFromFile(nullptr, 1), 0);
    EXPECT_EQ(decode->SetNewFilePos(-1), 0);
    EXPECT_EQ(decode->SetNewFilePos(INT64_MAX), 1);
    EXPECT_EQ(decode->ReadFromFile(read.data(), 1), 0);
}

TEST_F(ExternalDecoder, AFileThatCannotBeOpenedClosesTheOneBefore) {
    ExternalDecode decode(File(Written().bytes));
    ASSERT_TRUE(decode.Start());
    ASSERT_FALSE(decode.Frame().empty());
    EXPECT_EQ(decode->SetInputFile(os::ToAutomationString(test::Wide(scratch_.Path() / "none.mp3"))), 0);
    Mp3StreamInfo info;
    EXPECT_EQ(decode->GetStreamInfo(&info), 0);
    EXPECT_TRUE(decode.Frame().empty());
    EXPECT_EQ(decode->GetFileLen(), 0);
}

TEST_F(ExternalDecoder, DamagedFramesKeepTheirPlace) {
    for (const int layer : {2, 3})
        for (std::uint64_t seed = 1; seed <= 8; ++seed) {
            const Stream stream = Written(layer, 60, seed);
            const Bytes spoilt = test::bitstream::Spoil(stream, {20, 40}, seed);
            const std::vector<Pcm> frames = Decode(spoilt);
            EXPECT_EQ(frames.size(), 60U) << layer << ", " << seed;
            for (const Pcm& frame : frames)
                EXPECT_EQ(frame.size(), 2304U);
            EXPECT_EQ(Decode(spoilt), frames);
        }
}

} // namespace
