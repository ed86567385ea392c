#include "mpa/file_probe.h"

#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

using namespace trnmpa;
using test::Bytes;
using test::FrameSpec;

namespace {

/// 100 ns, as the probe rounds.
std::int64_t Duration(double seconds) {
    return static_cast<std::int64_t>(seconds * 1000 * 1000 * 10);
}

class FileProbe : public testing::Test {
protected:
    std::int32_t Parse(const Bytes& bytes) {
        path_ = test::Wide(folder_.Add("stream.mp3", bytes));
        return probe_.ParseFile(path_);
    }

    const WAVEFORMATEX& Format() const { return probe_.Description().audioFormat; }

    test::ScratchFolder folder_;
    std::wstring path_;
    CMPGAudioFileBufferReader probe_;
};

Bytes Tagged(const Bytes& tag, std::size_t tagEnd, const Bytes& frames) {
    Bytes bytes = tag;
    bytes.resize(tagEnd, 0);
    test::Append(bytes, frames);
    return bytes;
}

} // namespace

TEST_F(FileProbe, DescribesAStreamOfConstantBitRate) {
    const Bytes bytes = test::PaddedFrames(200);
    ASSERT_EQ(Parse(bytes), kProbeDescribed);
    const KW_MEDIA_BASE_INFO_ST& description = probe_.Description();
    EXPECT_EQ(description.filePath, path_);
    EXPECT_EQ(description.fileSize, std::ssize(bytes));
    EXPECT_EQ(description.classIdentifier, 2323);
    EXPECT_EQ(description.audioCodec, 1043);
    EXPECT_EQ(description.streamPresent, 1);
    EXPECT_EQ(description.audioPresent, 1);
    EXPECT_EQ(description.duration, Duration(82755 / 16000.0 + 1152.0 / 44100 - 1100.0 / 44100));
    EXPECT_EQ(Format().wFormatTag, 85);
    EXPECT_EQ(Format().nChannels, 2);
    EXPECT_EQ(Format().nSamplesPerSec, 44100u);
    EXPECT_EQ(Format().nAvgBytesPerSec, 16000u);
    EXPECT_EQ(Format().nBlockAlign, 4);
    EXPECT_EQ(Format().wBitsPerSample, 16);
    EXPECT_EQ(Format().cbSize, 0);
    EXPECT_EQ(probe_.Kind(), CbrKind::kByRate);
    EXPECT_FALSE(probe_.IsVbr());
    EXPECT_FALSE(probe_.HasInfoFrame());
}

TEST_F(FileProbe, DescribesMonoMpeg2) {
    const FrameSpec spec = {
        .version = test::kMpeg2, .bitRateIndex = 8, .sampleRateIndex = 1, .mode = test::kMono};
    ASSERT_EQ(Parse(test::Frames(spec, 192, 100)), kProbeDescribed);
    EXPECT_EQ(Format().nChannels, 1);
    EXPECT_EQ(Format().nSamplesPerSec, 24000u);
    EXPECT_EQ(Format().nAvgBytesPerSec, 8000u);
    EXPECT_EQ(Format().nBlockAlign, 2);
    EXPECT_EQ(probe_.Description().duration, Duration(100 * 576 / 24000.0 - 1100.0 / 24000));
}

TEST_F(FileProbe, LayerTwoLosesNoDelay) {
    const FrameSpec spec = {.layer = 2, .bitRateIndex = 10, .sampleRateIndex = 1};
    ASSERT_EQ(Parse(test::Frames(spec, 576, 100)), kProbeDescribed);
    EXPECT_EQ(probe_.Description().classIdentifier, 2322);
    EXPECT_EQ(probe_.Description().audioCodec, 1042);
    EXPECT_EQ(probe_.Description().duration, Duration(100 * 1152 / 48000.0));
}

TEST_F(FileProbe, InfoFrameIsTakenOff) {
    Bytes bytes = test::Frames({.sampleRateIndex = 1}, 384, 100);
    test::PutText(bytes, 36, "Info");
    ASSERT_EQ(Parse(bytes), kProbeDescribed);
    EXPECT_TRUE(probe_.HasInfoFrame());
    EXPECT_EQ(probe_.Description().duration,
              Duration(100 * 1152 / 48000.0 - 1152.0 / 48000 - 1100.0 / 48000));
}

TEST_F(FileProbe, EncoderTextIsLookedForBehindTheSideInformation) {
    struct Case {
        int version;
        int mode;
        std::size_t offset;
    };
    for (const Case& c : {Case{test::kMpeg1, test::kStereo, 36}, Case{test::kMpeg1, test::kMono, 21},
                          Case{test::kMpeg2, test::kStereo, 21}, Case{test::kMpeg2, test::kMono, 13},
                          Case{test::kMpeg25, test::kMono, 13}})
        for (const std::size_t offset : {13u, 21u, 36u})
            for (const std::string_view text : {"Xing", "VBRI", "Info", "Lame"}) {
                const FrameSpec spec = {.version = c.version, .sampleRateIndex = 1, .mode = c.mode};
                MpaFrameHeader header;
                DecodeFrameHeader(test::HeaderOf(spec), header);
                Bytes bytes = test::Frames(spec, static_cast<std::size_t>(header.frameBytes), 100);
                test::PutText(bytes, offset, text);
                const bool isVariable = offset == c.offset && (text == "Xing" || text == "VBRI");
                EXPECT_EQ(Parse(bytes), isVariable ? kProbeVariableBitRate : kProbeDescribed)
                    << c.version << ' ' << c.mode << ' ' << text << " at " << offset;
                EXPECT_EQ(probe_.HasInfoFrame(), offset == c.offset && text == "Info");
                EXPECT_EQ(probe_.IsVbr(), isVariable);
            }
}

TEST_F(FileProbe, VariableStreamsAreLeftUndescribed) {
    Bytes bytes = test::PaddedFrames(200);
    test::PutText(bytes, 36, "Xing");
    ASSERT_EQ(Parse(bytes), kProbeVariableBitRate);
    EXPECT_TRUE(probe_.IsVbr());
    const KW_MEDIA_BASE_INFO_ST& description = probe_.Description();
    EXPECT_EQ(description.fileSize, std::ssize(bytes));
    EXPECT_EQ(description.classIdentifier, 2049);
    EXPECT_EQ(description.audioCodec, 1);
    EXPECT_EQ(description.duration, 0);
    EXPECT_EQ(description.streamPresent, 0);
    EXPECT_EQ(description.audioPresent, 0);
    EXPECT_EQ(description.filePath, L"");
    EXPECT_EQ(Format().nChannels, 0);
}

TEST_F(FileProbe, InfoTextDoesNotMakeAStreamConstant) {
    Bytes bytes;
    for (int i = 0; i < 100; ++i)
        test::AppendFrame(bytes, {.bitRateIndex = i % 2 == 0 ? 9 : 5}, i % 2 == 0 ? 417 : 208);
    test::PutText(bytes, 36, "Info");
    EXPECT_EQ(Parse(bytes), kProbeVariableBitRate);
}

TEST_F(FileProbe, TagIsSkipped) {
    const Bytes frames = test::Frames({.sampleRateIndex = 1}, 384, 100);
    ASSERT_EQ(Parse(Tagged(test::TagHeader(0, 0, 2, 1), 267, frames)), kProbeDescribed);
    EXPECT_EQ(probe_.FirstHeader().firstFrameOffset, 267);
    EXPECT_EQ(probe_.Description().duration, Duration(100 * 1152 / 48000.0 - 1100.0 / 48000));
    EXPECT_EQ(probe_.Description().fileSize, 267 + 38400);
}

TEST_F(FileProbe, UnfoundEndFallsBackToTheBitRate) {
    // Behind the lead the steps back miss every frame.
    Bytes bytes = Tagged(test::TagHeader(0, 0, 2, 1), 267, test::Frames({.sampleRateIndex = 1}, 384, 100));
    bytes.insert(bytes.end(), 500, 0);
    ASSERT_EQ(Parse(bytes), kProbeDescribed);
    EXPECT_EQ(probe_.Kind(), CbrKind::kFixedLength);
    EXPECT_EQ(probe_.Description().duration, Duration(38900 * 8.0 / 128000));
}

TEST_F(FileProbe, TagThatLiesAboutItsSizeHidesTheFrames) {
    const Bytes frames = test::Frames({.sampleRateIndex = 1}, 384, 100);
    EXPECT_EQ(Parse(Tagged(test::TagHeader(0x7F, 0x7F, 0x7F, 0x7F), 267, frames)), kProbeUnusable);
    EXPECT_EQ(probe_.Description().classIdentifier, 1);
    EXPECT_EQ(Parse(Tagged(test::TagHeader(0xFF, 0xFF, 0xFF, 0xFF), 267, frames)), kProbeUnusable);
    EXPECT_EQ(probe_.Description().classIdentifier, 1);
    // Sizes that say too little leave the rest of the tag to the search.
    EXPECT_EQ(Parse(Tagged(test::TagHeader(0, 0, 0, 1), 267, frames)), kProbeDescribed);
    EXPECT_EQ(probe_.FirstHeader().firstFrameOffset, 267);
}

TEST_F(FileProbe, NegativeDurationStays) {
    const FrameSpec spec = {.version = test::kMpeg2, .bitRateIndex = 8, .sampleRateIndex = 1};
    ASSERT_EQ(Parse(test::Frames(spec, 192, 1)), kProbeDescribed);
    EXPECT_EQ(probe_.Description().duration, Duration(576 / 24000.0 - 1100.0 / 24000));
    EXPECT_LT(probe_.Description().duration, 0);
}

TEST_F(FileProbe, FilesWithoutFrames) {
    for (const Bytes& bytes : {Bytes{}, Bytes(1, 0), Bytes(40, 0), Bytes(5000, 0), Bytes(70000, 0xFF)}) {
        EXPECT_EQ(Parse(bytes), kProbeUnusable);
        EXPECT_EQ(probe_.Description().classIdentifier, 1);
        EXPECT_EQ(probe_.Description().fileSize, std::ssize(bytes));
    }
    EXPECT_EQ(Parse(test::Frames({.layer = 1}, 416, 100)), kProbeUnusable);
}

TEST_F(FileProbe, EveryShortFileIsAnswered) {
    const Bytes stream = test::Frames({.sampleRateIndex = 1}, 384, 2);
    for (std::ptrdiff_t size = 0; size <= 40; ++size) {
        const std::int32_t result = Parse(Bytes(stream.begin(), stream.begin() + size));
        EXPECT_EQ(result, size < 4 ? kProbeUnusable : kProbeDescribed) << size;
        if (size >= 4) {
            EXPECT_EQ(probe_.Description().duration, Duration(static_cast<double>(size) * 8.0 / 128000))
                << size;
        }
    }
}

TEST_F(FileProbe, UnconfirmedLayerTwoIsNoStream) {
    Bytes bytes;
    for (int i = 0; i < 1 << 18; ++i)
        bytes.insert(bytes.end(), {0xFF, 0xFD, 0xA0, 0x00});
    EXPECT_EQ(Parse(bytes), kProbeUnusable);
}

TEST_F(FileProbe, FilesThatCannotBeOpened) {
    EXPECT_EQ(probe_.ParseFile(test::Wide(folder_.Path() / "missing.mp3")), kProbeUnusable);
    EXPECT_EQ(probe_.ParseFile(test::Wide(folder_.Path())), kProbeUnusable);
    EXPECT_EQ(probe_.ParseFile(L""), kProbeUnusable);
    EXPECT_EQ(probe_.Description().classIdentifier, 2049);
    EXPECT_EQ(probe_.Description().fileSize, 0);
}

TEST_F(FileProbe, ClosesTheFileOnEveryRoute) {
    Parse(test::PaddedFrames(200));
    EXPECT_EQ(probe_.GetFileLength(), 0);
    Parse(Bytes(5000, 0));
    EXPECT_EQ(probe_.GetFileLength(), 0);
    Bytes variable = test::PaddedFrames(200);
    test::PutText(variable, 36, "Xing");
    Parse(variable);
    EXPECT_EQ(probe_.GetFileLength(), 0);
    folder_.Add("stream.mp3.idx", Bytes(28, 0));
    Parse(variable);
    EXPECT_EQ(probe_.GetFileLength(), 0);
}

TEST_F(FileProbe, ASecondFileReplacesTheAnswers) {
    Bytes info = test::Frames({.sampleRateIndex = 1}, 384, 100);
    test::PutText(info, 36, "Info");
    ASSERT_EQ(Parse(info), kProbeDescribed);
    ASSERT_EQ(Parse(test::PaddedFrames(200, test::kMono)), kProbeDescribed);
    EXPECT_FALSE(probe_.HasInfoFrame());
    EXPECT_EQ(probe_.Kind(), CbrKind::kByRate);
    EXPECT_EQ(Format().nChannels, 1);
    EXPECT_EQ(probe_.Description().duration, Duration(82755 / 16000.0 + 1152.0 / 44100 - 1100.0 / 44100));
    // What a failed probe does not fill stays.
    ASSERT_EQ(Parse(Bytes(5000, 0)), kProbeUnusable);
    EXPECT_EQ(probe_.Description().classIdentifier, 1);
    EXPECT_EQ(Format().nChannels, 1);
}

TEST_F(FileProbe, ConvertsTheDescription) {
    EXPECT_EQ(probe_.ToMediaInfo2(nullptr), 0);
    ASSERT_EQ(Parse(test::PaddedFrames(200)), kProbeDescribed);
    TRN_MEDIA_INFO2 info;
    EXPECT_EQ(probe_.ToMediaInfo2(&info), 1);
    EXPECT_EQ(info.duration, probe_.Description().duration);
    EXPECT_EQ(info.classIdentifier, 2323);
    EXPECT_EQ(info.filePath, path_);
    EXPECT_EQ(info.audioFormat.nSamplesPerSec, 44100u);
}

TEST_F(FileProbe, FileHelpers) {
    const std::wstring path = test::Wide(folder_.Add("bytes", Bytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(probe_.OpenFile(test::Wide(folder_.Path() / "missing")), 0);
    EXPECT_EQ(probe_.OpenFile(path), 1);
    EXPECT_EQ(probe_.GetFileLength(), 5);
    EXPECT_EQ(probe_.Tell(), 0);
    EXPECT_EQ(probe_.Seek(3), 1);
    EXPECT_EQ(probe_.Tell(), 3);
    Bytes buffer(4, 0);
    EXPECT_EQ(probe_.ReadBytes(buffer.data(), 4), 2u);
    EXPECT_EQ(buffer, (Bytes{4, 5, 0, 0}));
    EXPECT_EQ(probe_.CloseFile(), 1);
    EXPECT_EQ(probe_.ReadBytes(buffer.data(), 4), 0u);
}
